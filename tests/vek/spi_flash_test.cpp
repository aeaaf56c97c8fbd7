#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

constexpr int kSize = VEK_SPI_FLASH_SIZE;
constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

Bytes readFlash(int address, int size)
{
    Bytes bytes(static_cast<std::size_t>(size), 0xee);
    EXPECT_EQ(vekSpiReadBuffer(bytes.data(), address, size), VEK_OK);
    return bytes;
}

int programFlash(int address, const Bytes& bytes)
{
    return vekSpiProgram(bytes.data(), address, static_cast<int>(bytes.size()));
}

Bytes erased(int size)
{
    Bytes bytes(static_cast<std::size_t>(size), 0xff);
    return bytes;
}

/** Bytes without a short period. */
Bytes pattern(int size, unsigned seed)
{
    Bytes bytes(static_cast<std::size_t>(size));
    uint32_t state = seed;
    for (uint8_t& byte : bytes) {
        state = state * 1'664'525 + 1'013'904'223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

/** The flash of either card, as shipped again after each test: it outlives its connection. */
class SpiFlash : public EitherCard
{
protected:
    ~SpiFlash() override
    {
        EXPECT_EQ(vekSpiUnprotect(), VEK_OK);
        EXPECT_EQ(vekSpiErase(0, kSize), VEK_OK);
    }
};
INSTANTIATE_TEST_SUITE_P(Cards, SpiFlash, testing::Values(0, 1));

TEST_P(SpiFlash, ReadsAllOnesWhenErased)
{
    EXPECT_EQ(readFlash(0, kSize), erased(kSize));
}

TEST_P(SpiFlash, KeepsAWholeImage)
{
    const Bytes image = pattern(kSize, 1);
    ASSERT_EQ(programFlash(0, image), VEK_OK);
    EXPECT_EQ(readFlash(0, kSize), image);
    ASSERT_GE(vekRwOpen(GetParam()), 0);
    EXPECT_EQ(readFlash(0, kSize), image);
}

TEST_P(SpiFlash, ProgramsAcrossPagesAndBlocks)
{
    const Bytes data = pattern(0x408, 2);
    for (const int address : {0x0, 0x80, 0xfc, 0x1ffff - 0x200, 0x30001, kSize - 0x408}) {
        ASSERT_EQ(programFlash(address, data), VEK_OK);
        EXPECT_EQ(readFlash(address, 0x408), data) << address;
        ASSERT_EQ(vekSpiErase(address, 0x408), VEK_OK);
    }
    EXPECT_EQ(readFlash(0, kSize), erased(kSize));
}

TEST_P(SpiFlash, ReadsAnyRange)
{
    const Bytes data = pattern(0x100, 3);
    ASSERT_EQ(programFlash(kSize - 0x100, data), VEK_OK);
    EXPECT_EQ(readFlash(kSize - 1, 1), Bytes(data.end() - 1, data.end()));
    EXPECT_EQ(readFlash(kSize - 0x10, 0x10), Bytes(data.end() - 0x10, data.end()));
    EXPECT_EQ(readFlash(kSize - 0xff, 3), Bytes(data.begin() + 1, data.begin() + 4));
}

TEST_P(SpiFlash, ErasesWholeSectors)
{
    ASSERT_EQ(programFlash(0, Bytes(0x40000, 0)), VEK_OK);
    ASSERT_EQ(vekSpiErase(0xf800, 0x20900), VEK_OK);
    const Bytes found = readFlash(0, 0x40000);
    for (std::size_t at = 0; at < found.size(); ++at) {
        ASSERT_EQ(found[at], at >= 0xf000 && at < 0x31000 ? 0xff : 0x00) << at;
    }
}

TEST_P(SpiFlash, ReportsWhatNeededAnErase)
{
    ASSERT_EQ(programFlash(0x100, {0xf0, 0xff, 0xff, 0xff}), VEK_OK);
    EXPECT_EQ(programFlash(0x100, {0x70, 0x12, 0x34, 0x56}), VEK_OK);
    EXPECT_EQ(programFlash(0x100, {0x0f, 0x12, 0x34, 0x56}), VEK_BAD_DATA);
    EXPECT_THAT(readFlash(0x100, 4), ElementsAre(0x00, 0x12, 0x34, 0x56));
}

TEST_P(SpiFlash, IsProtectedUntilItIsUnprotected)
{
    const Bytes data = pattern(0x20000, 4);
    ASSERT_EQ(programFlash(0x10000, data), VEK_OK);
    ASSERT_EQ(vekSpiProtect(), VEK_OK);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(vekSpiErase(0x10000, 0x20000), VEK_PROTECTED);
        EXPECT_EQ(vekSpiErase(kSize - 1, 1), VEK_PROTECTED);
        EXPECT_EQ(programFlash(0, {1, 2, 3, 4}), VEK_PROTECTED);
        EXPECT_EQ(programFlash(0x10000, Bytes(4, 0)), VEK_PROTECTED);
        EXPECT_EQ(readFlash(0x10000, 0x20000), data);
        EXPECT_THAT(readFlash(0, 4), Each(0xff));
        // It is the chip that keeps this.
        vekClose();
        ASSERT_GE(vekRwOpen(GetParam()), 0);
    }
    ASSERT_EQ(vekSpiProtect(), VEK_OK);
    ASSERT_EQ(vekSpiUnprotect(), VEK_OK);
    EXPECT_EQ(programFlash(0, {1, 2, 3, 4}), VEK_OK);
    EXPECT_EQ(vekSpiErase(0x10000, 0x20000), VEK_OK);
    EXPECT_THAT(readFlash(0, 5), ElementsAre(1, 2, 3, 4, 0xff));
    EXPECT_EQ(readFlash(0x10000, 0x20000), erased(0x20000));
}

struct Span {
    int address;
    int size;
};

const std::vector<Span>& badSpans()
{
    static const std::vector<Span> spans{
        {-1, 4},
        {-4, 8},
        {kLowest, 4},
        {kLowest, kHighest},
        {kSize, 4},
        {kSize - 4, 8},
        {0, kSize + 4},
        {4, kSize},
        {kHighest, 4},
        {kHighest, kHighest},
        {4, kHighest},
        {kHighest - 3, 4},
        {0, 0},
        {0, -4},
        {0x1000, kLowest},
        {kSize, kLowest},
        {kSize, 0},
        {kSize + 4, -4},
        {8, kHighest - 3},
    };
    return spans;
}

TEST_P(SpiFlash, RefusesRangesThatAreNotInside)
{
    const Bytes data = pattern(0x1000, 5);
    ASSERT_EQ(programFlash(0, data), VEK_OK);
    for (const auto& [address, size] : badSpans()) {
        Bytes bytes(16, 0xee);
        EXPECT_EQ(vekSpiReadBuffer(bytes.data(), address, size), VEK_BAD_ARGUMENT) << address << " " << size;
        EXPECT_THAT(bytes, Each(0xee));
        EXPECT_EQ(vekSpiProgram(bytes.data(), address, size), VEK_BAD_ARGUMENT) << address << " " << size;
        EXPECT_EQ(vekSpiErase(address, size), VEK_BAD_ARGUMENT) << address << " " << size;
    }
    EXPECT_EQ(readFlash(0, 0x1000), data);
    EXPECT_EQ(readFlash(0x1000, kSize - 0x1000), erased(kSize - 0x1000));
}

TEST_P(SpiFlash, ProgramsWholeLongsOnly)
{
    const Bytes data(8, 0);
    for (const int size : {1, 2, 3, 5, 7}) {
        EXPECT_EQ(vekSpiProgram(data.data(), 0, size), VEK_BAD_ARGUMENT);
    }
    EXPECT_THAT(readFlash(0, 8), Each(0xff));
}

TEST_P(SpiFlash, NeedsABuffer)
{
    EXPECT_EQ(vekSpiReadBuffer(nullptr, 0, 4), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekSpiProgram(nullptr, 0, 4), VEK_BAD_ARGUMENT);
}

TEST(SpiFlashes, AreOnACardEach)
{
    ASSERT_GE(vekRwOpen(0), 0);
    ASSERT_EQ(programFlash(0x5000, {1, 2, 3, 4}), VEK_OK);
    ASSERT_EQ(vekSpiProtect(), VEK_OK);
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_THAT(readFlash(0x5000, 4), Each(0xff));
    EXPECT_EQ(programFlash(0x5000, {5, 6, 7, 8}), VEK_OK);
    EXPECT_EQ(vekSpiErase(0x5000, 1), VEK_OK);
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_THAT(readFlash(0x5000, 4), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(vekSpiErase(0x5000, 1), VEK_PROTECTED);
    EXPECT_EQ(vekSpiUnprotect(), VEK_OK);
    EXPECT_EQ(vekSpiErase(0x5000, 1), VEK_OK);
    vekClose();
}

}  // namespace
