// Reads of runs of items: video memory (all but its longs), kernel memory and the AMBA bus.

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

class RunRead : public FolderTest, public ::testing::WithParamInterface<Commands>
{
protected:
    Outcome enter(const std::string& text, int repeat = 0) const { return call(it.family.run, text, repeat); }

    /** Runs a command whose calls and output do not matter. */
    void prepare(const std::string& text) const
    {
        enter(text);
        takeDeviceCalls();
    }

    /** Where a run of the same handler goes on. */
    std::uint64_t rememberedAddress() const
    {
        const Commands any{it.family, kQuad};
        takeDeviceCalls();
        enter(any.readRun() + "777 1", 1);
        const Lines calls = takeDeviceCalls();
        const std::string prefix = any.readFunction() + '(';
        if (calls.size() != 1 || !calls[0].starts_with(prefix)) {
            ADD_FAILURE() << ::testing::PrintToString(calls);
            return 0;
        }
        return std::stoull(calls[0].substr(prefix.size()), nullptr, 16);
    }

    const Commands it = GetParam();
    const std::uint64_t base = it.family.base;
    const std::uint64_t size = it.width.size;
};

INSTANTIATE_TEST_SUITE_P(Memory, RunRead, ::testing::ValuesIn(itemRunCommands()), commandsName);

TEST_P(RunRead, PrintsAndReadsItemByItem)
{
    fillWithPattern(it.family.memory(), base, 0x200);
    const std::size_t line = it.width.itemsPerLine;
    for (const std::size_t count : {std::size_t{1}, line - 1, line, line + 1, 2 * line, 2 * line + 1, 5 * line}) {
        EXPECT_EQ(enter(it.readRun() + hex(base) + ' ' + hex(count)), (Outcome{0, it.run(base, count)})) << count;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.readCalls(base, count))) << count;
    }
}

TEST_P(RunRead, MayBeginAnywhere)
{
    fillWithPattern(it.family.memory(), base, 0x200);
    EXPECT_EQ(enter(it.readRun() + hex(base + 5) + " 23"), (Outcome{0, it.run(base + 5, 0x23)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.readCalls(base + 5, 0x23)));
}

TEST_P(RunRead, ReadsOneItemAtZeroWithoutArguments)
{
    prepare(it.readRun() + hex(base) + " 2");
    EXPECT_EQ(enter(it.readRun()), (Outcome{0, it.run(0, 1)}));
    EXPECT_EQ(enter(it.readRun() + " ,\t"), (Outcome{0, it.run(0, 1)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(0), it.readCall(0)));
}

TEST_P(RunRead, ReadsOneItemWithoutACount)
{
    EXPECT_EQ(enter(it.readRun() + hex(base)), (Outcome{0, it.run(base, 1)}));
    EXPECT_EQ(enter(it.readRun() + hex(base) + ",\t"), (Outcome{0, it.run(base, 1)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(base), it.readCall(base)));
}

TEST_P(RunRead, NumbersAreHexadecimal)
{
    EXPECT_EQ(enter(it.readRun() + "0x1aB,0x11"), (Outcome{0, it.run(0x1ab, 0x11)}));
    EXPECT_EQ(enter(it.readRun() + "\t1ab\t11"), (Outcome{0, it.run(0x1ab, 0x11)}));
}

TEST_P(RunRead, EmptyRunPrintsTheClosingNewlineOnly)
{
    for (const char* count : {"0", "80000000", "ffffffff", "ffffffff80000000", "100000000", "zz", "-1"}) {
        prepare(it.readRun() + "40 2");
        EXPECT_EQ(enter(it.readRun() + "3000 " + count), (Outcome{0, "\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty()) << count;
        EXPECT_EQ(rememberedAddress(), 0x3000) << count;
    }
}

TEST_P(RunRead, RepeatedEmptyRunStaysWhereItIs)
{
    prepare(it.readRun() + hex(base) + " 3");
    EXPECT_EQ(enter(it.readRun() + "40 0", 1), (Outcome{0, "\n"}));
    EXPECT_EQ(rememberedAddress(), base + 3 * size);
}

TEST_P(RunRead, CountIsTheLowThirtyTwoBits)
{
    EXPECT_EQ(enter(it.readRun() + hex(base) + " f00000002"), (Outcome{0, it.run(base, 2)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.readCalls(base, 2)));
    EXPECT_EQ(rememberedAddress(), base + 2 * size);
}

TEST_P(RunRead, FailedReadShowsZeroAndIsNoError)
{
    it.family.memory().pokeBytes(base, std::vector<std::uint8_t>(0x40, 0xa5));
    recording_vek::setResultOnCall(it.readFunction(), 2, -5);
    const std::uint64_t value = it.truncated(0xa5a5a5a5a5a5a5a5);
    EXPECT_EQ(enter(it.readRun() + hex(base) + " 3"), (Outcome{0, it.runOf(base, {value, 0, value})}));
    EXPECT_EQ(rememberedAddress(), base + 3 * size);
}

TEST_P(RunRead, AddressesWrapAtTheirEnd)
{
    EXPECT_EQ(enter(it.readRun() + hex(-size) + " 2"), (Outcome{0, it.runOf(-size, {0, 0})}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(-size), it.readCall(0)));
    EXPECT_EQ(rememberedAddress(), size);
}

TEST_P(RunRead, LabelsMayGrowWithinARun)
{
    const std::uint64_t start = 0x100000000 - it.width.itemsPerLine * size;
    const std::size_t count = it.width.itemsPerLine + 1;
    EXPECT_EQ(enter(it.readRun() + hex(start) + ' ' + hex(count)), (Outcome{0, it.run(start, count)}));
}

TEST_P(RunRead, RepeatedRunGoesOnWhereTheLastEnded)
{
    fillWithPattern(it.family.memory(), base, 0x200);
    prepare(it.readRun() + hex(base) + " 3");
    EXPECT_EQ(enter(it.readRun() + "40 5", 1), (Outcome{0, it.run(base + 3 * size, 5)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.readCalls(base + 3 * size, 5)));
    EXPECT_EQ(enter(it.readRun() + "40", 1), (Outcome{0, it.run(base + 8 * size, 1)}));
    EXPECT_EQ(enter(it.readRun(), 1), (Outcome{0, it.run(base + 9 * size, 1)}));
    EXPECT_EQ(rememberedAddress(), base + 10 * size);
}

TEST_P(RunRead, OnlyARepeatFlagOfOneGoesOn)
{
    for (const int repeat : {0, 2, -1, 257}) {
        prepare(it.readRun() + hex(base) + " 3");
        EXPECT_EQ(enter(it.readRun() + "40 2", repeat), (Outcome{0, it.run(0x40, 2)})) << repeat;
        EXPECT_EQ(rememberedAddress(), 0x40 + 2 * size) << repeat;
    }
}

TEST_P(RunRead, EmptyLinesWalkForward)
{
    fillWithPattern(it.family.memory(), base, 0x400);
    EXPECT_EQ(runLine(it.readRun() + hex(base) + " 10"), (Outcome{0, it.run(base, 16)}));
    EXPECT_EQ(runLine(""), (Outcome{0, it.run(base + 16 * size, 16)}));
    EXPECT_EQ(runLine(""), (Outcome{0, it.run(base + 32 * size, 16)}));
}

TEST_P(RunRead, RefusesOtherWords)
{
    prepare(it.readRun() + hex(base) + " 2");
    Lines words{"", " ", ",\t\r\n", "vrs", "krbsx", "arbss", "rrbs", "crbs", "awbss"};
    for (const Commands& each : allCommands()) {
        words.insert(words.end(), {each.read(), each.write()});
        if (each.family.letter != it.family.letter) {
            words.insert(words.end(), {each.readRun(), each.writeRun()});
        }
    }
    for (const std::string& word : words) {
        for (const int repeat : {0, 1}) {
            EXPECT_EQ(enter(word + " 0 1 2", repeat), Outcome{-2}) << word;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(rememberedAddress(), base + 2 * size);
}

// The very bytes of the output, not put together by the test.
class RunOutput : public FolderTest
{
};

TEST_F(RunOutput, OfVideoMemoryIsLiterally)
{
    recording_vek::videoMemory().pokeBytes(0x100, {0x41, 0x42, 0x00, 0x7f, 0x20, 0x7e, 0xff});
    EXPECT_EQ(call(doMultVram, "vrbs 100 11").output,
              "00000100: 41 42 00 7f 20 7e ff 00 00 00 00 00 00 00 00 00 \tAB.. ~..........\n"
              "00000110: 00                                              \t.\n"
              "\n");
    EXPECT_EQ(call(doMultVram, "vrws 100 9").output,
              "00000100: 4241 7f00 7e20 00ff 0000 0000 0000 0000\n"
              "00000110: 0000\n");
    EXPECT_EQ(call(doMultVram, "vrqs 100 3").output,
              "00000100: 7f004241 00ff7e20 00000000 00000000\n"
              "00000110: 00000000 00000000\n");
    EXPECT_EQ(call(doMultVram, "vrws 100000000 1").output, "100000000: 0000\n");
}

TEST_F(RunOutput, OfKernelMemoryIsLiterally)
{
    recording_vek::kernelMemory().pokeBytes(0xffff888000001000, {0x2a, 0x2b, 0x2c, 0x2d, 0x2e, 0x2f, 0x30, 0x31});
    EXPECT_EQ(call(doMultKmem, "krws ffff888000001000 9").output,
              "ffff888000001000: 2b2a 2d2c 2f2e 3130 0000 0000 0000 0000\n"
              "ffff888000001010: 0000\n");
    EXPECT_EQ(call(doMultKmem, "krls ffff888000001000 5").output,
              "ffff888000001000: 2d2c2b2a 31302f2e 00000000 00000000\n"
              "ffff888000001010: 00000000\n");
    EXPECT_EQ(call(doMultKmem, "krqs ffff888000001000 3").output,
              "ffff888000001000: 2d2c2b2a 31302f2e 00000000 00000000\n"
              "ffff888000001010: 00000000 00000000\n");
    EXPECT_EQ(call(doMultKmem, "krws 10 1").output, "0000000000000010: 0000\n");
}

// A dump keeps the first ten characters of a label, and with it the end of a longer one behind at most two bytes.
TEST_F(RunOutput, OfKernelBytesIsLiterally)
{
    recording_vek::kernelMemory().pokeBytes(0xffff888000001000, {0x2a, 0x2b, 0x2c, 0x2d, 0x2e, 0x2f, 0x30, 0x31});
    EXPECT_EQ(call(doMultKmem, "krbs ffff888000001000 20").output,
              "ffff8880002a 2b 2c 2d 2e 2f 30 31 00 00 00 00 00 00 00 00 \t*+,-./01........\n"
              "ffff88800000 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \t................\n"
              "\n");
    EXPECT_EQ(call(doMultKmem, "krbs ffff888000001000").output, "ffff8880002a  00: \t*\n\n");
    EXPECT_EQ(call(doMultKmem, "krbs ffff888000001000 2").output, "ffff8880002a 2b   \t*+\n\n");
    EXPECT_EQ(call(doMultKmem, "krbs ffff888000001000 3").output,
              "ffff8880002a 2b 2c                                        \t*+,\n\n");
    EXPECT_EQ(call(doMultKmem, "krbs 10").output, "00000010: 00                                              \t.\n\n");
}

TEST_F(RunOutput, OfTheAmbaBusIsLiterally)
{
    recording_vek::ambaBus().pokeBytes(0x1000100, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88});
    EXPECT_EQ(call(doMultAmba, "arbs 1000100 8").output,
              "01000100: 11 22 33 44 55 66 77 88                         \t.\"3DUfw.\n\n");
    EXPECT_EQ(call(doMultAmba, "arws 1000100 4").output, "01000100: 2211 4433 6655 8877\n");
    EXPECT_EQ(call(doMultAmba, "arls 1000100 5").output,
              "01000100: 44332211 88776655 00000000 00000000\n"
              "01000110: 00000000\n");
    EXPECT_EQ(call(doMultAmba, "arqs 1000100 2").output, "01000100: 44332211 88776655 00000000 00000000\n");
}

TEST_F(RunOutput, FollowsTheExamples)
{
    EXPECT_EQ(call(doMultKmem, "krws 0 0").output, "\n");
    EXPECT_EQ(call(doMultKmem, "krws 50 1", 1).output, "0000000000000000: 0000\n");
    call(doMultKmem, "kwls ffff888000001000 4 0");
    EXPECT_EQ(call(doMultKmem, "krls 0 1", 1).output, "ffff888000001010: 00000000\n");
    call(doMultAmba, "awls 2000 4 1");
    EXPECT_EQ(call(doMultAmba, "arls 0 1", 1).output, "00002010: 00000000\n");
    EXPECT_EQ(call(doMultAmba, "awbs 0 0 ff"), Outcome{});
    EXPECT_EQ(call(doMultAmba, "arls 50 1", 1).output, "00000000: 00000000\n");
}

TEST_F(RunOutput, KernelRunsTakeNoFile)
{
    for (const char* text : {"krbs 0 4 file", "krws 0 4 file", "krls 0 4 file", "krqs 0 4 file", "krbs 0 0 file"}) {
        EXPECT_EQ(call(doMultKmem, text).status, 0);
    }
    EXPECT_TRUE(std::filesystem::is_empty("."));
    EXPECT_EQ(call(doMultKmem, "krls 0 1 no/such/folder"), (Outcome{0, "0000000000000000: 00000000\n"}));
}

}  // namespace
}  // namespace memory_test
