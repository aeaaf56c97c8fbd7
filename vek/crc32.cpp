#include "crc32.h"

#include <array>

namespace vek
{
namespace
{

constexpr std::uint32_t kReflectedPolynomial = 0xedb8'8320;
constexpr unsigned kByteBits = 8;
constexpr std::size_t kByteValues = 256;

/// What each value of a byte contributes.
constexpr auto kContributions = [] {
    std::array<std::uint32_t, kByteValues> contributions{};
    for (std::uint32_t byte = 0; byte < kByteValues; ++byte) {
        std::uint32_t remainder = byte;
        for (unsigned bit = 0; bit < kByteBits; ++bit) {
            remainder = remainder >> 1 ^ ((remainder & 1) != 0 ? kReflectedPolynomial : 0);
        }
        contributions[byte] = remainder;
    }
    return contributions;
}();

}  // namespace

std::uint32_t crc32(std::span<const std::uint8_t> bytes)
{
    std::uint32_t remainder = ~std::uint32_t{0};
    for (const std::uint8_t byte : bytes) {
        remainder = remainder >> kByteBits ^ kContributions[(remainder ^ byte) % kByteValues];
    }
    return ~remainder;
}

}  // namespace vek
