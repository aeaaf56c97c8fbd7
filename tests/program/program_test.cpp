// The program from its options to its end, on a library that records what it is asked for.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

#include "program_support.h"

namespace program_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kDriverLine = "enter command line with /dev/vekrw for QZ201!\n";
const std::string kMemLine = "enter command line with /dev/mem for QZ201!\n";
const std::string kSerialLine = "enter command line with serial port for QZ201!\n";

/** Expects a normal end and gives back what was called. */
std::vector<std::string> expectRun(const Arguments& arguments, const Variables& variables, const std::string& output)
{
    const RecordedRun run = runRecorded(arguments, variables);
    const std::string shown = ::testing::PrintToString(arguments);
    EXPECT_EQ(run.result.exitStatus, 0) << shown;
    EXPECT_EQ(run.result.output, output) << shown;
    EXPECT_EQ(run.result.error, "") << shown;
    return run.calls;
}

/** Expects an end with status 1 and gives back what was called. */
std::vector<std::string> expectFailure(const Arguments& arguments, const Variables& variables,
                                       const std::string& output)
{
    const RecordedRun run = runRecorded(arguments, variables);
    const std::string shown = ::testing::PrintToString(arguments);
    EXPECT_EQ(run.result.exitStatus, 1) << shown;
    EXPECT_EQ(run.result.output, output) << shown;
    return run.calls;
}

TEST(DriverStart, OpensTheFirstCard)
{
    EXPECT_THAT(expectRun({"--cmd", "rrb 10"}, {}, kDriverLine + "00000010: 00\n"),
                ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekRegReadByte(0x10)", "vekClose()"));
}

TEST(DriverStart, ShowsTheDeviceIdInHexadecimal)
{
    expectRun({"--cmd", ""}, {{"DEVICE_ID", "202"}}, "enter command line with /dev/vekrw for QZ202!\n");
    expectRun({"--cmd", ""}, {{"DEVICE_ID", "fedcba98"}}, "enter command line with /dev/vekrw for QZfedcba98!\n");
    expectRun({"--cmd", ""}, {{"DEVICE_ID", "0"}}, "enter command line with /dev/vekrw for QZ0!\n");
}

TEST(DriverStart, NamesTheDriverWhateverTheModeIs)
{
    expectRun({"--cmd", ""}, {{"MODE", "2"}}, kDriverLine);
}

TEST(DriverStart, TakesAnyResultThatIsNotNegative)
{
    EXPECT_THAT(expectRun({"--cmd", ""}, {{"RESULT_vekRwOpen", "3"}}, kDriverLine),
                ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekClose()"));
}

TEST(DriverStart, FailedOpenEndsTheProgram)
{
    for (const char* result : {"-1", "-6", "-2147483648"}) {
        EXPECT_THAT(expectFailure({"--cmd", "rrb 10"}, {{"RESULT_vekRwOpen", result}},
                                  "Open /dev/tovira device error\n" + usageText()),
                    ElementsAre("vekRwOpen(0)"));
    }
    EXPECT_THAT(expectFailure({}, {{"RESULT_vekRwOpen", "-1"}}, "Open /dev/tovira device error\n" + usageText()),
                ElementsAre("vekRwOpen(0)"));
}

TEST(Close, ResultIsNotLookedAt)
{
    EXPECT_THAT(expectRun({"--cmd", ""}, {{"RESULT_vekClose", "-5"}}, kDriverLine),
                ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekClose()"));
}

// Without a terminal there are no keys, so nothing is run.
TEST(InteractiveStart, IsTheDefaultAndEndsWithoutATerminal)
{
    for (const char* input : {"", "rwb 1 2\n"}) {
        const RecordedRun run = runRecorded({}, {}, input);
        EXPECT_EQ(run.result.exitStatus, 0);
        EXPECT_FALSE(run.result.timedOut);
        EXPECT_THAT(run.result.output, StartsWith(kDriverLine + ">"));
        EXPECT_THAT(run.calls, ElementsAre("vekRwOpen(0)", "get_device_id()", "vekClose()"));
    }
}

TEST(CommandText, RunsOnceWhateverItReturns)
{
    EXPECT_THAT(
        expectRun({"--cmd", "rwb 10 5;rwb 10;rwb 20 5"}, {},
                  kDriverLine + "Invalid argument. Use help or ? for command info\n"),
        ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekRegWriteByte(0x10, 0x5)", "vekClose()"));
    for (const char* result : {"0", "1", "2", "-4"}) {
        EXPECT_THAT(
            expectRun({"--cmd", "run s"}, {{"RESULT_vekRunScript", result}}, kDriverLine),
            ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekRunScript(\"s\")", "vekClose()"));
    }
    expectRun({"--cmd", "run s"}, {{"RESULT_vekRunScript", "-1"}},
              kDriverLine + "command code error: the cmd input code is incorrect\n");
    expectRun({"--cmd", "run s"}, {{"RESULT_vekRunScript", "-3"}},
              kDriverLine + "device error:the cmd does not support the visit mode\n");
    expectRun({"--cmd", "quit"}, {}, kDriverLine);
}

TEST(CommandText, EndsAtAnEmptyCommand)
{
    EXPECT_THAT(
        expectRun({"--cmd", "rwb 1 2;;rwb 3 4"}, {}, kDriverLine),
        ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekRegWriteByte(0x1, 0x2)", "vekClose()"));
}

TEST(CommandText, MayHave255Characters)
{
    EXPECT_THAT(expectRun({"--cmd", "rwb 1 2" + std::string(240, ' ') + ";rwb 3 4"}, {}, kDriverLine),
                ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekRegWriteByte(0x1, 0x2)",
                            "vekRegWriteByte(0x3, 0x4)", "vekClose()"));
}

TEST(CommandText, Of256CharactersAbortsTheProgram)
{
    const RecordedRun run = runRecorded({"--cmd", std::string(256, ' ')});
    EXPECT_EQ(run.result.signal, SIGABRT);
    EXPECT_EQ(run.result.output, "");
    EXPECT_EQ(std::count(run.result.error.begin(), run.result.error.end(), '\n'), 1) << run.result.error;
    EXPECT_THAT(run.calls, IsEmpty());
}

TEST(CommandText, OfMoreCharactersIsRefused)
{
    EXPECT_THAT(expectFailure({"--cmd", std::string(257, ' ')}, {}, "Too long args!\n"), IsEmpty());
    EXPECT_THAT(expectFailure({"-c", std::string(5000, 'x')}, {}, "Too long args!\n"), IsEmpty());
}

TEST(Help, PrintsTheUsageAndOpensNothing)
{
    for (const Arguments& arguments : {Arguments{"--help"}, {"-h", "x"}, {"--hel"}, {"--cmd", "rrb 0", "--help"}}) {
        EXPECT_THAT(expectRun(arguments, {}, usageText()), IsEmpty());
    }
}

TEST(UnknownOption, EndsTheProgram)
{
    for (const Arguments& arguments :
         {Arguments{"-i"}, {"-d", "1"}, {"-h"}, {"--nothing"}, {"--cmd"}, {"--c", "rrb 0"}, {"--help=x"}}) {
        EXPECT_THAT(expectFailure(arguments, {}, "Error: unknown option!\n"), IsEmpty());
    }
}

TEST(UnknownOption, IsNotLookedForBehindTheEndOfTheOptions)
{
    EXPECT_THAT(expectRun({"--cmd", "", "--", "--nothing", "--help"}, {}, kDriverLine),
                ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekClose()"));
    expectRun({"word", "--cmd", "", "-"}, {}, kDriverLine);
}

TEST(Card, ChoosesTheDriverDevice)
{
    for (const std::string card : {"0", "1", "2", "3"}) {
        EXPECT_THAT(expectRun({"--card", card, "--cmd", ""}, {}, kDriverLine),
                    ElementsAre("vekRwOpen(" + card + ")", "get_device_id()", "get_s_type()", "vekClose()"));
    }
}

TEST(Card, IsAlwaysTheSecondArgument)
{
    const auto openOf = [](const Arguments& arguments) {
        const std::vector<std::string> calls = runRecorded(arguments).calls;
        return calls.empty() ? "" : calls.front();
    };
    EXPECT_EQ(openOf({"--card", "2", "--cmd", "ver"}), "vekRwOpen(2)");
    EXPECT_EQ(openOf({"--cmd", "ver", "--card", "2"}), "vekRwOpen(0)");
    EXPECT_EQ(openOf({"--cmd", "3", "--card", "2"}), "vekRwOpen(3)");
    EXPECT_EQ(openOf({"--card=1"}), "vekRwOpen(0)");
    EXPECT_EQ(openOf({"--card=1", "--cmd", ""}), "vekRwOpen(0)");
}

TEST(Card, OutOfRangeIsReportedAndPassedOver)
{
    for (const char* card : {"4", "10", "ffffffff", "100000000"}) {
        EXPECT_THAT(expectRun({"--card", card, "--cmd", ""}, {}, "Set card id is out of range\n" + kDriverLine),
                    ElementsAre("vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekClose()"));
    }
}

TEST(Card, MeansNothingOnceAPathIsOpen)
{
    EXPECT_THAT(expectRun({"--card", "2", "--tty", "x", "--cmd", ""}, {{"RESULT_vekSerialOpen", "1"}, {"MODE", "2"}},
                          kSerialLine),
                ElementsAre("vekSerialOpen(\"/dev/x\", 9600)", "get_s_type()", "get_device_id()", "get_s_type()",
                            "vekClose()"));
}

TEST(Gpu, IsHandedToTheLibraryAtItsPlace)
{
    EXPECT_THAT(expectRun({"--gpu", "QZ202", "--cmd", ""}, {{"RESULT_doGetDeviceId", "-22"}}, kDriverLine),
                ElementsAre("doGetDeviceId(\"" + programPath() + "\", \"QZ202\")", "vekRwOpen(0)", "get_device_id()",
                            "get_s_type()", "vekClose()"));
    EXPECT_THAT(expectRun({"--tty", "x", "-g", "any", "--cmd", ""}, {{"RESULT_vekSerialOpen", "1"}, {"MODE", "2"}},
                          kSerialLine),
                ElementsAre("vekSerialOpen(\"/dev/x\", 9600)", "doGetDeviceId(\"" + programPath() + "\", \"any\")",
                            "get_s_type()", "get_device_id()", "get_s_type()", "vekClose()"));
}

struct PathRow {
    Arguments arguments;
    std::string printed;
    std::string call;
};

TEST(Mem, OpensTheMapping)
{
    const std::vector<PathRow> rows = {
        {{"--mem", "1000,20,f0000000,40"},
         "mem: reg_start=0x1000 reg_size=0x20 vram_start=0xf0000000 vram_size=0x40\n",
         "vekMemOpen(0x1000, 0x20, 0xf0000000, 0x40)"},
        {{"--mem=10,20"},
         "mem: reg_start=0x10 reg_size=0x20 vram_start=0x0 vram_size=0x0\n",
         "vekMemOpen(0x10, 0x20, 0x0, 0x0)"},
        {{"-m", "0,0,30,40"},
         "mem: reg_start=0x0 reg_size=0x0 vram_start=0x30 vram_size=0x40\n",
         "vekMemOpen(0x0, 0x0, 0x30, 0x40)"},
        {{"--mem", "10,0,30,40"},
         "mem: reg_start=0x10 reg_size=0x0 vram_start=0x30 vram_size=0x40\n",
         "vekMemOpen(0x10, 0x0, 0x30, 0x40)"},
    };
    for (const PathRow& row : rows) {
        Arguments arguments = row.arguments;
        arguments.insert(arguments.end(), {"--cmd", "rwl 4 5"});
        EXPECT_THAT(expectRun(arguments, {{"RESULT_vekMemOpen", "1"}, {"MODE", "1"}}, row.printed + kMemLine),
                    ElementsAre(row.call, "get_s_type()", "get_device_id()", "get_s_type()",
                                "vekRegWriteLong(0x4, 0x5)", "vekClose()"));
    }
}

TEST(Mem, FailedOpenEndsTheProgram)
{
    EXPECT_THAT(expectFailure({"--mem", "1,2,3,4", "--cmd", "rrb 0"}, {{"RESULT_vekMemOpen", "-1"}},
                              "mem: reg_start=0x1 reg_size=0x2 vram_start=0x3 vram_size=0x4\n"
                              "Open /dev/mem device error\n" +
                                  usageText()),
                ElementsAre("vekMemOpen(0x1, 0x2, 0x3, 0x4)"));
}

TEST(Mem, OpenWithTheResultZeroIsFollowedByTheDriver)
{
    EXPECT_THAT(
        expectRun({"--mem", "1,2,3,4", "--cmd", ""}, {{"RESULT_vekMemOpen", "0"}, {"MODE", "1"}},
                  "mem: reg_start=0x1 reg_size=0x2 vram_start=0x3 vram_size=0x4\n" + kDriverLine),
        ElementsAre("vekMemOpen(0x1, 0x2, 0x3, 0x4)", "vekRwOpen(0)", "get_device_id()", "get_s_type()", "vekClose()"));
}

TEST(Mem, IncompletePairsOpenNothingAtAll)
{
    const std::string line = "mem: reg_start=0x0 reg_size=0x0 vram_start=0x0 vram_size=0x0\n";
    EXPECT_THAT(expectRun({"--mem", "0,0,0,0", "--cmd", "run a"}, {{"MODE", "-19"}}, line),
                ElementsAre("get_s_type()", "get_s_type()", "vekRunScript(\"a\")", "vekClose()"));
    EXPECT_THAT(expectRun({"--mem", "0,0,0,0", "--cmd", "rrb 0"}, {{"MODE", "-19"}},
                          line + "device error:the cmd does not support the visit mode\n"),
                ElementsAre("get_s_type()", "get_s_type()", "vekClose()"));
    EXPECT_THAT(expectRun({"--mem", "10,0,30,0", "--cmd", ""}, {{"MODE", "0"}},
                          "mem: reg_start=0x10 reg_size=0x0 vram_start=0x30 vram_size=0x0\n"),
                ElementsAre("get_s_type()", "get_s_type()", "vekClose()"));
    expectRun({"--mem", "", "--cmd", ""}, {{"MODE", "1"}}, line + kMemLine);
    expectRun({"--mem", "zz", "--cmd", ""}, {{"MODE", "2"}}, line + kSerialLine);
}

TEST(Tty, OpensTheSerialLine)
{
    const std::string longest = "abcdefghijklmnopqrstuvwxyz";
    const std::vector<PathRow> rows = {
        {{"--tty", "ttyUSB0"}, "", "vekSerialOpen(\"/dev/ttyUSB0\", 9600)"},
        {{"--tty", "ttyUSB0,0"}, "", "vekSerialOpen(\"/dev/ttyUSB0\", 9600)"},
        {{"--tty", "ttyUSB0,"}, "", "vekSerialOpen(\"/dev/ttyUSB0\", 9600)"},
        {{"--tty=ttyUSB0,115200"}, "", "vekSerialOpen(\"/dev/ttyUSB0\", 115200)"},
        {{"-t", "ttyS1,12345"}, "", "vekSerialOpen(\"/dev/ttyS1\", 12345)"},
        {{"--tty", longest + ",19200"}, "", "vekSerialOpen(\"/dev/" + longest + "\", 19200)"},
        {{"--tty", longest + "0,19200"}, "", "vekSerialOpen(\"/dev/" + longest + "\", 9600)"},
    };
    for (const PathRow& row : rows) {
        Arguments arguments = row.arguments;
        arguments.insert(arguments.end(), {"--cmd", "rwl 4 5"});
        EXPECT_THAT(expectRun(arguments, {{"RESULT_vekSerialOpen", "5"}, {"MODE", "2"}}, kSerialLine),
                    ElementsAre(row.call, "get_s_type()", "get_device_id()", "get_s_type()",
                                "vekRegWriteLong(0x4, 0x5)", "vekClose()"));
    }
}

TEST(Tty, FailedOpenEndsTheProgram)
{
    EXPECT_THAT(expectFailure({"--tty", "ttyUSB0,9600", "--cmd", "rrb 0"}, {{"RESULT_vekSerialOpen", "-1"}},
                              "Open /dev/ttyUSB0 device error\n" + usageText()),
                ElementsAre("vekSerialOpen(\"/dev/ttyUSB0\", 9600)"));
}

TEST(Tty, OpenWithTheResultZeroIsFollowedByTheDriver)
{
    EXPECT_THAT(expectRun({"--tty", "x", "--cmd", ""}, {{"MODE", "2"}}, kDriverLine),
                ElementsAre("vekSerialOpen(\"/dev/x\", 9600)", "vekRwOpen(0)", "get_device_id()", "get_s_type()",
                            "vekClose()"));
}

TEST(OptionOrder, EveryOptionActsAtItsPlace)
{
    const std::string memPrint = "mem: reg_start=0x1 reg_size=0x2 vram_start=0x3 vram_size=0x4\n";
    EXPECT_THAT(
        expectRun({"--gpu", "a", "--mem", "1,2,3,4", "--gpu", "b", "--tty", "x", "--cmd", ""},
                  {{"RESULT_vekMemOpen", "1"}, {"RESULT_vekSerialOpen", "1"}, {"MODE", "2"}}, memPrint + kSerialLine),
        ElementsAre("doGetDeviceId(\"" + programPath() + "\", \"a\")", "vekMemOpen(0x1, 0x2, 0x3, 0x4)",
                    "doGetDeviceId(\"" + programPath() + "\", \"b\")", "vekSerialOpen(\"/dev/x\", 9600)",
                    "get_s_type()", "get_device_id()", "get_s_type()", "vekClose()"));
    EXPECT_THAT(expectRun({"--mem", "1,2,3,4", "--help"}, {{"RESULT_vekMemOpen", "1"}}, memPrint + usageText()),
                ElementsAre("vekMemOpen(0x1, 0x2, 0x3, 0x4)"));
    EXPECT_THAT(expectFailure({"--nothing", "--mem", "1,2,3,4"}, {}, "Error: unknown option!\n"), IsEmpty());
}

TEST(OptionOrder, LastOpenDecides)
{
    EXPECT_THAT(expectRun({"--tty", "x", "--mem", "1,2", "--cmd", ""},
                          {{"RESULT_vekSerialOpen", "5"}, {"RESULT_vekMemOpen", "0"}},
                          "mem: reg_start=0x1 reg_size=0x2 vram_start=0x0 vram_size=0x0\n" + kDriverLine),
                ElementsAre("vekSerialOpen(\"/dev/x\", 9600)", "vekMemOpen(0x1, 0x2, 0x0, 0x0)", "vekRwOpen(0)",
                            "get_device_id()", "get_s_type()", "vekClose()"));
}

/** However soon the key comes that ends the collection, the library is called; nothing waits for its answer. */
TEST(Monitor, CallsTheCollectorWhateverWasTypedAhead)
{
    constexpr int kRuns = 40;
    int called = 0;
    for (int run = 0; run < kRuns; ++run) {
        const auto calls = runRecorded({"--cmd", "monitor start"}, {{"DEVICE_ID", "202"}}, "d").calls;
        called += std::any_of(calls.begin(), calls.end(),
                              [](const std::string& call) { return call.starts_with("vek_thread_qz202monitor("); });
    }
    // On a busy machine the collector can lose the processor just before its call.
    EXPECT_GE(called, kRuns - 2);
}

}  // namespace
}  // namespace program_test
