#include "api/long_dump.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace vek
{
namespace
{

constexpr std::size_t kLongSize = 4;
constexpr std::size_t kLongsPerLine = 4;
constexpr std::size_t kBytesPerLine = kLongsPerLine * kLongSize;
// A blank and eight digits.
constexpr std::size_t kLongColumn = 9;
// The label's sixteen digits and colon, the longs, two blanks, the ASCII column in its bars, the line end.
constexpr std::size_t kMaxLine = 17 + kLongsPerLine * kLongColumn + 2 + kBytesPerLine + 2 + 1;

/// The two digits of every byte, one pair after the other.
constexpr auto kHexPairs = [] {
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<char, 512> pairs{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        pairs[2 * byte] = kDigits[byte >> 4];
        pairs[2 * byte + 1] = kDigits[byte & 0xf];
    }
    return pairs;
}();

char* putByte(char* to, unsigned byte)
{
    std::memcpy(to, &kHexPairs[std::size_t{2} * (byte & 0xff)], 2);
    return to + 2;
}

/// As "%08lx:" prints it: at least eight digits, more when the address needs them.
char* putLabel(char* to, std::uint64_t address)
{
    unsigned digits = 8;
    while (digits < 16 && address >> (4 * digits) != 0) {
        ++digits;
    }
    for (unsigned digit = digits; digit > 0; --digit) {
        *to++ = kHexPairs[2 * ((address >> (4 * (digit - 1))) & 0xf) + 1];
    }
    *to++ = ':';
    return to;
}

/// One long as " %08x": its bytes from the highest down.
char* putLong(char* to, const unsigned char* bytes)
{
    *to++ = ' ';
    for (std::size_t index = kLongSize; index > 0; --index) {
        to = putByte(to, bytes[index - 1]);
    }
    return to;
}

char* putAscii(char* to, const unsigned char* bytes, std::size_t count)
{
    *to++ = '|';
    for (std::size_t index = 0; index < count; ++index) {
        const bool printable = bytes[index] >= 0x20 && bytes[index] <= 0x7e;
        *to++ = printable ? static_cast<char>(bytes[index]) : '.';
    }
    *to++ = '|';
    return to;
}

}  // namespace

void dumpLongs(const unsigned char* bytes, std::uint64_t address, std::size_t count)
{
    std::array<char, kMaxLine> line;
    while (count > 0) {
        const std::size_t longs = std::min(count, kLongsPerLine);
        char* end = putLabel(line.data(), address);
        for (std::size_t index = 0; index < longs; ++index) {
            end = putLong(end, bytes + index * kLongSize);
        }
        const std::size_t gap = (kLongsPerLine - longs) * kLongColumn + 2;
        std::memset(end, ' ', gap);
        end = putAscii(end + gap, bytes, longs * kLongSize);
        *end++ = '\n';
        std::fwrite(line.data(), 1, static_cast<std::size_t>(end - line.data()), stdout);
        bytes += longs * kLongSize;
        address += kBytesPerLine;
        count -= longs;
    }
}

}  // namespace vek
