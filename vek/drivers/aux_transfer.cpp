#include "drivers/aux_transfer.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

bool withinDpcd(std::uint32_t address, std::size_t count)
{
    return address < kAuxAddressEnd && count <= kAuxAddressEnd - address;
}

bool isRead(AuxCommand command)
{
    return command == AuxCommand::kNativeRead || command == AuxCommand::kI2cRead;
}

/// Tells an acknowledgement that leaves everything or the rest to be done from one that ends the request.
AuxAnswer answerOf(const AuxReply& reply, const AuxRequest& request, std::size_t bytesToWrite)
{
    if (reply.answer != AuxAnswer::kAck) {
        return reply.answer;
    }
    if (isRead(request.command)) {
        return reply.length == 0 && request.length != 0 ? AuxAnswer::kDefer : AuxAnswer::kAck;
    }
    const bool inPart =
        request.command != AuxCommand::kNativeWrite && reply.length != 0 && reply.data[0] < bytesToWrite;
    return inPart ? AuxAnswer::kI2cDefer : AuxAnswer::kAck;
}

/// How many bytes of a native write the sink has taken.
std::size_t bytesTaken(const AuxReply& reply, std::size_t sent)
{
    if (reply.answer == AuxAnswer::kAck) {
        return sent;
    }
    const bool inPart = reply.answer == AuxAnswer::kNack && reply.length != 0 && reply.data[0] < sent;
    return inPart ? reply.data[0] : 0;
}

}  // namespace

int auxResult(AuxAnswer answer)
{
    switch (answer) {
        case AuxAnswer::kAck:
            return VEK_OK;
        case AuxAnswer::kNone:
            return VEK_NO_RESPONSE;
        case AuxAnswer::kDefer:
        case AuxAnswer::kI2cDefer:
            return VEK_TIMED_OUT;
        default:
            return VEK_IO_ERROR;
    }
}

AuxReply AuxTransfer::exchange(AuxRequest request)
{
    const std::size_t bytesToWrite = request.length;
    int silences = 0;
    int defers = 0;
    for (;;) {
        AuxReply reply = channel_.transact(request);
        reply.length = std::min<std::uint8_t>(reply.length, kMaxAuxBytes);
        reply.answer = answerOf(reply, request, bytesToWrite);
        switch (reply.answer) {
            case AuxAnswer::kNone:
                if (++silences > kMaxAuxSilences) {
                    return reply;
                }
                break;
            case AuxAnswer::kI2cDefer:
                // The sink has taken the bytes; to send them again would write them twice.
                if (request.command == AuxCommand::kI2cWrite) {
                    request.command = AuxCommand::kI2cWriteStatusUpdate;
                    request.length = 0;
                }
                [[fallthrough]];
            case AuxAnswer::kDefer:
                if (++defers > kMaxAuxDefers) {
                    return reply;
                }
                break;
            default:
                return reply;
        }
        pause_.microseconds(kAuxRetryMicroseconds);
    }
}

int AuxTransfer::readDpcd(std::uint32_t address, std::span<std::uint8_t> bytes)
{
    if (!withinDpcd(address, bytes.size())) {
        return VEK_BAD_ARGUMENT;
    }
    while (!bytes.empty()) {
        const std::size_t asked = std::min(bytes.size(), kMaxAuxBytes);
        const AuxReply reply = exchange(
            {.command = AuxCommand::kNativeRead, .address = address, .length = static_cast<std::uint8_t>(asked)});
        if (reply.answer != AuxAnswer::kAck) {
            return auxResult(reply.answer);
        }
        const std::size_t got = std::min<std::size_t>(reply.length, asked);
        std::copy_n(reply.data.begin(), got, bytes.begin());
        bytes = bytes.subspan(got);
        address += static_cast<std::uint32_t>(got);
    }
    return VEK_OK;
}

int AuxTransfer::writeDpcd(std::uint32_t address, std::span<const std::uint8_t> bytes)
{
    if (!withinDpcd(address, bytes.size())) {
        return VEK_BAD_ARGUMENT;
    }
    while (!bytes.empty()) {
        const std::size_t sent = std::min(bytes.size(), kMaxAuxBytes);
        AuxRequest request{
            .command = AuxCommand::kNativeWrite, .address = address, .length = static_cast<std::uint8_t>(sent)};
        std::copy_n(bytes.begin(), sent, request.data.begin());
        const AuxReply reply = exchange(request);
        const std::size_t taken = bytesTaken(reply, sent);
        if (taken == 0) {
            return auxResult(reply.answer);
        }
        bytes = bytes.subspan(taken);
        address += static_cast<std::uint32_t>(taken);
    }
    return VEK_OK;
}

}  // namespace vek
