#include "serial/remote_buses.h"

#include <algorithm>
#include <utility>

namespace vek
{
namespace
{

using serial_protocol::kMaxData;
using serial_protocol::Operation;

/// An I2C reply before its bytes: the step and the number of bytes written.
constexpr std::size_t kI2cOutcomeSize = 3;

}  // namespace

I2cStep RemoteI2cBus::start()
{
    startPending_ = true;
    return I2cStep::kDone;
}

/// Up to kMaxData bytes in either direction.
I2cStep RemoteI2cBus::run(std::uint8_t flags, std::span<const std::uint8_t> written, std::span<std::uint8_t> read)
{
    if (std::exchange(startPending_, false)) {
        flags |= serial_protocol::kI2cStart;
    }
    SerialRequest request(Operation::kI2c, kI2cOutcomeSize + read.size());
    request.put8(number_);
    request.put8(flags);
    request.put16(static_cast<std::uint16_t>(read.size()));
    request.putBytes(written);
    SerialReply reply;
    if (link_.transact(request, reply) != VEK_OK) {
        return I2cStep::kTimedOut;
    }
    MessageReader body(reply.body());
    const std::uint8_t step = body.take8();
    body.take16();
    if (!body.sound() || step > static_cast<std::uint8_t>(I2cStep::kTimedOut)) {
        return I2cStep::kTimedOut;
    }
    if (step == static_cast<std::uint8_t>(I2cStep::kDone)) {
        if (body.rest().size() != read.size()) {
            return I2cStep::kTimedOut;
        }
        std::copy(body.rest().begin(), body.rest().end(), read.begin());
    }
    return static_cast<I2cStep>(step);
}

I2cStep RemoteI2cBus::write(std::uint8_t byte)
{
    return run(0, {&byte, 1}, {});
}

I2cByte RemoteI2cBus::read(bool acknowledge)
{
    std::uint8_t byte = 0;
    const I2cStep step = run(acknowledge ? 0 : serial_protocol::kI2cLastByte, {}, {&byte, 1});
    return {step, byte};
}

void RemoteI2cBus::stop()
{
    run(serial_protocol::kI2cStop, {}, {});
}

I2cStep RemoteI2cBus::writeAll(std::span<const std::uint8_t> bytes)
{
    I2cStep step = I2cStep::kDone;
    while (!bytes.empty() && step == I2cStep::kDone) {
        const std::size_t count = std::min(bytes.size(), kMaxData);
        step = run(0, bytes.first(count), {});
        bytes = bytes.subspan(count);
    }
    return step;
}

I2cStep RemoteI2cBus::readAll(std::span<std::uint8_t> bytes)
{
    I2cStep step = I2cStep::kDone;
    while (!bytes.empty() && step == I2cStep::kDone) {
        const std::size_t count = std::min(bytes.size(), kMaxData);
        step = run(count == bytes.size() ? serial_protocol::kI2cLastByte : 0, {}, bytes.first(count));
        bytes = bytes.subspan(count);
    }
    return step;
}

AuxReply RemoteAuxChannel::transact(const AuxRequest& request)
{
    const bool sends = request.command == AuxCommand::kI2cWrite || request.command == AuxCommand::kNativeWrite;
    SerialRequest message(Operation::kAux, 1 + kMaxAuxBytes);
    message.put8(number_);
    message.put8(static_cast<std::uint8_t>(request.command));
    message.put8(request.middleOfTransaction ? serial_protocol::kAuxMiddleOfTransaction : 0);
    message.put32(request.address);
    message.put8(request.length);
    if (sends) {
        message.putBytes(std::span(request.data).first(std::min<std::size_t>(request.length, kMaxAuxBytes)));
    }
    AuxReply failed{.answer = AuxAnswer::kFailed};
    SerialReply reply;
    if (link_.transact(message, reply) != VEK_OK) {
        return failed;
    }
    MessageReader body(reply.body());
    const std::uint8_t answer = body.take8();
    const auto data = body.rest();
    if (!body.sound() || answer > static_cast<std::uint8_t>(AuxAnswer::kNone) || data.size() > kMaxAuxBytes) {
        return failed;
    }
    AuxReply received{.answer = static_cast<AuxAnswer>(answer), .length = static_cast<std::uint8_t>(data.size())};
    std::copy(data.begin(), data.end(), received.data.begin());
    return received;
}

void RemoteSpiBus::select()
{
    selectPending_ = true;
}

std::uint8_t RemoteSpiBus::takePendingFlags()
{
    return std::exchange(selectPending_, false) ? serial_protocol::kSpiSelect : std::uint8_t{0};
}

int RemoteSpiBus::takeFailure()
{
    return std::exchange(failure_, VEK_OK);
}

/// Up to kMaxData bytes in either direction.
int RemoteSpiBus::run(std::uint8_t flags, std::span<const std::uint8_t> written, std::span<std::uint8_t> read)
{
    SerialRequest request(Operation::kSpi, read.size());
    request.put8(flags | takePendingFlags());
    request.put16(static_cast<std::uint16_t>(read.size()));
    request.putBytes(written);
    SerialReply reply;
    const int result = link_.transact(request, reply);
    if (result != VEK_OK) {
        return result;
    }
    if (reply.body().size() != read.size()) {
        return VEK_BAD_DATA;
    }
    std::copy(reply.body().begin(), reply.body().end(), read.begin());
    return VEK_OK;
}

int RemoteSpiBus::write(std::span<const std::uint8_t> bytes)
{
    int result = takeFailure();
    while (!bytes.empty() && result == VEK_OK) {
        const std::size_t count = std::min(bytes.size(), kMaxData);
        result = run(0, bytes.first(count), {});
        bytes = bytes.subspan(count);
    }
    return result;
}

int RemoteSpiBus::read(std::span<std::uint8_t> bytes)
{
    int result = takeFailure();
    while (!bytes.empty() && result == VEK_OK) {
        const std::size_t count = std::min(bytes.size(), kMaxData);
        result = run(0, {}, bytes.first(count));
        bytes = bytes.subspan(count);
    }
    return result;
}

void RemoteSpiBus::deselect()
{
    const int result = run(serial_protocol::kSpiDeselect, {}, {});
    if (result != VEK_OK) {
        failure_ = result;
    }
}

}  // namespace vek
