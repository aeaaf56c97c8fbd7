// Writes of one value to runs of items: video memory (all but its longs), kernel memory and the AMBA bus.

#include <string>
#include <vector>

#include "memory_support.h"

namespace memory_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr std::uint64_t kValue = 0xfedcba9811223344;

class RunWrite : public ConsoleTest, public ::testing::WithParamInterface<Commands>
{
protected:
    Outcome enter(const std::string& text, int repeat = 0) const { return call(it.family.run, text, repeat); }

    /** Reads a run, to have an address remembered. */
    void rememberRunAt(std::uint64_t start, std::size_t count) const
    {
        enter(it.readRun() + hex(start) + ' ' + hex(count));
        takeDeviceCalls();
    }

    /** Reads the item that follows the last run and expects it at an address. */
    void expectRemembered(std::uint64_t address) const
    {
        takeDeviceCalls();
        enter(it.readRun() + "777 1", 1);
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(address)));
    }

    const Commands it = GetParam();
    const std::uint64_t base = it.family.base;
    const std::uint64_t size = it.width.size;
};

INSTANTIATE_TEST_SUITE_P(Memory, RunWrite, ::testing::ValuesIn(itemRunCommands()), commandsName);

TEST_P(RunWrite, WritesTheValueAtRisingAddresses)
{
    for (const std::size_t count : {1U, 2U, 17U}) {
        EXPECT_EQ(enter(it.writeRun() + hex(base) + ' ' + hex(count) + " a5"), Outcome{});
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.writeCalls(base, count, 0xa5)));
        expectRemembered(base + count * size);
    }
    EXPECT_EQ(enter(it.writeRun() + "0x3001,0x2\t0x5 9"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.writeCalls(0x3001, 2, 5)));
}

TEST_P(RunWrite, TruncatesTheValueToTheItem)
{
    EXPECT_EQ(enter(it.writeRun() + hex(base) + " 2 " + hex(kValue)), Outcome{});
    EXPECT_EQ(enter(it.writeRun() + hex(base) + " 1 111223344556677ff"), Outcome{});
    Lines expected = it.writeCalls(base, 2, it.truncated(kValue));
    expected.push_back(it.writeCall(base, it.truncated(0x11223344556677ff)));
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(expected));
}

TEST_P(RunWrite, NeedsAddressCountAndValue)
{
    rememberRunAt(base, 3);
    for (const char* arguments : {"", "10", "10 2", "10 2 ,\t", "10,,2", "10 0"}) {
        EXPECT_EQ(enter(it.writeRun() + arguments), Outcome{-2}) << arguments;
        EXPECT_EQ(enter(it.writeRun() + arguments, 1), Outcome{-2}) << arguments;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    expectRemembered(base + 3 * size);
    EXPECT_EQ(runLine(it.writeRun() + "10 2"), (Outcome{-2, std::string(console_test::kBadArgumentLine)}));
}

TEST_P(RunWrite, CountBelowOneWritesNothing)
{
    for (const char* count : {"0", "80000000", "ffffffff", "100000000", "zz"}) {
        rememberRunAt(base, 3);
        EXPECT_EQ(enter(it.writeRun() + "3000 " + count + " 5"), Outcome{}) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty()) << count;
        expectRemembered(0x3000);
    }
}

TEST_P(RunWrite, CountIsTheLowThirtyTwoBits)
{
    EXPECT_EQ(enter(it.writeRun() + hex(base) + " f00000002 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.writeCalls(base, 2, 5)));
    expectRemembered(base + 2 * size);
}

TEST_P(RunWrite, IgnoresTheRepeatFlag)
{
    for (const int repeat : {1, 2, -1}) {
        rememberRunAt(base, 3);
        EXPECT_EQ(enter(it.writeRun() + "3000 2 5", repeat), Outcome{});
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.writeCalls(0x3000, 2, 5)));
        expectRemembered(0x3000 + 2 * size);
        EXPECT_EQ(enter(it.writeRun() + "4000 0 5", repeat), Outcome{});
        expectRemembered(0x4000);
    }
}

TEST_P(RunWrite, FailedWriteIsNoErrorAndDoesNotStopTheRun)
{
    recording_vek::setResult(it.writeFunction(), -5);
    EXPECT_EQ(enter(it.writeRun() + hex(base) + " 3 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.writeCalls(base, 3, 5)));
    expectRemembered(base + 3 * size);
}

TEST_P(RunWrite, AddressesWrapAtTheirEnd)
{
    EXPECT_EQ(enter(it.writeRun() + hex(-size) + " 2 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(-size, 5), it.writeCall(0, 5)));
    expectRemembered(size);
}

// An empty line writes again on the AMBA bus only.
TEST_P(RunWrite, EmptyLine)
{
    EXPECT_EQ(runLine(it.writeRun() + hex(base) + " 2 5"), Outcome{});
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAreArray(it.family.letter == kAmba.letter ? it.writeCalls(base, 2, 5) : Lines{}));
}

}  // namespace
}  // namespace memory_test
