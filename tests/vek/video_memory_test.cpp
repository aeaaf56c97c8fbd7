#include <gtest/gtest.h>

#include <cstdint>

#include "open_card.h"
#include "resident_memory.h"
#include "vek.h"

namespace
{

constexpr uint64_t kGiB = uint64_t{1} << 30;

class VideoMemory : public EitherCard
{
protected:
    static uint64_t size() { return GetParam() == 0 ? 4 * kGiB : 2 * kGiB; }
};
INSTANTIATE_TEST_SUITE_P(Cards, VideoMemory, testing::Values(0, 1));

TEST_P(VideoMemory, KeepsItemsOfEveryWidthAtAnyAlignment)
{
    const uint64_t address = 0x4001;
    EXPECT_EQ(vekVramWriteQuad(address, 0x1122334455667788), 0);
    uint8_t byte = 0;
    uint16_t word = 0;
    uint32_t longItem = 0;
    uint64_t quad = 0;
    EXPECT_EQ(vekVramReadByte(address, &byte), 0);
    EXPECT_EQ(byte, 0x88);
    EXPECT_EQ(vekVramReadWord(address + 1, &word), 0);
    EXPECT_EQ(word, 0x6677);
    EXPECT_EQ(vekVramReadLong(address + 2, &longItem), 0);
    EXPECT_EQ(longItem, 0x33445566U);
    EXPECT_EQ(vekVramWriteByte(address + 7, 0xff), 0);
    EXPECT_EQ(vekVramWriteWord(address, 0xeeee), 0);
    EXPECT_EQ(vekVramWriteLong(address + 2, 0xdddddddd), 0);
    EXPECT_EQ(vekVramReadQuad(address, &quad), 0);
    EXPECT_EQ(quad, 0xff22ddddddddeeeeU);
}

TEST_P(VideoMemory, IsAsLargeAsTheChipsAndNoLarger)
{
    EXPECT_EQ(vekVramWriteQuad(size() - 8, 0x0102030405060708), 0);
    uint8_t byte = 0;
    EXPECT_EQ(vekVramReadByte(size() - 1, &byte), 0);
    EXPECT_EQ(byte, 0x01);
    EXPECT_EQ(vekVramReadByte(size(), &byte), VEK_NO_RESPONSE);
    EXPECT_EQ(byte, 0xff);
    EXPECT_EQ(vekVramWriteByte(size(), 0), VEK_NO_RESPONSE);
    for (uint64_t over = 1; over < 8; ++over) {
        EXPECT_EQ(vekVramWriteQuad(size() - 8 + over, 0), VEK_NO_RESPONSE);
        uint64_t quad = 0;
        EXPECT_EQ(vekVramReadQuad(size() - 8 + over, &quad), VEK_NO_RESPONSE);
        EXPECT_EQ(quad, ~uint64_t{0});
    }
    uint64_t quad = 0;
    EXPECT_EQ(vekVramReadQuad(size() - 8, &quad), 0);
    EXPECT_EQ(quad, 0x0102030405060708U);
    EXPECT_EQ(vekVramReadQuad(~uint64_t{0} - 3, &quad), VEK_NO_RESPONSE);
    EXPECT_EQ(quad, ~uint64_t{0});
}

TEST_P(VideoMemory, CostsOnlyThePagesWritten)
{
    const long before = residentBytes();
    uint64_t quad = 1;
    for (uint64_t address = 0x10000000; address + 8 < size(); address += 0x10000000) {
        ASSERT_EQ(vekVramWriteByte(address, 1), 0);
        ASSERT_EQ(vekVramReadQuad(address + 0x100000, &quad), 0);
    }
    EXPECT_LT(residentBytes() - before, 4L << 20);
}

TEST_P(VideoMemory, ReadsZeroWhereNothingWasWritten)
{
    uint64_t quad = 1;
    EXPECT_EQ(vekVramReadQuad(size() - 0x123456, &quad), 0);
    EXPECT_EQ(quad, 0U);
}

TEST_P(VideoMemory, RefusesAReadIntoNothing)
{
    EXPECT_EQ(vekVramReadByte(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekVramReadWord(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekVramReadLong(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekVramReadQuad(0, nullptr), VEK_BAD_ARGUMENT);
}

}  // namespace
