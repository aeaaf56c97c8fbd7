// What the display and bus commands remember, as it is at the start of the program. Each check runs in a process of its
// own, started afresh, since it is kept for a process's life.

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "console_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

/** Ends the process: with status 0 when the two are the same. */
template <typename Value>
void exitWithComparison(const Value& actual, const Value& expected)
{
    const bool same = actual == expected;
    if (!same) {
        std::cerr << "is " << ::testing::PrintToString(actual) << ", not " << ::testing::PrintToString(expected)
                  << '\n';
    }
    std::exit(same ? EXIT_SUCCESS : EXIT_FAILURE);  // NOLINT(concurrency-mt-unsafe): one thread
}

class DisplayInitialStateDeathTest : public ConsoleTest
{
protected:
    DisplayInitialStateDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(DisplayInitialStateDeathTest, I2cTargetIsDeviceZeroOnChannelZero)
{
    EXPECT_EXIT(exitWithComparison(call(doI2c, "i2c set"),
                                   Outcome{0, "Set I2C to channel 0 with device address 0x00 (7-bit)\n"}),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(DisplayInitialStateDeathTest, I2cReadsFromDeviceZeroOnChannelZero)
{
    EXPECT_EXIT(call(doI2c, "i2c rb 4");
                exitWithComparison(takeDeviceCalls(), std::vector<std::string>{"vekI2cRead(0, 0x0, 0x4, 1)"}),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(DisplayInitialStateDeathTest, FirstI2cChannelLeavesDeviceZero)
{
    EXPECT_EXIT(exitWithComparison(call(doI2c, "i2c set 3"),
                                   Outcome{0, "Set I2C to channel 3 with device address 0x00 (7-bit)\n"}),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(DisplayInitialStateDeathTest, NoZoomVideoPortIsKnown)
{
    for (const char* text : {"zv init", "zv start", "zv stop", "zv restart", "zv info"}) {
        EXPECT_EXIT(exitWithComparison(call(doZV, text), Outcome{-2}), ::testing::ExitedWithCode(0), "") << text;
        EXPECT_EXIT(call(doZV, text); exitWithComparison(takeDeviceCalls(), {}), ::testing::ExitedWithCode(0), "")
            << text;
    }
}

}  // namespace
}  // namespace console_test
