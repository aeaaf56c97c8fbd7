// Runs of longs of video memory, which the library reads and writes as a whole.

#include <string>
#include <vector>

#include "memory_support.h"

namespace memory_test
{
namespace
{

using recording_vek::videoMemory;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class VideoLongRun : public FolderTest
{
protected:
    /** Expects the address at which the next repeated run of bytes starts. */
    static void expectRemembered(const std::string& address)
    {
        takeDeviceCalls();
        call(doMultVram, "vrbs 777 1", 1);
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekVramReadByte(0x" + address + ")"));
    }
};

TEST_F(VideoLongRun, IsReadAndDumpedByTheLibrary)
{
    videoMemory().poke<std::uint32_t>(0x1000, 0x11223344);
    videoMemory().poke<std::uint32_t>(0x100c, 0xfedcba98);
    EXPECT_EQ(call(doMultVram, "vrls 1000 4"), (Outcome{0, "\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekMultiVramReadLong(buffer, 0x1000, 4, null)", "dump_vram(buffer, 4, 0x1000, 4)"));
    EXPECT_THAT(recording_vek::received().dumped, ElementsAre(0x11223344, 0, 0, 0xfedcba98));
    expectRemembered("1000");
}

TEST_F(VideoLongRun, IsReadIntoAFileByTheLibrary)
{
    EXPECT_EQ(call(doMultVram, "vrls 1000 4 dump.bin"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vrls,ffff800000001001\t0x10,no/such/Folder 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultiVramReadLong(null, 0x1000, 4, \"DUMP.BIN\")",
                                               "vekMultiVramReadLong(null, 0xffff800000001001, 16, "
                                               "\"NO/SUCH/FOLDER\")"));
    EXPECT_TRUE(std::filesystem::is_empty(".")) << "the file is the library's";
    expectRemembered("ffff800000001001");
}

TEST_F(VideoLongRun, ReadsOneItemByDefault)
{
    call(doMultVram, "vrls 50 2");
    takeDeviceCalls();
    EXPECT_EQ(call(doMultVram, "vrls"), (Outcome{0, "\n"}));
    EXPECT_EQ(call(doMultVram, "vrls 40"), (Outcome{0, "\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekMultiVramReadLong(buffer, 0x0, 1, null)", "dump_vram(buffer, 4, 0x0, 1)",
                            "vekMultiVramReadLong(buffer, 0x40, 1, null)", "dump_vram(buffer, 4, 0x40, 1)"));
}

TEST_F(VideoLongRun, RepeatedReadsTheSameRunAgain)
{
    call(doMultVram, "vrls 1000 4");
    takeDeviceCalls();
    EXPECT_EQ(call(doMultVram, "vrls 50 2", 1), (Outcome{0, "\n"}));
    EXPECT_EQ(call(doMultVram, "vrls 50 3 f", 1), Outcome{});
    EXPECT_EQ(call(doMultVram, "vrls", 1), (Outcome{0, "\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekMultiVramReadLong(buffer, 0x1000, 2, null)", "dump_vram(buffer, 4, 0x1000, 2)",
                            "vekMultiVramReadLong(null, 0x1000, 3, \"F\")",
                            "vekMultiVramReadLong(buffer, 0x1000, 1, null)", "dump_vram(buffer, 4, 0x1000, 1)"));
}

TEST_F(VideoLongRun, OnlyARepeatFlagOfOneReadsItAgain)
{
    for (const int repeat : {0, 2, -1}) {
        call(doMultVram, "vrls 1000 4");
        takeDeviceCalls();
        call(doMultVram, "vrls 50 2", repeat);
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekMultiVramReadLong(buffer, 0x50, 2, null)", "dump_vram(buffer, 4, 0x50, 2)"));
    }
}

TEST_F(VideoLongRun, EmptyLineReadsTheSameRunAgain)
{
    runLine("vrls 1000 4");
    const Lines first = takeDeviceCalls();
    EXPECT_THAT(first, SizeIs(2));
    EXPECT_EQ(runLine(""), (Outcome{0, "\n"}));
    EXPECT_EQ(takeDeviceCalls(), first);
    EXPECT_EQ(runLine(""), (Outcome{0, "\n"}));
    EXPECT_EQ(takeDeviceCalls(), first);
}

// The other runs remember their ends, and a run of longs goes on there.
TEST_F(VideoLongRun, SharesTheAddressWithTheOtherRuns)
{
    call(doMultVram, "vrqs 1000 2");
    takeDeviceCalls();
    call(doMultVram, "vrls 50 1 f", 1);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultiVramReadLong(null, 0x1010, 1, \"F\")"));
    expectRemembered("1010");
    call(doMultVram, "vwws 2000 3 5");
    call(doMultVram, "vrls 50 1", 1);
    expectRemembered("2006");
}

TEST_F(VideoLongRun, FailedReadShowsZeros)
{
    videoMemory().pokeBytes(0x1000, std::vector<std::uint8_t>(0x400, 0xa5));
    call(doMultVram, "vrls 1000 100");
    recording_vek::setResult("vekMultiVramReadLong", -5);
    EXPECT_EQ(call(doMultVram, "vrls 1000 100"), (Outcome{0, "\n"}));
    EXPECT_THAT(recording_vek::received().dumped, SizeIs(0x100));
    EXPECT_THAT(recording_vek::received().dumped, Each(0));
    EXPECT_EQ(call(doMultVram, "vrls 1000 1 f"), Outcome{}) << "nor is a failure with a file an error";
    recording_vek::setResult("dump_vram", -5);
    EXPECT_EQ(call(doMultVram, "vrls 1000 1"), (Outcome{0, "\n"}));
}

TEST_F(VideoLongRun, CountBelowOneIsReadOnlyIntoAFile)
{
    for (const char* count : {"0", "80000000", "ffffffff", "100000000"}) {
        call(doMultVram, "vrls 50 2");
        takeDeviceCalls();
        EXPECT_EQ(call(doMultVram, std::string("vrls 1000 ") + count), (Outcome{0, "\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty()) << count;
        expectRemembered("1000");
    }
    EXPECT_EQ(call(doMultVram, "vrls 1000 0 f"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vrls 1000 80000000 f"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vrls 2000 ffffffff f"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultiVramReadLong(null, 0x1000, 0, \"F\")",
                                               "vekMultiVramReadLong(null, 0x1000, -2147483648, \"F\")",
                                               "vekMultiVramReadLong(null, 0x2000, -1, \"F\")"));
    expectRemembered("2000");
}

TEST_F(VideoLongRun, IsFilledByTheLibrary)
{
    EXPECT_EQ(call(doMultVram, "vwls 1000 10 cafe"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultVramWriteLong(0xcafe, 0x1000, 16, null)"));
    EXPECT_EQ(videoMemory().peek<std::uint32_t>(0x103c), 0xcafe);
    expectRemembered("1000");
}

TEST_F(VideoLongRun, ValueIsTruncatedToALong)
{
    EXPECT_EQ(call(doMultVram, "vwls 0 1 fedcba9876543210"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vwls 0 1 111111111fffffffe"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultVramWriteLong(0x76543210, 0x0, 1, null)",
                                               "vekMultVramWriteLong(0xfffffffe, 0x0, 1, null)"));
}

// What is no plain hexadecimal number is the name of a file, in upper case like all of the text.
TEST_F(VideoLongRun, IsFilledFromAFileByTheLibrary)
{
    for (const auto& [typed, name] : std::vector<std::pair<std::string, std::string>>{
             {"data.bin", "DATA.BIN"},
             {"0x10", "0X10"},
             {"0X10", "0X10"},
             {"x", "X"},
             {"-5", "-5"},
             {"cafeg", "CAFEG"},
             {"12/34", "12/34"},
             {"\xe4", "\xe4"},
             {"5\n", "5\\n"},
         }) {
        EXPECT_EQ(call(doMultVram, "vwls 1000 10 " + typed), Outcome{});
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultVramWriteLong(0x0, 0x1000, 16, \"" + name + "\")"));
    }
    expectRemembered("1000");
}

TEST_F(VideoLongRun, WriteNeedsAddressCountAndValue)
{
    call(doMultVram, "vrls 50 2");
    takeDeviceCalls();
    for (const char* text : {"vwls", "vwls 10", "vwls 10 2", "vwls 10 2 ,\t"}) {
        EXPECT_EQ(call(doMultVram, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doMultVram, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    expectRemembered("50");
}

TEST_F(VideoLongRun, WriteHandsOnAnyCount)
{
    EXPECT_EQ(call(doMultVram, "vwls 1000 0 5"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vwls 1000 ffffffff 5"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vwls 1000 80000000 f.bin"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vwls 1000 7fffffff f.bin"), Outcome{});
    EXPECT_EQ(call(doMultVram, "vwls 2000 300000002 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekMultVramWriteLong(0x5, 0x1000, 0, null)", "vekMultVramWriteLong(0x5, 0x1000, -1, null)",
                            "vekMultVramWriteLong(0x0, 0x1000, -2147483648, \"F.BIN\")",
                            "vekMultVramWriteLong(0x0, 0x1000, 2147483647, \"F.BIN\")",
                            "vekMultVramWriteLong(0x5, 0x2000, 2, null)"));
    expectRemembered("2000");
}

TEST_F(VideoLongRun, WriteIgnoresTheRepeatFlagAndFailures)
{
    call(doMultVram, "vrls 50 2");
    takeDeviceCalls();
    recording_vek::setResult("vekMultVramWriteLong", -5);
    EXPECT_EQ(call(doMultVram, "vwls 1000 2 5", 1), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekMultVramWriteLong(0x5, 0x1000, 2, null)"));
    expectRemembered("1000");
    EXPECT_EQ(runLine("vwls 1000 2 5"), Outcome{});
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty()) << "an empty line does not write again";
}

}  // namespace
}  // namespace memory_test
