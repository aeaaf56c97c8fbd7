#include "drivers/ltc2991.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "card/ltc2991_monitor.h"
#include "monitor_bus.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using vek::Ltc2991;
using vek::Ltc2991Monitor;
using vek::ltc299x::Acquisition;

constexpr std::uint8_t kAddress = 0x48;
constexpr std::uint8_t kStatus = 0x00;
constexpr std::uint8_t kChannels = 0x01;
constexpr std::uint8_t kControl = 0x08;
constexpr Acquisition kOnce{.repeated = false, .waitReady = true};
constexpr Acquisition kRepeated{.repeated = true, .waitReady = true};

constexpr Ltc2991Monitor::Inputs kInputs{
    {3'300'000, 3'290'000, 1'800'000, 1'785'000, 1'200'000, 1'180'000, 900'000, 925'000}, 3'300'000, 25'000};

class Ltc2991Chip : public testing::Test
{
protected:
    void microseconds(std::uint64_t count) { clock.advanceNanoseconds(count * 1000); }

    TestClock clock;
    TestPause pause{clock};
    Ltc2991Monitor monitor{clock, kInputs};
    MonitorBus chip{kAddress, monitor};
    Ltc2991 driver{chip.bus, pause, 0};
};

TEST_F(Ltc2991Chip, HasNothingAfterPowerOn)
{
    microseconds(1'000'000);
    EXPECT_THAT(chip.read(0, 32), Each(0));
}

TEST_F(Ltc2991Chip, ConvertsInTurn)
{
    chip.write(kChannels, {0xf8});
    EXPECT_EQ(chip.byte(kChannels), 0xfc);
    unsigned ready = 0;
    for (unsigned input = 0; input < 8; ++input) {
        microseconds(1'499);
        EXPECT_EQ(chip.byte(kStatus), ready);
        microseconds(1);
        ready |= 1U << input;
        EXPECT_EQ(chip.byte(kStatus), ready);
    }
    microseconds(45'999);
    EXPECT_EQ(chip.byte(kChannels), 0xfc);
    microseconds(1);
    EXPECT_EQ(chip.byte(kChannels), 0xfe);
    microseconds(1'500);
    EXPECT_EQ(chip.byte(kChannels), 0xfb);
}

TEST_F(Ltc2991Chip, HoldsVoltages)
{
    chip.write(kChannels, {0xf8});
    microseconds(60'000);
    EXPECT_EQ(chip.word(0x0a), 0x8000 | 10813);  // 3.3 V / 305.18 uV
    EXPECT_EQ(chip.word(0x0c), 0x8000 | 10781);
    EXPECT_EQ(chip.word(0x18), 0x8000 | 3031);  // 925 mV
    EXPECT_EQ(chip.word(0x1a), 0x8190);         // 25 degrees
    EXPECT_EQ(chip.word(0x1c), 0x8000 | 2621);  // 3.3 V less 2.5 V
    EXPECT_EQ(chip.byte(kStatus), 0x7c);
    EXPECT_EQ(chip.byte(kChannels), 0xf8);
    EXPECT_EQ(chip.word(0x0a), 10813);
}

TEST_F(Ltc2991Chip, HoldsADifferenceWithTheSecondInputOfItsPair)
{
    chip.write(0x06, {0x01, 0x10});
    chip.write(kChannels, {0xf0});
    microseconds(12'000);
    EXPECT_EQ(chip.word(0x0a), 0x8000 | 10813);
    EXPECT_EQ(chip.word(0x0c), 0x8000 | 524);              // 10 mV / 19.075 uV
    EXPECT_EQ(chip.word(0x10), 0x8000 | 5849);             // 1.785 V
    EXPECT_EQ(chip.word(0x18), 0x8000 | (0x8000 - 1311));  // -25 mV
}

TEST_F(Ltc2991Chip, MarksDiodesThatAreNotThere)
{
    chip.write(0x06, {0x22, 0x22});
    chip.write(kChannels, {0xf0});
    microseconds(4 * 46'000);
    EXPECT_EQ(chip.byte(kStatus), 0x55);
    EXPECT_EQ(chip.word(0x0a), 0xa000);
    EXPECT_EQ(chip.byte(kChannels), 0xf0);
}

TEST_F(Ltc2991Chip, ConvertsTheEnabledChannelsOnly)
{
    chip.write(kChannels, {0x20});
    microseconds(3'000);
    EXPECT_EQ(chip.byte(kStatus), 0x0c);
    EXPECT_EQ(chip.byte(kChannels), 0x20);
}

TEST_F(Ltc2991Chip, GoesOnWhenItIsRepeatedUntilItIsStopped)
{
    chip.write(kControl, {0x14});
    chip.write(kChannels, {0x18});
    microseconds(50'500);
    EXPECT_EQ(chip.byte(kChannels), 0x1f);
    EXPECT_EQ(chip.word(0x1a), 0x92a2);  // in Kelvin
    EXPECT_EQ(chip.word(0x1c) & 0x8000, 0x8000);
    EXPECT_EQ(chip.byte(kChannels), 0x1c);
    microseconds(1'000'000'000);
    EXPECT_EQ(chip.byte(kChannels), 0x1f);
    chip.write(kChannels, {0x00});
    chip.read(0x0a, 20);
    microseconds(1'000'000);
    EXPECT_EQ(chip.byte(kChannels), 0x00);
    EXPECT_EQ(chip.byte(kStatus), 0x00);
}

TEST_F(Ltc2991Chip, WritesOnlyWhatIsWritable)
{
    chip.write(0x02, {1, 2, 3, 4});
    chip.write(0x0a, std::vector<std::uint8_t>(22, 0x55));
    chip.write(kStatus, {0x55});
    EXPECT_THAT(chip.read(0, 32), Each(0));
    chip.write(0x06, {1, 2, 3, 4});
    EXPECT_THAT(chip.read(0x06, 4), testing::ElementsAre(1, 2, 3, 4));
    // Pointers have five bits.
    EXPECT_THAT(chip.read(0xe6, 4), testing::ElementsAre(1, 2, 3, 4));
}

TEST_F(Ltc2991Chip, GivesItsVoltages)
{
    std::array<float, 8> volts{};
    ASSERT_EQ(driver.readVoltages(kOnce, volts), VEK_OK);
    EXPECT_FLOAT_EQ(volts[0], 10813 * 305.18e-6F);
    EXPECT_FLOAT_EQ(volts[7], 3031 * 305.18e-6F);
    for (std::size_t input = 0; input < volts.size(); ++input) {
        EXPECT_NEAR(volts[input], kInputs.microvolts[input] * 1e-6, 0.00016);
    }
    EXPECT_EQ(chip.byte(kChannels), 0xf0);
    EXPECT_GE(pause.total, 12'000U);
    EXPECT_LT(pause.total, 13'000U);
}

TEST_F(Ltc2991Chip, GivesItsCurrents)
{
    std::array<float, 4> amperes{};
    ASSERT_EQ(driver.readCurrents(kOnce, {5, 3, 10, 5}, amperes), VEK_OK);
    EXPECT_FLOAT_EQ(amperes[0], 524 * 19.075e-6F / 0.005F);
    EXPECT_NEAR(amperes[0], 2.0, 0.002);
    EXPECT_NEAR(amperes[1], 5.0, 0.004);
    EXPECT_NEAR(amperes[2], 2.0, 0.001);
    EXPECT_NEAR(amperes[3], -5.0, 0.002);
}

TEST_F(Ltc2991Chip, ChangesFromOneMeasurementToTheOther)
{
    std::array<float, 8> volts{};
    std::array<float, 4> amperes{};
    for (const Acquisition& acquisition : {kRepeated, kOnce, kRepeated}) {
        ASSERT_EQ(driver.readVoltages(acquisition, volts), VEK_OK);
        EXPECT_NEAR(volts[1], 3.29, 0.0002);
        clock.advanceMilliseconds(100);
        ASSERT_EQ(driver.readCurrents(acquisition, {5, 3, 10, 5}, amperes), VEK_OK);
        EXPECT_NEAR(amperes[0], 2.0, 0.002);
        clock.advanceMilliseconds(100);
    }
    EXPECT_EQ(chip.byte(kChannels) & 0x04, 0x04);
}

TEST_F(Ltc2991Chip, LeavesThePwmOutputAlone)
{
    chip.write(kControl, {0xe7, 0x99});
    std::array<float, 8> volts{};
    ASSERT_EQ(driver.readVoltages(kRepeated, volts), VEK_OK);
    EXPECT_EQ(chip.byte(kControl), 0xf7);
    ASSERT_EQ(driver.readVoltages(kOnce, volts), VEK_OK);
    EXPECT_EQ(chip.byte(kControl), 0xe7);
    EXPECT_EQ(chip.byte(0x09), 0x99);
}

TEST_F(Ltc2991Chip, TakesWhatASingleAcquisitionLeft)
{
    constexpr Acquisition kHeld{.repeated = false, .waitReady = false};
    std::array<float, 4> amperes{-1, -1, -1, -1};
    EXPECT_EQ(driver.readCurrents(kHeld, {5, 3, 10, 5}, amperes), VEK_BAD_DATA);
    EXPECT_EQ(driver.readCurrents(kHeld, {5, 3, 10, 5}, amperes), VEK_BAD_DATA);
    EXPECT_THAT(amperes, Each(-1));
    clock.advanceMilliseconds(12);
    EXPECT_EQ(driver.readCurrents(kHeld, {5, 3, 10, 5}, amperes), VEK_OK);
    EXPECT_NEAR(amperes[0], 2.0, 0.002);
    clock.advanceMilliseconds(12);
    std::array<float, 8> volts{-1, -1, -1, -1, -1, -1, -1, -1};
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_BAD_DATA);
    EXPECT_THAT(volts, Each(-1));
    clock.advanceMilliseconds(12);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_OK);
    EXPECT_NEAR(volts[7], 0.925, 0.0002);
    EXPECT_EQ(pause.total, 0U);
}

TEST_F(Ltc2991Chip, TakesNewValuesOfRepeatedAcquisitions)
{
    constexpr Acquisition kHeld{.repeated = true, .waitReady = false};
    std::array<float, 8> volts{};
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_BAD_DATA);
    clock.advanceMilliseconds(12);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_OK);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_BAD_DATA);
    clock.advanceMilliseconds(12);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_OK);
}

TEST(Ltc2991Addresses, AreEight)
{
    TestClock clock;
    TestPause pause{clock};
    for (int index = 0; index < 8; ++index) {
        Ltc2991Monitor monitor{clock, kInputs};
        // 0x90 to 0x9E as addresses of writes.
        MonitorBus chip{static_cast<std::uint8_t>((0x90 + 2 * index) / 2), monitor};
        std::array<float, 8> volts{};
        EXPECT_EQ(Ltc2991(chip.bus, pause, index).readVoltages(kOnce, volts), VEK_OK);
        EXPECT_EQ(Ltc2991(chip.bus, pause, (index + 1) % 8).readVoltages(kOnce, volts), VEK_NO_RESPONSE);
    }
}

/** A chip that never does what it ought to. */
class Ltc2991Driver : public testing::Test
{
protected:
    int voltages(const Acquisition& acquisition, int index = 0)
    {
        return Ltc2991(chip.bus, pause, index).readVoltages(acquisition, volts);
    }

    int currents(const Acquisition& acquisition, const std::array<unsigned, 4>& milliohms, int index = 0)
    {
        return Ltc2991(chip.bus, pause, index).readCurrents(acquisition, milliohms, amperes);
    }

    void TearDown() override
    {
        EXPECT_THAT(volts, Each(-1));
        EXPECT_THAT(amperes, Each(-1));
    }

    TestClock clock;
    TestPause pause{clock};
    FixedRegisters registers;
    MonitorBus chip{kAddress, registers};
    std::array<float, 8> volts{-1, -1, -1, -1, -1, -1, -1, -1};
    std::array<float, 4> amperes{-1, -1, -1, -1};
};

TEST_F(Ltc2991Driver, RefusesBadArgumentsWithoutATransfer)
{
    for (const int index : {-0x7fffffff - 1, -1, 8, 0x7fffffff}) {
        EXPECT_EQ(voltages(kOnce, index), VEK_BAD_ARGUMENT);
        EXPECT_EQ(currents(kOnce, {3, 3, 3, 3}, index), VEK_BAD_ARGUMENT);
    }
    for (std::size_t pair = 0; pair < 4; ++pair) {
        std::array<unsigned, 4> milliohms{3, 3, 3, 3};
        milliohms[pair] = 0;
        EXPECT_EQ(currents(kOnce, milliohms), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(registers.starts, 0);
}

TEST_F(Ltc2991Driver, GivesUpOnAChipThatStaysBusy)
{
    registers.registers[kStatus] = 0x7f;  // all but V8
    registers.registers[kChannels] = 0xf4;
    EXPECT_EQ(voltages(kOnce), VEK_TIMED_OUT);
    EXPECT_EQ(currents(kRepeated, {3, 3, 3, 3}), VEK_TIMED_OUT);
    EXPECT_LT(pause.total, 1'000'000U);
}

TEST_F(Ltc2991Driver, RefusesValuesThatAreNotNew)
{
    registers.registers[kStatus] = 0xff;
    for (std::size_t index = 0x0a; index < 0x1a; index += 2) {
        registers.registers[index] = 0x80;
    }
    registers.registers[0x18] = 0x00;
    EXPECT_EQ(voltages(kOnce), VEK_BAD_DATA);
    EXPECT_EQ(currents(kOnce, {3, 3, 3, 3}), VEK_BAD_DATA);
}

TEST_F(Ltc2991Driver, ReportsWhatTheBusDoesNot)
{
    EXPECT_EQ(voltages(kOnce, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(voltages({.repeated = false, .waitReady = false}, 1), VEK_NO_RESPONSE);
    registers.refusesData = true;
    EXPECT_EQ(voltages(kOnce), VEK_NO_ACK_DATA);
    EXPECT_EQ(currents({.repeated = true, .waitReady = false}, {3, 3, 3, 3}), VEK_NO_ACK_DATA);
}

}  // namespace
