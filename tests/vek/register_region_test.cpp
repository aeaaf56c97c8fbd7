#include <gtest/gtest.h>

#include <cstdint>

#include "open_card.h"
#include "vek.h"

namespace
{

constexpr uint64_t kSize = 0x1000000;
constexpr uint64_t kAmbaBase = 0x1000000;
constexpr uint64_t kBoardRam = 0x20000000;
constexpr uint64_t kVideoWindow = 0x40000000;

class RegisterRegion : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, RegisterRegion, testing::Values(0, 1));

TEST_P(RegisterRegion, KeepsItemsOfEveryWidth)
{
    uint8_t byte = 0;
    uint16_t word = 0;
    uint32_t longItem = 0;
    uint64_t quad = 0;
    EXPECT_EQ(vekRegWriteByte(0x10, 0xa1), 0);
    EXPECT_EQ(vekRegReadByte(0x10, &byte), 0);
    EXPECT_EQ(byte, 0xa1);
    EXPECT_EQ(vekRegWriteWord(0x20, 0xb1b2), 0);
    EXPECT_EQ(vekRegReadWord(0x20, &word), 0);
    EXPECT_EQ(word, 0xb1b2);
    EXPECT_EQ(vekRegWriteLong(0x30, 0xc1c2c3c4), 0);
    EXPECT_EQ(vekRegReadLong(0x30, &longItem), 0);
    EXPECT_EQ(longItem, 0xc1c2c3c4U);
    EXPECT_EQ(vekRegWriteQuad(0x40, 0xd1d2d3d4d5d6d7d8), 0);
    EXPECT_EQ(vekRegReadQuad(0x40, &quad), 0);
    EXPECT_EQ(quad, 0xd1d2d3d4d5d6d7d8U);
}

TEST_P(RegisterRegion, IsLittleEndianAtAnyAlignment)
{
    for (uint64_t start = 0x1000; start < 0x1010; ++start) {
        ASSERT_EQ(vekRegWriteQuad(start, 0x8877665544332211), 0);
        for (unsigned index = 0; index < 8; ++index) {
            uint8_t byte = 0;
            ASSERT_EQ(vekRegReadByte(start + index, &byte), 0);
            EXPECT_EQ(byte, 0x11 * (index + 1)) << "at " << start << " + " << index;
        }
        uint16_t word = 0;
        uint32_t longItem = 0;
        EXPECT_EQ(vekRegReadWord(start + 3, &word), 0);
        EXPECT_EQ(word, 0x5544);
        EXPECT_EQ(vekRegReadLong(start + 1, &longItem), 0);
        EXPECT_EQ(longItem, 0x55443322U);
        EXPECT_EQ(vekRegWriteWord(start + 5, 0xabcd), 0);
        uint64_t quad = 0;
        EXPECT_EQ(vekRegReadQuad(start, &quad), 0);
        EXPECT_EQ(quad, 0x88abcd5544332211U) << "a narrow write leaves its neighbours";
    }
}

TEST_P(RegisterRegion, ReadsZeroWhereNothingWasWritten)
{
    uint64_t quad = 1;
    EXPECT_EQ(vekRegReadQuad(0x5a5a58, &quad), 0);
    EXPECT_EQ(quad, 0U);
}

TEST_P(RegisterRegion, ReachesToItsLastByte)
{
    EXPECT_EQ(vekRegWriteQuad(kSize - 8, 0x0102030405060708), 0);
    uint8_t byte = 0;
    uint16_t word = 0;
    uint32_t longItem = 0;
    EXPECT_EQ(vekRegReadByte(kSize - 1, &byte), 0);
    EXPECT_EQ(byte, 0x01);
    EXPECT_EQ(vekRegReadWord(kSize - 2, &word), 0);
    EXPECT_EQ(word, 0x0102);
    EXPECT_EQ(vekRegReadLong(kSize - 4, &longItem), 0);
    EXPECT_EQ(longItem, 0x01020304U);
}

TEST_P(RegisterRegion, AnswersNothingOutside)
{
    for (const uint64_t address : {kSize, kSize + 0x1000, uint64_t{1} << 32, ~uint64_t{0}, ~uint64_t{0} - 7}) {
        uint8_t byte = 0;
        uint16_t word = 0;
        uint32_t longItem = 0;
        uint64_t quad = 0;
        EXPECT_EQ(vekRegReadByte(address, &byte), VEK_NO_RESPONSE);
        EXPECT_EQ(byte, 0xff);
        EXPECT_EQ(vekRegReadWord(address, &word), VEK_NO_RESPONSE);
        EXPECT_EQ(word, 0xffff);
        EXPECT_EQ(vekRegReadLong(address, &longItem), VEK_NO_RESPONSE);
        EXPECT_EQ(longItem, 0xffffffffU);
        EXPECT_EQ(vekRegReadQuad(address, &quad), VEK_NO_RESPONSE);
        EXPECT_EQ(quad, ~uint64_t{0});
        EXPECT_EQ(vekRegWriteByte(address, 1), VEK_NO_RESPONSE);
        EXPECT_EQ(vekRegWriteWord(address, 1), VEK_NO_RESPONSE);
        EXPECT_EQ(vekRegWriteLong(address, 1), VEK_NO_RESPONSE);
        EXPECT_EQ(vekRegWriteQuad(address, 1), VEK_NO_RESPONSE);
    }
}

TEST_P(RegisterRegion, RefusesAnItemAcrossItsEndWhole)
{
    ASSERT_EQ(vekRegWriteQuad(kSize - 8, 0x5555555555555555), 0);
    EXPECT_EQ(vekRegWriteWord(kSize - 1, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(vekRegWriteLong(kSize - 3, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(vekRegWriteQuad(kSize - 7, 0), VEK_NO_RESPONSE);
    uint64_t quad = 0;
    EXPECT_EQ(vekRegReadQuad(kSize - 8, &quad), 0);
    EXPECT_EQ(quad, 0x5555555555555555U);
    uint32_t longItem = 0;
    EXPECT_EQ(vekRegReadLong(kSize - 2, &longItem), VEK_NO_RESPONSE);
    EXPECT_EQ(longItem, 0xffffffffU);
}

TEST_P(RegisterRegion, RefusesAReadIntoNothing)
{
    EXPECT_EQ(vekRegReadByte(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRegReadWord(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRegReadLong(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRegReadQuad(0, nullptr), VEK_BAD_ARGUMENT);
}

class Amba : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, Amba, testing::Values(0, 1));

TEST_P(Amba, CarriesTheRegisterRegion)
{
    uint64_t quad = 0;
    EXPECT_EQ(vekRegWriteQuad(0x2001, 0x1122334455667788), 0);
    EXPECT_EQ(vekAmbaReadQuad(kAmbaBase + 0x2001, &quad), 0);
    EXPECT_EQ(quad, 0x1122334455667788U);
    uint16_t word = 0;
    EXPECT_EQ(vekAmbaWriteWord(kAmbaBase + 0x2003, 0xface), 0);
    EXPECT_EQ(vekRegReadWord(0x2003, &word), 0);
    EXPECT_EQ(word, 0xface);
    uint8_t byte = 0;
    EXPECT_EQ(vekAmbaWriteByte(kAmbaBase + kSize - 1, 0x77), 0);
    EXPECT_EQ(vekRegReadByte(kSize - 1, &byte), 0);
    EXPECT_EQ(byte, 0x77);
    EXPECT_EQ(vekAmbaReadByte(kAmbaBase + kSize - 1, &byte), 0);
    EXPECT_EQ(byte, 0x77);
}

TEST_P(Amba, CarriesTheFirstGibibyteOfVideoMemory)
{
    uint32_t longItem = 0;
    EXPECT_EQ(vekVramWriteLong(0x123456, 0xdecade01), 0);
    EXPECT_EQ(vekAmbaReadLong(kVideoWindow + 0x123456, &longItem), 0);
    EXPECT_EQ(longItem, 0xdecade01U);
    EXPECT_EQ(vekAmbaWriteLong(kVideoWindow + 0x3ffffffc, 0xdecade02), 0);
    EXPECT_EQ(vekVramReadLong(0x3ffffffc, &longItem), 0);
    EXPECT_EQ(longItem, 0xdecade02U);
    EXPECT_EQ(vekAmbaReadLong(kVideoWindow + 0x3ffffffd, &longItem), VEK_NO_RESPONSE);
    EXPECT_EQ(longItem, 0xffffffffU);
    EXPECT_EQ(vekAmbaWriteByte(kVideoWindow + 0x40000000, 1), VEK_NO_RESPONSE);
}

TEST_P(Amba, HasABoardRam)
{
    uint64_t quad = 0;
    EXPECT_EQ(vekAmbaWriteQuad(kBoardRam, 0x0123456789abcdef), 0);
    EXPECT_EQ(vekAmbaReadQuad(kBoardRam, &quad), 0);
    EXPECT_EQ(quad, 0x0123456789abcdefU);
    EXPECT_EQ(vekAmbaWriteByte(kBoardRam + 0xfffff, 0x42), 0);
    uint16_t word = 0;
    EXPECT_EQ(vekAmbaReadWord(kBoardRam + 0xfffff, &word), VEK_NO_RESPONSE);
    EXPECT_EQ(word, 0xffff);
}

TEST_P(Amba, AnswersNothingBetweenItsWindows)
{
    for (const uint64_t address : {uint64_t{0}, kAmbaBase - 1, kAmbaBase + kSize, kBoardRam - 1, kBoardRam + 0x100000,
                                   kVideoWindow - 1, kVideoWindow + 0x40000000, ~uint64_t{0}}) {
        uint8_t byte = 0;
        EXPECT_EQ(vekAmbaReadByte(address, &byte), VEK_NO_RESPONSE) << std::hex << address;
        EXPECT_EQ(byte, 0xff);
        EXPECT_EQ(vekAmbaWriteByte(address, 1), VEK_NO_RESPONSE) << std::hex << address;
    }
}

TEST_P(Amba, RefusesAnItemAcrossAWindowsEdge)
{
    ASSERT_EQ(vekRegWriteLong(0, 0x99999999), 0);
    uint64_t quad = 0;
    EXPECT_EQ(vekAmbaReadQuad(kAmbaBase - 4, &quad), VEK_NO_RESPONSE);
    EXPECT_EQ(quad, ~uint64_t{0});
    EXPECT_EQ(vekAmbaWriteQuad(kAmbaBase - 4, 0), VEK_NO_RESPONSE);
    uint32_t longItem = 0;
    EXPECT_EQ(vekRegReadLong(0, &longItem), 0);
    EXPECT_EQ(longItem, 0x99999999U);
    EXPECT_EQ(vekAmbaReadQuad(~uint64_t{0} - 3, &quad), VEK_NO_RESPONSE);
    EXPECT_EQ(quad, ~uint64_t{0});
}

}  // namespace
