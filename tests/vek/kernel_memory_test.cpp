#include <gtest/gtest.h>

#include <cstdint>

#include "open_card.h"
#include "resident_memory.h"
#include "vek.h"

namespace
{

constexpr uint64_t kFirst = 0xffff800000000000;
constexpr uint64_t kPage = 0x1000;

using KernelMemory = FirstCard;

TEST_F(KernelMemory, KeepsItemsOfEveryWidthAtSixtyFourBitAddresses)
{
    const uint64_t address = 0xffff888000001001;
    EXPECT_EQ(vekKmemWriteQuad(address, 0x1122334455667788), 0);
    uint8_t byte = 0;
    uint16_t word = 0;
    uint32_t longItem = 0;
    uint64_t quad = 0;
    EXPECT_EQ(vekKmemReadByte(address + 7, &byte), 0);
    EXPECT_EQ(byte, 0x11);
    EXPECT_EQ(vekKmemReadWord(address, &word), 0);
    EXPECT_EQ(word, 0x7788);
    EXPECT_EQ(vekKmemReadLong(address + 1, &longItem), 0);
    EXPECT_EQ(longItem, 0x44556677U);
    EXPECT_EQ(vekKmemReadQuad(address, &quad), 0);
    EXPECT_EQ(quad, 0x1122334455667788U);
    EXPECT_EQ(vekKmemWriteByte(address, 0), 0);
    EXPECT_EQ(vekKmemWriteWord(address + 1, 0), 0);
    EXPECT_EQ(vekKmemWriteLong(address + 3, 0), 0);
    EXPECT_EQ(vekKmemReadQuad(address, &quad), 0);
    EXPECT_EQ(quad, 0x1100000000000000U);
}

TEST_F(KernelMemory, ReadsZeroWhereNothingWasWritten)
{
    uint64_t quad = 1;
    EXPECT_EQ(vekKmemReadQuad(0xffffc90000000000, &quad), 0);
    EXPECT_EQ(quad, 0U);
    quad = 1;
    EXPECT_EQ(vekKmemReadQuad(0xffffc90000000ffc, &quad), 0);
    EXPECT_EQ(quad, 0U);
}

TEST_F(KernelMemory, KeepsFarPagesApart)
{
    for (uint64_t index = 0; index < 2000; ++index) {
        ASSERT_EQ(vekKmemWriteQuad(kFirst + index * 0x1000000000, index + 1), 0);
    }
    for (uint64_t index = 0; index < 2000; ++index) {
        uint64_t quad = 0;
        ASSERT_EQ(vekKmemReadQuad(kFirst + index * 0x1000000000, &quad), 0);
        ASSERT_EQ(quad, index + 1);
    }
}

TEST_F(KernelMemory, ServesItemsAcrossAPageBoundary)
{
    for (uint64_t over = 1; over < 8; ++over) {
        const uint64_t address = 0xffff900000000000 + over * 16 * kPage - over;
        ASSERT_EQ(vekKmemWriteQuad(address, 0x8877665544332211), 0);
        uint64_t quad = 0;
        EXPECT_EQ(vekKmemReadQuad(address, &quad), 0);
        EXPECT_EQ(quad, 0x8877665544332211U);
        uint8_t byte = 0;
        EXPECT_EQ(vekKmemReadByte(address + over - 1, &byte), 0);
        EXPECT_EQ(byte, 0x11 * over);
        EXPECT_EQ(vekKmemReadByte(address + over, &byte), 0);
        EXPECT_EQ(byte, 0x11 * (over + 1));
    }
    // Only the first of the two pages was ever written.
    ASSERT_EQ(vekKmemWriteByte(0xffffa00000000fff, 0xee), 0);
    uint32_t longItem = 1;
    EXPECT_EQ(vekKmemReadLong(0xffffa00000000fff, &longItem), 0);
    EXPECT_EQ(longItem, 0xeeU);
}

TEST_F(KernelMemory, AnswersNothingBelowTheKernelHalf)
{
    for (const uint64_t address : {uint64_t{0}, uint64_t{0x7fffffffffff}, uint64_t{0x800000000000}, kFirst - 1}) {
        uint64_t quad = 0;
        EXPECT_EQ(vekKmemReadQuad(address, &quad), VEK_NO_RESPONSE) << std::hex << address;
        EXPECT_EQ(quad, ~uint64_t{0});
        EXPECT_EQ(vekKmemWriteQuad(address, 0), VEK_NO_RESPONSE) << std::hex << address;
    }
    uint8_t byte = 1;
    EXPECT_EQ(vekKmemReadByte(kFirst, &byte), 0);
    EXPECT_EQ(vekKmemReadByte(0, nullptr), VEK_BAD_ARGUMENT);
}

TEST_F(KernelMemory, RefusesAnItemThatWrapsRound)
{
    EXPECT_EQ(vekKmemWriteQuad(0xfffffffffffffff8, 0x0123456789abcdef), 0);
    uint64_t quad = 0;
    EXPECT_EQ(vekKmemReadQuad(0xfffffffffffffff8, &quad), 0);
    EXPECT_EQ(quad, 0x0123456789abcdefU);
    for (uint64_t address = 0xfffffffffffffff9; address != 0; ++address) {
        EXPECT_EQ(vekKmemReadQuad(address, &quad), VEK_NO_RESPONSE);
        EXPECT_EQ(quad, ~uint64_t{0});
        EXPECT_EQ(vekKmemWriteQuad(address, 0), VEK_NO_RESPONSE);
    }
    uint8_t byte = 0;
    EXPECT_EQ(vekKmemReadByte(0xffffffffffffffff, &byte), 0);
    EXPECT_EQ(byte, 0x01);
}

TEST_F(KernelMemory, BelongsToTheHostNotToACard)
{
    ASSERT_EQ(vekKmemWriteLong(0xffffb00000000000, 0x600d), 0);
    ASSERT_GE(vekRwOpen(1), 0);
    uint32_t longItem = 0;
    EXPECT_EQ(vekKmemReadLong(0xffffb00000000000, &longItem), 0);
    EXPECT_EQ(longItem, 0x600dU);
}

TEST_F(KernelMemory, CostsOnlyThePagesWritten)
{
    const long before = residentBytes();
    for (uint64_t index = 0; index < 16; ++index) {
        ASSERT_EQ(vekKmemWriteByte(0xffffd00000000000 + (index << 36), 1), 0);
    }
    uint64_t quad = 0;
    for (uint64_t index = 0; index < 100000; ++index) {
        ASSERT_EQ(vekKmemReadQuad(0xffffe00000000000 + index * kPage, &quad), 0);
    }
    EXPECT_LT(residentBytes() - before, 4L << 20);
}

TEST_F(KernelMemory, FailsWritesWhenItsGibibyteIsUsedUp)
{
    const uint64_t start = 0xffff8a0000000000;
    uint64_t page = 0;
    int result = 0;
    while (result == 0 && page <= 0x40000) {
        result = vekKmemWriteByte(start + page * kPage, 0x5a);
        ++page;
    }
    EXPECT_EQ(result, VEK_NO_MEMORY);
    EXPECT_LE(page, 0x40001U);
    const uint64_t refused = start + (page - 1) * kPage;
    uint64_t quad = 1;
    EXPECT_EQ(vekKmemReadQuad(refused, &quad), 0);
    EXPECT_EQ(quad, 0U);
    // Half of the item would fit on a page that is there; none of it may be written.
    EXPECT_EQ(vekKmemWriteQuad(refused - 4, ~uint64_t{0}), VEK_NO_MEMORY);
    uint32_t longItem = 1;
    EXPECT_EQ(vekKmemReadLong(refused - 4, &longItem), 0);
    EXPECT_EQ(longItem, 0U);
    EXPECT_EQ(vekKmemWriteByte(start, 0xa5), 0) << "a page that is there stays writable";
}

}  // namespace
