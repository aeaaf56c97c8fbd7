/// Values drawn from a part of a fuzzer's input.
#ifndef FUZZ_BYTE_SOURCE_H
#define FUZZ_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzz
{

/// Hands out bytes in turn, and again from the first one when all have been taken; zeros when there are none.
class ByteSource
{
public:
    constexpr ByteSource() = default;
    constexpr explicit ByteSource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint8_t take8()
    {
        if (bytes_.empty()) {
            return 0;
        }
        const std::uint8_t byte = bytes_[next_];
        next_ = next_ + 1 == bytes_.size() ? 0 : next_ + 1;
        return byte;
    }

    std::uint16_t take16()
    {
        const std::uint32_t low = take8();
        return static_cast<std::uint16_t>(low | std::uint32_t{take8()} << 8U);
    }

    std::uint32_t take32()
    {
        const std::uint32_t low = take16();
        return low | std::uint32_t{take16()} << 16U;
    }

    void fill(std::span<std::uint8_t> bytes)
    {
        for (std::uint8_t& byte : bytes) {
            byte = take8();
        }
    }

    /// True for one value of a byte in `among`.
    bool chance(unsigned among) { return take8() % among == 0; }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t next_ = 0;
};

}  // namespace fuzz

#endif
