#include "tovira_parse/dispatcher.h"

#include <climits>
#include <string>

#include "console_support.h"
#include "expected_commands.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/line_editor.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;

const std::string kBadCommand{kBadCommandLine};
const std::string kBadArgument{kBadArgumentLine};
const std::string kModeRefused{kModeRefusedLine};

TEST(GetCurCmdLine, CutsAtEachSeparator)
{
    char line[] = "one;;two";
    char* cursor = line;
    EXPECT_STREQ(getCurCmdLine(&cursor, ';'), "one");
    EXPECT_EQ(cursor, line + 4);
    EXPECT_EQ(line[3], '\0');
    EXPECT_STREQ(getCurCmdLine(&cursor, ';'), "");
    EXPECT_EQ(cursor, line + 5);
    EXPECT_STREQ(getCurCmdLine(&cursor, ';'), "two");
    EXPECT_EQ(cursor, line + 8);
    EXPECT_STREQ(getCurCmdLine(&cursor, ';'), "");
    EXPECT_EQ(cursor, line + 8);
}

TEST(GetCurCmdLine, ReturnsTheWholeRestWithoutASeparator)
{
    char line[] = "a;b";
    char* cursor = line;
    EXPECT_EQ(getCurCmdLine(&cursor, ','), line);
    EXPECT_STREQ(line, "a;b");
    EXPECT_EQ(cursor, line + 3);
    char separatorLast[] = "a;";
    cursor = separatorLast;
    EXPECT_STREQ(getCurCmdLine(&cursor, ';'), "a");
    EXPECT_EQ(*cursor, '\0');
}

/** Both ways to run a line, which share most of their rules. */
class AnyLineTest : public ConsoleTest, public ::testing::WithParamInterface<bool>
{
protected:
    static Outcome run(const std::string& line) { return GetParam() ? runLine(line) : runOnce(line); }
};

INSTANTIATE_TEST_SUITE_P(Dispatcher, AnyLineTest, ::testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "InputLine" : "CommandText"; });

TEST_P(AnyLineTest, RunsEveryCommandInOrder)
{
    recording_vek::registers().poke<std::uint8_t>(4, 0x5a);
    EXPECT_EQ(run("rrb 0;rrb 4"), (Outcome{0, "00000000: 00\n00000004: 5a\n"}));
    EXPECT_EQ(modeRequests(), 1);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x0)", "vekRegReadByte(0x4)"));
}

TEST_P(AnyLineTest, AsksForTheModeOnceALine)
{
    run("xyz");
    EXPECT_EQ(modeRequests(), 1);
    takeDeviceCalls();
    run("rwb 1 2;rwb 3 4;help nothing;rwb 5 6");
    EXPECT_EQ(modeRequests(), 1);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegWriteByte(0x1, 0x2)", "vekRegWriteByte(0x3, 0x4)"));
    recording_vek::setMode(-19);
    run("rrb 0");
    EXPECT_EQ(modeRequests(), 1);
}

TEST_P(AnyLineTest, IgnoresUnknownWords)
{
    EXPECT_EQ(run("hel;xyz 1 2;rrbb 0;help/h/? rrb;rr"), Outcome{});
    EXPECT_EQ(run("xyz;rrb 4"), (Outcome{0, "00000004: 00\n"}));
}

TEST_P(AnyLineTest, LowersTheCommandWordOnly)
{
    EXPECT_EQ(run("RrB 4"), (Outcome{0, "00000004: 00\n"}));
    EXPECT_EQ(run("RUN Script;Q"), Outcome{1});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x4)", "vekRunScript(\"Script\")"));
}

TEST_P(AnyLineTest, EndsTheWordAtAnyDelimiter)
{
    for (const char* line : {"r s", "r,s", "r\ts", " ,\t\r\nr s", "r \t, s"}) {
        EXPECT_EQ(run(line), Outcome{}) << line;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"s\")")) << line;
    }
    for (const char* line : {"r\n", "r\r"}) {
        run(line);
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(null)")) << line;
    }
}

TEST_P(AnyLineTest, PassesOverCommandsOfDelimitersOnly)
{
    EXPECT_EQ(run(" \t, ;rrb 4"), (Outcome{0, "00000004: 00\n"}));
    EXPECT_EQ(run("rrb 4; "), (Outcome{0, "00000004: 00\n"}));
    EXPECT_EQ(run("   "), Outcome{});
}

TEST_P(AnyLineTest, GoesOnAfterDone)
{
    EXPECT_EQ(run("run a;run b"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"a\")", "vekRunScript(\"b\")"));
}

struct StatusRow {
    int status;
    int result;
    std::string output;
};

TEST_P(AnyLineTest, TranslatesEveryOtherStatusAndLeavesTheLine)
{
    const StatusRow rows[] = {
        {1, 1, ""},
        {2, 0, ""},
        {77, 0, ""},
        {INT_MAX, 0, ""},
        {-1, -1, kBadCommand},
        {-2, -2, kBadArgument},
        {-3, -3, kModeRefused},
        {-4, 0, ""},
        {-100, 0, ""},
        {INT_MIN, 0, ""},
    };
    for (const StatusRow& row : rows) {
        recording_vek::setResult("vekRunScript", row.status);
        EXPECT_EQ(run("run a;run b"), (Outcome{row.result, row.output})) << row.status;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"a\")")) << row.status;
    }
}

TEST_P(AnyLineTest, LeavesTheLineBehindAFailingCommand)
{
    EXPECT_EQ(run("rwb 0;rrb 4"), (Outcome{-2, kBadArgument}));
    EXPECT_EQ(run("help nothing;rrb 4"), (Outcome{-2, kBadArgument}));
    EXPECT_EQ(run("rrb 8;quit;rrb 4"), (Outcome{1, "00000008: 00\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x8)"));
}

TEST_P(AnyLineTest, RunsRowsOfEveryPathInAllThreeModes)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(run("rrb 4"), (Outcome{0, "00000004: 00\n"})) << mode;
    }
}

TEST_P(AnyLineTest, RunsOnlyTheConsoleRowsWithoutAPath)
{
    for (const int mode : {-1, -19, INT_MIN}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(run("rrb 0;help"), (Outcome{-3, kModeRefused})) << mode;
        EXPECT_EQ(run("help"), (Outcome{0, expectedHelpList()})) << mode;
        EXPECT_EQ(run("quit"), Outcome{1}) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre()) << mode;
        EXPECT_EQ(run("run a"), Outcome{}) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"a\")")) << mode;
    }
}

TEST_P(AnyLineTest, RunsTheConsoleRowsInTheModeOfTheirOwnBit)
{
    recording_vek::setMode(3);
    EXPECT_EQ(run("rrb 0"), (Outcome{-3, kModeRefused}));
    EXPECT_EQ(run("quit"), Outcome{1});
}

TEST_P(AnyLineTest, RunsALineOfFullLength)
{
    std::string line(255, ' ');
    line.replace(0, 5, "rrb 4");
    EXPECT_EQ(run(line), (Outcome{0, "00000004: 00\n"}));
    EXPECT_EQ(run(std::string(255, 'r')), Outcome{});
    EXPECT_EQ(run(std::string(250, 'x') + ";rrb4"), Outcome{});
    EXPECT_EQ(run(std::string(249, 'x') + ";rrb 4"), (Outcome{0, "00000004: 00\n"}));
}

class InputLineTest : public ConsoleTest
{
};

TEST_F(InputLineTest, PassesOverEmptyCommands)
{
    EXPECT_EQ(runLine("rrb 0;;rrb 4"), (Outcome{0, "00000000: 00\n00000004: 00\n"}));
    EXPECT_EQ(runLine(";;;rrb 4;"), (Outcome{0, "00000004: 00\n"}));
    EXPECT_EQ(runLine(";"), Outcome{});
    EXPECT_EQ(runLine(";;;"), Outcome{});
}

TEST_F(InputLineTest, EmptyLineRepeatsTheLastCommand)
{
    runLine("rrb 100");
    EXPECT_EQ(runLine(""), (Outcome{0, "00000101: 00\n"}));
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), (Outcome{0, "00000102: 00\n"}));
    EXPECT_EQ(modeRequests(), 1);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x102)"));
}

TEST_F(InputLineTest, RepeatPutsTheLastLineBack)
{
    runLine("rwbs 10 1 7");
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(std::string(CmdLines, 4), ::testing::StrCaseEq("rwbs"));
}

TEST_F(InputLineTest, EmptyLineDoesNothingWhenTheRowIsNotRepeated)
{
    runLine("rwb 10 5");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    runLine("rrb 10;rwb 4 5");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    runLine("run a");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(InputLineTest, RepeatedHelpAndQuitRunAgain)
{
    runLine("help");
    EXPECT_EQ(runLine(""), (Outcome{0, expectedHelpList()}));
    runLine("quit");
    EXPECT_EQ(runLine(""), Outcome{1});
}

// The handler called last, with the text of the first command of the line.
TEST_F(InputLineTest, RepeatCallsTheLastHandlerWithTheFirstCommand)
{
    runLine("rrb 10;rrl 20");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), (Outcome{0, "00000021: 00\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x21)"));
    runLine("help;rrb 10");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
    runLine(";rrb 10");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(InputLineTest, RepeatPrintsNoMessage)
{
    runLine("help nothing");
    EXPECT_EQ(runLine(""), Outcome{-2});
    runLine("rrbs 0 1 no/such/folder");
    EXPECT_EQ(runLine(""), (Outcome{-1, "Open NO/SUCH/FOLDER error\n"}));
}

TEST_F(InputLineTest, RepeatDoesNotCheckTheModeAgain)
{
    runLine("rrb 20");
    recording_vek::setMode(-19);
    EXPECT_EQ(runLine(""), (Outcome{0, "00000021: 00\n"}));
}

TEST_F(InputLineTest, UnknownWordIsRememberedAsALineButNotAsACommand)
{
    runLine("rrb 20");
    runLine("xyz");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(InputLineTest, RefusedCommandIsRememberedAsALineButNotAsACommand)
{
    runLine("help");
    recording_vek::setMode(-19);
    EXPECT_EQ(runLine("rrb 20"), (Outcome{-3, kModeRefused}));
    // `help` for the text "rrb 20", in which 20 is the command to explain.
    EXPECT_EQ(runLine(""), Outcome{-2});
    EXPECT_EQ(runLine("rrb help"), (Outcome{-3, kModeRefused}));
    EXPECT_THAT(runLine("").output, ::testing::StartsWith("help\t show all help information\n"));
}

TEST_F(InputLineTest, EmptyLineIsNotRememberedAsALine)
{
    runLine("rwbs 10 1 7");
    runLine("");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegWriteByte(0x10, 0x7)"));
}

TEST_F(InputLineTest, CommandWithANonZeroStatusIsRepeatedAsWell)
{
    recording_vek::setResult("vekRunScript", 5);
    EXPECT_EQ(runLine("rrb 30;run a;rrb 40"), (Outcome{0, "00000030: 00\n"}));
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{}) << "run is not repeated";
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

class CommandTextTest : public ConsoleTest
{
};

TEST_F(CommandTextTest, EndsAtTheFirstEmptyCommand)
{
    EXPECT_EQ(runOnce("rrb 0;;rrb 4"), (Outcome{0, "00000000: 00\n"}));
    EXPECT_EQ(runOnce(";rrb 4"), Outcome{});
    EXPECT_EQ(runOnce("rrb 0;"), (Outcome{0, "00000000: 00\n"}));
    EXPECT_EQ(runOnce(";"), Outcome{});
}

TEST_F(CommandTextTest, EmptyTextDoesNothing)
{
    runLine("rrb 100");
    takeDeviceCalls();
    EXPECT_EQ(runOnce(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(CommandTextTest, LeavesTheRememberedLineAndCommandAlone)
{
    runLine("rrb 10");
    EXPECT_EQ(runOnce("rrl 20"), (Outcome{0, "00000020: 00000000\n"}));
    EXPECT_EQ(runLine(""), (Outcome{0, "00000021: 00\n"}));
}

TEST_F(CommandTextTest, LeavesCmdLinesAlone)
{
    setCmdLines("rrb 44");
    EXPECT_EQ(runOnce("rrb 10"), (Outcome{0, "00000010: 00\n"}));
    EXPECT_STREQ(CmdLines, "rrb 44");
}

TEST_F(CommandTextTest, TextOfAnyLengthIsHandledInBounds)
{
    EXPECT_EQ(runOnce(std::string(1000, 'r')), Outcome{});
    EXPECT_EQ(runOnce(std::string(300, ' ') + ";" + std::string(300, 'x') + ";rrb 4"), (Outcome{0, "00000004: 00\n"}));
}

}  // namespace
}  // namespace console_test
