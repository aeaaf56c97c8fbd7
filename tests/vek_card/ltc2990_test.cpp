#include "drivers/ltc2990.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "card/ltc2990_monitor.h"
#include "monitor_bus.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::Ltc2990;
using vek::Ltc2990Monitor;
using vek::ltc299x::Acquisition;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kAddress = 0x4c;
constexpr std::uint8_t kStatus = 0x00;
constexpr std::uint8_t kControl = 0x01;
constexpr std::uint8_t kTrigger = 0x02;
constexpr Acquisition kOnce{.repeated = false, .waitReady = true};
constexpr Acquisition kRepeated{.repeated = true, .waitReady = true};

// 903 mV and 54 mV less; 1.2 V and 30 mV more, a current that flows backwards.
constexpr Ltc2990Monitor::Inputs kInputs{{903'000, 849'000, 1'200'000, 1'230'000}, 3'300'000, 25'000};

class Ltc2990Chip : public testing::Test
{
protected:
    void trigger(std::uint8_t control)
    {
        chip.write(kControl, {control});
        chip.write(kTrigger, {0});
    }

    void microseconds(std::uint64_t count) { clock.advanceNanoseconds(count * 1000); }

    TestClock clock;
    TestPause pause{clock};
    Ltc2990Monitor monitor{clock, kInputs};
    MonitorBus chip{kAddress, monitor};
    Ltc2990 driver{chip.bus, pause, 0};
};

TEST_F(Ltc2990Chip, HasNothingAfterPowerOn)
{
    EXPECT_THAT(chip.read(0, 16), Each(0));
    microseconds(1'000'000);
    EXPECT_THAT(chip.read(0, 16), Each(0));
}

TEST_F(Ltc2990Chip, ConvertsInTurn)
{
    trigger(0x5f);
    EXPECT_EQ(chip.byte(kStatus), 0x01);
    microseconds(45'999);
    EXPECT_EQ(chip.byte(kStatus), 0x01);
    microseconds(1);
    EXPECT_EQ(chip.byte(kStatus), 0x03);
    std::uint8_t expected = 0x03;
    for (const std::uint8_t ready : Bytes{0x04, 0x08, 0x10, 0x20}) {
        microseconds(1'499);
        EXPECT_EQ(chip.byte(kStatus), expected);
        microseconds(1);
        expected = static_cast<std::uint8_t>(expected | ready);
        EXPECT_EQ(chip.byte(kStatus), expected);
    }
    microseconds(1'500);
    EXPECT_EQ(chip.byte(kStatus), 0x7e);
    microseconds(1'000'000);
    EXPECT_EQ(chip.byte(kStatus), 0x7e);
}

TEST_F(Ltc2990Chip, HoldsVoltagesInMode7)
{
    trigger(0x5f);
    microseconds(60'000);
    EXPECT_EQ(chip.word(0x04), 0x8190);         // 25 degrees
    EXPECT_EQ(chip.word(0x06), 0x8000 | 2959);  // 903 mV / 305.18 uV
    EXPECT_EQ(chip.word(0x08), 0x8000 | 2782);  // 849 mV
    EXPECT_EQ(chip.word(0x0a), 0x8000 | 3932);  // 1200 mV
    EXPECT_EQ(chip.word(0x0c), 0x8000 | 4030);  // 1230 mV
    EXPECT_EQ(chip.word(0x0e), 0x8000 | 2621);  // 3.3 V less 2.5 V
}

TEST_F(Ltc2990Chip, HoldsDifferencesInMode6)
{
    trigger(0x5e);
    microseconds(60'000);
    EXPECT_EQ(chip.byte(kStatus), 0x56);
    EXPECT_EQ(chip.word(0x06), 0x8000 | 2781);             // 54 mV / 19.42 uV
    EXPECT_EQ(chip.word(0x0a), 0x8000 | (0x8000 - 1545));  // -30 mV
    EXPECT_EQ(chip.word(0x08), 0);
}

TEST_F(Ltc2990Chip, ClearsWhatIsNewWhenItIsRead)
{
    trigger(0x5f);
    microseconds(60'000);
    EXPECT_EQ(chip.byte(0x06) & 0x80, 0x80);
    EXPECT_EQ(chip.byte(kStatus), 0x7a);
    EXPECT_EQ(chip.byte(0x06) & 0x80, 0x00);
    EXPECT_EQ(chip.word(0x06), 2959);
    chip.read(0x04, 12);
    EXPECT_EQ(chip.byte(kStatus), 0x00);
}

TEST_F(Ltc2990Chip, GoesOnWhenItIsRepeated)
{
    trigger(0x1f);
    microseconds(53'500);
    EXPECT_EQ(chip.byte(kStatus), 0x7f);
    chip.read(0x04, 12);
    EXPECT_EQ(chip.byte(kStatus), 0x01);
    microseconds(46'000);
    EXPECT_EQ(chip.byte(kStatus), 0x03);
    // A week later.
    microseconds(7ULL * 86'400 * 1'000'000);
    EXPECT_EQ(chip.byte(kStatus), 0x7f);
}

struct Extent {
    std::uint8_t control;
    std::uint8_t ready;
    std::uint64_t microseconds;
};

TEST_F(Ltc2990Chip, MeasuresWhatItsModeSays)
{
    // Mode [4:3] in its own, then all of the modes [2:0]: temperatures take 46 ms, voltages 1.5 ms.
    for (const auto& [control, ready, duration] :
         {Extent{0x40, 0x02, 46'000}, Extent{0x4f, 0x04, 1'500}, Extent{0x57, 0x10, 1'500}, Extent{0x4e, 0x04, 1'500},
          Extent{0x4b, 0x04, 46'000}, Extent{0x50, 0x10, 46'000}, Extent{0x58, 0x5e, 96'500},
          Extent{0x59, 0x56, 95'000}, Extent{0x5a, 0x76, 52'000}, Extent{0x5b, 0x76, 96'500},
          Extent{0x5c, 0x56, 95'000}, Extent{0x5d, 0x56, 139'500}, Extent{0x5e, 0x56, 50'500},
          Extent{0x5f, 0x7e, 53'500}}) {
        chip.read(0x04, 12);
        trigger(control);
        microseconds(duration - 1);
        EXPECT_EQ(chip.byte(kStatus) & 1, 1) << int{control};
        microseconds(1);
        EXPECT_EQ(chip.byte(kStatus), ready) << int{control};
    }
}

TEST_F(Ltc2990Chip, MarksDiodesThatAreNotThere)
{
    trigger(0x5d);
    microseconds(140'000);
    EXPECT_EQ(chip.word(0x06), 0xa000);
    EXPECT_EQ(chip.word(0x0a), 0xa000);
}

TEST_F(Ltc2990Chip, ReportsKelvinWhenAsked)
{
    trigger(0xc0);
    microseconds(46'000);
    EXPECT_EQ(chip.word(0x04), 0x92a2);
}

TEST_F(Ltc2990Chip, BeginsAnewWithATrigger)
{
    trigger(0x5f);
    microseconds(50'000);
    trigger(0x5e);
    microseconds(45'000);
    EXPECT_EQ(chip.byte(kStatus) & 0x30, 0x00);
}

TEST_F(Ltc2990Chip, WritesOnlyWhatIsWritable)
{
    chip.write(0x03, {0x11, 0x22, 0x33});
    chip.write(kStatus, {0x55});
    EXPECT_THAT(chip.read(0, 16), Each(0));
    chip.write(kControl, {0xff});
    EXPECT_EQ(chip.byte(kControl), 0xff);
    EXPECT_EQ(chip.byte(kStatus), 0);
    // Pointers have four bits.
    EXPECT_EQ(chip.byte(0xf1), 0xff);
}

TEST_F(Ltc2990Chip, GivesItsVoltages)
{
    std::array<float, 4> volts{};
    ASSERT_EQ(driver.readVoltages(kOnce, volts), VEK_OK);
    EXPECT_FLOAT_EQ(volts[0], 2959 * 305.18e-6F);
    EXPECT_FLOAT_EQ(volts[1], 2782 * 305.18e-6F);
    EXPECT_FLOAT_EQ(volts[2], 3932 * 305.18e-6F);
    EXPECT_FLOAT_EQ(volts[3], 4030 * 305.18e-6F);
    EXPECT_EQ(chip.byte(kStatus) & 0x3c, 0);
    EXPECT_GE(pause.total, 52'000U);
    EXPECT_LT(pause.total, 54'000U);
}

TEST_F(Ltc2990Chip, GivesItsCurrents)
{
    std::array<float, 2> amperes{};
    ASSERT_EQ(driver.readCurrents(kOnce, {3, 5}, amperes), VEK_OK);
    EXPECT_FLOAT_EQ(amperes[0], 2781 * 19.42e-6F / 0.003F);
    EXPECT_FLOAT_EQ(amperes[1], -1545 * 19.42e-6F / 0.005F);
    EXPECT_NEAR(amperes[0], 18.0, 0.005);
    EXPECT_NEAR(amperes[1], -6.0, 0.005);
    EXPECT_EQ(chip.byte(kControl), 0x5e);
    ASSERT_EQ(driver.readCurrents(kOnce, {0xffffffff, 1}, amperes), VEK_OK);
    EXPECT_FLOAT_EQ(amperes[0], 2781 * 19.42e-6F / 4294967.295F);
}

TEST_F(Ltc2990Chip, ChangesFromOneMeasurementToTheOther)
{
    std::array<float, 4> volts{};
    std::array<float, 2> amperes{};
    for (const Acquisition& acquisition : {kRepeated, kOnce, kRepeated}) {
        ASSERT_EQ(driver.readVoltages(acquisition, volts), VEK_OK);
        EXPECT_NEAR(volts[0], 0.903, 0.0002);
        // What gets ready before the next measurement is not taken for it.
        clock.advanceMilliseconds(200);
        ASSERT_EQ(driver.readCurrents(acquisition, {3, 5}, amperes), VEK_OK);
        EXPECT_NEAR(amperes[0], 18.0, 0.005);
        clock.advanceMilliseconds(200);
    }
    EXPECT_EQ(chip.byte(kStatus) & 1, 1);
}

TEST_F(Ltc2990Chip, TakesWhatASingleAcquisitionLeft)
{
    constexpr Acquisition kHeld{.repeated = false, .waitReady = false};
    std::array<float, 4> volts{-1, -1, -1, -1};
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_BAD_DATA);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_BAD_DATA);
    EXPECT_THAT(volts, Each(-1));
    clock.advanceMilliseconds(60);
    EXPECT_EQ(driver.readVoltages(kHeld, volts), VEK_OK);
    EXPECT_NEAR(volts[0], 0.903, 0.0002);
    clock.advanceMilliseconds(60);
    // Values of the other measurement are not taken.
    std::array<float, 2> amperes{-1, -1};
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_BAD_DATA);
    EXPECT_THAT(amperes, Each(-1));
    clock.advanceMilliseconds(60);
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_OK);
    EXPECT_NEAR(amperes[1], -6.0, 0.005);
    EXPECT_EQ(pause.total, 0U);
}

TEST_F(Ltc2990Chip, TakesNewValuesOfRepeatedAcquisitions)
{
    constexpr Acquisition kHeld{.repeated = true, .waitReady = false};
    std::array<float, 2> amperes{-1, -1};
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_BAD_DATA);
    clock.advanceMilliseconds(51);
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_OK);
    EXPECT_NEAR(amperes[0], 18.0, 0.005);
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_BAD_DATA);
    clock.advanceMilliseconds(51);
    EXPECT_EQ(driver.readCurrents(kHeld, {3, 5}, amperes), VEK_OK);
}

TEST(Ltc2990Addresses, AreFour)
{
    TestClock clock;
    TestPause pause{clock};
    for (int index = 0; index < 4; ++index) {
        Ltc2990Monitor monitor{clock, kInputs};
        // 0x98 to 0x9E as addresses of writes.
        MonitorBus chip{static_cast<std::uint8_t>((0x98 + 2 * index) / 2), monitor};
        std::array<float, 4> volts{};
        EXPECT_EQ(Ltc2990(chip.bus, pause, index).readVoltages(kOnce, volts), VEK_OK);
        EXPECT_EQ(Ltc2990(chip.bus, pause, (index + 1) % 4).readVoltages(kOnce, volts), VEK_NO_RESPONSE);
    }
}

/** A chip that never does what it ought to. */
class Ltc2990Driver : public testing::Test
{
protected:
    int voltages(const Acquisition& acquisition, int index = 0)
    {
        return Ltc2990(chip.bus, pause, index).readVoltages(acquisition, volts);
    }

    int currents(const Acquisition& acquisition, const std::array<unsigned, 2>& milliohms, int index = 0)
    {
        return Ltc2990(chip.bus, pause, index).readCurrents(acquisition, milliohms, amperes);
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
    std::array<float, 4> volts{-1, -1, -1, -1};
    std::array<float, 2> amperes{-1, -1};
};

TEST_F(Ltc2990Driver, RefusesBadArgumentsWithoutATransfer)
{
    for (const int index : {-0x7fffffff - 1, -1, 4, 0x7fffffff}) {
        EXPECT_EQ(voltages(kOnce, index), VEK_BAD_ARGUMENT);
        EXPECT_EQ(currents(kOnce, {3, 3}, index), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(currents(kOnce, {0, 3}), VEK_BAD_ARGUMENT);
    EXPECT_EQ(currents(kOnce, {3, 0}), VEK_BAD_ARGUMENT);
    EXPECT_EQ(registers.starts, 0);
}

TEST_F(Ltc2990Driver, GivesUpOnAChipThatStaysBusy)
{
    registers.registers[kStatus] = 0x01;
    EXPECT_EQ(voltages(kOnce), VEK_TIMED_OUT);
    registers.registers[kStatus] = 0x7b;  // all but V1
    EXPECT_EQ(voltages(kOnce), VEK_TIMED_OUT);
    EXPECT_EQ(currents(kRepeated, {3, 3}), VEK_TIMED_OUT);
    EXPECT_LT(pause.total, 1'000'000U);
}

TEST_F(Ltc2990Driver, RefusesValuesThatAreNotNew)
{
    registers.registers[kStatus] = 0x7e;
    for (const std::uint8_t index : Bytes{0x06, 0x08, 0x0a, 0x0c}) {
        registers.registers[index] = 0x80;
    }
    registers.registers[0x0a] = 0x00;
    EXPECT_EQ(voltages(kOnce), VEK_BAD_DATA);
    EXPECT_EQ(currents(kOnce, {3, 3}), VEK_BAD_DATA);
}

TEST_F(Ltc2990Driver, ReportsWhatTheBusDoesNot)
{
    EXPECT_EQ(voltages(kOnce, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(voltages({.repeated = false, .waitReady = false}, 1), VEK_NO_RESPONSE);
    registers.refusesData = true;
    EXPECT_EQ(voltages(kOnce), VEK_NO_ACK_DATA);
    EXPECT_EQ(currents({.repeated = true, .waitReady = false}, {3, 3}), VEK_NO_ACK_DATA);
}

}  // namespace
