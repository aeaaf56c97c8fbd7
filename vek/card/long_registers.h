#ifndef VEK_CARD_LONG_REGISTERS_H
#define VEK_CARD_LONG_REGISTERS_H

#include <cstdint>

namespace vek
{

/// Whether a block of 32-bit registers at multiples of 4, `size` bytes of them, answers an access.
constexpr bool answersLong(std::uint64_t address, unsigned width, std::uint64_t size)
{
    constexpr unsigned kLong = 4;
    return width == kLong && address % kLong == 0 && address < size;
}

}  // namespace vek

#endif
