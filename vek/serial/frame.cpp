#include "serial/frame.h"

#include "crc32.h"

namespace vek
{
namespace
{

constexpr std::uint8_t kDelimiter = 0;
constexpr std::uint8_t kFullRun = kLongestStuffedRun + 1;

/// Stuffs bytes into a buffer that has room for them.
class Stuffer
{
public:
    explicit Stuffer(FrameBuffer& buffer) : buffer_(buffer)
    {
        buffer_[size_++] = kDelimiter;
        codeAt_ = size_++;
    }

    void put(std::uint8_t byte)
    {
        if (byte != 0) {
            buffer_[size_++] = byte;
            ++code_;
        }
        if (byte == 0 || code_ == kFullRun) {
            buffer_[codeAt_] = code_;
            codeAt_ = size_++;
            code_ = 1;
        }
    }

    std::span<const std::uint8_t> finish()
    {
        buffer_[codeAt_] = code_;
        buffer_[size_++] = kDelimiter;
        return std::span(buffer_).first(size_);
    }

private:
    FrameBuffer& buffer_;
    std::size_t size_ = 0;
    std::size_t codeAt_ = 0;
    std::uint8_t code_ = 1;
};

}  // namespace

std::span<const std::uint8_t> encodeFrame(std::span<const std::uint8_t> message, FrameBuffer& buffer)
{
    Stuffer stuffer(buffer);
    for (const std::uint8_t byte : message) {
        stuffer.put(byte);
    }
    std::uint32_t check = crc32(message);
    for (std::size_t index = 0; index < kCheckSize; ++index) {
        stuffer.put(static_cast<std::uint8_t>(check));
        check >>= 8;
    }
    return stuffer.finish();
}

void FrameDecoder::append(std::uint8_t byte)
{
    if (size_ == bytes_.size()) {
        tooLong_ = true;
        return;
    }
    bytes_[size_++] = byte;
}

/// Judges what has come since the last delimiter and begins anew.
bool FrameDecoder::finish()
{
    bool sound = runLeft_ == 0 && !tooLong_ && size_ > kCheckSize;
    if (sound) {
        const std::size_t length = size_ - kCheckSize;
        std::uint32_t check = 0;
        for (std::size_t index = kCheckSize; index > 0; --index) {
            check = check << 8 | bytes_[length + index - 1];
        }
        sound = check == crc32(std::span(bytes_).first(length));
        messageSize_ = length;
    }
    size_ = 0;
    runLeft_ = 0;
    zeroPending_ = false;
    tooLong_ = false;
    return sound;
}

bool FrameDecoder::take(std::uint8_t byte)
{
    messageSize_ = 0;
    if (byte == kDelimiter) {
        return finish();
    }
    if (runLeft_ > 0) {
        --runLeft_;
        append(byte);
        return false;
    }
    if (zeroPending_) {
        append(0);
    }
    zeroPending_ = byte != kFullRun;
    runLeft_ = byte - std::size_t{1};
    return false;
}

}  // namespace vek
