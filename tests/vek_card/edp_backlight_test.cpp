#include "card/edp_backlight.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "drivers/edp_panel.h"
#include "vek.h"

namespace
{

using vek::EdpBacklight;
using vek::EdpBacklightDriver;
namespace bl = vek::edp_backlight;

class Backlight : public testing::Test
{
protected:
    std::uint64_t at(std::uint64_t address)
    {
        const auto [result, value] = registers.read(address, 4);
        EXPECT_EQ(result, VEK_OK);
        return value;
    }

    void expectInEffect(std::uint64_t period, std::uint64_t duty)
    {
        EXPECT_EQ(at(bl::kPeriodNow), period);
        EXPECT_EQ(at(bl::kDutyNow), duty);
    }

    EdpBacklight registers;
    EdpBacklightDriver driver{registers};
};

TEST_F(Backlight, IsOffUntilItIsEnabled)
{
    expectInEffect(0, 0);
    EXPECT_EQ(driver.apply(), VEK_OK);
    expectInEffect(27000, 27000);
    EXPECT_EQ(at(bl::kControl), bl::kControlEnable);
}

TEST_F(Backlight, ChangesWithTheNextEnablingOnly)
{
    ASSERT_EQ(driver.apply(), VEK_OK);
    EXPECT_EQ(driver.wantFrequency(2000), VEK_OK);
    EXPECT_EQ(driver.wantBrightness(50), VEK_OK);
    expectInEffect(27000, 27000);
    EXPECT_EQ(driver.apply(), VEK_OK);
    expectInEffect(13500, 6750);
}

TEST_F(Backlight, RoundsToClocks)
{
    const struct {
        int hz;
        int percent;
        std::uint64_t period;
        std::uint64_t duty;
    } cases[] = {{200, 0, 135000, 0},   {200, 100, 135000, 135000}, {1'000'000, 50, 27, 14}, {1'000'000, 1, 27, 0},
                 {1'000'000, 2, 27, 1}, {7000, 33, 3857, 1273},     {999'999, 100, 27, 27}};
    for (const auto& [hz, percent, period, duty] : cases) {
        EXPECT_EQ(driver.wantBrightness(percent), VEK_OK);
        EXPECT_EQ(driver.wantFrequency(hz), VEK_OK);
        EXPECT_EQ(driver.apply(), VEK_OK);
        expectInEffect(period, duty);
    }
}

TEST_F(Backlight, KeepsWhatItHasWhenANumberIsOutOfRange)
{
    ASSERT_EQ(driver.wantFrequency(500), VEK_OK);
    ASSERT_EQ(driver.wantBrightness(25), VEK_OK);
    for (const int hz : {-0x7fffffff - 1, -1, 0, 199, 1'000'001, 0x7fffffff}) {
        EXPECT_EQ(driver.wantFrequency(hz), VEK_BAD_ARGUMENT);
    }
    for (const int percent : {-0x7fffffff - 1, -1, 101, 0x7fffffff}) {
        EXPECT_EQ(driver.wantBrightness(percent), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(driver.apply(), VEK_OK);
    expectInEffect(54000, 13500);
}

TEST_F(Backlight, DoesNotComputeWithGarbage)
{
    for (const std::uint32_t hz : {0U, 199U, 0xffffffffU}) {
        ASSERT_EQ(registers.write(bl::kFrequencyWanted, 4, hz), VEK_OK);
        EXPECT_EQ(driver.apply(), VEK_BAD_DATA);
    }
    ASSERT_EQ(driver.wantFrequency(500), VEK_OK);
    ASSERT_EQ(registers.write(bl::kBrightnessWanted, 4, 101), VEK_OK);
    EXPECT_EQ(driver.apply(), VEK_BAD_DATA);
    expectInEffect(0, 0);
}

TEST_F(Backlight, IsSwitchedOffByItsControlRegister)
{
    ASSERT_EQ(driver.apply(), VEK_OK);
    EXPECT_EQ(registers.write(bl::kControl, 4, bl::kControlApply), VEK_OK);
    expectInEffect(0, 0);
    EXPECT_EQ(at(bl::kControl), 0U);
    // A duty longer than the period is on all the time.
    ASSERT_EQ(registers.write(bl::kPeriod, 4, 100), VEK_OK);
    ASSERT_EQ(registers.write(bl::kDuty, 4, 200), VEK_OK);
    ASSERT_EQ(registers.write(bl::kControl, 4, bl::kControlEnable | bl::kControlApply), VEK_OK);
    expectInEffect(100, 100);
}

TEST_F(Backlight, AnswersAtItsRegistersOnly)
{
    for (const std::uint64_t address : {bl::kId, bl::kPeriodNow, bl::kDutyNow}) {
        const std::uint64_t before = at(address);
        EXPECT_EQ(registers.write(address, 4, 0x55), VEK_PROTECTED);
        EXPECT_EQ(at(address), before);
    }
    for (const std::uint64_t address : {0x01U, 0x02U, 0x1eU, 0x20U, 0xfffffffcU}) {
        EXPECT_EQ(registers.read(address, 4).result, VEK_NO_RESPONSE);
        EXPECT_EQ(registers.write(address, 4, 1), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(registers.read(bl::kPeriod, 2).result, VEK_NO_RESPONSE);
    EXPECT_EQ(registers.write(bl::kPeriod, 8, 1), VEK_NO_RESPONSE);
}

}  // namespace
