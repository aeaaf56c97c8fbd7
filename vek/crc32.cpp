#include "crc32.h"

#include <array>

namespace vek
{
namespace
{

constexpr std::uint32_t kReflectedPolynomial = 0xedb8'8320;
constexpr unsigned kByteBits = 8;
constexpr std::size_t kByteValues = 256;

constexpr std::size_t kStride = 8;

/// What each value of a byte contributes that lies so many bytes before the end of a stride.
constexpr auto kContributions = [] {
    std::array<std::array<std::uint32_t, kByteValues>, kStride> contributions{};
    for (std::uint32_t byte = 0; byte < kByteValues; ++byte) {
        std::uint32_t remainder = byte;
        for (std::size_t behind = 0; behind < kStride; ++behind) {
            for (unsigned bit = 0; bit < kByteBits; ++bit) {
                remainder = remainder >> 1 ^ ((remainder & 1) != 0 ? kReflectedPolynomial : 0);
            }
            contributions[behind][byte] = remainder;
        }
    }
    return contributions;
}();

/// Takes a byte into the remainder of those before.
std::uint32_t addByte(std::uint32_t remainder, std::uint8_t byte)
{
    return remainder >> kByteBits ^ kContributions[0][(remainder ^ byte) % kByteValues];
}

/// Takes kStride bytes at a time, which are independent of each other.
std::uint32_t addStride(std::uint32_t remainder, const std::uint8_t* bytes)
{
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < kStride; ++at) {
        const std::uint32_t before = at < sizeof remainder ? remainder >> (kByteBits * at) : 0;
        sum ^= kContributions[kStride - 1 - at][(before ^ bytes[at]) % kByteValues];
    }
    return sum;
}

}  // namespace

std::uint32_t crc32(std::span<const std::uint8_t> bytes)
{
    std::uint32_t remainder = ~std::uint32_t{0};
    for (; bytes.size() >= kStride; bytes = bytes.subspan(kStride)) {
        remainder = addStride(remainder, bytes.data());
    }
    for (const std::uint8_t byte : bytes) {
        remainder = addByte(remainder, byte);
    }
    return ~remainder;
}

}  // namespace vek
