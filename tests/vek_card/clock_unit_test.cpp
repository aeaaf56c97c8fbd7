#include "card/clock_unit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "card/chip_facts.h"
#include "fake_registers.h"
#include "test_clock.h"

namespace
{

using vek::ClockDriver;
using vek::ClockUnit;
using vek::Die;
using vek::FirmwareClocks;
using vek::PllSearch;

using Frequencies = std::map<int, std::uint64_t>;

const std::vector<int> kDomains = {0, 2, 3, 4, 5, 6, 7, 8};
const std::vector<int> kStrangers = {-0x7fffffff - 1, -1, 1, 9, 64, 0x7fffffff};

std::uint32_t settingFor(std::uint64_t megahertz)
{
    const PllSearch search(vek::kCrystalKhz, megahertz * 1000);
    EXPECT_TRUE(search.found());
    return vek::encodePll(search.dividers());
}

class Clocks : public ::testing::Test
{
protected:
    Frequencies frequencies()
    {
        Frequencies found;
        for (const int domain : kDomains) {
            vek::Rate rate{};
            EXPECT_EQ(driver.readRate(domain, rate), VEK_OK) << domain;
            found[domain] = rate.megahertz();
        }
        return found;
    }

    Frequencies firmwares()
    {
        Frequencies set;
        for (const int domain : kDomains) {
            set[domain] = vek::kQz201.clocks.at(static_cast<std::size_t>(domain));
        }
        return set;
    }

    std::uint64_t readLong(std::uint64_t address)
    {
        const auto [result, value] = clocks.read(address, 4);
        EXPECT_EQ(result, VEK_OK);
        return value;
    }

    TestClock clock;
    Die die{clock};
    ClockUnit clocks{vek::kQz201.clocks, die};
    ClockDriver driver{clocks};
};

TEST_F(Clocks, RunAsTheFirmwareSetsThem)
{
    EXPECT_EQ(frequencies(), firmwares());
    TestClock otherClock;
    Die otherDie{otherClock};
    ClockUnit other{vek::kQz202.clocks, otherDie};
    vek::Rate rate{};
    EXPECT_EQ(ClockDriver(other).readRate(VEK_CLOCK_DDR, rate), VEK_OK);
    EXPECT_EQ(rate.megahertz(), 1066U);
}

TEST_F(Clocks, AreSetOneByOne)
{
    Frequencies expected = firmwares();
    for (const int domain : {0, 2, 4, 5, 6, 7}) {
        const auto wanted = static_cast<std::uint64_t>(301 + domain);
        EXPECT_EQ(driver.setPll(domain, settingFor(wanted)), VEK_OK);
        expected[domain] = wanted;
        EXPECT_EQ(frequencies(), expected);
    }
}

TEST_F(Clocks, KeepWhatTheFirmwareHasTrained)
{
    for (const int domain : {3, 8}) {
        EXPECT_EQ(driver.setPll(domain, settingFor(300)), VEK_PROTECTED);
    }
    EXPECT_EQ(frequencies(), firmwares());
}

TEST_F(Clocks, RefuseWhatTheyDoNotKnow)
{
    const std::uint32_t good = settingFor(300);
    for (const int domain : kStrangers) {
        vek::Rate rate{7, 7};
        EXPECT_EQ(driver.readRate(domain, rate), VEK_BAD_ARGUMENT) << domain;
        EXPECT_EQ(rate.khz, 7U);
        EXPECT_EQ(driver.setPll(domain, good), VEK_BAD_ARGUMENT) << domain;
    }
    for (const std::uint32_t setting : {0U, 0xffff'ffffU, good | 0x8000'0000U, good & 0xffU}) {
        EXPECT_EQ(driver.setPll(VEK_CLOCK_AXI, setting), VEK_BAD_ARGUMENT) << setting;
    }
    EXPECT_EQ(driver.setPll(VEK_CLOCK_AXI, vek::encodePll({1, 89, 1})), VEK_OUT_OF_RANGE);
    EXPECT_EQ(driver.setPll(VEK_CLOCK_AXI, vek::encodePll({1, 44, 4})), VEK_OUT_OF_RANGE);
    for (const int number : {-0x7fffffff - 1, -1, 0, 7, 0x7fffffff}) {
        EXPECT_EQ(driver.setMode(VEK_CLOCK_OFF, number), VEK_BAD_ARGUMENT) << number;
    }
    for (const int mode : {-0x7fffffff - 1, -1, 3, 4, 0x7fffffff}) {
        EXPECT_EQ(driver.setMode(mode, VEK_CLOCK_SOURCE_DEVPLL), VEK_BAD_ARGUMENT) << mode;
    }
    EXPECT_EQ(frequencies(), firmwares());
}

TEST_F(Clocks, GoWithTheirPllsAndCores)
{
    const std::map<int, std::vector<int>> domainsOf = {{1, {0, 2}}, {2, {3, 4}}, {3, {5, 7}},
                                                       {4, {6}},    {5, {5}},    {6, {7}}};
    for (const auto& [source, domains] : domainsOf) {
        for (const auto& [mode, megahertz] : {std::pair{VEK_CLOCK_BYPASS, 27U}, std::pair{VEK_CLOCK_OFF, 0U}}) {
            ASSERT_EQ(driver.setMode(mode, source), VEK_OK);
            Frequencies expected = firmwares();
            for (const int domain : domains) {
                expected[domain] = megahertz;
            }
            EXPECT_EQ(frequencies(), expected) << "source " << source << " mode " << mode;
        }
        ASSERT_EQ(driver.setMode(VEK_CLOCK_ON, source), VEK_OK);
        EXPECT_EQ(frequencies(), firmwares());
    }
}

TEST_F(Clocks, LetTheCoreHaveTheLastWord)
{
    ASSERT_EQ(driver.setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_GPUPLL), VEK_OK);
    EXPECT_EQ(frequencies()[VEK_CLOCK_3D], 0U);
    ASSERT_EQ(driver.setMode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    EXPECT_EQ(frequencies()[VEK_CLOCK_3D], 27U);
    ASSERT_EQ(driver.setMode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_GPUPLL), VEK_OK);
    ASSERT_EQ(driver.setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    EXPECT_EQ(frequencies()[VEK_CLOCK_3D], 0U);
    EXPECT_EQ(frequencies()[VEK_CLOCK_2D], 27U);
}

TEST_F(Clocks, TakeASettingUpWhenTheyAreOnAgain)
{
    ASSERT_EQ(driver.setMode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_DEVPLL), VEK_OK);
    ASSERT_EQ(driver.setPll(VEK_CLOCK_AXI, settingFor(444)), VEK_OK);
    EXPECT_EQ(frequencies()[VEK_CLOCK_AXI], 27U);
    ASSERT_EQ(driver.setMode(VEK_CLOCK_ON, VEK_CLOCK_SOURCE_DEVPLL), VEK_OK);
    EXPECT_EQ(frequencies()[VEK_CLOCK_AXI], 444U);
}

TEST_F(Clocks, OfTheGraphicsCoresAreThrottled)
{
    Frequencies expected = firmwares();
    clocks.setThrottle(vek::clock_unit::kThrottleHalf);
    for (const int domain : {5, 6, 7}) {
        expected[domain] /= 2;
    }
    EXPECT_EQ(frequencies(), expected);
    clocks.setThrottle(vek::clock_unit::kThrottleStopped);
    for (const int domain : {5, 6, 7}) {
        expected[domain] = 0;
    }
    EXPECT_EQ(frequencies(), expected);
    clocks.setThrottle(vek::clock_unit::kThrottleNone);
    EXPECT_EQ(frequencies(), firmwares());
}

TEST_F(Clocks, StopWithDividersThatNoPllCanDo)
{
    for (const std::uint32_t junk : {0U, 0xffff'ffffU, 0x0100'0001U}) {
        ASSERT_EQ(clocks.write(vek::clock_unit::pllOf(VEK_CLOCK_AXI), 4, junk), VEK_OK);
        EXPECT_EQ(readLong(vek::clock_unit::pllOf(VEK_CLOCK_AXI)), junk);
        EXPECT_EQ(frequencies()[VEK_CLOCK_AXI], 0U);
    }
}

TEST_F(Clocks, HaveRegistersOfLongs)
{
    for (const auto& [address, width] : std::vector<std::pair<std::uint64_t, unsigned>>{
             {0, 1}, {0, 2}, {0, 8}, {1, 4}, {2, 4}, {0x100, 4}, {~0ULL - 3, 4}}) {
        EXPECT_EQ(clocks.read(address, width).result, VEK_NO_RESPONSE) << address;
        EXPECT_EQ(clocks.write(address, width, 1), VEK_NO_RESPONSE) << address;
    }
    // What is not a register, or only to be read.
    for (const std::uint64_t address : {0x004U, 0x024U, 0x03cU, 0x040U, 0x05cU, 0x080U, 0x0fcU}) {
        EXPECT_EQ(clocks.write(address, 4, 0xffff'ffff), VEK_OK);
        EXPECT_EQ(readLong(address), 0U) << address;
    }
    // The mode 3 is none; other bits than the mode's do not stay.
    ASSERT_EQ(clocks.write(vek::clock_unit::modeOf(1), 4, 0xffff'fffd), VEK_OK);
    EXPECT_EQ(readLong(vek::clock_unit::modeOf(1)), 1U);
    ASSERT_EQ(clocks.write(vek::clock_unit::modeOf(1), 4, 3), VEK_OK);
    EXPECT_EQ(readLong(vek::clock_unit::modeOf(1)), 1U);
    EXPECT_EQ(frequencies()[VEK_CLOCK_AXI], 27U);
}

TEST(ClockDriver, PassesOnThatARegisterFails)
{
    FakeRegisters registers;
    ClockDriver driver(registers);
    for (const std::uint64_t address : {0x014U, 0x04cU, 0x054U, 0x080U}) {
        registers.failing = {address};
        vek::Rate rate{7, 7};
        EXPECT_EQ(driver.readRate(VEK_CLOCK_3D, rate), VEK_IO_ERROR) << address;
        EXPECT_EQ(rate.khz, 7U);
    }
    registers.failing = {0x014, 0x044};
    EXPECT_EQ(driver.setPll(VEK_CLOCK_3D, settingFor(300)), VEK_IO_ERROR);
    EXPECT_EQ(driver.setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_DEVPLL), VEK_IO_ERROR);
}

TEST(ClockDriver, TakesAStrangeModeOrThrottleForNoClock)
{
    FakeRegisters registers;
    registers.longs = {{0x014, settingFor(300)}};
    ClockDriver driver(registers);
    vek::Rate rate{};
    ASSERT_EQ(driver.readRate(VEK_CLOCK_3D, rate), VEK_OK);
    EXPECT_EQ(rate.megahertz(), 300U);
    for (const std::uint64_t address : {0x04cU, 0x054U, 0x080U}) {
        registers.longs[address] = 0xffff'ffff;
        ASSERT_EQ(driver.readRate(VEK_CLOCK_3D, rate), VEK_OK);
        EXPECT_EQ(rate.megahertz(), 0U) << address;
        registers.longs[address] = 0;
    }
}

}  // namespace
