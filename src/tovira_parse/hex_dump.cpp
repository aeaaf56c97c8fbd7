#include "tovira_parse/hex_dump.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace
{

constexpr int kBytesPerLine = 16;
constexpr int kFirstByteColumn = 10;
constexpr int kCharactersPerByte = 3;
constexpr int kFieldWidth = kFirstByteColumn + kCharactersPerByte * kBytesPerLine;
constexpr int kLabelDigits = 8;
constexpr int kLongestLabel = 18;

constexpr char kDigits[] = "0123456789abcdef";

struct ByteText {
    char hex[2];
    char character;
};

// Both texts of every byte, so that a dump costs neither printf nor isprint for each of its bytes.
constexpr auto kByteTexts = [] {
    std::array<ByteText, 256> texts{};
    for (unsigned value = 0; value < texts.size(); ++value) {
        const bool printable = value >= 0x20 && value <= 0x7e;
        texts[value] = {{kDigits[value >> 4U], kDigits[value & 0xfU]}, printable ? static_cast<char>(value) : '.'};
    }
    return texts;
}();

char* putByteHex(char* out, unsigned value)
{
    return static_cast<char*>(memcpy(out, kByteTexts[value & 0xffU].hex, 2)) + 2;
}

void printLine(std::uint64_t address, const std::uint8_t* bytes, int count)
{
    std::array<char, kFieldWidth + 1 + kBytesPerLine + 1> line;
    char* column = line.data();
    char* const labelDigitsEnd = putHex(column, address, kLabelDigits);
    labelDigitsEnd[0] = ':';
    labelDigitsEnd[1] = ' ';
    const auto labelLength = static_cast<int>(labelDigitsEnd + 2 - line.data());

    column += kFirstByteColumn;
    for (int i = 0; i < count; ++i) {
        column = putByteHex(column, bytes[i]);
        *column++ = ' ';
    }
    // A label that reaches beyond the bytes keeps its tail but for the one column behind them, and ends the field.
    const int bytesEnd = kFirstByteColumn + kCharactersPerByte * count;
    if (labelLength > bytesEnd) {
        *column = ' ';
        column = line.data() + labelLength;
    } else {
        column = std::fill_n(column, kFieldWidth - bytesEnd, ' ');
    }

    *column++ = '\t';
    for (int i = 0; i < count; ++i) {
        *column++ = kByteTexts[bytes[i]].character;
    }
    *column++ = '\n';
    fwrite(line.data(), 1, static_cast<std::size_t>(column - line.data()), stdout);
}

static_assert(kLongestLabel <= kFieldWidth);

}  // namespace

char* putFixedHex(char* out, std::uint64_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out = putByteHex(out, static_cast<unsigned>(value >> static_cast<unsigned>(shift)));
    }
    return out;
}

char* putHex(char* out, std::uint64_t value, int digits)
{
    std::array<char, 16> all;
    putFixedHex(all.data(), value, 8);
    const int significant = value == 0 ? 1 : 16 - __builtin_clzll(value) / 4;
    const int shown = std::max(significant, digits);
    memcpy(out, all.data() + 16 - shown, static_cast<std::size_t>(shown));
    return out + shown;
}

void printByte(std::uint64_t address, const std::uint8_t* bytes, int count)
{
    for (int done = 0; done < count; done += std::min(count - done, kBytesPerLine)) {
        printLine(address + static_cast<std::uint64_t>(done), bytes + done, std::min(count - done, kBytesPerLine));
    }
}
