#include "drivers/ina3221.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "card/ina3221_monitor.h"
#include "monitor_bus.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::Ina3221;
using vek::Ina3221Monitor;

constexpr std::uint8_t kAddress = 0x40;
constexpr std::uint8_t kConfiguration = 0x00;
constexpr std::uint8_t kMaskEnable = 0x0f;

// The second load feeds back: -80 mV over its shunt. The third one is out of range either way.
constexpr Ina3221Monitor::Rails kRails{{{12'010'000, 2'000, 5}, {11'920'000, -16'000, 5}, {40'000'000, 40'000, 5}}};

class Ina3221Chip : public testing::Test
{
protected:
    void microseconds(std::uint64_t count) { clock.advanceNanoseconds(count * 1000); }
    bool ready() { return (chip.word(kMaskEnable) & 1) != 0; }
    void configure(unsigned value)
    {
        chip.write(kConfiguration, {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)});
    }

    TestClock clock;
    TestPause pause{clock};
    Ina3221Monitor monitor{clock, kRails};
    MonitorBus chip{kAddress, monitor};
    Ina3221 driver{chip.bus, pause};
};

TEST_F(Ina3221Chip, ComesUpWithItsResetValues)
{
    EXPECT_EQ(chip.word(kConfiguration), 0x7127);
    for (std::uint8_t index = 0x01; index <= 0x06; ++index) {
        EXPECT_EQ(chip.word(index), 0);
    }
    for (std::uint8_t index = 0x07; index <= 0x0c; ++index) {
        EXPECT_EQ(chip.word(index), 0x7ff8);
    }
    EXPECT_EQ(chip.word(0x0d), 0);
    EXPECT_EQ(chip.word(0x0e), 0x7ffe);
    EXPECT_EQ(chip.word(kMaskEnable), 0x0002);
    EXPECT_EQ(chip.word(0x10), 0x2710);
    EXPECT_EQ(chip.word(0x11), 0x2328);
    EXPECT_EQ(chip.word(0x12), 0);
    EXPECT_EQ(chip.word(0xfe), 0x5449);
    EXPECT_EQ(chip.word(0xff), 0x3220);
}

TEST_F(Ina3221Chip, MeasuresFromPowerOn)
{
    microseconds(1'100);
    EXPECT_EQ(chip.word(0x01), 250 << 3);  // 10 mV
    EXPECT_EQ(chip.word(0x02), 0);
    microseconds(5'499);
    EXPECT_FALSE(ready());
    microseconds(1);
    EXPECT_TRUE(ready());
    EXPECT_EQ(chip.word(0x02), 1500 << 3);  // 12 V
    EXPECT_EQ(chip.word(0x03), 0xc180);     // the datasheet's example of -80 mV
    EXPECT_EQ(chip.word(0x04), 1500 << 3);
    EXPECT_EQ(chip.word(0x05), 0x7ff8);
    EXPECT_EQ(chip.word(0x06), 0x7ff8);
}

TEST_F(Ina3221Chip, SaysOnceThatItHasConverted)
{
    microseconds(6'600);
    EXPECT_TRUE(ready());
    EXPECT_FALSE(ready());
    microseconds(6'599);
    EXPECT_FALSE(ready());
    microseconds(1);
    EXPECT_TRUE(ready());
    microseconds(86'400'000'000);
    configure(0x7127);
    EXPECT_FALSE(ready());
}

struct Timing {
    unsigned configuration;
    std::uint64_t microseconds;
};

TEST_F(Ina3221Chip, TakesTheTimeOfItsConfiguration)
{
    for (const auto& [configuration, duration] : {Timing{0x7123, 6'600},        // all channels, both voltages, once
                                                  Timing{0x4121, 1'100},        // one channel's shunt
                                                  Timing{0x4122, 1'100},        // its bus voltage
                                                  Timing{0x6003, 4 * 140},      // two channels as fast as possible
                                                  Timing{0x103b, 140 + 8'244},  // the third one: bus fast, shunt slow
                                                  Timing{0x41c1 | 0x0200, 4 * 140},   // averaged over 4
                                                  Timing{0x4e08 | 1, 1024 * 204}}) {  // averaged over 1024
        configure(configuration);
        microseconds(duration - 1);
        EXPECT_FALSE(ready()) << configuration;
        microseconds(1);
        EXPECT_TRUE(ready()) << configuration;
        microseconds(1'000'000);
        EXPECT_FALSE(ready()) << configuration;
    }
}

TEST_F(Ina3221Chip, RestsWhenPoweredDown)
{
    for (const unsigned configuration : {0x7120U, 0x7124U, 0x0127U}) {
        configure(configuration);
        microseconds(1'000'000);
        EXPECT_FALSE(ready());
    }
}

TEST_F(Ina3221Chip, KeepsWhatIsWrittenUntilItsReset)
{
    chip.write(0x07, {0x12, 0x34});
    chip.write(0x01, {0x12, 0x34});
    chip.write(0x0d, {0x12, 0x34});
    chip.write(0xfe, {0x12, 0x34});
    chip.write(kMaskEnable, {0x7f, 0xff});
    EXPECT_EQ(chip.word(0x07), 0x1234);
    EXPECT_EQ(chip.word(0x01), 0);
    EXPECT_EQ(chip.word(0x0d), 0);
    EXPECT_EQ(chip.word(0xfe), 0x5449);
    EXPECT_EQ(chip.word(kMaskEnable), 0x7c02);
    configure(0x8000);
    EXPECT_EQ(chip.word(kConfiguration), 0x7127);
    EXPECT_EQ(chip.word(0x07), 0x7ff8);
    EXPECT_EQ(chip.word(kMaskEnable), 0x0002);
    microseconds(6'600);
    EXPECT_TRUE(ready());
}

TEST_F(Ina3221Chip, StaysAtARegister)
{
    EXPECT_THAT(chip.read(0xfe, 4), ElementsAre(0x54, 0x49, 0x54, 0x49));
    chip.write(0x07, {0x11, 0x10, 0x22, 0x20});
    EXPECT_EQ(chip.word(0x07), 0x2220);
    EXPECT_EQ(chip.word(0x08), 0x7ff8);
    chip.write(0x08, {0x33});
    EXPECT_EQ(chip.word(0x08), 0x7ff8);
}

TEST_F(Ina3221Chip, GivesItsVoltages)
{
    std::array<float, 2> millivolts{};
    ASSERT_EQ(driver.readVoltages(millivolts), VEK_OK);
    EXPECT_THAT(millivolts, ElementsAre(12'000.0F, 12'000.0F));
    EXPECT_GE(pause.total, 6'600U);
    EXPECT_LT(pause.total, 7'500U);
}

TEST_F(Ina3221Chip, GivesItsCurrents)
{
    std::array<float, 2> amperes{};
    ASSERT_EQ(driver.readCurrents({5, 4}, amperes), VEK_OK);
    EXPECT_FLOAT_EQ(amperes[0], 2.0F);
    EXPECT_FLOAT_EQ(amperes[1], -20.0F);
    ASSERT_EQ(driver.readCurrents({0xffffffff, 1}, amperes), VEK_OK);
    EXPECT_FLOAT_EQ(amperes[0], 0.01F / 4294967.295F);
}

TEST_F(Ina3221Chip, IsSetUpForAMeasurement)
{
    configure(0x0e08);
    std::array<float, 2> millivolts{};
    ASSERT_EQ(driver.readVoltages(millivolts), VEK_OK);
    EXPECT_THAT(millivolts, ElementsAre(12'000.0F, 12'000.0F));
    EXPECT_EQ(chip.word(kConfiguration), 0x7127);
}

TEST(Ina3221Registers, StandForVoltages)
{
    EXPECT_EQ(vek::ina3221::microvoltsOf(0xc180, 40), -80'000);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x3e80, 40), 80'000);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x7ff8, 40), 163'800);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x7ff8, 8'000), 32'760'000);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x2328, 8'000), 9'000'000);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x2710, 8'000), 10'000'000);
    EXPECT_EQ(vek::ina3221::microvoltsOf(0x0007, 40), 0);
}

/** A chip that never does what it ought to. */
class Ina3221Driver : public testing::Test
{
protected:
    Ina3221Driver()
    {
        set(0xfe, 0x54);
        set(0xff, 0x32);
    }

    /// The register of 16 bits whose high byte is at an index here has its low byte behind it.
    void set(std::uint8_t index, std::uint8_t value) { registers.registers[index] = value; }

    int voltages() { return Ina3221(chip.bus, pause).readVoltages(values); }
    int currents(const std::array<unsigned, 2>& milliohms)
    {
        return Ina3221(chip.bus, pause).readCurrents(milliohms, values);
    }

    void TearDown() override { EXPECT_THAT(values, Each(-1)); }

    TestClock clock;
    TestPause pause{clock};
    FixedRegisters registers;
    MonitorBus chip{kAddress, registers};
    std::array<float, 2> values{-1, -1};
};

TEST_F(Ina3221Driver, RefusesAResistorOfNothingWithoutATransfer)
{
    EXPECT_EQ(currents({0, 5}), VEK_BAD_ARGUMENT);
    EXPECT_EQ(currents({5, 0}), VEK_BAD_ARGUMENT);
    EXPECT_EQ(registers.starts, 0);
}

TEST_F(Ina3221Driver, LeavesAnotherChipAlone)
{
    EXPECT_EQ(voltages(), VEK_BAD_DATA);
    EXPECT_EQ(currents({5, 5}), VEK_BAD_DATA);
}

TEST_F(Ina3221Driver, ReportsThatNobodyAnswers)
{
    chip.seats[0].address = 0x41;
    EXPECT_EQ(voltages(), VEK_NO_RESPONSE);
    EXPECT_EQ(currents({5, 5}), VEK_NO_RESPONSE);
}

/** A chip with the right ids that never converts. */
class IdleIna3221 final : public vek::I2cDevice
{
public:
    bool addressed(bool forReading) override
    {
        high_ = true;
        awaitsPointer_ = !forReading;
        return true;
    }

    bool receive(std::uint8_t byte) override
    {
        if (awaitsPointer_) {
            pointer_ = byte;
            awaitsPointer_ = false;
            return true;
        }
        return acknowledges;
    }

    std::uint8_t send() override
    {
        const bool high = high_;
        high_ = !high_;
        if (pointer_ == 0xfe) {
            return high ? 0x54 : 0x49;
        }
        if (pointer_ == 0xff) {
            return high ? 0x32 : 0x20;
        }
        return 0;
    }

    bool acknowledges = true;

private:
    std::uint8_t pointer_ = 0;
    bool awaitsPointer_ = false;
    bool high_ = true;
};

TEST(Ina3221Faults, AreReported)
{
    TestClock clock;
    TestPause pause{clock};
    IdleIna3221 device;
    MonitorBus chip{kAddress, device};
    std::array<float, 2> values{-1, -1};
    EXPECT_EQ(Ina3221(chip.bus, pause).readVoltages(values), VEK_TIMED_OUT);
    EXPECT_EQ(Ina3221(chip.bus, pause).readCurrents({5, 5}, values), VEK_TIMED_OUT);
    EXPECT_LT(pause.total, 1'000'000U);
    device.acknowledges = false;
    EXPECT_EQ(Ina3221(chip.bus, pause).readVoltages(values), VEK_NO_ACK_DATA);
    EXPECT_THAT(values, Each(-1));
}

}  // namespace
