// The byte registers of display controller 0.

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "child_process.h"
#include "memory_support.h"

namespace memory_test
{
namespace
{

using recording_vek::crtcRegisters;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CrtcRegisters : public FolderTest
{
protected:
    static Outcome enter(const std::string& text, int repeat = 0) { return call(doCrtcReg, text, repeat); }

    /** Runs a command whose calls and output do not matter. */
    static void prepare(const std::string& text)
    {
        enter(text);
        takeDeviceCalls();
    }

    /** Gives register i the value 0x20 + 3 * i. @return the values */
    static std::string fill(std::uint64_t count)
    {
        std::string values;
        for (std::uint64_t i = 0; i < count; ++i) {
            crtcRegisters().poke(i, static_cast<std::uint8_t>(0x20 + 3 * i));
            values += static_cast<char>(0x20 + 3 * i);
        }
        return values;
    }
};

TEST_F(CrtcRegisters, ReadPrintsTheRegister)
{
    crtcRegisters().pokeBytes(0x1a, {0x05, 0xfe});
    EXPECT_EQ(enter("crb 1a"), (Outcome{0, "CRTC0 1a: 05\n"}));
    EXPECT_EQ(enter("CRB,0x1B"), (Outcome{0, "CRTC0 1b: fe\n"}));
    EXPECT_EQ(enter("crb 123"), (Outcome{0, "CRTC0 123: 00\n"}));
    EXPECT_EQ(enter("crb 5 6"), (Outcome{0, "CRTC0 05: 00\n"}));
    EXPECT_EQ(enter("crb"), (Outcome{0, "CRTC0 00: 00\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekCrtcReadByte(0x1a)", "vekCrtcReadByte(0x1b)", "vekCrtcReadByte(0x123)",
                            "vekCrtcReadByte(0x5)", "vekCrtcReadByte(0x0)"));
}

// The library gets the low 32 bits; the whole number is shown and remembered.
TEST_F(CrtcRegisters, IndicesAreSixtyFourBitsWideButForTheLibrary)
{
    EXPECT_EQ(enter("crb 123456789"), (Outcome{0, "CRTC0 123456789: 00\n"}));
    EXPECT_EQ(enter("crb 0", 1), (Outcome{0, "CRTC0 12345678a: 00\n"}));
    EXPECT_EQ(enter("cwb 1fffffffe 5"), Outcome{});
    EXPECT_EQ(enter("crb", 1), (Outcome{0, "CRTC0 1ffffffff: 00\n"}));
    EXPECT_EQ(enter("crb", 1), (Outcome{0, "CRTC0 200000000: 00\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcReadByte(0x23456789)", "vekCrtcReadByte(0x2345678a)",
                                               "vekCrtcWriteByte(0xfffffffe, 0x5)", "vekCrtcReadByte(0xffffffff)",
                                               "vekCrtcReadByte(0x0)"));
    enter("crb ffffffffffffffff");
    EXPECT_EQ(enter("crb", 1), (Outcome{0, "CRTC0 00: 00\n"}));
}

TEST_F(CrtcRegisters, FailedReadShowsZeroAndIsRemembered)
{
    crtcRegisters().pokeBytes(5, {0xaa, 0xaa});
    prepare("crb 5");
    recording_vek::setResult("vekCrtcReadByte", -5);
    EXPECT_EQ(enter("crb 5"), (Outcome{0, "CRTC0 05: 00\n"}));
    EXPECT_EQ(enter("crb", 1), (Outcome{0, "CRTC0 06: 00\n"}));
}

TEST_F(CrtcRegisters, AnyRepeatFlagButZeroReadsTheNextRegister)
{
    prepare("crb 1a");
    EXPECT_EQ(enter("crb 1a", 1).output, "CRTC0 1b: 00\n");
    EXPECT_EQ(enter("crb 1a", 2).output, "CRTC0 1c: 00\n");
    EXPECT_EQ(enter("crb", -1).output, "CRTC0 1d: 00\n");
    EXPECT_EQ(enter("crb 1a", 0).output, "CRTC0 1a: 00\n");
}

TEST_F(CrtcRegisters, WriteStoresTheLowByteAndPrintsNothing)
{
    EXPECT_EQ(enter("cwb 1a 5"), Outcome{});
    EXPECT_EQ(enter("cwb 0x1b,0x1fe 9"), Outcome{});
    EXPECT_EQ(enter("cwb 1c zz"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcWriteByte(0x1a, 0x5)", "vekCrtcWriteByte(0x1b, 0xfe)",
                                               "vekCrtcWriteByte(0x1c, 0x0)"));
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 1d: 00\n");
    recording_vek::setResult("vekCrtcWriteByte", -5);
    EXPECT_EQ(enter("cwb 30 5", 1), Outcome{});
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 31: 00\n");
}

TEST_F(CrtcRegisters, WriteNeedsIndexAndData)
{
    prepare("crb 1a");
    for (const char* text : {"cwb", "cwb 10", "cwb 10 ,\t"}) {
        EXPECT_EQ(enter(text), Outcome{-2}) << text;
        EXPECT_EQ(enter(text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 1b: 00\n");
    EXPECT_EQ(runLine("cwb 10"), (Outcome{-2, std::string(console_test::kBadArgumentLine)}));
}

TEST_F(CrtcRegisters, OtherWordsAreRefused)
{
    prepare("crb 1a");
    for (const char* text :
         {"", " ,\t\r\n", "cr 0", "crbb 0", "crbss 0 1", "cwbs 0 1 2", "crw 0", "rrb 0", "vrbs 0 1"}) {
        EXPECT_EQ(enter(text), Outcome{-2}) << text;
        EXPECT_EQ(enter(text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 1b: 00\n");
}

TEST_F(CrtcRegisters, RunIsDumped)
{
    crtcRegisters().pokeBytes(0xf, {0x41, 0x42, 0xff});
    EXPECT_EQ(enter("crbs f 3"), (Outcome{0, "0000000f: 41 42 ff                                        \tAB.\n\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekCrtcReadByte(0xf)", "vekCrtcReadByte(0x10)", "vekCrtcReadByte(0x11)"));
    const std::string values = fill(0x31);
    for (const std::size_t count : {1U, 15U, 16U, 17U, 32U, 0x31U}) {
        EXPECT_EQ(enter("crbs 0 " + hex(count)), (Outcome{0, dump(0, values.substr(0, count)) + "\n"}));
        EXPECT_EQ(takeDeviceCalls().size(), count);
    }
}

TEST_F(CrtcRegisters, RunHasDefaults)
{
    prepare("crbs 50 2");
    EXPECT_EQ(enter("crbs"), (Outcome{0, dump(0, bytes({0})) + "\n"}));
    EXPECT_EQ(enter("crbs 1a,"), (Outcome{0, dump(0x1a, bytes({0})) + "\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcReadByte(0x0)", "vekCrtcReadByte(0x1a)"));
}

TEST_F(CrtcRegisters, RunBeyondThirtyTwoBits)
{
    EXPECT_EQ(enter("crbs 1ffffffff 3"), (Outcome{0, dump(0x1ffffffff, bytes({0, 0, 0})) + "\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekCrtcReadByte(0xffffffff)", "vekCrtcReadByte(0x0)", "vekCrtcReadByte(0x1)"));
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 200000003: 00\n");
}

TEST_F(CrtcRegisters, EmptyRunPrintsTheClosingNewlineOnly)
{
    for (const char* count : {"0", "80000000", "ffffffff", "100000000"}) {
        prepare("crbs 50 2");
        EXPECT_EQ(enter(std::string("crbs 30 ") + count), (Outcome{0, "\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
        EXPECT_EQ(enter("crb", 1).output, "CRTC0 31: 00\n");
    }
    EXPECT_EQ(enter("crbs 30 100000002"), (Outcome{0, dump(0x30, bytes({0, 0})) + "\n"}));
}

TEST_F(CrtcRegisters, OnlyARepeatFlagOfOneGoesOnWithARun)
{
    const std::string values = fill(0x60);
    prepare("crbs 0 20");
    EXPECT_EQ(enter("crbs 5 20", 1), (Outcome{0, dump(0x20, values.substr(0x20, 0x20)) + "\n"}));
    EXPECT_EQ(enter("crbs 5", 1), (Outcome{0, dump(0x40, values.substr(0x40, 1)) + "\n"}));
    EXPECT_EQ(enter("crbs 5 1", 2), (Outcome{0, dump(5, values.substr(5, 1)) + "\n"}));
    EXPECT_EQ(enter("crbs 7 1", -1), (Outcome{0, dump(7, values.substr(7, 1)) + "\n"}));
    EXPECT_EQ(enter("crbs 5 0", 1), (Outcome{0, "\n"}));
    EXPECT_EQ(enter("crbs 5 1", 1), (Outcome{0, dump(8, values.substr(8, 1)) + "\n"}));
}

// One address is remembered for all three: what a single access used, and what follows a run.
TEST_F(CrtcRegisters, AllThreeShareTheRememberedIndex)
{
    prepare("crbs 10 4");
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 15: 00\n");
    EXPECT_EQ(enter("crbs 0 1", 1).output, dump(0x15, bytes({0})) + "\n");
    enter("cwb 40 1");
    EXPECT_EQ(enter("crbs 0 1", 1).output, dump(0x40, bytes({1})) + "\n");
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 42: 00\n");
}

TEST_F(CrtcRegisters, RunIsSaved)
{
    const std::string values = fill(0x60);
    EXPECT_EQ(enter("crbs 0 20 c.bin"), (Outcome{0, dump(0, values.substr(0, 0x20)) + "\n"}));
    EXPECT_EQ(readFile("C.BIN"), values.substr(0, 0x20));
    EXPECT_FALSE(std::filesystem::exists("c.bin"));
    EXPECT_EQ(enter("crbs 5 3 c.bin"), (Outcome{0, dump(5, values.substr(5, 3)) + "\n"}));
    EXPECT_EQ(readFile("C.BIN"), values.substr(5, 3)) << "it is replaced";
    EXPECT_EQ(enter("crbs 5 0 c.bin"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("C.BIN"), "");
    EXPECT_EQ(enter("crbs 5 ffffffff d.bin"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("D.BIN"), "");
}

TEST_F(CrtcRegisters, EmptyLineSavesTheNextRun)
{
    const std::string values = fill(0x40);
    runLine("crbs 0 20 c.bin");
    EXPECT_EQ(runLine(""), (Outcome{0, dump(0x20, values.substr(0x20)) + "\n"}));
    EXPECT_EQ(readFile("C.BIN"), values.substr(0x20));
}

TEST_F(CrtcRegisters, EmptyLinesRepeatReadsOnly)
{
    EXPECT_EQ(runLine("crb 1a").output, "CRTC0 1a: 00\n");
    EXPECT_EQ(runLine("").output, "CRTC0 1b: 00\n");
    EXPECT_EQ(runLine("cwb 30 5"), Outcome{});
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(CrtcRegisters, FailedReadIsSavedAsZero)
{
    crtcRegisters().pokeBytes(0, {0x55, 0x56, 0x57});
    recording_vek::setResultOnCall("vekCrtcReadByte", 2, -5);
    EXPECT_EQ(enter("crbs 0 3 f"), (Outcome{0, dump(0, bytes({0x55, 0, 0x57})) + "\n"}));
    EXPECT_EQ(readFile("F"), bytes({0x55, 0, 0x57}));
}

TEST_F(CrtcRegisters, FileThatCannotBeCreatedStopsTheRun)
{
    prepare("crbs 50 2");
    std::filesystem::create_directory("FOLDER");
    for (const int repeat : {0, 1}) {
        EXPECT_EQ(enter("crbs 0 4 no/such/f.bin", repeat), (Outcome{-1, "Open NO/SUCH/F.BIN error\n"}));
        EXPECT_EQ(enter("crbs 0 0 folder", repeat), (Outcome{-1, "Open FOLDER error\n"}));
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(enter("crb", 1).output, "CRTC0 53: 00\n") << "the remembered index stays";
    EXPECT_EQ(runLine("crbs 0 4 folder"),
              (Outcome{-1, "Open FOLDER error\n" + std::string(console_test::kBadCommandLine)}));
}

TEST_F(CrtcRegisters, PipeWithoutAReaderIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo("PIPE", 0600), 0);
    const auto result = child_process::runForked(
        [] {
            const bool refused = enter("crbs 0 4 pipe") == Outcome{-1, "Open PIPE error\n"};
            std::exit(refused ? 7 : 0);  // NOLINT(concurrency-mt-unsafe): one thread
        },
        std::chrono::seconds(20));
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 7);
}

TEST_F(CrtcRegisters, RunClosesItsFile)
{
    const std::ptrdiff_t before = console_test::countOpenDescriptors();
    for (const char* text : {"crbs 0 3 f", "crbs 0 0 f", "crbs 0 3 no/such/f"}) {
        enter(text);
    }
    EXPECT_EQ(console_test::countOpenDescriptors(), before);
}

TEST_F(CrtcRegisters, CallersTextBecomesUpperCase)
{
    std::string text = "crbs a,b dump.bin";
    EXPECT_EQ(doCrtcReg(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 4), "CRBS");
    EXPECT_EQ(text.substr(5, 1), "A");
    EXPECT_EQ(text.substr(9), "DUMP.BIN");
}

}  // namespace
}  // namespace memory_test
