/// Hexadecimal digits out of tables: what the dumps are made of, at a fraction of the cost of printf.
#ifndef TOVIRA_PARSE_HEX_DIGITS_H
#define TOVIRA_PARSE_HEX_DIGITS_H

#include <array>
#include <cstdint>
#include <cstring>

inline constexpr char kHexDigits[] = "0123456789abcdef";

/// What a dump shows of a byte: two digits and a blank in the one column, a character in the other.
struct ByteText {
    char hex[2];
    char blank;
    char character;  ///< the byte itself where isprint of the C locale holds, else '.'
};

/// The texts of all bytes.
inline constexpr auto kByteTexts = []() {
    std::array<ByteText, 256> texts{};
    for (unsigned value = 0; value < texts.size(); ++value) {
        const bool printable = value >= 0x20 && value <= 0x7e;
        texts[value] = {
            {kHexDigits[value >> 4U], kHexDigits[value & 0xfU]}, ' ', printable ? static_cast<char>(value) : '.'};
    }
    return texts;
}();

/// Writes the low `2 * bytes` digits of the value (bytes 0 to 8) in lower-case hexadecimal, without a terminator.
/// Returns the position behind the last digit.
inline char* putFixedHex(char* out, std::uint64_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8, out += 2) {
        memcpy(out, kByteTexts[(value >> static_cast<unsigned>(shift)) & 0xffU].hex, 2);
    }
    return out;
}

/// Writes the value in lower-case hexadecimal with at least `digits` digits (1 to 16), as "%0*lx" would, without a
/// terminator; `out` needs room for 16 characters. Returns the position behind the last digit.
inline char* putHex(char* out, std::uint64_t value, int digits)
{
    constexpr int kMostDigits = 16;
    constexpr int kDigitsOfLabel = 8;
    // Nearly all labels of a dump, with a count of digits that the compiler knows.
    if (digits == kDigitsOfLabel && value >> 32U == 0) {
        return putFixedHex(out, value, kDigitsOfLabel / 2);
    }
    int shown = digits;
    while (shown < kMostDigits && (value >> (4U * static_cast<unsigned>(shown))) != 0) {
        ++shown;
    }
    // A digit in front of an even number of them.
    if (shown % 2 != 0) {
        *out++ = kHexDigits[(value >> (4U * static_cast<unsigned>(shown - 1))) & 0xfU];
    }
    return putFixedHex(out, value, shown / 2);
}

#endif
