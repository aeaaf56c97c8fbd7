// The dispatcher over a table in which rows share their names, which those of the product do not.

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "console_support.h"
#include "tovira_parse/command_table.h"

namespace
{

std::vector<std::string> handled;
int lastStatus = kStatusDone;

int first(char* cmdText, int repeat)
{
    handled.push_back("first " + std::string(cmdText) + " " + std::to_string(repeat));
    return kStatusBadCommand;
}

int second(char* cmdText, int repeat)
{
    handled.push_back("second " + std::string(cmdText) + " " + std::to_string(repeat));
    return lastStatus;
}

constexpr std::uint32_t kSerialOnly = 1U << VEK_ACCESS_SERIAL;

constexpr UtilCmd kRows[] = {
    {"twin", first, kDriverOnly, 1, "", ""},  {"other", first, kEveryPath, 1, "", ""},
    {"twin", second, kEveryPath, 1, "", ""},  {"split", second, kEveryPath, 1, "", ""},
    {"split", first, kSerialOnly, 1, "", ""},
};

}  // namespace

// In the place of the product's table, whose file is then not linked.
const std::span<const UtilCmd> g_util_cmd = kRows;
const std::span<const char* const> g_blacklist_cmd;

int findCmdRow(std::string_view word, int from)
{
    for (auto row = static_cast<std::size_t>(from); row < std::size(kRows); ++row) {
        if (kRows[row].name == word) {
            return static_cast<int>(row);
        }
    }
    return kNoCmdRow;
}

bool hasAliases(const UtilCmd& /*cmd*/)
{
    return false;
}

namespace console_test
{
namespace
{

using Lines = std::vector<std::string>;

class OwnTable : public ConsoleTest
{
protected:
    OwnTable()
    {
        handled.clear();
        lastStatus = kStatusDone;
    }
};

TEST_F(OwnTable, CallsEveryRowOfTheNameInItsOrder)
{
    EXPECT_EQ(runLine("twin 1"), Outcome{});
    EXPECT_EQ(handled, (Lines{"first twin 1 0", "second twin 1 0"}));
}

TEST_F(OwnTable, GoesOnBehindARowThatTheModeRefuses)
{
    recording_vek::setMode(VEK_ACCESS_MEM);
    EXPECT_EQ(runLine("twin 2"), Outcome{});
    EXPECT_EQ(handled, Lines{"second twin 2 0"});
}

TEST_F(OwnTable, TakesTheStatusOfTheLastRow)
{
    lastStatus = kStatusBadArgument;
    EXPECT_EQ(runLine("twin;other"), (Outcome{kStatusBadArgument, std::string(kBadArgumentLine)}));
    EXPECT_EQ(handled, (Lines{"first twin 0", "second twin 0"}));
}

TEST_F(OwnTable, TakesTheRefusalOfTheLastRowForTheStatus)
{
    EXPECT_EQ(runLine("split;other"), (Outcome{kStatusModeRefused, std::string(kModeRefusedLine)}));
    EXPECT_EQ(handled, Lines{"second split 0"});
    recording_vek::setMode(VEK_ACCESS_SERIAL);
    EXPECT_EQ(runLine("split"), (Outcome{kStatusBadCommand, std::string(kBadCommandLine)}));
}

TEST_F(OwnTable, RepeatsTheRowThatWasCalledLast)
{
    runLine("twin 3");
    handled.clear();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_EQ(handled, Lines{"second twin 3 1"});
}

}  // namespace
}  // namespace console_test
