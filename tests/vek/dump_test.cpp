#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "captured_output.h"
#include "vek.h"

namespace
{

std::string dumpOf(const std::vector<uint32_t>& longs, uint64_t address)
{
    CapturedOutput output;
    EXPECT_EQ(dump_vram(longs.data(), 4, address, static_cast<int>(longs.size())), 0);
    return output.take();
}

TEST(Dump, ShowsFourLongsAndTheirBytesALine)
{
    EXPECT_EQ(dumpOf({0x44434241, 0x00010203, 0x7e201f7f, 0xff80a0b0, 0x64636261}, 0x1000),
              "00001000: 44434241 00010203 7e201f7f ff80a0b0  |ABCD...... ~....|\n"
              "00001010: 64636261                             |abcd|\n");
}

TEST(Dump, AlignsTheTextOfAShortLastLine)
{
    EXPECT_EQ(dumpOf({1, 2}, 0), "00000000: 00000001 00000002                    |........|\n");
    EXPECT_EQ(dumpOf({1, 2, 3}, 0), "00000000: 00000001 00000002 00000003           |............|\n");
}

TEST(Dump, PrintsLongLabelsInFull)
{
    EXPECT_EQ(dumpOf({0x30303030}, 0x100000000), "100000000: 30303030                             |0000|\n");
    EXPECT_EQ(dumpOf({0x30303030}, 0xfedcba9876543210),
              "fedcba9876543210: 30303030                             |0000|\n");
    EXPECT_EQ(dumpOf({0x30303030}, 0xffffffff), "ffffffff: 30303030                             |0000|\n");
}

TEST(Dump, ShowsEveryByteValueAsPrintfDoes)
{
    std::vector<uint32_t> longs;
    std::string expected;
    for (unsigned first = 0; first < 256; first += 16) {
        char line[80];
        std::string text;
        int length = std::snprintf(line, sizeof line, "%08x:", first);
        for (unsigned byte = first; byte < first + 16; byte += 4) {
            longs.push_back(byte | (byte + 1) << 8 | (byte + 2) << 16 | (byte + 3) << 24);
            length += std::snprintf(line + length, sizeof line - static_cast<size_t>(length), " %08x", longs.back());
        }
        for (unsigned byte = first; byte < first + 16; ++byte) {
            text += byte >= 0x20 && byte < 0x7f ? static_cast<char>(byte) : '.';
        }
        expected += std::string(line) + "  |" + text + "|\n";
    }
    EXPECT_EQ(dumpOf(longs, 0), expected);
}

TEST(Dump, TakesABufferOfAnyAlignment)
{
    const char bytes[] = "xABCD";
    CapturedOutput output;
    EXPECT_EQ(dump_vram(bytes + 1, 4, 0, 1), 0);
    EXPECT_EQ(output.take(), "00000000: 44434241                             |ABCD|\n");
}

TEST(Dump, ChecksItsArguments)
{
    const uint32_t cell = 0;
    CapturedOutput output;
    EXPECT_EQ(dump_vram(nullptr, 4, 0, 1), VEK_BAD_ARGUMENT);
    for (const int size : {0, 1, 2, 8, -4}) {
        EXPECT_EQ(dump_vram(&cell, size, 0, 1), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(dump_vram(&cell, 4, 0, -1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(dump_vram(&cell, 4, 0, 0), 0);
    EXPECT_EQ(output.take(), "");
}

}  // namespace
