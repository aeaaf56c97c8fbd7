#include "tovira_parse/hex_dump.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "tovira_parse/hex_digits.h"
#include "tovira_parse/output.h"

namespace
{

constexpr int kBytesPerLine = 16;
constexpr int kFirstByteColumn = 10;
constexpr int kCharactersPerByte = 3;
constexpr int kFieldWidth = kFirstByteColumn + kCharactersPerByte * kBytesPerLine;
constexpr int kLabelDigits = 8;
constexpr int kLongestLabel = 18;

void printLine(std::uint64_t address, const std::uint8_t* bytes, int count)
{
    std::array<char, kFieldWidth + 1 + kBytesPerLine + 1> line;
    char* const labelDigitsEnd = putHex(line.data(), address, kLabelDigits);
    labelDigitsEnd[0] = ':';
    labelDigitsEnd[1] = ' ';
    const auto labelLength = static_cast<int>(labelDigitsEnd + 2 - line.data());

    std::array<char, kBytesPerLine> characters;
    char* column = line.data() + kFirstByteColumn;
    for (int i = 0; i < count; ++i) {
        const ByteText& text = kByteTexts[bytes[i]];
        // All four characters at once; the last of them gives way to what follows.
        memcpy(column, &text, sizeof text);
        column += kCharactersPerByte;
        characters[static_cast<std::size_t>(i)] = text.character;
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
    column = std::copy_n(characters.begin(), count, column);
    *column++ = '\n';
    printText(line.data(), column);
}

static_assert(kLongestLabel <= kFieldWidth);

}  // namespace

void printByte(std::uint64_t address, const std::uint8_t* bytes, int count)
{
    for (int done = 0; done < count; done += std::min(count - done, kBytesPerLine)) {
        printLine(address + static_cast<std::uint64_t>(done), bytes + done, std::min(count - done, kBytesPerLine));
    }
}
