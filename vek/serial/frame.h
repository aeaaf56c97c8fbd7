#ifndef VEK_SERIAL_FRAME_H
#define VEK_SERIAL_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vek
{

/// Longest message that a frame carries, in bytes.
constexpr std::size_t kMaxMessage = 1056;

/// Bytes of the check sum behind a message.
constexpr std::size_t kCheckSize = 4;

/// Most data bytes between two code bytes.
constexpr std::size_t kLongestStuffedRun = 254;

/// Longest frame: two delimiters around message and check sum, which are stuffed.
constexpr std::size_t kMaxFrame = 2 + kMaxMessage + kCheckSize + (kMaxMessage + kCheckSize) / kLongestStuffedRun + 1;

using FrameBuffer = std::array<std::uint8_t, kMaxFrame>;

/// Puts a message, up to kMaxMessage bytes, into a frame: the message and its CRC-32, low byte first, with consistent
/// overhead byte stuffing (Cheshire and Baker, 1999), which leaves no zero in them, between two zeros. Returns the part
/// of the buffer that the frame takes.
std::span<const std::uint8_t> encodeFrame(std::span<const std::uint8_t> message, FrameBuffer& buffer);

/// Finds the frames in what comes over a line, whatever lies between them.
class FrameDecoder
{
public:
    /// Takes the next byte. Returns whether it has completed a frame whose check sum is right.
    bool take(std::uint8_t byte);

    /// The message of that frame, until the next byte is taken.
    std::span<const std::uint8_t> message() const { return std::span(bytes_).first(messageSize_); }

private:
    bool finish();
    void append(std::uint8_t byte);

    std::array<std::uint8_t, kMaxMessage + kCheckSize> bytes_{};
    std::size_t size_ = 0;
    std::size_t messageSize_ = 0;
    std::size_t runLeft_ = 0;   ///< Data bytes up to the next code byte.
    bool zeroPending_ = false;  ///< A zero stands before the next code byte, unless the frame ends there.
    bool tooLong_ = false;
};

}  // namespace vek

#endif
