// The addresses remembered at the start of the program. Each check runs in a process of its own, started afresh.

#include <cstdlib>
#include <iostream>
#include <string>

#include "memory_support.h"

namespace memory_test
{
namespace
{

/** Runs a command as a repeated one and ends the process, with status 0 when it prints what is expected. */
[[noreturn]] void exitWithComparison(CmdHandler handler, const std::string& text, const std::string& expected)
{
    const Outcome outcome = call(handler, text, 1);
    const bool same = outcome == Outcome{0, expected};
    if (!same) {
        std::cerr << ::testing::PrintToString(outcome) << '\n';
    }
    std::exit(same ? EXIT_SUCCESS : EXIT_FAILURE);  // NOLINT(concurrency-mt-unsafe): one thread
}

class InitialAddressDeathTest : public ConsoleTest
{
protected:
    InitialAddressDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(InitialAddressDeathTest, SingleReadsGoOnBehindZero)
{
    const auto zero = ::testing::ExitedWithCode(0);
    EXPECT_EXIT(exitWithComparison(doVram, "vrl 50", "00000004: 00000000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doKmem, "krl 50", "0000000000000004: 00000000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doAmba, "arl 50", "00000004: 00000000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doCrtcReg, "crb 50", "CRTC0 01: 00\n"), zero, "");
}

TEST_F(InitialAddressDeathTest, RunsStartAtZero)
{
    const auto zero = ::testing::ExitedWithCode(0);
    EXPECT_EXIT(exitWithComparison(doMultVram, "vrws 50 1", "00000000: 0000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doMultKmem, "krws 50 1", "0000000000000000: 0000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doMultAmba, "arws 50 1", "00000000: 0000\n"), zero, "");
    EXPECT_EXIT(exitWithComparison(doCrtcReg, "crbs 50 1", dump(0, bytes({0})) + "\n"), zero, "");
}

}  // namespace
}  // namespace memory_test
