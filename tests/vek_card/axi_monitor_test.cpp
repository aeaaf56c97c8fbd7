#include "card/axi_monitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <thread>

#include "card/chip_facts.h"
#include "card/clock_unit.h"
#include "card/die.h"
#include "drivers/axi_data.h"
#include "drivers/axi_monitor.h"
#include "drivers/clocks.h"
#include "fake_registers.h"
#include "test_clock.h"
#include "vek.h"

namespace
{

using namespace vek::axi_monitor;
using vek::AxiSample;

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

/// A monitor with the clocks that it follows.
class Monitored
{
public:
    explicit Monitored(const vek::ChipFacts& chip) : monitor(clock, chip.axiMonitor, chip.clocks), clocks_(chip, *this)
    {
    }

    AxiSample sample()
    {
        AxiSample taken;
        EXPECT_EQ(vek::takeAxiSample(monitor, taken), VEK_OK);
        return taken;
    }

    std::uint64_t read(std::uint64_t address, unsigned width = 4)
    {
        const auto [result, value] = monitor.read(address, width);
        EXPECT_EQ(result, VEK_OK) << address;
        return value;
    }

    void write(std::uint64_t address, std::uint32_t value)
    {
        EXPECT_EQ(monitor.write(address, 4, value), VEK_OK) << address;
    }

    void passSeconds(std::uint64_t seconds) { clock.advanceNanoseconds(seconds * kNanosecondsPerSecond); }

    vek::AddressSpace& clocks() { return clocks_.unit; }

    TestClock clock;
    vek::AxiMonitor monitor;

private:
    struct Clocks {
        Clocks(const vek::ChipFacts& chip, Monitored& owner) : die(owner.clock), unit(chip.clocks, die, &owner.monitor)
        {
        }
        vek::Die die;
        vek::ClockUnit unit;
    };

    Clocks clocks_;
};

class FreeRunning : public testing::Test, protected Monitored
{
protected:
    static constexpr std::uint32_t kStart = 1;
    static constexpr std::uint32_t kStop = 2;
    static constexpr std::uint32_t kClear = 4;

    FreeRunning() : Monitored(vek::kQz201) {}
};

class Timed : public testing::Test, protected Monitored
{
protected:
    static constexpr std::uint32_t kStart = 0x14;
    static constexpr std::uint32_t kStopTimer = 0;
    static constexpr std::uint32_t kStop = 1;
    static constexpr std::uint32_t kClear = 2;
    static constexpr std::uint32_t kAxiHertz = 500'000'000;

    Timed() : Monitored(vek::kQz202) {}
};

/// Whether every master of a sample has done something, and each something else.
void expectDifferentMasters(const AxiSample& sample)
{
    std::set<std::uint64_t> reads;
    std::set<std::uint64_t> units;
    for (const vek::AxiCounts& counts : sample.byMaster()) {
        EXPECT_GT(counts.reads, 0U);
        EXPECT_GT(counts.writes, 0U);
        EXPECT_GT(counts.bytes, counts.reads + counts.writes);
        EXPECT_GT(counts.latencyCycles, counts.reads + counts.writes);
        EXPECT_STRNE(vek::unitName(counts.unit.kind), "unknown");
        reads.insert(counts.reads);
        units.insert(vek::encodeUnit(counts.unit));
    }
    EXPECT_EQ(reads.size(), sample.masters);
    EXPECT_EQ(units.size(), sample.masters);
}

TEST_F(FreeRunning, CountsFromStartToFinal)
{
    passSeconds(1);
    EXPECT_EQ(sample().counts[1].reads, 0U) << "not yet started";
    write(kControl, kStart);
    EXPECT_EQ(read(kControl), kCounts);
    passSeconds(1);
    const AxiSample first = sample();
    EXPECT_TRUE(first.counting);
    EXPECT_EQ(first.masters, 8U);
    EXPECT_EQ(first.cycles, 600'000'000U);
    // The first 3D core at 1000 MHz has 620 million busy cycles of work a second and reads in every 9th of them.
    EXPECT_EQ(first.counts[1].unit, (vek::UnitId{vek::ChipUnit::k3d, 0}));
    EXPECT_EQ(first.counts[1].reads, 620'000'000U / 9);
    EXPECT_EQ(first.counts[1].writes, 620'000'000U / 24);
    EXPECT_EQ(first.counts[1].bytes, 64 * (first.counts[1].reads + first.counts[1].writes));
    expectDifferentMasters(first);
    passSeconds(1);
    write(kControl, kStop);
    EXPECT_EQ(read(kControl), kFinal);
    passSeconds(5);
    const AxiSample last = sample();
    EXPECT_FALSE(last.counting);
    EXPECT_EQ(last.cycles, 1'200'000'000U);
    for (std::size_t master = 0; master < last.masters; ++master) {
        EXPECT_EQ(last.counts[master].reads, 2 * first.counts[master].reads) << master;
        EXPECT_EQ(last.counts[master].writes, 2 * first.counts[master].writes) << master;
    }
}

TEST_F(FreeRunning, GoesOnAfterAnotherStartUntilItIsCleared)
{
    write(kControl, kStart);
    passSeconds(1);
    write(kControl, kStop);
    passSeconds(1);
    write(kControl, kStart);
    passSeconds(1);
    EXPECT_EQ(sample().cycles, 1'200'000'000U);
    write(kControl, kClear);
    EXPECT_EQ(sample().cycles, 0U);
    EXPECT_EQ(sample().counts[0].reads, 0U);
    passSeconds(1);
    EXPECT_EQ(sample().cycles, 600'000'000U) << "a clear does not end the run";
    write(kControl, kStart);
    EXPECT_EQ(sample().cycles, 600'000'000U) << "nor does a second start begin it anew";
}

TEST_F(FreeRunning, ShowsTheCountsOfTheLatchUntilTheNextOne)
{
    write(kControl, kStart);
    passSeconds(1);
    write(kLatch, 0);
    const std::uint64_t reads = read(kFirstMaster + kReads, 8);
    const std::uint64_t sequence = read(kSequence, 8);
    passSeconds(1);
    EXPECT_EQ(read(kFirstMaster + kReads, 8), reads);
    EXPECT_EQ(read(kFirstMaster + kReads), reads & 0xffffffff);
    EXPECT_EQ(read(kFirstMaster + kReads + 4), reads >> 32);
    write(kLatch, 0);
    EXPECT_EQ(read(kFirstMaster + kReads, 8), 2 * reads);
    EXPECT_EQ(read(kSequence, 8), sequence + 1);
}

TEST_F(FreeRunning, CountsTheSameHoweverOftenItIsLookedAt)
{
    Monitored seldom(vek::kQz201);
    write(kControl, kStart);
    seldom.write(kControl, kStart);
    for (int look = 0; look < 1000; ++look) {
        clock.advanceNanoseconds(1'234'567);
        sample();
    }
    seldom.clock.advanceNanoseconds(1'234'567'000);
    const AxiSample often = sample();
    const AxiSample once = seldom.sample();
    EXPECT_EQ(often.cycles, once.cycles);
    for (std::size_t master = 0; master < once.masters; ++master) {
        EXPECT_EQ(often.counts[master].reads, once.counts[master].reads) << master;
        EXPECT_EQ(often.counts[master].writes, once.counts[master].writes) << master;
    }
}

TEST_F(FreeRunning, FollowsTheClocksFromTheMomentThatTheyChange)
{
    write(kControl, kStart);
    passSeconds(1);
    // The 3D clocks stop, with them the 3D cores.
    ASSERT_EQ(vek::ClockDriver(clocks()).setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_3DCORE), VEK_OK);
    const AxiSample before = sample();
    passSeconds(1);
    const AxiSample after = sample();
    EXPECT_GT(before.counts[1].reads, 0U);
    EXPECT_EQ(after.counts[1].reads, before.counts[1].reads);
    EXPECT_EQ(after.counts[2].reads, before.counts[2].reads);
    EXPECT_EQ(after.counts[3].reads, 2 * before.counts[3].reads) << "2D goes on";
    // Without the clock of the interconnect nothing goes on.
    ASSERT_EQ(vek::ClockDriver(clocks()).setMode(VEK_CLOCK_OFF, VEK_CLOCK_SOURCE_DEVPLL), VEK_OK);
    passSeconds(1);
    EXPECT_EQ(sample().cycles, after.cycles);
    EXPECT_EQ(sample().counts[3].reads, after.counts[3].reads);
}

TEST_F(FreeRunning, TakesNothingOverFromAClockThatWasFaster)
{
    write(kControl, kStart);
    clock.advanceNanoseconds(31);
    EXPECT_EQ(sample().counts[3].reads, 0U);
    ASSERT_EQ(vek::ClockDriver(clocks()).setMode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_DEVPLL), VEK_OK);
    clock.advanceMilliseconds(1);
    // 2D has 150 million busy cycles of work a second and reads in every 8th of them.
    EXPECT_EQ(sample().counts[3].reads, 150'000U / 8);
}

TEST_F(FreeRunning, HasNoTimer)
{
    write(kCycle, 1000);
    EXPECT_EQ(read(kCycle), 0U);
    for (const std::uint32_t value : {0U, 3U, 5U, 0x14U, 0xffffffffU}) {
        write(kControl, value);
        EXPECT_EQ(read(kControl), 0U) << value;
    }
}

TEST_F(Timed, LatchesTheCountsOfEachSpan)
{
    write(kControl, kStart);
    EXPECT_EQ(read(kControl), 0U) << "without a span the timer does not start";
    write(kCycle, kAxiHertz);
    EXPECT_EQ(read(kCycle), kAxiHertz);
    write(kControl, kStart);
    EXPECT_EQ(read(kControl), kCounts);
    clock.advanceMilliseconds(999);
    EXPECT_EQ(sample().sequence, 0U);
    EXPECT_EQ(sample().counts[1].reads, 0U) << "no span has ended";
    clock.advanceMilliseconds(1);
    const AxiSample first = sample();
    EXPECT_EQ(first.sequence, 1U);
    EXPECT_EQ(first.cycles, kAxiHertz);
    EXPECT_EQ(first.masters, 6U);
    EXPECT_EQ(first.counts[1].reads, 620'000'000U / 9);
    expectDifferentMasters(first);
    clock.advanceMilliseconds(10'500);
    const AxiSample later = sample();
    EXPECT_EQ(later.sequence, 11U);
    EXPECT_EQ(later.cycles, kAxiHertz) << "those of one span, not of all";
    EXPECT_EQ(later.counts[1].reads, first.counts[1].reads);
}

TEST_F(Timed, CountsTheSpansHoweverOftenItIsLookedAt)
{
    Monitored seldom(vek::kQz202);
    for (Monitored* each : {static_cast<Monitored*>(this), &seldom}) {
        each->write(kCycle, 12'345);
        each->write(kControl, kStart);
    }
    for (int look = 0; look < 1000; ++look) {
        clock.advanceNanoseconds(9'999);
        sample();
    }
    seldom.clock.advanceNanoseconds(9'999'000);
    const AxiSample often = sample();
    const AxiSample once = seldom.sample();
    EXPECT_EQ(once.sequence, 9'999'000U / 2 / 12'345);
    EXPECT_EQ(often.sequence, once.sequence);
    for (std::size_t master = 0; master < once.masters; ++master) {
        EXPECT_EQ(often.counts[master].reads, once.counts[master].reads) << master;
    }
}

TEST_F(Timed, EndsTheRunWithWhatThePresentSpanHasCounted)
{
    write(kCycle, kAxiHertz);
    write(kControl, kStart);
    clock.advanceMilliseconds(1'250);
    write(kControl, kStop);
    EXPECT_EQ(read(kControl), kFinal);
    clock.advanceMilliseconds(5'000);
    const AxiSample last = sample();
    EXPECT_FALSE(last.counting);
    EXPECT_EQ(last.sequence, 2U);
    EXPECT_EQ(last.cycles, kAxiHertz / 4);
    write(kControl, kClear);
    EXPECT_EQ(read(kControl), 0U);
    EXPECT_EQ(sample().sequence, 0U);
    EXPECT_EQ(sample().cycles, 0U);
}

TEST_F(Timed, StopsItsTimerAndKeepsTheLastSpan)
{
    write(kCycle, kAxiHertz);
    write(kControl, kStart);
    clock.advanceMilliseconds(1'500);
    write(kControl, kStopTimer);
    EXPECT_EQ(read(kControl), 0U);
    clock.advanceMilliseconds(1'500);
    EXPECT_EQ(sample().sequence, 1U);
    EXPECT_EQ(sample().cycles, kAxiHertz);
    write(kControl, kStart);
    clock.advanceMilliseconds(999);
    EXPECT_EQ(sample().sequence, 1U) << "a started timer begins a span";
    write(kCycle, 0);
    EXPECT_EQ(read(kControl), 0U);
    for (const std::uint32_t value : {3U, 4U, 0x10U, 0x15U}) {
        write(kControl, value);
        EXPECT_EQ(read(kControl), 0U) << value;
    }
}

TEST_F(Timed, BearsTheShortestSpansForLong)
{
    write(kCycle, 1);
    write(kControl, kStart);
    passSeconds(100'000'000);
    EXPECT_EQ(sample().sequence, 100'000'000ULL * kAxiHertz);
    EXPECT_EQ(sample().cycles, 1U);
    EXPECT_LE(sample().counts[1].reads, 1U);
}

TEST_F(Timed, AnswersWholeRegistersOnly)
{
    for (const unsigned width : {1U, 2U}) {
        EXPECT_EQ(monitor.read(kControl, width).result, VEK_NO_RESPONSE);
        EXPECT_EQ(monitor.write(kControl, width, 1), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(monitor.read(2, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(monitor.read(kSequence + 4, 8).result, VEK_NO_RESPONSE);
    EXPECT_EQ(monitor.read(kSize, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(monitor.write(kSize, 4, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(monitor.write(kCycle, 8, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(read(kCycle), 0U);
    EXPECT_EQ(read(kMasters), 6U);
    for (std::uint64_t address = 0; address < kSize; address += 4) {
        read(address);
    }
    const auto behindTheLast = kFirstMaster + 6 * kMasterStep;
    write(behindTheLast, 1);
    EXPECT_EQ(read(behindTheLast + kUnit), 0U);
}

TEST_F(Timed, BearsTwoThreads)
{
    write(kCycle, 100);
    std::thread other([this] {
        for (int round = 0; round < 2000; ++round) {
            write(kControl, round % 2 == 0 ? kStart : kStop);
            vek::ClockDriver(clocks()).setMode(round % 3 == 0 ? VEK_CLOCK_OFF : VEK_CLOCK_ON, VEK_CLOCK_SOURCE_3DCORE);
        }
    });
    for (int round = 0; round < 2000; ++round) {
        EXPECT_EQ(sample().masters, 6U);
    }
    other.join();
}

TEST(AxiSamples, TellTheFirstFailure)
{
    FakeRegisters registers;
    AxiSample sample;
    registers.failing = {kLatch};
    EXPECT_EQ(vek::takeAxiSample(registers, sample), VEK_IO_ERROR);
    registers.failing = {kControl};
    EXPECT_EQ(vek::takeAxiSample(registers, sample), VEK_IO_ERROR);
    registers.failing = {};
    EXPECT_EQ(vek::takeAxiSample(registers, sample), VEK_NO_RESPONSE) << "it has no quads";
}

TEST(AxiSamples, ReadNoMoreMastersThanThereMayBe)
{
    class Everything final : public vek::AddressSpace
    {
    public:
        vek::ReadResult read(std::uint64_t, unsigned) override { return {VEK_OK, vek::kAllOnes}; }
        int write(std::uint64_t, unsigned, std::uint64_t) override { return VEK_OK; }
    };
    Everything registers;
    AxiSample sample;
    EXPECT_EQ(vek::takeAxiSample(registers, sample), VEK_OK);
    EXPECT_EQ(sample.masters, kMaxMasters);

    // Its text is the longest that there is.
    vek::AxiDataText text;
    const std::string lines(vek::formatAxiSample(sample, {.tv_sec = 0x7fffffffffff, .tv_nsec = 999'999'999}, text));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), static_cast<std::ptrdiff_t>(kMaxMasters));
    EXPECT_EQ(lines.back(), '\n');
}

TEST(AxiSamples, AreFormattedAsCommaSeparatedValues)
{
    AxiSample sample{};
    sample.masters = 2;
    sample.counts[0] = {{vek::ChipUnit::k3d, 1}, 3, 4, 448, 515};
    sample.counts[1] = {{vek::ChipUnit::kDisplay, 0}, 0, 0, 0, 0};
    vek::AxiDataText text;
    // 2022-03-31 09:05:07 UTC.
    const timespec when{.tv_sec = 1648717507, .tv_nsec = 250'999'999};
    EXPECT_EQ(vek::formatAxiSample(sample, when, text),
              "2022-03-31T09:05:07.250Z,3d1,3,4,448,73.5\n"
              "2022-03-31T09:05:07.250Z,display0,0,0,0,0.0\n");
    EXPECT_EQ(vek::kAxiDataHeader, "time,master,reads,writes,bytes,latency\n");
}

}  // namespace
