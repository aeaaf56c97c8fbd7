// The program on our own library, with the simulated card behind the driver path.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <vector>

#include "program_support.h"

namespace program_test
{
namespace
{

using ::testing::EndsWith;
using ::testing::StartsWith;

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!\n";
const std::string kBadArgumentLine = "Invalid argument. Use help or ? for command info\n";

class SimulatedCardTest : public ::testing::Test
{
protected:
    /** Runs the program with these arguments in this test's folder. */
    child_process::Result run(const Arguments& arguments) const { return runOnCard(arguments, folder_.path()); }

    /** What a command line prints behind the start-up line; a run with a status or a message is a failure. */
    std::string outputOf(const std::string& commands) const
    {
        const child_process::Result result = run({"--cmd", commands});
        EXPECT_EQ(result.exitStatus, 0) << commands;
        EXPECT_EQ(result.error, "") << commands;
        EXPECT_THAT(result.output, StartsWith(kStartLine)) << commands;
        return result.output.substr(std::min(result.output.size(), kStartLine.size()));
    }

    /** Runs a shell script in this test's folder; $0 is the program. */
    child_process::Result runScript(const std::string& script) const
    {
        return child_process::run(
            {.arguments = {"/bin/sh", "-c", script, programPath()}, .folder = folder_.path().string()});
    }

    const TemporaryFolder& folder() const { return folder_; }

private:
    TemporaryFolder folder_;
};

/** The bytes that a dump shows between its labels and its characters. */
std::string bytesShown(const std::string& dump)
{
    std::string bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        std::istringstream digits(line.substr(10, 48));
        for (std::string byte; digits >> byte;) {
            bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
        }
    }
    return bytes;
}

TEST_F(SimulatedCardTest, ReadsARegister)
{
    const child_process::Result result = run({"--cmd", "rrl 0"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kStartLine + "00000000: 00000000\n");
    EXPECT_EQ(result.error, "");
}

TEST_F(SimulatedCardTest, RegistersHoldWhatIsWritten)
{
    EXPECT_EQ(outputOf("rwq 2000 1122334455667788;rrb 2000;rrw 2002;rrl 2004;rrq 2000"),
              "00002000: 88\n00002002: 5566\n00002004: 11223344\n00002000: 55667788 11223344\n");
    EXPECT_EQ(outputOf("rwl 2000 ffffffff;rwb 2001 0;rww 2002 1234;rrl 2000"), "00002000: 123400ff\n");
    EXPECT_EQ(outputOf("rrl 2000"), "00002000: 00000000\n") << "each run has a card of its own";
}

TEST_F(SimulatedCardTest, RunsOfRegistersHoldWhatIsWritten)
{
    EXPECT_EQ(outputOf("rwls 2000 4 12345678;rwws 2004 2 abcd;rrls 2000 5"),
              "00002000: 12345678 abcdabcd 12345678 12345678\n00002010: 00000000\n");
    EXPECT_EQ(outputOf("rwbs 2000 11 41;rrbs 2000 12"),
              "00002000: 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 \tAAAAAAAAAAAAAAAA\n"
              "00002010: 41 00                                           \tA.\n\n");
    EXPECT_EQ(outputOf("rwqs 2000 2 1122334455667788;rrws 2000 9;rrqs 2000 3"),
              "00002000: 7788 5566 3344 1122 7788 5566 3344 1122\n00002010: 0000\n"
              "00002000: 55667788 11223344 55667788 11223344\n00002010: 00000000 00000000\n");
}

TEST_F(SimulatedCardTest, ReadsBeyondTheRegionShowAllOnes)
{
    EXPECT_EQ(outputOf("rrb ffffffff00000000;rrl ffffffff00000000"),
              "ffffffff00000000: ff\nffffffff00000000: ffffffff\n");
}

TEST_F(SimulatedCardTest, SavedBytesAreTheBytesShown)
{
    std::string commands;
    std::string expected;
    for (int i = 0; i < 21; ++i) {
        std::ostringstream write;
        const int value = (i * 37 + 11) % 256;
        write << std::hex << "rwb " << 0x2000 + i << ' ' << value << '\n';
        commands += write.str();
        expected += static_cast<char>(value);
    }
    // The first line of a script rules the length of all the others.
    folder().writeFile("fill", "rwb 2000 0b   ;" + commands);
    const std::string output = outputOf("load fill;rrbs 2000 15 Dump.bin");
    const std::string dump = output.substr(output.find("00002000: "));
    EXPECT_EQ(bytesShown(dump), expected);
    EXPECT_EQ(folder().readFile("DUMP.BIN"), expected);
    EXPECT_FALSE(folder().holds("Dump.bin"));
}

TEST_F(SimulatedCardTest, WiderRunsSaveAByteAnItem)
{
    outputOf("rwbs 2000 40 41;rrws 2000 7 words;rrls 2000 6 longs;rrqs 2000 5 quads");
    EXPECT_EQ(folder().readFile("WORDS"), std::string(7, '\0'));
    EXPECT_EQ(folder().readFile("LONGS"), std::string(6, '\0'));
    EXPECT_EQ(folder().readFile("QUADS"), std::string(5, '\0'));
}

TEST_F(SimulatedCardTest, FileThatCannotBeCreatedIsReported)
{
    const child_process::Result result = run({"--cmd", "rrbs 0 4 no/such;rrb 0"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kStartLine + "Open NO/SUCH error\ncommand code error: the cmd input code is incorrect\n");
}

TEST_F(SimulatedCardTest, SecondCardIsOfTheOtherChip)
{
    const child_process::Result first = run({"--card", "0", "--cmd", ""});
    EXPECT_EQ(first.exitStatus, 0);
    EXPECT_EQ(first.output, kStartLine);
    const child_process::Result second = run({"--card", "1", "--cmd", "rrl 0"});
    EXPECT_EQ(second.exitStatus, 0);
    EXPECT_EQ(second.output, "enter command line with /dev/vekrw for QZ202!\n00000000: 00000000\n");
}

TEST_F(SimulatedCardTest, ThereAreNoFurtherCards)
{
    for (const char* card : {"2", "3"}) {
        const child_process::Result result = run({"--card", card, "--cmd", "rrl 0"});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.output, "Open /dev/tovira device error\n" + usageText());
    }
}

TEST_F(SimulatedCardTest, GpuTypesSetTheDeviceId)
{
    for (const char* type : {"QZ202", "qz202", "Qz202", "qZ202", "202", "0x202", "0X202"}) {
        const child_process::Result result = run({"--gpu", type, "--cmd", ""});
        EXPECT_EQ(result.exitStatus, 0) << type;
        EXPECT_EQ(result.output, "enter command line with /dev/vekrw for QZ202!\n") << type;
        EXPECT_EQ(result.error, "") << type;
    }
    for (const char* type : {"QZ201", "qz201", "201", "0X201"}) {
        EXPECT_EQ(run({"--card", "1", "--gpu", type, "--cmd", ""}).output, kStartLine) << type;
    }
}

TEST_F(SimulatedCardTest, UnknownGpuTypesAreReportedAndPassedOver)
{
    for (const char* type : {"", "QZ203", "QZ", "QZ2022", "02", "0x", "%s", "QZ202 "}) {
        const child_process::Result result = run({"--gpu", type, "--cmd", ""});
        EXPECT_EQ(result.exitStatus, 0) << type;
        EXPECT_EQ(result.output, kStartLine) << type;
        EXPECT_THAT(result.error, StartsWith(programPath() + ": ")) << type;
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    }
}

TEST_F(SimulatedCardTest, RunsAScript)
{
    folder().writeFile("script", "# comment\nRWL 2000, 12345678\r\nrrl 2000  # as one number\nrrq 2000\nckb 2000 78\n");
    EXPECT_EQ(outputOf("run script;rrw 2002"), "00002000: 12345678\n00002000: 0000000012345678\n00002002: 1234\n");
}

TEST_F(SimulatedCardTest, ScriptThatCannotBeReadIsABadArgument)
{
    for (const char* commands : {"run;rrb 0", "run missing;rrb 0", "run .;rrb 0"}) {
        const child_process::Result result = run({"--cmd", commands});
        EXPECT_EQ(result.exitStatus, 0) << commands;
        EXPECT_EQ(result.output, kStartLine + kBadArgumentLine) << commands;
    }
    EXPECT_THAT(run({"--cmd", "run missing"}).error, StartsWith("missing: "));
}

TEST_F(SimulatedCardTest, ScriptWithABadLineTouchesNothing)
{
    folder().writeFile("script", "rrl 2000\nrwl 2000\n");
    const child_process::Result result = run({"--cmd", "run script"});
    EXPECT_EQ(result.output, kStartLine + kBadArgumentLine);
    EXPECT_THAT(result.error, StartsWith("script:2: "));
}

// A failure of the script itself has a status for which the console prints nothing of its own.
TEST_F(SimulatedCardTest, ScriptWhoseCheckFailsEndsThere)
{
    folder().writeFile("script", "rwl 2000 5\nckl 2000 6\nrrl 2000\n");
    const child_process::Result result = run({"--cmd", "run script;rrl 2000"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kStartLine);
    EXPECT_THAT(result.error, StartsWith("script:2: "));
}

TEST_F(SimulatedCardTest, LoadsAFile)
{
    folder().writeFile("commands", "rwl 2000 1234;rrl 2000\r\nrrw 2002\n");
    EXPECT_EQ(outputOf("load commands;rrb 2000"),
              "rwl 2000 1234:\nrrl 2000:\n00002000: 00001234\nrrw 2002:\n00002002: 0000\n00002000: 34\n");
}

TEST_F(SimulatedCardTest, MissingFileToLoadEndsTheLine)
{
    const child_process::Result result = run({"--cmd", "load missing;rrb 0"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kStartLine);
    EXPECT_EQ(result.error, "Open file failed: No such file or directory\n");
}

TEST_F(SimulatedCardTest, WithoutAPathOnlyTheConsoleCommandsRun)
{
    const std::string line = "mem: reg_start=0x0 reg_size=0x0 vram_start=0x0 vram_size=0x0\n";
    EXPECT_EQ(run({"--mem", "0,0,0,0", "--cmd", "rrb 0"}).output,
              line + "device error:the cmd does not support the visit mode\n");
    const child_process::Result help = run({"--mem", "0,0,0,0", "--cmd", "help q"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.output, line + "q\t Quit from command line\n\t \n");
}

TEST_F(SimulatedCardTest, MissingSerialLineEndsTheProgram)
{
    const child_process::Result result = run({"--tty", "no_such_line,9600", "--cmd", "rrb 0"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "Open /dev/no_such_line device error\n" + usageText());
}

TEST_F(SimulatedCardTest, DumpFileIsNoPlaceForTheOutputOfAClosedStream)
{
    // A stretch of the register region without a device, where everything reads as 0.
    const child_process::Result result = runScript(R"(exec "$0" --cmd "rrbs 1000 8000 out" >&-)");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(folder().readFile("OUT"), std::string(0x8000, '\0'));
}

TEST_F(SimulatedCardTest, DumpFileThatMeetsTheLimitOfItsSizeIsReported)
{
    const child_process::Result result =
        runScript(R"((ulimit -f 128; "$0" --cmd "vrbs 0 20000 a;rrbs 0 20000 b;rrl 4"; echo "$?") | tail -n 2)");
    EXPECT_EQ(result.output, "00000004: 00000000\n0\n");
    EXPECT_EQ(result.error,
              "Write A error: the file is not complete\n"
              "Write B error: the file is not complete\n");
}

// A FIFO has a reader here: opening it would not wait, but what is written might, and would end the program without it.
TEST_F(SimulatedCardTest, DumpFileIsNeverAFifo)
{
    const child_process::Result result =
        runScript(R"(mkfifo F; exec 3<>F; exec "$0" --cmd "vrbs 0 1 f;vrls 0 100000 f;rrbs 0 1 f")");
    EXPECT_EQ(result.exitStatus, 0) << result.signal;
    EXPECT_THAT(result.output, EndsWith("Open F error\ncommand code error: the cmd input code is incorrect\n"));
}

TEST_F(SimulatedCardTest, ScriptIsNeverAFileThatKeepsItsReaderWaiting)
{
    // A regular file by name; reading it waits for the kernel's next message.
    const child_process::Result result = runScript(R"(exec "$0" --cmd "load /proc/kmsg")");
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 0);
}

}  // namespace
}  // namespace program_test
