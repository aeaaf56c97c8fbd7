#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

const std::vector<int> kNoSites = {-0x7fffffff - 1, -1, 2, 3, 256, 0x7fffffff};

class Sensors : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, Sensors, testing::Values(0, 1));

TEST_P(Sensors, ReadTemperaturesAtTwoSites)
{
    double first = 0;
    double second = 0;
    ASSERT_EQ(vekSensorTemp(0, &first), VEK_OK);
    ASSERT_EQ(vekSensorTemp(1, &second), VEK_OK);
    EXPECT_GT(first, second);
    EXPECT_GT(second, 25);
    EXPECT_LT(first, 100);
}

TEST_P(Sensors, ReadVoltagesAtTwoSites)
{
    double volts = 0;
    ASSERT_EQ(vekSensorVolt(0, &volts), VEK_OK);
    EXPECT_NEAR(volts, 0.89, 0.01);
    ASSERT_EQ(vekSensorVolt(1, &volts), VEK_OK);
    EXPECT_NEAR(volts, 0.84, 0.01);
}

TEST_P(Sensors, ConvertWhatTheirRegistersHold)
{
    uint32_t info = 0;
    ASSERT_EQ(vekRegReadLong(0x30a000, &info), VEK_OK);
    EXPECT_EQ(info, GetParam() == 0 ? 0x22U : 0x12U);
    uint32_t code = 0;
    ASSERT_EQ(vekRegReadLong(0x30a024, &code), VEK_OK);
    double volts = 0;
    ASSERT_EQ(vekSensorVolt(1, &volts), VEK_OK);
    EXPECT_DOUBLE_EQ(volts, (code & 0xfff) / 2000.0);
    ASSERT_EQ(vekRegReadLong(0x30a048, &code), VEK_OK);
    int count = 0;
    ASSERT_EQ(vekSensorProcess(VEK_PROCESS_ULVT, 0, &count), VEK_OK);
    EXPECT_EQ(code, 0x80000000U + static_cast<uint32_t>(count));
}

TEST_P(Sensors, CountTheProcessOfEveryKind)
{
    for (int site = 0; site < (GetParam() == 0 ? 2 : 1); ++site) {
        int last = 0;
        for (const int kind : {VEK_PROCESS_SVT, VEK_PROCESS_LVT, VEK_PROCESS_ULVT}) {
            int count = -1;
            EXPECT_EQ(vekSensorProcess(kind, site, &count), VEK_OK);
            EXPECT_GT(count, last);
            last = count;
        }
    }
}

TEST_P(Sensors, HaveOneSetOfProcessMonitorsOnTheSecondChip)
{
    int count = -7;
    for (const int kind : {VEK_PROCESS_SVT, VEK_PROCESS_LVT, VEK_PROCESS_ULVT}) {
        EXPECT_EQ(vekSensorProcess(kind, 1, &count), GetParam() == 0 ? VEK_OK : VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(count == -7, GetParam() == 1);
}

TEST_P(Sensors, RefuseHostileNumbersAndPointers)
{
    double value = -1234.5;
    int count = -7;
    for (const int site : kNoSites) {
        EXPECT_EQ(vekSensorTemp(site, &value), VEK_BAD_ARGUMENT) << site;
        EXPECT_EQ(vekSensorVolt(site, &value), VEK_BAD_ARGUMENT) << site;
        EXPECT_EQ(vekSensorProcess(VEK_PROCESS_SVT, site, &count), VEK_BAD_ARGUMENT) << site;
    }
    for (const int kind : {-0x7fffffff - 1, -1, 0, 1, 5, 258, 0x7fffffff}) {
        EXPECT_EQ(vekSensorProcess(kind, 0, &count), VEK_BAD_ARGUMENT) << kind;
    }
    EXPECT_EQ(value, -1234.5);
    EXPECT_EQ(count, -7);
    EXPECT_EQ(vekSensorTemp(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekSensorVolt(0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekSensorProcess(VEK_PROCESS_SVT, 0, nullptr), VEK_BAD_ARGUMENT);
}

}  // namespace
