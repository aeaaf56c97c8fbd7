// What holds at the start of the program. Each check runs in a process of its own, started afresh, since all of it is
// kept for a process's life.

#include <climits>
#include <cstdlib>
#include <iostream>
#include <string>

#include "console_support.h"
#include "tovira_parse/handlers.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/options.h"

namespace console_test
{
namespace
{

/** Ends the process: with status 0 when the two are the same. */
template <typename Value, typename Other>
void exitWithComparison(const Value& actual, const Other& expected)
{
    const bool same = actual == expected;
    if (!same) {
        std::cerr << "is " << ::testing::PrintToString(actual) << ", not " << ::testing::PrintToString(expected)
                  << '\n';
    }
    std::exit(same ? EXIT_SUCCESS : EXIT_FAILURE);  // NOLINT(concurrency-mt-unsafe): one thread
}

class InitialStateDeathTest : public ConsoleTest
{
protected:
    InitialStateDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(InitialStateDeathTest, InputLineIsEmpty)
{
    EXPECT_EXIT(exitWithComparison(std::string(CmdLines, sizeof CmdLines), std::string(256, '\0')),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, NoCommandIsRepeated)
{
    EXPECT_EXIT(exitWithComparison(runLine(""), Outcome{}), ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, EmptyLineAsksForTheModeAndNoMore)
{
    EXPECT_EXIT(runLine(""); exitWithComparison(recording_vek::calls(), std::vector<std::string>{"get_s_type()"}),
                             ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, UnknownWordLeavesNoCommandToRepeat)
{
    EXPECT_EXIT(runLine("xyz"); exitWithComparison(runLine(""), Outcome{}), ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, CommandTextLeavesNoCommandToRepeat)
{
    EXPECT_EXIT(runOnce("rrb 0"); exitWithComparison(runLine(""), Outcome{}), ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, RefusedCommandLeavesNoCommandToRepeat)
{
    EXPECT_EXIT(recording_vek::setMode(-19); runLine("rrb 0");
                exitWithComparison(runLine(""), Outcome{}), ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, SingleAccessesStartAtAddressZero)
{
    EXPECT_EXIT(exitWithComparison(call(doReg, "rrl 50", 1), (Outcome{0, "00000004: 00000000\n"})),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, RunsStartAtAddressZero)
{
    EXPECT_EXIT(exitWithComparison(call(doMultReg, "rrls 50 1", 1), (Outcome{0, "00000000: 00000000\n"})),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(InitialStateDeathTest, SelectedCardIsTheFirst)
{
    EXPECT_EXIT(exitWithComparison(set_card, 0), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace console_test
