// Runs of video memory and of the AMBA bus that are saved to a file.

#include <sys/stat.h>

#include <cctype>
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

using ::testing::ElementsAreArray;

class SavedRun : public FolderTest, public ::testing::WithParamInterface<Commands>
{
protected:
    SavedRun() { fillWithPattern(it.family.memory(), base, 0x400); }

    Outcome enter(const std::string& text, int repeat = 0) const { return call(it.family.run, text, repeat); }

    std::string readAt(std::uint64_t start, const std::string& rest) const
    {
        return it.readRun() + hex(start) + ' ' + rest;
    }

    /** A file name as the family's runs take it: in upper case, but for those of the AMBA bus. */
    std::string taken(std::string name) const
    {
        if (it.family.letter != kAmba.letter) {
            for (char& letter : name) {
                letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
            }
        }
        return name;
    }

    const Commands it = GetParam();
    const std::uint64_t base = it.family.base;
    const std::uint64_t size = it.width.size;
};

INSTANTIATE_TEST_SUITE_P(Memory, SavedRun, ::testing::ValuesIn(savedRunCommands()), commandsName);

TEST_P(SavedRun, HoldsTheItemsThatWereRead)
{
    for (const std::size_t count : {1U, 2U, 15U, 16U, 17U, 0x41U}) {
        EXPECT_EQ(enter(readAt(base, hex(count) + " Dump.bin")), (Outcome{0, it.run(base, count)}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(it.readCalls(base, count)));
        EXPECT_EQ(readFile(taken("Dump.bin")), it.contents(base, count * size)) << count;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1);
}

TEST_P(SavedRun, NeedsAddressAndCountBeforeTheName)
{
    EXPECT_EQ(enter(it.readRun() + "dump"), (Outcome{0, it.run(0xd, 1)}));
    EXPECT_EQ(enter(it.readRun() + "0 dump.bin"), (Outcome{0, it.run(0, 0xd)}));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_P(SavedRun, NameEndsAtBlankCommaOrTab)
{
    for (const char* rest : {"1\tone.bin\tmore", "1,one.bin,more", "1 one.bin more"}) {
        std::filesystem::remove(taken("one.bin"));
        EXPECT_EQ(enter(readAt(base, rest)), (Outcome{0, it.run(base, 1)}));
        EXPECT_EQ(readFile(taken("one.bin")), it.contents(base, size));
    }
    enter(readAt(base, "1 two\r\nmore"));
    EXPECT_EQ(readFile(taken("two\r\nmore")), it.contents(base, size)) << "line ends belong to the name";
}

TEST_P(SavedRun, FailedReadIsSavedAsZero)
{
    recording_vek::setResultOnCall(it.readFunction(), 2, -5);
    enter(readAt(base, "3 f"));
    std::string expected = it.contents(base, 3 * size);
    expected.replace(size, size, size, '\0');
    EXPECT_EQ(readFile(taken("f")), expected);
}

TEST_P(SavedRun, FileIsReplaced)
{
    writeFile(taken("f"), std::string(1000, 'x'));
    enter(readAt(base, "3 f"));
    EXPECT_EQ(readFile(taken("f")), it.contents(base, 3 * size));
}

TEST_P(SavedRun, EmptyRunLeavesAnEmptyFile)
{
    writeFile(taken("f"), "x");
    EXPECT_EQ(enter(readAt(base, "0 f")), (Outcome{0, "\n"}));
    EXPECT_EQ(enter(readAt(base, "0 g")), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile(taken("f")), "");
    EXPECT_EQ(readFile(taken("g")), "");
}

TEST_P(SavedRun, RepeatedRunReplacesItsFile)
{
    runLine(readAt(base, "10 f"));
    EXPECT_EQ(readFile(taken("f")), it.contents(base, 16 * size));
    runLine("");
    EXPECT_EQ(readFile(taken("f")), it.contents(base + 16 * size, 16 * size));
}

// Nobody is told of a file that cannot be created: the run has been shown by then.
TEST_P(SavedRun, FileThatCannotBeCreatedIsPassedOver)
{
    std::filesystem::create_directory(taken("folder"));
    for (const char* name : {"no/such/folder", "folder", "folder/"}) {
        EXPECT_EQ(enter(readAt(base, std::string("3 ") + name)), (Outcome{0, it.run(base, 3)})) << name;
        EXPECT_EQ(enter(it.readRun() + "0 1", 1), (Outcome{0, it.run(base + 3 * size, 1)})) << name;
    }
    const std::string longName(300, 'n');
    EXPECT_EQ(enter(readAt(base, "3 " + longName)), (Outcome{0, it.run(base, 3)}));
}

TEST_P(SavedRun, PipeWithoutAReaderIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(taken("pipe").c_str(), 0600), 0);
    const auto result = child_process::runForked(
        [this] {
            const bool passed = enter(readAt(base, "3 pipe")) == Outcome{0, it.run(base, 3)};
            std::exit(passed ? 7 : 0);  // NOLINT(concurrency-mt-unsafe): one thread
        },
        std::chrono::seconds(20));
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 7);
}

TEST_P(SavedRun, ClosesItsFile)
{
    const std::ptrdiff_t before = console_test::countOpenDescriptors();
    for (const char* rest : {"3 f", "0 f", "3 no/such/folder"}) {
        enter(readAt(base, rest));
    }
    EXPECT_EQ(console_test::countOpenDescriptors(), before);
}

TEST_P(SavedRun, LeavesTheStandardFilesModesAlone)
{
    const mode_t old = umask(0022);
    enter(readAt(base, "3 f"));
    umask(old);
    EXPECT_EQ(static_cast<unsigned>(std::filesystem::status(taken("f")).permissions()), 0644U);
}

class SavedRunCase : public FolderTest
{
};

TEST_F(SavedRunCase, IsKeptOnTheAmbaBusOnly)
{
    recording_vek::ambaBus().pokeBytes(0, {1, 2, 3});
    EXPECT_EQ(call(doMultAmba, "ArBs 0 3 Dump.bin").status, 0);
    EXPECT_EQ(readFile("Dump.bin"), bytes({1, 2, 3}));
    EXPECT_EQ(call(doMultVram, "vrbs 0 20 out").status, 0);
    EXPECT_EQ(readFile("OUT"), std::string(32, '\0'));
    EXPECT_FALSE(std::filesystem::exists("DUMP.BIN"));
    EXPECT_FALSE(std::filesystem::exists("out"));
}

// Of a run of the AMBA bus only the command word becomes upper case in the caller's text.
TEST_F(SavedRunCase, OfTheCallersText)
{
    std::string text = " ,arbs 0xab,cd dump";
    EXPECT_EQ(doMultAmba(text.data(), 0), 0);
    EXPECT_EQ(text.substr(2, 4), "ARBS");
    EXPECT_EQ(text.substr(7, 4), "0xab");
    EXPECT_EQ(text.substr(12, 2), "cd");
    EXPECT_EQ(text.substr(15), "dump");
    text = "vrbs ab,cd dump";
    EXPECT_EQ(doMultVram(text.data(), 0), 0);
    EXPECT_EQ(text.substr(5, 2), "AB");
    EXPECT_EQ(text.substr(11), "DUMP");
    text = "krbs ab,cd dump";
    EXPECT_EQ(doMultKmem(text.data(), 0), 0);
    EXPECT_EQ(text.substr(11), "DUMP");
}

TEST_F(SavedRunCase, QuadsAreSavedLowHalfFirst)
{
    recording_vek::videoMemory().poke<std::uint64_t>(0, 0x1122334455667788);
    recording_vek::ambaBus().poke<std::uint64_t>(0x100, 0x1122334455667788);
    call(doMultVram, "vrqs 0 1 q.bin");
    call(doMultAmba, "arqs 100 1 a.bin");
    EXPECT_EQ(readFile("Q.BIN"), bytes({0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}));
    EXPECT_EQ(readFile("a.bin"), readFile("Q.BIN"));
}

}  // namespace
}  // namespace memory_test
