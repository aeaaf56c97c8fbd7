#include "tovira_parse/command_table.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "console_support.h"
#include "expected_commands.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::Pair;

struct HandlerWords {
    CmdHandler handler;
    std::vector<std::string> names;
};

/** All rows of the table, by handler. */
const std::vector<HandlerWords>& handlerWords()
{
    static const std::vector<HandlerWords> words = {
        {doMultReg, {"rrbs", "rrws", "rrls", "rrqs", "rwbs", "rwws", "rwls", "rwqs"}},
        {doReg, {"rrb", "rrw", "rrl", "rrq", "rwb", "rww", "rwl", "rwq"}},
        {doCrtcReg, {"crb", "cwb", "crbs"}},
        {doVram, {"vrb", "vrw", "vrl", "vrq", "vwb", "vww", "vwl", "vwq"}},
        {doMultVram, {"vrbs", "vrws", "vrls", "vrqs", "vwbs", "vwws", "vwls", "vwqs"}},
        {doKmem, {"krb", "krw", "krl", "krq", "kwb", "kww", "kwl", "kwq"}},
        {doMultKmem, {"krbs", "krws", "krls", "krqs", "kwbs", "kwws", "kwls", "kwqs"}},
        {doI2c, {"i2c"}},
        {doDDC, {"ddc"}},
        {doPCI, {"pci"}},
        {doZV, {"zv"}},
        {doTemp, {"temp"}},
        {doVolt, {"volt", "vlot"}},
        {doProcess, {"process"}},
        {doVer, {"version/ver", "info"}},
        {doRun, {"run/r"}},
        {doLoad, {"load"}},
        {doSpi, {"spi"}},
        {doVga, {"vga"}},
        {doDvo, {"dvo"}},
        {doDp, {"dp"}},
        {doEdp, {"edp"}},
        {doHdmi, {"hdmi"}},
        {doQuery, {"query"}},
        {doMonitor, {"monitor"}},
        {doFan, {"fan"}},
        {doThermal, {"thermal"}},
        {doCrtc, {"crtc"}},
        {doCard, {"card"}},
        {doEdid, {"edid"}},
        {doFunction, {"func"}},
        {doClk, {"clk"}},
        {doMultAmba, {"arbs", "arws", "arls", "arqs", "awbs", "awws", "awls", "awqs"}},
        {doAmba, {"arb", "arw", "arl", "arq", "awb", "aww", "awl", "awq"}},
        {doLtc2990, {"ltc2990"}},
        {doIna3221, {"ina3221"}},
        {doLtc2991, {"ltc2991"}},
        {doPower, {"power"}},
        {doMcu, {"mcu"}},
        {doDump, {"dump"}},
        {doQuit, {"quit/q"}},
        {doHelp, {"help/h/?"}},
    };
    return words;
}

TEST(CommandTable, RowsStandInOrderWithTheirTexts)
{
    const std::vector<ExpectedCommand> expected = expectedCommands();
    ASSERT_EQ(expected.size(), 102U);
    ASSERT_EQ(g_util_cmd.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        EXPECT_EQ(g_util_cmd[i].name, expected[i].name);
        EXPECT_EQ(g_util_cmd[i].modes, expected[i].modes);
        EXPECT_EQ(g_util_cmd[i].repeat, expected[i].repeat);
        EXPECT_EQ(g_util_cmd[i].brief, expected[i].brief);
        EXPECT_EQ(g_util_cmd[i].help, expected[i].help);
    }
}

TEST(CommandTable, RowsCallTheirHandlers)
{
    std::map<std::string_view, CmdHandler> handlers;
    for (const HandlerWords& line : handlerWords()) {
        for (const std::string& name : line.names) {
            EXPECT_TRUE(handlers.emplace(name, line.handler).second) << name;
        }
    }
    EXPECT_EQ(handlers.size(), g_util_cmd.size());
    for (const UtilCmd& row : g_util_cmd) {
        ASSERT_TRUE(handlers.contains(row.name)) << row.name;
        EXPECT_EQ(row.handler, handlers.at(row.name)) << row.name;
    }
}

TEST(CommandTable, KeepsToTheSizesOfItsFields)
{
    for (const UtilCmd& row : g_util_cmd) {
        SCOPED_TRACE(row.name);
        EXPECT_LE(std::string_view(row.name).size(), 15U);
        EXPECT_FALSE(std::string_view(row.name).empty());
        EXPECT_LE(std::string_view(row.brief).size(), 127U);
        EXPECT_LE(std::string_view(row.help).size(), 2047U);
    }
}

TEST(CommandTable, GivesNoNameTwice)
{
    std::set<std::string> names;
    for (const ExpectedCommand& command : expectedCommands()) {
        for (const std::string& alias : command.aliases()) {
            EXPECT_FALSE(alias.empty()) << command.name;
            EXPECT_TRUE(names.insert(alias).second) << alias;
        }
    }
}

TEST(CommandTable, NamesAreInLowerCase)
{
    for (const UtilCmd& row : g_util_cmd) {
        for (const char character : std::string_view(row.name)) {
            EXPECT_FALSE(character >= 'A' && character <= 'Z') << row.name;
        }
    }
}

TEST(CommandTable, HidesFourNamesFromTheFullList)
{
    std::vector<std::string> hidden(g_blacklist_cmd.begin(), g_blacklist_cmd.end());
    EXPECT_THAT(hidden, ElementsAre("query", "spi", "vlot", "clk"));
}

TEST(FindCmdRow, FindsEveryAliasOnceOnly)
{
    const std::vector<ExpectedCommand> expected = expectedCommands();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const int index = static_cast<int>(i);
        for (const std::string& alias : expected[i].aliases()) {
            EXPECT_EQ(findCmdRow(alias, 0), index) << alias;
            EXPECT_EQ(findCmdRow(alias, index), index) << alias;
            EXPECT_EQ(findCmdRow(alias, index + 1), kNoCmdRow) << alias;
        }
    }
}

TEST(FindCmdRow, ComparesWholeWords)
{
    for (const char* word :
         {"hel", "helpp", "help/h/?", "help/h", "h/?", "/", "", "rr", "rrbb", "rrb ", "RRB", "Help"}) {
        EXPECT_EQ(findCmdRow(word, 0), kNoCmdRow) << word;
    }
}

TEST(FindCmdRow, FindsNothingBehindTheTable)
{
    const int end = static_cast<int>(g_util_cmd.size());
    EXPECT_EQ(findCmdRow("help", end), kNoCmdRow);
    EXPECT_EQ(findCmdRow("", end), kNoCmdRow);
}

TEST(HasAliases, TellsRowsWithSeveralNames)
{
    for (const UtilCmd& row : g_util_cmd) {
        EXPECT_EQ(hasAliases(row), std::string_view(row.name).find('/') != std::string_view::npos) << row.name;
    }
}

class TableReachTest : public ConsoleTest
{
};

std::string upperCased(std::string text)
{
    for (char& character : text) {
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    return text;
}

// Without an open path a row for the card is refused, which tells that the word has reached it, and runs nothing.
TEST_F(TableReachTest, EveryAliasOfARowForTheCardReachesIt)
{
    recording_vek::setMode(-19);
    for (const ExpectedCommand& command : expectedCommands()) {
        if (command.modes != 15) {
            for (const std::string& alias : command.aliases()) {
                EXPECT_EQ(runLine(alias), (Outcome{-3, std::string(kModeRefusedLine)})) << alias;
                EXPECT_EQ(runLine(upperCased(alias)), (Outcome{-3, std::string(kModeRefusedLine)})) << alias;
            }
        }
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre());
}

/** Whether the dispatcher lets a row run, told by its refusal alone. */
bool runs(const std::string& word)
{
    const Outcome outcome = runLine(word);
    const bool refused = outcome == Outcome{-3, std::string(kModeRefusedLine)};
    EXPECT_TRUE(refused || outcome.output.find(kModeRefusedLine) == std::string::npos) << word;
    return !refused;
}

// Without a path the mode is a negative code. Only the console's own rows have something to do then.
TEST_F(TableReachTest, EveryRowRunsInTheModesOfItsBitsOnly)
{
    constexpr int kNoPath = -19;
    for (const int mode : {0, 1, 2, kNoPath}) {
        for (const ExpectedCommand& command : expectedCommands()) {
            const bool allowed = mode < 0 ? command.modes == 15 : (command.modes >> mode & 1U) != 0;
            for (const std::string& alias : command.aliases()) {
                recording_vek::reset();
                recording_vek::setMode(mode);
                EXPECT_EQ(runs(alias), allowed) << alias << " in mode " << mode;
            }
        }
    }
}

// Each mask is told from all others by the modes that it lets through.
TEST_F(TableReachTest, CountsTheRowsOfEachMode)
{
    std::map<unsigned int, int> rows;
    for (const UtilCmd& row : g_util_cmd) {
        ++rows[row.modes];
    }
    EXPECT_THAT(rows, ElementsAre(Pair(1U, 6), Pair(7U, 92), Pair(15U, 4)));
}

TEST_F(TableReachTest, ListsNinetyEightRows)
{
    const Outcome listed = runLine("help");
    EXPECT_EQ(listed, (Outcome{0, expectedHelpList()}));
    EXPECT_EQ(std::count(listed.output.begin(), listed.output.end(), '\n'), 98);
    for (const char* hidden : {"query", "spi", "vlot", "clk"}) {
        EXPECT_EQ(listed.output.find(std::string("\n") + hidden + '\t'), std::string::npos) << hidden;
    }
}

TEST_F(TableReachTest, EveryAliasIsExplained)
{
    for (const ExpectedCommand& command : expectedCommands()) {
        for (const std::string& alias : command.aliases()) {
            std::string explained = alias + "\t " + std::string(command.brief) + "\n";
            explained += command.hasAliases() ? "\t" : "";
            explained.append(command.help).append("\n");
            EXPECT_EQ(runLine("help " + alias), (Outcome{0, explained}));
            EXPECT_EQ(runLine("HELP " + upperCased(alias)), (Outcome{0, explained}));
        }
    }
}

TEST_F(TableReachTest, EveryAliasOfTheConsoleRowsReachesTheirHandlers)
{
    for (const char* word : {"run", "r", "RUN", "R"}) {
        EXPECT_EQ(runLine(word + std::string(" s")), Outcome{}) << word;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"s\")")) << word;
    }
    for (const char* word : {"quit", "q", "QUIT", "Q"}) {
        EXPECT_EQ(runLine(word), Outcome{1}) << word;
    }
    for (const char* word : {"help", "h", "?", "HELP", "H"}) {
        EXPECT_EQ(runLine(word), (Outcome{0, expectedHelpList()})) << word;
    }
}

}  // namespace
}  // namespace console_test
