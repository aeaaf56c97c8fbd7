#include "card/sensor_unit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "card/chip_facts.h"
#include "card/clock_unit.h"
#include "drivers/sensors.h"
#include "fake_registers.h"
#include "test_clock.h"

namespace
{

using vek::Die;
using vek::SensorDriver;
using vek::SensorUnit;

constexpr std::uint32_t kValid = 0x8000'0000;

/// A sensor unit whose readings a test makes up: two sites, process monitors at the first one.
class Readings : public ::testing::Test
{
protected:
    Readings() { registers.longs[0x000] = 0x12; }

    FakeRegisters registers;
    SensorDriver driver{registers};
};

TEST_F(Readings, OfTemperaturesGoByTheirTransferFunction)
{
    for (std::uint32_t code = 0; code <= 0xfff; ++code) {
        registers.longs[0x010] = kValid | code;
        registers.longs[0x014] = kValid | (0xfff - code);
        double first = 0;
        double second = 0;
        ASSERT_EQ(driver.readTemperature(0, first), VEK_OK);
        ASSERT_EQ(driver.readTemperature(1, second), VEK_OK);
        ASSERT_DOUBLE_EQ(first, 0.0625 * code - 60);
        ASSERT_DOUBLE_EQ(second, 0.0625 * (4095 - code) - 60);
    }
}

TEST_F(Readings, OfVoltagesGoByTheirTransferFunction)
{
    for (std::uint32_t code = 0; code <= 0xfff; ++code) {
        registers.longs[0x020] = kValid | code;
        registers.longs[0x024] = kValid | (0xfff - code);
        double first = 0;
        double second = 0;
        ASSERT_EQ(driver.readVoltage(0, first), VEK_OK);
        ASSERT_EQ(driver.readVoltage(1, second), VEK_OK);
        ASSERT_DOUBLE_EQ(first, 0.0005 * code);
        ASSERT_DOUBLE_EQ(second, 0.0005 * (4095 - code));
    }
}

TEST_F(Readings, OfProcessMonitorsAreCounts)
{
    registers.longs[0x000] = 0x22;
    std::uint32_t expected = 0xff00;
    for (const std::uint64_t address : {0x040U, 0x044U, 0x048U, 0x050U, 0x054U, 0x058U}) {
        registers.longs[address] = kValid | ++expected;
    }
    expected = 0xff00;
    for (const int site : {0, 1}) {
        for (const int kind : {VEK_PROCESS_SVT, VEK_PROCESS_LVT, VEK_PROCESS_ULVT}) {
            int count = 0;
            EXPECT_EQ(driver.readProcess(kind, site, count), VEK_OK);
            EXPECT_EQ(count, static_cast<int>(++expected));
        }
    }
}

TEST_F(Readings, ThatAreNotValidAreNoReadings)
{
    for (const std::uint32_t bad : {0U, 0x123U, 0xffff'ffffU, kValid | 0x1'0000U, 0x4000'0123U}) {
        registers.longs[0x010] = registers.longs[0x020] = registers.longs[0x040] = bad;
        double value = 1.5;
        int count = 7;
        EXPECT_EQ(driver.readTemperature(0, value), VEK_BAD_DATA) << bad;
        EXPECT_EQ(driver.readVoltage(0, value), VEK_BAD_DATA) << bad;
        EXPECT_EQ(driver.readProcess(VEK_PROCESS_SVT, 0, count), VEK_BAD_DATA) << bad;
        EXPECT_EQ(value, 1.5);
        EXPECT_EQ(count, 7);
    }
}

TEST_F(Readings, NeedASiteAndAKind)
{
    for (const std::uint32_t info : {0x12U, 0xffff'ffffU}) {
        registers.longs[0x000] = info;
        for (const int site : {-0x7fffffff - 1, -1, 2, 3, 15, 0x7fffffff}) {
            double value = 1.5;
            int count = 7;
            EXPECT_EQ(driver.readTemperature(site, value), VEK_BAD_ARGUMENT) << site;
            EXPECT_EQ(driver.readVoltage(site, value), VEK_BAD_ARGUMENT) << site;
            EXPECT_EQ(driver.readProcess(VEK_PROCESS_SVT, site, count), VEK_BAD_ARGUMENT) << site;
            EXPECT_EQ(value, 1.5);
            EXPECT_EQ(count, 7);
        }
    }
    int count = 7;
    registers.longs[0x000] = 0x12;
    EXPECT_EQ(driver.readProcess(VEK_PROCESS_SVT, 1, count), VEK_BAD_ARGUMENT);
    for (const int kind : {-0x7fffffff - 1, -1, 0, 1, 5, 0x7fffffff}) {
        EXPECT_EQ(driver.readProcess(kind, 0, count), VEK_BAD_ARGUMENT) << kind;
    }
    EXPECT_EQ(count, 7);
}

TEST_F(Readings, FailWithTheirRegisters)
{
    registers.longs[0x010] = registers.longs[0x020] = registers.longs[0x040] = kValid;
    for (const std::set<std::uint64_t>& failing : {std::set<std::uint64_t>{0x000}, {0x010, 0x020, 0x040}}) {
        registers.failing = failing;
        double value = 1.5;
        int count = 7;
        EXPECT_EQ(driver.readTemperature(0, value), VEK_IO_ERROR);
        EXPECT_EQ(driver.readVoltage(0, value), VEK_IO_ERROR);
        EXPECT_EQ(driver.readProcess(VEK_PROCESS_SVT, 0, count), VEK_IO_ERROR);
        EXPECT_EQ(value, 1.5);
        EXPECT_EQ(count, 7);
    }
}

class Sensors : public ::testing::TestWithParam<const vek::ChipFacts*>
{
protected:
    TestClock clock;
    Die die{clock};
    vek::ClockUnit clocks{GetParam()->clocks, die};
    SensorUnit sensors{die, GetParam()->process};
    SensorDriver driver{sensors};
};
INSTANTIATE_TEST_SUITE_P(Chips, Sensors, testing::Values(&vek::kQz201, &vek::kQz202));

TEST_P(Sensors, TellTheDiesTemperatureAndVoltageToHalfACode)
{
    for (const int site : {0, 1}) {
        double celsius = 0;
        ASSERT_EQ(driver.readTemperature(site, celsius), VEK_OK);
        EXPECT_NEAR(celsius, die.temperature(static_cast<std::size_t>(site)), 0.0313);
        double volts = 0;
        ASSERT_EQ(driver.readVoltage(site, volts), VEK_OK);
        EXPECT_NEAR(volts, die.voltage(static_cast<std::size_t>(site)), 0.000251);
    }
}

TEST_P(Sensors, TellTheWafersCorner)
{
    const int sites = GetParam() == &vek::kQz201 ? 2 : 1;
    for (int site = 0; site < sites; ++site) {
        int counts[3] = {};
        ASSERT_EQ(driver.readProcess(VEK_PROCESS_SVT, site, counts[0]), VEK_OK);
        ASSERT_EQ(driver.readProcess(VEK_PROCESS_LVT, site, counts[1]), VEK_OK);
        ASSERT_EQ(driver.readProcess(VEK_PROCESS_ULVT, site, counts[2]), VEK_OK);
        // The lower the threshold, the faster the oscillator.
        EXPECT_LT(0, counts[0]);
        EXPECT_LT(counts[0], counts[1]);
        EXPECT_LT(counts[1], counts[2]);
    }
    int count = 7;
    EXPECT_EQ(driver.readProcess(VEK_PROCESS_SVT, sites, count), VEK_BAD_ARGUMENT);
    EXPECT_EQ(count, 7);
}

TEST_P(Sensors, AreReadOnlyLongs)
{
    for (std::uint64_t address = 0; address < 0x100; address += 4) {
        const auto [result, value] = sensors.read(address, 4);
        EXPECT_EQ(result, VEK_OK);
        EXPECT_EQ(sensors.write(address, 4, ~value), VEK_PROTECTED);
        EXPECT_EQ(sensors.read(address, 4).value, value);
        for (const unsigned width : {1U, 2U, 8U}) {
            EXPECT_EQ(sensors.read(address, width).result, VEK_NO_RESPONSE);
            EXPECT_EQ(sensors.write(address, width, 0), VEK_NO_RESPONSE);
        }
        EXPECT_EQ(sensors.read(address + 1, 4).result, VEK_NO_RESPONSE);
    }
    EXPECT_EQ(sensors.read(0x100, 4).result, VEK_NO_RESPONSE);
    for (const std::uint64_t reserved : {0x004U, 0x018U, 0x028U, 0x04cU, 0x060U, 0x0fcU}) {
        EXPECT_EQ(sensors.read(reserved, 4).value, 0U) << reserved;
    }
}

}  // namespace
