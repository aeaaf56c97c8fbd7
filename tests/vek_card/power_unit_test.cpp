#include "card/power_unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "card/chip_facts.h"
#include "card/sensor_unit.h"
#include "drivers/power.h"
#include "drivers/sensors.h"
#include "fake_registers.h"
#include "test_clock.h"

namespace
{

using vek::ClockDriver;
using vek::ClockUnit;
using vek::Die;
using vek::PowerDriver;
using vek::PowerUnit;

constexpr double kAmbient = 25;
constexpr double kTimeConstant = 10;
constexpr std::uint64_t kLong = 1'000'000;

/// What the first chip takes with its firmware's clocks, in watts.
constexpr double kPerformance = 8 + 9 * 1.0 + 7 * 1.0 + 3 * 0.6;
constexpr double kSave = 6 + (0.80 * 0.80) / (0.90 * 0.90) * (9 * 0.5 + 7 * 0.5 + 3 * 0.3);
constexpr double kStandby = 3;

double settled(double watts, double duty)
{
    return kAmbient + watts * (2.0 - 1.2 * duty / 100);
}

double curve(double celsius)
{
    return std::clamp(20 + 80 * (celsius - 40) / 50, 20.0, 100.0);
}

class Power : public ::testing::Test
{
protected:
    double celsius(std::size_t site = 0) { return die.temperature(site); }

    double duty()
    {
        const auto [result, value] = power.read(vek::power_unit::kFanDuty, 4);
        EXPECT_EQ(result, VEK_OK);
        return static_cast<double>(value);
    }

    std::uint64_t readLong(std::uint64_t address)
    {
        const auto [result, value] = power.read(address, 4);
        EXPECT_EQ(result, VEK_OK);
        return value;
    }

    std::uint64_t megahertz(int domain)
    {
        vek::Rate rate{};
        EXPECT_EQ(ClockDriver(clocks).readRate(domain, rate), VEK_OK);
        return rate.megahertz();
    }

    void wait(std::uint64_t seconds) { clock.advanceMilliseconds(seconds * 1000); }

    TestClock clock;
    Die die{clock};
    ClockUnit clocks{vek::kQz201.clocks, die};
    PowerUnit power{clocks, die};
    PowerDriver driver{power};
};

TEST_F(Power, BeginsWithTheTemperatureSettled)
{
    const double start = celsius();
    EXPECT_NEAR(start, settled(kPerformance, curve(start)), 1e-6);
    wait(kLong);
    EXPECT_NEAR(celsius(), start, 1e-6);
    EXPECT_GT(start, 40);
    EXPECT_LT(start, 80);
}

TEST_F(Power, MovesTheTemperatureExponentially)
{
    ASSERT_EQ(driver.setFan(0), VEK_OK);
    const double start = celsius();
    const double end = settled(kPerformance, 0);
    for (int tenths = 1; tenths <= 600; ++tenths) {
        clock.advanceMilliseconds(100);
        ASSERT_NEAR(celsius(), end + (start - end) * std::exp(-tenths / 10.0 / kTimeConstant), 1e-6) << tenths;
    }
    wait(kLong);
    EXPECT_NEAR(celsius(), end, 1e-6);
}

TEST_F(Power, DoesNotCareHowOftenTheTemperatureIsRead)
{
    TestClock otherClock;
    Die otherDie{otherClock};
    ClockUnit otherClocks{vek::kQz201.clocks, otherDie};
    PowerUnit other{otherClocks, otherDie};
    const double start = celsius();
    ASSERT_EQ(driver.setFan(10), VEK_OK);
    ASSERT_EQ(PowerDriver(other).setFan(10), VEK_OK);
    for (int n = 0; n < 1000; ++n) {
        clock.advanceMilliseconds(7);
        celsius();
    }
    otherClock.advanceMilliseconds(7000);
    EXPECT_DOUBLE_EQ(celsius(), otherDie.temperature(0));
    EXPECT_GT(celsius(), start + 1);
}

TEST_F(Power, StaysBetweenTheStepsOfTheModel)
{
    ASSERT_EQ(driver.setFan(100), VEK_OK);
    const double start = celsius();
    clock.advanceNanoseconds(99'999'999);
    EXPECT_EQ(celsius(), start);
    clock.advanceNanoseconds(1);
    EXPECT_LT(celsius(), start);
}

TEST_F(Power, CoolsWithTheFan)
{
    double before = 1000;
    for (int rate = 0; rate <= 100; ++rate) {
        ASSERT_EQ(driver.setFan(rate), VEK_OK);
        EXPECT_EQ(duty(), rate);
        wait(kLong);
        EXPECT_NEAR(celsius(), settled(kPerformance, rate), 1e-6);
        EXPECT_LT(celsius(), before);
        before = celsius();
    }
}

TEST_F(Power, ReadsASecondSiteALittleCooler)
{
    ASSERT_EQ(driver.setFan(0), VEK_OK);
    wait(kLong);
    EXPECT_NEAR(celsius(1) - kAmbient, 0.92 * (celsius(0) - kAmbient), 1e-9);
}

TEST_F(Power, RegulatesTheFanBackToWhereItBegan)
{
    const double start = celsius();
    ASSERT_EQ(driver.setFan(100), VEK_OK);
    wait(kLong);
    EXPECT_LT(celsius(), start - 1);
    ASSERT_EQ(driver.setFan(-1), VEK_OK);
    EXPECT_NEAR(duty(), curve(celsius()), 0.51);
    wait(kLong);
    EXPECT_NEAR(celsius(), start, 1e-6);
    EXPECT_NEAR(duty(), curve(start), 0.51);
}

TEST_F(Power, TakesLessInEveryLowerState)
{
    ASSERT_EQ(driver.setFan(50), VEK_OK);
    for (const auto& [state, watts] : {std::pair{VEK_POWER_SAVE, kSave}, std::pair{VEK_POWER_STANDBY, kStandby},
                                       std::pair{VEK_POWER_PERFORMANCE, kPerformance}}) {
        ASSERT_EQ(driver.setState(state), VEK_OK);
        int read = -1;
        EXPECT_EQ(driver.readState(read), VEK_OK);
        EXPECT_EQ(read, state);
        wait(kLong);
        EXPECT_NEAR(celsius(), settled(watts, 50), 1e-6) << state;
    }
    EXPECT_LT(kStandby, kSave);
    EXPECT_LT(kSave, kPerformance);
}

TEST_F(Power, SlowsAndParksTheGraphicsCores)
{
    for (const auto& [state, core3d, core2d] :
         {std::tuple{VEK_POWER_SAVE, 500U, 300U}, std::tuple{VEK_POWER_STANDBY, 0U, 0U},
          std::tuple{VEK_POWER_PERFORMANCE, 1000U, 600U}}) {
        ASSERT_EQ(driver.setState(state), VEK_OK);
        EXPECT_EQ(megahertz(VEK_CLOCK_3D), core3d);
        EXPECT_EQ(megahertz(VEK_CLOCK_3D_SHADER), core3d);
        EXPECT_EQ(megahertz(VEK_CLOCK_2D), core2d);
        EXPECT_EQ(megahertz(VEK_CLOCK_AXI), 600U);
        EXPECT_EQ(megahertz(VEK_CLOCK_VPU), 500U);
        EXPECT_EQ(megahertz(VEK_CLOCK_DDR), 1200U);
    }
}

TEST_F(Power, LowersTheVoltages)
{
    const double drop = 0.0004;
    EXPECT_NEAR(die.voltage(0), 0.90 - drop * kPerformance, 1e-9);
    EXPECT_NEAR(die.voltage(1), 0.85 - drop * kPerformance, 1e-9);
    ASSERT_EQ(driver.setState(VEK_POWER_SAVE), VEK_OK);
    EXPECT_NEAR(die.voltage(0), 0.80 - drop * kSave, 1e-9);
    EXPECT_NEAR(die.voltage(1), 0.85 - drop * kSave, 1e-9);
    ASSERT_EQ(driver.setState(VEK_POWER_STANDBY), VEK_OK);
    EXPECT_NEAR(die.voltage(0), 0.65 - drop * kStandby, 1e-9);
    EXPECT_NEAR(die.voltage(1), 0.80 - drop * kStandby, 1e-9);
}

TEST_F(Power, WarmsUpWithTheClocks)
{
    ASSERT_EQ(driver.setFan(30), VEK_OK);
    wait(kLong);
    const double before = celsius();
    const vek::PllSearch search(vek::kCrystalKhz, 2'000'000);
    ASSERT_EQ(ClockDriver(clocks).setPll(VEK_CLOCK_3D, vek::encodePll(search.dividers())), VEK_OK);
    EXPECT_EQ(celsius(), before);
    wait(10);
    const double after = settled(kPerformance + 9, 30);
    EXPECT_NEAR(celsius(), after + (before - after) * std::exp(-1), 1e-6);
    ASSERT_EQ(ClockDriver(clocks).setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    wait(kLong);
    EXPECT_NEAR(celsius(), settled(kPerformance - 9, 30), 1e-6);
}

TEST_F(Power, CountsEveryChangeFromItsOwnMoment)
{
    ASSERT_EQ(driver.setFan(30), VEK_OK);
    wait(kLong);
    double expected = settled(kPerformance, 30);
    ASSERT_NEAR(celsius(), expected, 1e-6);
    const auto pass = [&](std::uint64_t seconds, double target) {
        wait(seconds);
        expected = target + (expected - target) * std::exp(-static_cast<double>(seconds) / kTimeConstant);
    };
    ASSERT_EQ(ClockDriver(clocks).setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    pass(7, settled(kPerformance - 9, 30));
    ASSERT_EQ(ClockDriver(clocks).setMode(VEK_CLOCK_ON, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    pass(3, settled(kPerformance, 30));
    ASSERT_EQ(driver.setState(VEK_POWER_STANDBY), VEK_OK);
    pass(5, settled(kStandby, 30));
    ASSERT_EQ(driver.setFan(80), VEK_OK);
    pass(2, settled(kStandby, 80));
    ASSERT_EQ(driver.setState(VEK_POWER_SAVE), VEK_OK);
    pass(4, settled(kSave, 80));
    EXPECT_NEAR(celsius(), expected, 1e-6);
}

TEST_F(Power, FeedsASimulatedTemperatureToTheRegulationOnly)
{
    const double start = celsius();
    const double startDuty = duty();
    for (const auto& [simulated, expected] : {std::pair{90'000, 100}, std::pair{150'000, 100}, std::pair{65'000, 60},
                                              std::pair{40'000, 20}, std::pair{0, 20}, std::pair{-40'000, 20}}) {
        ASSERT_EQ(driver.simulate(simulated), VEK_OK);
        EXPECT_EQ(duty(), expected) << simulated;
        wait(kLong);
        EXPECT_NEAR(celsius(), settled(kPerformance, expected), 1e-6) << simulated;
    }
    ASSERT_EQ(driver.simulate(90'000), VEK_OK);
    ASSERT_EQ(driver.setFan(33), VEK_OK);
    EXPECT_EQ(duty(), 33);
    ASSERT_EQ(driver.setFan(-1), VEK_OK);
    EXPECT_EQ(duty(), 100);
    ASSERT_EQ(driver.simulate(-1), VEK_OK);
    wait(kLong);
    EXPECT_NEAR(celsius(), start, 1e-6);
    EXPECT_EQ(duty(), startDuty);
}

TEST_F(Power, KeepsEverythingWhenANumberIsOutOfItsRange)
{
    ASSERT_EQ(driver.setState(VEK_POWER_SAVE), VEK_OK);
    ASSERT_EQ(driver.setFan(44), VEK_OK);
    ASSERT_EQ(driver.simulate(55'000), VEK_OK);
    for (const int state : {-0x7fffffff - 1, -1, 3, 4, 256, 0x7fffffff}) {
        EXPECT_EQ(driver.setState(state), VEK_BAD_ARGUMENT) << state;
    }
    for (const int rate : {-0x7fffffff - 1, -2, 101, 255, 256, 0x7fffffff}) {
        EXPECT_EQ(driver.setFan(rate), VEK_BAD_ARGUMENT) << rate;
    }
    for (const int temperature : {-0x7fffffff - 1, -40'001, 150'001, 0x7fffffff}) {
        EXPECT_EQ(driver.simulate(temperature), VEK_BAD_ARGUMENT) << temperature;
    }
    int state = -1;
    EXPECT_EQ(driver.readState(state), VEK_OK);
    EXPECT_EQ(state, VEK_POWER_SAVE);
    EXPECT_EQ(duty(), 44);
    ASSERT_EQ(driver.setFan(-1), VEK_OK);
    EXPECT_EQ(duty(), 44);  // which happens to be the curve's duty for 55 degrees
}

TEST_F(Power, HasRegistersOfLongs)
{
    for (const auto& [address, width] : std::vector<std::pair<std::uint64_t, unsigned>>{
             {0, 1}, {0, 2}, {0, 8}, {1, 4}, {2, 4}, {0x100, 4}, {~0ULL - 3, 4}}) {
        EXPECT_EQ(power.read(address, width).result, VEK_NO_RESPONSE) << address;
        EXPECT_EQ(power.write(address, width, 1), VEK_NO_RESPONSE) << address;
    }
    for (const std::uint64_t address : {0x014U, 0x0fcU}) {
        EXPECT_EQ(power.write(address, 4, 0xffff'ffff), VEK_OK);
        EXPECT_EQ(readLong(address), 0U);
    }
    ASSERT_EQ(power.write(0x000, 4, 1), VEK_OK);
    ASSERT_EQ(power.write(0x000, 4, 3), VEK_OK);
    EXPECT_EQ(readLong(0x000), 1U);
    ASSERT_EQ(power.write(0x004, 4, 0xffff'ffff), VEK_OK);
    EXPECT_EQ(readLong(0x004), 0x164U);
    ASSERT_EQ(power.write(0x008, 4, 3), VEK_OK);
    EXPECT_EQ(readLong(0x008), 100U);
    ASSERT_EQ(power.write(0x00c, 4, 0xffff'ffff), VEK_OK);
    EXPECT_EQ(readLong(0x00c), 1U);
    ASSERT_EQ(power.write(0x010, 4, 0xffff'8ad0), VEK_OK);
    EXPECT_EQ(readLong(0x010), 0xffff'8ad0U);
    ASSERT_EQ(power.write(0x004, 4, 0), VEK_OK);
    EXPECT_EQ(duty(), 20);
}

TEST(PowerDriver, PassesOnThatARegisterFails)
{
    FakeRegisters registers;
    registers.failing = {0x000, 0x004, 0x00c, 0x010};
    PowerDriver driver(registers);
    int state = 7;
    EXPECT_EQ(driver.readState(state), VEK_IO_ERROR);
    EXPECT_EQ(state, 7);
    EXPECT_EQ(driver.setState(1), VEK_IO_ERROR);
    EXPECT_EQ(driver.setFan(1), VEK_IO_ERROR);
    EXPECT_EQ(driver.setFan(-1), VEK_IO_ERROR);
    EXPECT_EQ(driver.simulate(1), VEK_IO_ERROR);
    EXPECT_EQ(driver.simulate(-1), VEK_IO_ERROR);
    registers.failing = {0x00c};
    EXPECT_EQ(driver.simulate(1), VEK_IO_ERROR);
}

TEST(PowerDriver, TakesNoStateThatThereIsNot)
{
    FakeRegisters registers;
    PowerDriver driver(registers);
    for (const std::uint32_t value : {3U, 4U, 0xffff'ffffU}) {
        registers.longs[0x000] = value;
        int state = 7;
        EXPECT_EQ(driver.readState(state), VEK_BAD_DATA);
        EXPECT_EQ(state, 7);
    }
}

}  // namespace
