#ifndef VEK_SERIAL_MESSAGE_H
#define VEK_SERIAL_MESSAGE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "serial/frame.h"

namespace vek
{

/// What the two ends of the serial line to a board say to each other: docs/serial-protocol.md. All numbers are
/// little-endian.
namespace serial_protocol
{

constexpr std::uint8_t kVersion = 1;

/// Most bytes of data in one request or reply: a block of longs, an I2C or SPI transfer.
constexpr std::size_t kMaxData = 1024;
constexpr std::size_t kMaxLongs = kMaxData / sizeof(std::uint32_t);

/// Most longs that one request fills.
constexpr std::uint32_t kMaxFill = 0x1'0000;

/// Operation, session and sequence number.
constexpr std::size_t kHeaderSize = 5;

/// A reply's operation is that of its request with this bit set.
constexpr std::uint8_t kReplyBit = 0x80;

enum class Operation : std::uint8_t {
    kGreet = 0x01,
    kRead1 = 0x10,
    kRead2 = 0x11,
    kRead4 = 0x12,
    kRead8 = 0x13,
    kWrite1 = 0x14,
    kWrite2 = 0x15,
    kWrite4 = 0x16,
    kWrite8 = 0x17,
    kReadLongs = 0x20,
    kWriteLongs = 0x21,
    kFillLongs = 0x22,
    kI2c = 0x30,
    kAux = 0x31,
    kSpi = 0x32,
};

/// Bits of the flags of an I2C request.
constexpr std::uint8_t kI2cStart = 1U << 0;     ///< A start condition comes first.
constexpr std::uint8_t kI2cStop = 1U << 1;      ///< A stop condition comes last, whatever happened before.
constexpr std::uint8_t kI2cLastByte = 1U << 2;  ///< The last byte that is read is not acknowledged.

/// Bit of the flags of an AUX request: the MOT bit.
constexpr std::uint8_t kAuxMiddleOfTransaction = 1U << 0;

/// Bits of the flags of an SPI request.
constexpr std::uint8_t kSpiSelect = 1U << 0;
constexpr std::uint8_t kSpiDeselect = 1U << 1;

/// Statuses beside the negated results of enum VekResult.
constexpr std::uint8_t kNoSession = 0x80;  ///< The board knows no session of that number; it has done nothing.
constexpr std::uint8_t kStale = 0x81;      ///< The sequence number is not a new one; the board has done nothing.

/// The status that stands for a result.
constexpr std::uint8_t statusOf(int result)
{
    return static_cast<std::uint8_t>(-result);
}

/// The result that a status stands for, VEK_BAD_DATA when it stands for none.
int resultOf(std::uint8_t status);

}  // namespace serial_protocol

/// A message while it is put together. The writer never asks for more than there is room for.
class MessageWriter
{
public:
    MessageWriter(std::uint8_t operation, std::uint16_t session, std::uint16_t sequence)
    {
        put8(operation);
        put16(session);
        put16(sequence);
    }

    void put8(std::uint8_t value) { bytes_[size_++] = value; }
    void put16(std::uint16_t value) { putItem(value, sizeof value); }
    void put32(std::uint32_t value) { putItem(value, sizeof value); }
    void put64(std::uint64_t value) { putItem(value, sizeof value); }

    /// The low `width` bytes of a value.
    void putItem(std::uint64_t value, std::size_t width)
    {
        for (std::size_t index = 0; index < width; ++index) {
            bytes_[size_++] = static_cast<std::uint8_t>(value >> (8 * index));
        }
    }

    void putBytes(std::span<const std::uint8_t> bytes)
    {
        std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += bytes.size();
    }

    /// Takes back what has been put behind the first `size` bytes.
    void cutTo(std::size_t size) { size_ = size; }

    /// Gives the message another session and sequence number.
    void number(std::uint16_t session, std::uint16_t sequence)
    {
        const std::size_t size = size_;
        size_ = 1;
        put16(session);
        put16(sequence);
        size_ = size;
    }

    std::size_t size() const { return size_; }
    std::span<const std::uint8_t> bytes() const { return std::span(bytes_).first(size_); }

    /// The byte at an offset, to be set when it is known.
    std::uint8_t& at(std::size_t offset) { return bytes_[offset]; }

private:
    std::array<std::uint8_t, kMaxMessage> bytes_;
    std::size_t size_ = 0;
};

/// Takes a message apart, which may have any length and contents.
class MessageReader
{
public:
    explicit MessageReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::uint8_t take8() { return static_cast<std::uint8_t>(takeItem(1)); }
    std::uint16_t take16() { return static_cast<std::uint16_t>(takeItem(sizeof(std::uint16_t))); }
    std::uint32_t take32() { return static_cast<std::uint32_t>(takeItem(sizeof(std::uint32_t))); }
    std::uint64_t take64() { return takeItem(sizeof(std::uint64_t)); }

    /// A number of `width` bytes; 0 when the message is too short for it.
    std::uint64_t takeItem(std::size_t width)
    {
        if (rest_.size() < width) {
            rest_ = {};
            short_ = true;
            return 0;
        }
        std::uint64_t value = 0;
        for (std::size_t index = width; index > 0; --index) {
            value = value << 8 | rest_[index - 1];
        }
        rest_ = rest_.subspan(width);
        return value;
    }

    /// All that has not been taken.
    std::span<const std::uint8_t> rest() const { return rest_; }

    /// Whether the message was long enough for all that has been taken.
    bool sound() const { return !short_; }

    /// Whether it had exactly the length of what has been taken.
    bool finished() const { return !short_ && rest_.empty(); }

private:
    std::span<const std::uint8_t> rest_;
    bool short_ = false;
};

}  // namespace vek

#endif
