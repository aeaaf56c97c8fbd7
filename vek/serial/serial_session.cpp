#include "serial/serial_session.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

using serial_protocol::kHeaderSize;
using serial_protocol::kReplyBit;
using serial_protocol::Operation;

/// Bits of a byte on the line, with start and stop bit.
constexpr std::uint64_t kBitsPerByte = 10;
constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

/// Bytes that a frame takes on the line at most, given the message in it.
constexpr std::size_t frameSize(std::size_t message)
{
    return message + (kMaxFrame - kMaxMessage);
}

bool answers(std::span<const std::uint8_t> message, std::span<const std::uint8_t> request)
{
    return message.size() > kHeaderSize && message[0] == (request[0] | kReplyBit) &&
           std::equal(message.begin() + 1, message.begin() + kHeaderSize, request.begin() + 1);
}

}  // namespace

std::uint64_t SerialSession::lineTime(std::size_t bytes) const
{
    return bytes * byteNanoseconds_;
}

int SerialSession::begin(SerialPort& port, int rate, std::uint32_t nonce)
{
    port_ = &port;
    byteNanoseconds_ = kBitsPerByte * kNanosecondsPerSecond / static_cast<std::uint64_t>(rate);
    nonce_ = nonce;
    const int result = greet(kAttempts, board_);
    established_ = result == VEK_OK;
    return result;
}

int SerialSession::greet(unsigned attempts, BoardServices& services)
{
    SerialRequest request(Operation::kGreet, kMaxMessage);
    // The reply is known by the nonce, which stands where the numbers of other messages do.
    request.number(static_cast<std::uint16_t>(nonce_), static_cast<std::uint16_t>(nonce_ >> 16));
    request.put8(serial_protocol::kVersion);
    SerialReply reply;
    const int result = exchange(request, reply, attempts);
    if (result != VEK_OK) {
        return result == VEK_TIMED_OUT || result == VEK_IO_ERROR ? result : VEK_BAD_DATA;
    }
    MessageReader body(reply.body());
    if (body.take8() != serial_protocol::kVersion || !takeServices(body, services)) {
        return VEK_BAD_DATA;
    }
    sequence_ = 0;
    return VEK_OK;
}

/// Begins a new session with a board that has forgotten the last one.
int SerialSession::resume(unsigned attempts)
{
    ++nonce_;
    BoardServices services;
    const int result = greet(attempts, services);
    if (result != VEK_OK) {
        return result;
    }
    if (!services.sameBoard(board_)) {
        return VEK_IO_ERROR;
    }
    board_ = services;
    established_ = true;
    return VEK_OK;
}

bool SerialSession::resting()
{
    return unanswered_ >= kPatience && port_->now() < restUntil_;
}

void SerialSession::noteAnswered(bool answered)
{
    if (answered) {
        unanswered_ = 0;
        return;
    }
    unanswered_ = std::min(unanswered_ + 1, kPatience);
    restUntil_ = port_->now() + kRestNanoseconds;
}

int SerialSession::transact(SerialRequest& request, SerialReply& reply)
{
    if (port_ == nullptr) {
        return VEK_IO_ERROR;
    }
    if (resting()) {
        return VEK_TIMED_OUT;
    }
    const unsigned attempts = unanswered_ < kPatience ? kAttempts : 1;
    int result = established_ ? VEK_OK : resume(attempts);
    if (result == VEK_OK) {
        request.number(board_.session, ++sequence_);
        result = exchange(request, reply, attempts);
    }
    return result;
}

int SerialSession::exchange(const SerialRequest& request, SerialReply& reply, unsigned attempts)
{
    FrameBuffer buffer;
    const auto frame = encodeFrame(request.bytes(), buffer);
    const std::size_t answerSize = std::min(frameSize(kHeaderSize + 1 + request.dataExpected()), kMaxFrame);
    int result = VEK_TIMED_OUT;
    for (unsigned attempt = 0; attempt < attempts && result == VEK_TIMED_OUT; ++attempt) {
        repeats_ += attempt == 0 ? 0 : 1;
        const std::uint64_t deadline =
            port_->now() + lineTime(frame.size()) + lineTime(answerSize) + kServiceNanoseconds;
        result = port_->send(frame, deadline);
        if (result == VEK_OK) {
            result = awaitReply(request, reply, deadline);
        }
    }
    noteAnswered(result != VEK_TIMED_OUT);
    return result;
}

int SerialSession::awaitReply(const SerialRequest& request, SerialReply& reply, std::uint64_t deadline)
{
    FrameDecoder decoder;
    std::array<std::uint8_t, 256> chunk;
    // The deadline holds however much comes that is no reply.
    while (port_->now() < deadline) {
        const std::ptrdiff_t got = port_->receive(chunk, deadline);
        if (got <= 0) {
            return got == 0 ? VEK_TIMED_OUT : VEK_IO_ERROR;
        }
        for (const std::uint8_t byte : std::span(chunk).first(static_cast<std::size_t>(got))) {
            if (decoder.take(byte) && answers(decoder.message(), request.bytes())) {
                MessageReader message(decoder.message().subspan(kHeaderSize));
                return accept(message, reply);
            }
        }
    }
    return VEK_TIMED_OUT;
}

int SerialSession::accept(MessageReader& message, SerialReply& reply)
{
    const std::uint8_t status = message.take8();
    reply.set(message.rest());
    if (status == serial_protocol::kNoSession) {
        established_ = false;
        return VEK_IO_ERROR;
    }
    return status == serial_protocol::kStale ? VEK_IO_ERROR : serial_protocol::resultOf(status);
}

}  // namespace vek
