#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "child_process.h"
#include "console_support.h"
#include "expected_commands.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/line_editor.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::StartsWith;

class HelpTest : public ConsoleTest
{
};

TEST_F(HelpTest, ListsAllRowsButTheHiddenOnes)
{
    for (const char* text : {"help", "h", "?", "help ", " help", "help ,\t"}) {
        EXPECT_EQ(call(doHelp, text), (Outcome{0, expectedHelpList()})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(HelpTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doHelp, "help", 1), (Outcome{0, expectedHelpList()}));
}

TEST_F(HelpTest, RefusesATextWithoutAnyToken)
{
    EXPECT_EQ(call(doHelp, ""), Outcome{-1});
    EXPECT_EQ(call(doHelp, " ,\t\r\n"), Outcome{-1});
}

TEST_F(HelpTest, ExplainsEveryCommand)
{
    for (const ExpectedCommand& command : expectedCommands()) {
        for (const std::string& alias : command.aliases()) {
            std::string expected = alias + "\t " + std::string(command.brief) + "\n";
            expected += command.hasAliases() ? "\t" : "";
            expected.append(command.help).append("\n");
            EXPECT_EQ(call(doHelp, "help " + alias), (Outcome{0, expected})) << alias;
        }
    }
}

TEST_F(HelpTest, IndentsTheTextOfARowWithAliasesOnly)
{
    EXPECT_EQ(call(doHelp, "help rrb"), (Outcome{0,
                                                 "rrb\t read a byte on registr region(hex)\n"
                                                 "rrb [adr]\n\t[adr]: the address of read on register region\n"}));
    EXPECT_EQ(call(doHelp, "help q"), (Outcome{0, "q\t Quit from command line\n\t \n"}));
    EXPECT_EQ(call(doHelp, "help ?"), (Outcome{0,
                                               "?\t show all help information\n"
                                               "\thelp/h/? - show all cmd help information\n"
                                               "help/h/? [cmd] - show specific cmd help information\n"
                                               "\t[cmd]: all tovira_util_tool cmd\n"}));
}

TEST_F(HelpTest, LowersTheArgument)
{
    EXPECT_EQ(call(doHelp, "HELP RRB"), call(doHelp, "help rrb"));
    EXPECT_EQ(runLine("HELP RRB"), call(doHelp, "help rrb"));
    EXPECT_EQ(call(doHelp, "help QuIt"), (Outcome{0, "quit\t Quit from command line\n\t \n"}));
}

TEST_F(HelpTest, ExplainsTheFirstArgumentOnly)
{
    EXPECT_EQ(call(doHelp, "help,rrb rwb"), call(doHelp, "help rrb"));
    EXPECT_EQ(call(doHelp, "help\t\trrb"), call(doHelp, "help rrb"));
}

TEST_F(HelpTest, RefusesUnknownNames)
{
    for (const char* text : {"help hel", "help rrbb", "help rr", "help help/h/?", "help help/h", "help /", "help 0"}) {
        EXPECT_EQ(call(doHelp, text), Outcome{-2}) << text;
    }
    EXPECT_EQ(runLine("help nothing"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

// Line ends are delimiters around the command word only.
TEST_F(HelpTest, TakesLineEndsAsPartOfTheArgument)
{
    EXPECT_EQ(call(doHelp, "help rrb\n"), Outcome{-2});
    EXPECT_EQ(call(doHelp, "help\r\nrrb"), Outcome{-2});
}

class QuitTest : public ConsoleTest
{
};

TEST_F(QuitTest, EndsTheConsoleAndPrintsNothing)
{
    EXPECT_EQ(call(doQuit, "quit"), Outcome{1});
    EXPECT_EQ(call(doQuit, "q now", 1), Outcome{1});
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

class RunTest : public ConsoleTest
{
};

TEST_F(RunTest, HandsTheNameToTheLibrary)
{
    EXPECT_EQ(call(doRun, "run Some/Script.txt"), Outcome{});
    EXPECT_EQ(call(doRun, "r,a b", 1), Outcome{});
    EXPECT_EQ(call(doRun, "run\ta\r\n"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekRunScript(\"Some/Script.txt\")", "vekRunScript(\"a\")", "vekRunScript(\"a\\r\\n\")"));
}

TEST_F(RunTest, HandsOnAMissingNameAsNull)
{
    EXPECT_EQ(call(doRun, "run"), Outcome{});
    EXPECT_EQ(call(doRun, "run ,\t "), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(null)", "vekRunScript(null)"));
}

TEST_F(RunTest, RefusesATextWithoutAnyToken)
{
    EXPECT_EQ(call(doRun, ""), Outcome{-2});
    EXPECT_EQ(call(doRun, " ,\t\r\n"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(RunTest, ReturnsTheResultUnchanged)
{
    for (const int result : {0, 1, 2, 1000, -1, -2, -3, -4, -110}) {
        recording_vek::setResult("vekRunScript", result);
        EXPECT_EQ(call(doRun, "run a"), Outcome{result});
    }
}

class LoadTest : public FolderTest
{
protected:
    /** Runs `load` for a file with these contents. */
    static Outcome load(const std::string& contents)
    {
        writeFile("script", contents);
        return call(doLoad, "load script");
    }
};

TEST_F(LoadTest, RunsEveryLineUnderItsText)
{
    EXPECT_EQ(load("rrb 0\nrrb 4\n"), (Outcome{0, "rrb 0:\n00000000: 00\nrrb 4:\n00000004: 00\n"}));
    EXPECT_EQ(modeRequests(), 2);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRegReadByte(0x0)", "vekRegReadByte(0x4)"));
}

TEST_F(LoadTest, TakesTheLastLineWithoutItsEnd)
{
    EXPECT_EQ(load("rrb 8"), (Outcome{0, "rrb 8:\n00000008: 00\n"}));
}

TEST_F(LoadTest, SplitsAtSemicolonsAndLineEnds)
{
    EXPECT_EQ(load("\n;;rrb 1;rrb 2\r\n\r\nrrb 3\rrrb 4;\n"),
              (Outcome{0, "rrb 1:\n00000001: 00\nrrb 2:\n00000002: 00\nrrb 3:\n00000003: 00\nrrb 4:\n00000004: 00\n"}));
}

TEST_F(LoadTest, CutsLongerPiecesToTheLengthOfTheFirst)
{
    EXPECT_EQ(load("rrb 0\nrrb 1234\n"), (Outcome{0, "rrb 0:\n00000000: 00\nrrb 1234:\n00000001: 00\n"}));
    EXPECT_EQ(load("h rrb\nrwb 10 55\nrrb 10\n").output, call(doHelp, "help rrb").output.insert(0, "h rrb:\n") +
                                                             "rwb 10 55:\n" + std::string(kBadArgumentLine) +
                                                             "rrb 10:\n00000001: 00\n");
}

TEST_F(LoadTest, RunsShorterPiecesWhole)
{
    EXPECT_EQ(load("rrb 1234\nrrb 5\nrrb 4321\n"),
              (Outcome{0, "rrb 1234:\n00001234: 00\nrrb 5:\n00000005: 00\nrrb 4321:\n00004321: 00\n"}));
}

TEST_F(LoadTest, KeepsBlanksOfAPiece)
{
    EXPECT_EQ(load("  rrb 4 \n"), (Outcome{0, "  rrb 4 :\n00000004: 00\n"}));
}

TEST_F(LoadTest, StartsWithAnEmptyInputLine)
{
    setCmdLines("rrb 55555555");
    writeFile("script", "rrb 4\n");
    EXPECT_EQ(call(doLoad, "load script"), (Outcome{0, "rrb 4:\n00000004: 00\n"}));
}

TEST_F(LoadTest, LeavesTheInputLineEmpty)
{
    load("rrb 4\n");
    EXPECT_EQ(std::string(CmdLines, sizeof CmdLines), std::string(256, '\0'));
}

TEST_F(LoadTest, GoesOnAfterFailingAndQuittingCommands)
{
    EXPECT_EQ(load("quit;help\nrwb 1;xxxx\nr ab\n"),
              (Outcome{0, "quit:\nhelp:\n" + expectedHelpList() + "rwb 1:\n" + std::string(kBadArgumentLine) +
                              "xxxx:\nr ab:\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"ab\")"));
    EXPECT_EQ(load("rwb 1\nrrb 4\n"),
              (Outcome{0, "rwb 1:\n" + std::string(kBadArgumentLine) + "rrb 4:\n00000004: 00\n"}));
}

TEST_F(LoadTest, RunsNothingForAnEmptyFile)
{
    EXPECT_EQ(load(""), Outcome{});
    EXPECT_EQ(load("\n\r;;\n"), Outcome{});
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(LoadTest, RunsWhatStandsBeforeANulByte)
{
    EXPECT_EQ(load(std::string("rrb 4\nrrb 5\0rrb 6\nrrb 7\n", 24)),
              (Outcome{0, "rrb 4:\n00000004: 00\nrrb 5:\n00000005: 00\n"}));
}

TEST_F(LoadTest, CutsPiecesThatDoNotFitTheInputLine)
{
    const std::string piece = "rrb 4" + std::string(395, ' ');
    EXPECT_EQ(load(piece + "\n" + std::string(300, 'x') + "\nrrb 1234\n"),
              (Outcome{0, piece + ":\n00000004: 00\n" + std::string(300, 'x') + ":\nrrb 1234:\n00001234: 00\n"}));
    EXPECT_EQ(std::string(CmdLines, sizeof CmdLines), std::string(256, '\0'));
}

TEST_F(LoadTest, FillsTheInputLineToItsLastCharacter)
{
    // 255 characters fit, so the address is whole; of 256 the last one is lost.
    const std::string blanks(249, ' ');
    EXPECT_EQ(load("rrb" + blanks + "123\n").output, "rrb" + blanks + "123:\n00000123: 00\n");
    EXPECT_EQ(load("rrb" + blanks + "1234\n").output, "rrb" + blanks + "1234:\n00000123: 00\n");
}

TEST_F(LoadTest, RunsAFileOfManyLines)
{
    std::string contents;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        contents += "rwb 10 1\n";
        expected += "rwb 10 1:\n";
    }
    EXPECT_EQ(load(contents), (Outcome{0, expected}));
    const std::vector<std::string> calls = takeDeviceCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "vekRegWriteByte(0x10, 0x1)"), 5000);
}

TEST_F(LoadTest, TakesTheNameAsItIsTyped)
{
    writeFile("Mixed.Txt", "rrb 4");
    const Outcome expected{0, "rrb 4:\n00000004: 00\n"};
    EXPECT_EQ(call(doLoad, "load,Mixed.Txt other"), expected);
    EXPECT_EQ(call(doLoad, "LOAD\tMixed.Txt", 1), expected);
    EXPECT_EQ(runLine("load Mixed.Txt"), expected);
}

TEST_F(LoadTest, ClosesTheFile)
{
    load("rrb 4");
    const std::ptrdiff_t open = countOpenDescriptors();
    load("rrb 4");
    call(doLoad, "load missing");
    call(doLoad, "load .");
    EXPECT_EQ(countOpenDescriptors(), open);
}

TEST_F(LoadTest, CommandsBehindItOnTheLineStillRun)
{
    writeFile("script", "rrb 0\nrrb 4\n");
    EXPECT_EQ(runLine("rrb 8;load script;rrb c;rrb 10"),
              (Outcome{0, "00000008: 00\nrrb 0:\n00000000: 00\nrrb 4:\n00000004: 00\n0000000c: 00\n00000010: 00\n"}));
    EXPECT_EQ(runOnce("load script;rrb c"), (Outcome{0, "rrb 0:\n00000000: 00\nrrb 4:\n00000004: 00\n0000000c: 00\n"}));
}

TEST_F(LoadTest, EmptyLineRepeatsTheLastCommandOfTheFile)
{
    writeFile("script", "rrb 10\nrrl 20\n");
    runLine("load script");
    EXPECT_EQ(runLine(""), (Outcome{0, "00000024: 00000000\n"}));
    EXPECT_EQ(runLine(""), (Outcome{0, "00000028: 00000000\n"}));
}

TEST_F(LoadTest, RunsFilesFromWithinFiles)
{
    writeFile("inner", "rrb 4\nrrb 5\n");
    EXPECT_EQ(load("load inner\nrrb 6\n"),
              (Outcome{0, "load inner:\nrrb 4:\n00000004: 00\nrrb 5:\n00000005: 00\nrrb 6:\n00000006: 00\n"}));
}

TEST_F(LoadTest, MissingFileWithinAFileDoesNotStopIt)
{
    EXPECT_EQ(load("load missing\nrrb 6\n"),
              (Outcome{0, "load missing:\nrrb 6:\n00000006: 00\n", "Open file failed: No such file or directory\n"}));
}

TEST_F(LoadTest, SixteenFilesWithinOneAnotherRun)
{
    std::string expected;
    for (int depth = 1; depth <= 16; ++depth) {
        std::string command = "rrb 4";
        if (depth < 16) {
            command = "load f";
            command += std::to_string(depth + 1);
        }
        writeFile(std::string("f").append(std::to_string(depth)), command);
        expected += command + ":\n";
    }
    EXPECT_EQ(call(doLoad, "load f1"), (Outcome{0, expected + "00000004: 00\n"}));
}

TEST_F(LoadTest, FileThatLoadsItselfIsRefusedInTheEnd)
{
    const Outcome outcome = load("load script\n");
    EXPECT_EQ(outcome.status, 0);
    std::string expected;
    for (int depth = 1; depth <= 16; ++depth) {
        expected += "load script:\n";
    }
    EXPECT_EQ(outcome.output, expected);
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_EQ(call(doLoad, "load script").output, expected) << "the depth starts anew";
}

TEST_F(LoadTest, MissingFileEndsTheConsole)
{
    const Outcome expected{1, "", "Open file failed: No such file or directory\n"};
    EXPECT_EQ(call(doLoad, "load missing"), expected);
    EXPECT_EQ(call(doLoad, "load MISSING", 1), expected);
    EXPECT_EQ(runLine("load missing;rrb 4"), expected);
    EXPECT_EQ(runOnce("load missing;rrb 4"), expected);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

TEST_F(LoadTest, NameWithALineEndIsAnotherName)
{
    writeFile("script", "rrb 4");
    EXPECT_EQ(call(doLoad, "load script\n"), (Outcome{1, "", "Open file failed: No such file or directory\n"}));
}

TEST_F(LoadTest, MissingNameEndsTheConsole)
{
    const Outcome outcome = call(doLoad, "load");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, StartsWith("Open file failed: "));
}

TEST_F(LoadTest, FolderIsRefused)
{
    ASSERT_EQ(mkdir("folder", 0700), 0);
    const Outcome outcome = call(doLoad, "load folder");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, StartsWith("Open file failed: "));
}

TEST_F(LoadTest, PipeIsRefusedAndNotWaitedFor)
{
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const auto result = child_process::runForked(
        [] { std::exit(call(doLoad, "load pipe").status); },  // NOLINT(concurrency-mt-unsafe): one thread
        std::chrono::seconds(20));
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 1);
    const Outcome outcome = result.timedOut ? Outcome{} : call(doLoad, "load pipe");
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, StartsWith("Open file failed: "));
}

TEST_F(LoadTest, RefusesATextWithoutAnyToken)
{
    EXPECT_EQ(call(doLoad, ""), Outcome{-2});
    EXPECT_EQ(call(doLoad, " ,\t\r\n"), Outcome{-2});
}

}  // namespace
}  // namespace console_test
