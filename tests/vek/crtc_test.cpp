#include <gtest/gtest.h>

#include <cstdint>

#include "open_card.h"
#include "vek.h"

namespace
{

class Crtc : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, Crtc, testing::Values(0, 1));

TEST_P(Crtc, KeepsItsByteRegistersApart)
{
    EXPECT_EQ(vekCrtcWriteByte(0, 0x11), 0);
    EXPECT_EQ(vekCrtcWriteByte(1, 0x22), 0);
    EXPECT_EQ(vekCrtcWriteByte(0xfff, 0x33), 0);
    uint8_t value = 0;
    EXPECT_EQ(vekCrtcReadByte(0, &value), 0);
    EXPECT_EQ(value, 0x11);
    EXPECT_EQ(vekCrtcReadByte(1, &value), 0);
    EXPECT_EQ(value, 0x22);
    EXPECT_EQ(vekCrtcReadByte(0xfff, &value), 0);
    EXPECT_EQ(value, 0x33);
}

TEST_P(Crtc, AnswersNothingPastTheLastRegister)
{
    for (const uint32_t index : {0x1000U, 0x80000000U, 0xffffffffU}) {
        uint8_t value = 0;
        EXPECT_EQ(vekCrtcReadByte(index, &value), VEK_NO_RESPONSE);
        EXPECT_EQ(value, 0xff);
        EXPECT_EQ(vekCrtcWriteByte(index, 1), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(vekCrtcReadByte(0, nullptr), VEK_BAD_ARGUMENT);
}

TEST_P(Crtc, IsNoPartOfTheRegisterRegion)
{
    ASSERT_EQ(vekRegWriteByte(0x40, 0x55), 0);
    ASSERT_EQ(vekCrtcWriteByte(0x40, 0x66), 0);
    uint8_t value = 0;
    EXPECT_EQ(vekRegReadByte(0x40, &value), 0);
    EXPECT_EQ(value, 0x55);
}

}  // namespace
