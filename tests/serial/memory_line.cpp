#include "memory_line.h"

#include <algorithm>

#include "serial/frame.h"

namespace serial_test
{
namespace
{

/** A byte at 115200 bits per second. */
constexpr std::uint64_t kByteTime = 86'806;

}  // namespace

bool Wire::strikes(double rate)
{
    const bool struck = std::uniform_real_distribution<>()(random_) < rate;
    faultsDone_ += struck ? 1 : 0;
    return struck;
}

void Wire::send(std::uint8_t byte, std::uint64_t time)
{
    if (strikes(faults_.insert)) {
        bytes_.push_back({std::max(last_, time), static_cast<std::uint8_t>(pick(256))});
    }
    if (strikes(faults_.drop)) {
        return;
    }
    if (strikes(faults_.flip)) {
        byte ^= static_cast<std::uint8_t>(1U << pick(8));
    }
    if (strikes(faults_.delay)) {
        time += pick(600) * kMillisecond;
    }
    last_ = std::max(last_, time);
    bytes_.push_back({last_, byte});
    if (strikes(faults_.repeat)) {
        bytes_.push_back({last_, byte});
    }
}

std::uint8_t Wire::take()
{
    const std::uint8_t byte = bytes_.front().byte;
    bytes_.pop_front();
    return byte;
}

int MemoryLine::send(std::span<const std::uint8_t> bytes, std::uint64_t /*deadline*/)
{
    if (cut_) {
        return VEK_IO_ERROR;
    }
    for (const std::uint8_t byte : bytes) {
        time_ += kByteTime;
        toBoard_.send(byte, time_);
    }
    sentBytes_ += bytes.size();
    return VEK_OK;
}

// Lets the other end have what arrives up to a time, and answer.
void MemoryLine::deliver(std::uint64_t until)
{
    while (!toBoard_.empty() && toBoard_.nextTime() <= until) {
        std::uint64_t time = toBoard_.nextTime();
        for (const std::uint8_t byte : otherEnd_(toBoard_.take())) {
            time += kByteTime;
            toHost_.send(byte, time);
        }
    }
}

std::ptrdiff_t MemoryLine::receive(std::span<std::uint8_t> bytes, std::uint64_t deadline)
{
    if (cut_) {
        return -1;
    }
    deliver(deadline);
    if (toHost_.empty() || toHost_.nextTime() > deadline) {
        time_ = std::max(time_, deadline);
        return 0;
    }
    time_ = std::max(time_, toHost_.nextTime());
    std::size_t count = 0;
    while (count < bytes.size() && !toHost_.empty() && toHost_.nextTime() <= time_) {
        bytes[count++] = toHost_.take();
    }
    receivedBytes_ += count;
    return static_cast<std::ptrdiff_t>(count);
}

Bytes Board::take(std::span<const std::uint8_t> bytes)
{
    sent_.clear();
    end_.take(bytes);
    return sent_;
}

std::vector<Bytes> Board::ask(const Bytes& message)
{
    return messagesIn(take(framed(message)));
}

std::vector<Bytes> messagesIn(const Bytes& bytes)
{
    vek::FrameDecoder decoder;
    std::vector<Bytes> messages;
    for (const std::uint8_t byte : bytes) {
        if (decoder.take(byte)) {
            messages.emplace_back(decoder.message().begin(), decoder.message().end());
        }
    }
    return messages;
}

Bytes framed(const Bytes& message)
{
    vek::FrameBuffer buffer;
    const auto frame = vek::encodeFrame(message, buffer);
    return {frame.begin(), frame.end()};
}

vek::AccessPath emptyPath()
{
    return {.mode = VEK_ACCESS_DRIVER,
            .card = 0,
            .deviceId = VEK_DEVICE_QZ201,
            .registers = nullptr,
            .videoMemory = nullptr,
            .kernelMemory = nullptr,
            .amba = nullptr,
            .crtc = nullptr,
            .pciConfiguration = nullptr,
            .i2c = {},
            .ddc = {},
            .hdmiPhys = {}};
}

}  // namespace serial_test
