#include <gtest/gtest.h>

#include <cstdint>

#include "open_card.h"
#include "vek.h"

namespace
{

constexpr int kEdp = 1;
constexpr uint32_t kEdpConfigurationSet = 0x10a;
constexpr int kLowest = -0x7fffffff - 1;

uint8_t edpConfiguration()
{
    uint8_t value = 0xee;
    EXPECT_EQ(vekDpAuxRead(kEdp, kEdpConfigurationSet, &value), VEK_OK);
    return value;
}

class Edp : public FirstCard
{
};

TEST_F(Edp, TakesAFrequencyWithinItsRange)
{
    for (const int hz : {200, 1000, 2000, 1'000'000}) {
        EXPECT_EQ(vekEdpPwmSet(hz), VEK_OK) << hz;
        EXPECT_EQ(vekEdpEnablePwm(), VEK_OK);
    }
    for (const int hz : {kLowest, -1, 0, 199, 1'000'001, 0x7fffffff}) {
        EXPECT_EQ(vekEdpPwmSet(hz), VEK_BAD_ARGUMENT) << hz;
    }
}

TEST_F(Edp, TakesABrightnessWithinItsRange)
{
    for (const int percent : {0, 1, 50, 99, 100}) {
        EXPECT_EQ(vekEdpLightSet(percent), VEK_OK) << percent;
        EXPECT_EQ(vekEdpEnablePwm(), VEK_OK);
    }
    for (const int percent : {kLowest, -1, 101, 200, 0x7fffffff}) {
        EXPECT_EQ(vekEdpLightSet(percent), VEK_BAD_ARGUMENT) << percent;
    }
}

TEST_F(Edp, SwitchesThePanelsSelfTest)
{
    ASSERT_EQ(vekDpAuxWrite(kEdp, kEdpConfigurationSet, 0x01), VEK_OK);
    EXPECT_EQ(vekEdpSelfTestSet(kEdp, 1), VEK_OK);
    EXPECT_EQ(edpConfiguration(), 0x81);
    for (const int state : {2, 3, 0x80, 0xff}) {
        EXPECT_EQ(vekEdpSelfTestSet(kEdp, static_cast<uint8_t>(state)), VEK_BAD_ARGUMENT);
        EXPECT_EQ(edpConfiguration(), 0x81);
    }
    EXPECT_EQ(vekEdpSelfTestSet(kEdp, 0), VEK_OK);
    EXPECT_EQ(edpConfiguration(), 0x01);
    EXPECT_EQ(vekEdpSelfTestSet(kEdp, 0), VEK_OK);
    ASSERT_EQ(vekDpAuxWrite(kEdp, kEdpConfigurationSet, 0x00), VEK_OK);
}

TEST_F(Edp, HasNoSelfTestOnAMonitor)
{
    EXPECT_EQ(vekEdpSelfTestSet(0, 0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpSelfTestSet(0, 1), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpSelfTestSet(0, 2), VEK_BAD_ARGUMENT);
    for (const int channel : {kLowest, -1, 2, 0x7fffffff}) {
        EXPECT_EQ(vekEdpSelfTestSet(channel, 1), VEK_BAD_ARGUMENT);
    }
}

TEST(EdpOfTheOtherChip, IsNotThere)
{
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_EQ(vekEdpPwmSet(1000), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpLightSet(50), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpEnablePwm(), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpSelfTestSet(0, 1), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpSelfTestSet(1, 1), VEK_BAD_ARGUMENT);
    vekClose();
}

}  // namespace
