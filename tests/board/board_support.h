/**
 * @file board_support.h
 * What the tests of the board's commands share.
 */
#ifndef BOARD_SUPPORT_H
#define BOARD_SUPPORT_H

#include <climits>
#include <string>
#include <string_view>
#include <vector>

#include "console_support.h"

namespace console_test
{

/** Library results that are failures. */
inline constexpr int kFailures[] = {-1, -5, -22, INT_MIN, 1, 2, INT_MAX};

/** Access modes as get_s_type() reports them. */
inline constexpr int kDriverMode = 0;
inline constexpr int kMappingMode = 1;
inline constexpr int kSerialMode = 2;
inline constexpr int kModes[] = {kDriverMode, kMappingMode, kSerialMode};

/** Expects a line to run over every access path with this outcome and these calls, typed as well as given with --cmd,
    and Enter behind it to give the second outcome with the second calls. */
inline void expectOnEveryPath(std::string_view line, const Outcome& outcome, const std::vector<std::string>& calls,
                              const Outcome& onEnter, const std::vector<std::string>& callsOnEnter)
{
    for (const int mode : kModes) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runOnce(std::string(line)), outcome) << line << " in mode " << mode;
        EXPECT_EQ(takeDeviceCalls(), calls) << line << " in mode " << mode;
        EXPECT_EQ(runLine(line), outcome) << line << " in mode " << mode;
        EXPECT_EQ(takeDeviceCalls(), calls) << line << " in mode " << mode;
        EXPECT_EQ(runLine(""), onEnter) << line << " in mode " << mode;
        EXPECT_EQ(takeDeviceCalls(), callsOnEnter) << line << " in mode " << mode;
    }
}

/** Expects expectOnEveryPath() of a command that Enter repeats; it must not take the repeat flag into account. */
inline void expectRepeatedOnEveryPath(std::string_view line, const Outcome& outcome,
                                      const std::vector<std::string>& calls)
{
    expectOnEveryPath(line, outcome, calls, outcome, calls);
}

/** Expects expectOnEveryPath() of a command that Enter does not repeat. */
inline void expectOnceOnEveryPath(std::string_view line, const Outcome& outcome, const std::vector<std::string>& calls)
{
    expectOnEveryPath(line, outcome, calls, Outcome{}, {});
}

}  // namespace console_test

#endif
