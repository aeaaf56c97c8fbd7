#include "card/info_unit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "card/chip_facts.h"
#include "card/clock_unit.h"
#include "card/die.h"
#include "card/monitor_edids.h"
#include "card/power_unit.h"
#include "drivers/info_unit.h"
#include "drivers/power.h"
#include "fake_registers.h"
#include "test_clock.h"
#include "vek.h"

namespace
{

using namespace vek::info_unit;
using vek::ChipInformation;
using vek::ChipUnit;

class InfoUnits : public testing::Test
{
protected:
    ChipInformation information()
    {
        ChipInformation read{};
        EXPECT_EQ(vek::readChipInformation(unit, read), VEK_OK);
        return read;
    }

    std::vector<unsigned> loads()
    {
        const ChipInformation read = information();
        std::vector<unsigned> all;
        for (const vek::CoreLoad& core : read.byCore()) {
            all.push_back(core.permille);
        }
        return all;
    }

    TestClock clock;
    vek::Die die{clock};
    vek::ClockUnit clocks{vek::kQz201.clocks, die};
    vek::PowerUnit power{clocks, die};
    vek::InfoUnit unit{vek::kQz201, clocks, vek::kMonitor1080p};
};

TEST_F(InfoUnits, TellWhatTheChipHas)
{
    const ChipInformation read = information();
    EXPECT_EQ(read.memoryBusBits, 128U);
    EXPECT_EQ(read.memoryMebibytes, 4096U);
    ASSERT_EQ(read.coreCount, 4U);
    EXPECT_EQ(read.cores[0].core, (vek::UnitId{ChipUnit::k3d, 0}));
    EXPECT_EQ(read.cores[1].core, (vek::UnitId{ChipUnit::k3d, 1}));
    EXPECT_EQ(read.cores[2].core, (vek::UnitId{ChipUnit::k2d, 0}));
    EXPECT_EQ(read.cores[3].core, (vek::UnitId{ChipUnit::kVpu, 0}));
}

TEST_F(InfoUnits, ShareTheWorkOutOverTheCyclesThatThereAre)
{
    EXPECT_EQ(loads(), (std::vector<unsigned>{620, 310, 250, 400}));
    ASSERT_EQ(vek::PowerDriver(power).setState(VEK_POWER_SAVE), VEK_OK);
    EXPECT_EQ(loads(), (std::vector<unsigned>{1000, 620, 500, 400})) << "half the cycles, and no more than all of them";
    ASSERT_EQ(vek::PowerDriver(power).setState(VEK_POWER_STANDBY), VEK_OK);
    EXPECT_EQ(loads(), (std::vector<unsigned>{0, 0, 0, 400})) << "parked cores do nothing";
}

TEST_F(InfoUnits, KeepTheMarksOfTheFirmware)
{
    const vek::GopMarks marks = information().gop;
    EXPECT_TRUE(marks.started);
    EXPECT_EQ(marks.major, 1U);
    EXPECT_EQ(marks.minor, 12U);
    EXPECT_EQ(marks.width, 1920U);
    EXPECT_EQ(marks.height, 1080U);
    EXPECT_EQ(unit.write(kGopVersion, 4, 0x0203), VEK_OK);
    EXPECT_EQ(unit.write(kGopMode, 4, 768U << 16 | 1024U), VEK_OK);
    EXPECT_FALSE(information().gop.started);
    EXPECT_EQ(information().gop.major, 2U);
    EXPECT_EQ(information().gop.minor, 3U);
    EXPECT_EQ(information().gop.width, 1024U);
    EXPECT_EQ(information().gop.height, 768U);
}

TEST_F(InfoUnits, StartInTheLeastModeWithoutADisplay)
{
    vek::InfoUnit alone(vek::kQz202, clocks, {});
    ChipInformation read{};
    ASSERT_EQ(vek::readChipInformation(alone, read), VEK_OK);
    EXPECT_EQ(read.gop.width, 640U);
    EXPECT_EQ(read.gop.height, 480U);
    EXPECT_EQ(read.coreCount, 3U);
    EXPECT_EQ(read.memoryBusBits, 64U);
}

TEST_F(InfoUnits, AnswerLongsOnlyAndLetNothingElseBeWritten)
{
    for (std::uint64_t address = 0; address < kWindowSize; address += 4) {
        if (address == kGopVersion || address == kGopMode) {
            continue;
        }
        const auto before = unit.read(address, 4);
        EXPECT_EQ(before.result, VEK_OK);
        EXPECT_EQ(unit.write(address, 4, ~before.value), VEK_OK);
        EXPECT_EQ(unit.read(address, 4).value, before.value) << address;
    }
    EXPECT_EQ(unit.read(0, 8).result, VEK_NO_RESPONSE);
    EXPECT_EQ(unit.read(2, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(unit.read(kWindowSize, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(unit.write(0, 1, 0), VEK_NO_RESPONSE);
}

TEST(ChipInformationDriver, TellsAFailureOfAnyRegister)
{
    FakeRegisters registers;
    registers.longs[kCores] = 2;
    ChipInformation read{};
    ASSERT_EQ(vek::readChipInformation(registers, read), VEK_OK);
    EXPECT_EQ(read.coreCount, 1U);
    for (const std::uint64_t address : {kMemoryBus, kMemorySize, kGopVersion, kGopMode, kCores, kCores + kLoad}) {
        registers.failing = {address};
        EXPECT_EQ(vek::readChipInformation(registers, read), VEK_IO_ERROR) << address;
    }
}

TEST(ChipInformationDriver, ReadsNoMoreCoresThanThereMayBe)
{
    FakeRegisters registers;
    for (std::uint64_t core = 0; core < 20; ++core) {
        registers.longs[kCores + kCoreStep * core] = 3;
    }
    ChipInformation read{};
    ASSERT_EQ(vek::readChipInformation(registers, read), VEK_OK);
    EXPECT_EQ(read.byCore().size(), kMaxCores);
}

}  // namespace
