#include "tovira_parse/hex_dump.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "captured_output.h"

namespace
{

std::string dump(std::uint64_t address, const std::vector<std::uint8_t>& bytes, int count)
{
    CapturedOutput output;
    printByte(address, bytes.data(), count);
    return output.take();
}

std::string dump(std::uint64_t address, const std::vector<std::uint8_t>& bytes)
{
    return dump(address, bytes, static_cast<int>(bytes.size()));
}

std::vector<std::uint8_t> letters(std::string_view text)
{
    return {text.begin(), text.end()};
}

TEST(PrintByte, PrintsNothingBelowOneByte)
{
    EXPECT_EQ(dump(0x1000, {0x41}, 0), "");
    EXPECT_EQ(dump(0x1000, {0x41}, -1), "");
    EXPECT_EQ(dump(0x1000, {0x41}, INT32_MIN), "");
}

TEST(PrintByte, PrintsSixteenBytesAsOneLine)
{
    EXPECT_EQ(dump(0x1000, letters("ABCDEFGHIJKLMNOP")),
              "00001000: 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50 \tABCDEFGHIJKLMNOP\n");
}

TEST(PrintByte, FillsTheRestOfTheLastLineWithBlanks)
{
    EXPECT_EQ(dump(0x1000, letters("ABCDEFGHIJKLMNOPQRST")),
              "00001000: 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50 \tABCDEFGHIJKLMNOP\n"
              "00001010: 51 52 53 54                                     \tQRST\n");
}

TEST(PrintByte, PrintsTheSeventeenthByteOnALineOfItsOwn)
{
    EXPECT_EQ(dump(0xfffffff8, letters("0123456789abcdefg")),
              "fffffff8: 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 \t0123456789abcdef\n"
              "100000008:67 " +
                  std::string(45, ' ') + "\tg\n");
}

TEST(PrintByte, KeepsTheFieldAtFiftyEightCharactersForEveryCount)
{
    const std::string_view text = "abcdefghijklmnop";
    const std::string_view digits = "61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f 70 ";
    for (std::size_t count = 1; count <= 16; ++count) {
        std::string field = "00000020: " + std::string(digits.substr(0, 3 * count));
        field.resize(58, ' ');
        EXPECT_EQ(dump(0x20, letters(text.substr(0, count))), field + "\t" + std::string(text.substr(0, count)) + "\n");
    }
}

TEST(PrintByte, RisesBySixteenFromLineToLineWhateverTheFirstAddress)
{
    const std::string line = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \t................\n";
    EXPECT_EQ(dump(5, std::vector<std::uint8_t>(48)), "00000005: " + line + "00000015: " + line + "00000025: " + line);
}

TEST(PrintByte, ShowsPrintableCharactersAsThemselves)
{
    std::string text;
    for (int first = 0; first < 256; first += 16) {
        std::array<char, 16> label{};
        snprintf(label.data(), label.size(), "%08x: ", static_cast<unsigned int>(first));
        std::string field = label.data();
        std::string column;
        for (int byte = first; byte < first + 16; ++byte) {
            snprintf(label.data(), label.size(), "%02x ", static_cast<unsigned int>(byte));
            field += label.data();
            column += byte >= 0x20 && byte <= 0x7e ? static_cast<char>(byte) : '.';
        }
        text += field;
        text += "\t" + column + "\n";
    }
    std::vector<std::uint8_t> all;
    for (int byte = 0; byte < 256; ++byte) {
        all.push_back(static_cast<std::uint8_t>(byte));
    }
    EXPECT_EQ(dump(0, all), text);
}

TEST(PrintByte, KeepsTenCharactersOfALongLabel)
{
    EXPECT_EQ(dump(0xffff800000001000, letters("ABC")), "ffff80000041 42 43 " + std::string(39, ' ') + "\tABC\n");
    EXPECT_EQ(dump(0xffff800000001000, letters("ABCDEFGHIJKLMNOP")),
              "ffff80000041 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50 \tABCDEFGHIJKLMNOP\n");
}

// The line is built piece by piece, each with its own terminator: two bytes do not reach that of the longest label.
TEST(PrintByte, EndsAShortLineInTheTailOfALongLabel)
{
    EXPECT_EQ(dump(0xffff800000001000, {0x2a}), "ffff8000002a  00: \t*\n");
    EXPECT_EQ(dump(0xffff800000001234, {0x2a}), "ffff8000002a  34: \t*\n");
    EXPECT_EQ(dump(0xffff800000001000, {0x2a, 0x2b}), "ffff8000002a 2b   \t*+\n");
}

TEST(PrintByte, EndsAShortLineWhereverTheLabelEnded)
{
    EXPECT_EQ(dump(0x123456789abc, {0x2a}), "123456789a2a  \t*\n");
    EXPECT_EQ(dump(0x123456789abcde, {0x2a}), "123456789a2a  : \t*\n");
    EXPECT_EQ(dump(0x123456789abcdef, {0x2a, 0x2b}), "123456789a2a 2b  \t*+\n");
}

TEST(PrintByte, FillsTheLineWhenTheBytesReachTheEndOfTheLabel)
{
    EXPECT_EQ(dump(0x123456789ab, {0x2a}), "123456789a2a " + std::string(45, ' ') + "\t*\n");
    EXPECT_EQ(dump(0x123456789abcde, {0x2a, 0x2b}), "123456789a2a 2b " + std::string(42, ' ') + "\t*+\n");
    EXPECT_EQ(dump(0x123456789, {0x2a}), "123456789:2a " + std::string(45, ' ') + "\t*\n");
    EXPECT_EQ(dump(0x123456789, {0x2a, 0x2b}), "123456789:2a 2b " + std::string(42, ' ') + "\t*+\n");
}

TEST(PrintByte, WrapsTheAddress)
{
    const std::string line = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \t................\n";
    EXPECT_EQ(dump(0xfffffffffffffff0, std::vector<std::uint8_t>(32)), "ffffffffff" + line + "00000000: " + line);
}

}  // namespace
