#ifndef VEK_DRIVERS_EDID_BYTES_H
#define VEK_DRIVERS_EDID_BYTES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vek::edid
{

/// Length of the base block and of every extension block.
constexpr std::size_t kBlockSize = 128;

/// Read-only bytes from a monitor. Nothing can be read outside them: what they lack reads as 0, and a part of them that
/// reaches past their end is cut there.
class Bytes
{
public:
    constexpr Bytes() = default;
    constexpr explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    [[nodiscard]] constexpr std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] constexpr bool empty() const { return bytes_.empty(); }

    [[nodiscard]] constexpr unsigned at(std::size_t index) const { return index < bytes_.size() ? bytes_[index] : 0U; }

    /// Little-endian fields of 2, 3 and 4 bytes.
    [[nodiscard]] constexpr unsigned at16(std::size_t index) const { return at(index) | at(index + 1) << 8; }
    [[nodiscard]] constexpr unsigned at24(std::size_t index) const { return at16(index) | at(index + 2) << 16; }
    [[nodiscard]] constexpr unsigned at32(std::size_t index) const { return at16(index) | at16(index + 2) << 16; }

    /// The bits `high` to `low` of a byte, as a number.
    [[nodiscard]] constexpr unsigned bits(std::size_t index, unsigned high, unsigned low) const
    {
        return at(index) >> low & ((2U << (high - low)) - 1);
    }

    [[nodiscard]] constexpr bool bit(std::size_t index, unsigned number) const
    {
        return (at(index) >> number & 1) != 0;
    }

    [[nodiscard]] constexpr Bytes from(std::size_t offset) const
    {
        return Bytes(bytes_.subspan(std::min(offset, bytes_.size())));
    }

    [[nodiscard]] constexpr Bytes part(std::size_t offset, std::size_t length) const
    {
        const Bytes rest = from(offset);
        return Bytes(rest.bytes_.first(std::min(length, rest.size())));
    }

    [[nodiscard]] constexpr bool allEqual(unsigned value) const
    {
        return std::all_of(bytes_.begin(), bytes_.end(), [value](std::uint8_t byte) { return byte == value; });
    }

    /// Sum of all bytes modulo 256: 0 for a block or section whose last byte is its checksum.
    [[nodiscard]] constexpr unsigned sum() const
    {
        unsigned total = 0;
        for (const std::uint8_t byte : bytes_) {
            total += byte;
        }
        return total & 0xFF;
    }

private:
    std::span<const std::uint8_t> bytes_;
};

}  // namespace vek::edid

#endif
