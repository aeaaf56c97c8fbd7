/**
 * @file display_support.h
 * What the tests of the display and bus commands share.
 */
#ifndef DISPLAY_SUPPORT_H
#define DISPLAY_SUPPORT_H

#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <string>

#include "child_process.h"
#include "console_support.h"

namespace console_test
{

/** Results of the library that are failures where 0 alone is success. */
inline constexpr int kFailures[] = {-1, -5, -22, INT_MIN, 1, 2, INT_MAX};

/** A line of a dump of bytes: the hexadecimal part filled up with blanks, and the characters. */
inline std::string dumpLine(std::string hexadecimal, const std::string& characters)
{
    hexadecimal.resize(58, ' ');
    return hexadecimal + '\t' + characters + '\n';
}

/** A number in lower-case hexadecimal with at least so many digits. */
inline std::string hexDigits(std::uint32_t number, int digits = 1)
{
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(digits) << number;
    return text.str();
}

/** Calls a handler in a process of its own, for what might wait for ever. @return whether its outcome was the expected
    one; false as well when it did not return. */
inline bool returnsInTime(CmdHandler handler, const std::string& text, const Outcome& expected)
{
    constexpr int kAsExpected = 7;
    const auto check = [&] {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        std::exit(call(handler, text) == expected ? kAsExpected : 0);
    };
    return child_process::runForked(check, std::chrono::seconds(20)).exitStatus == kAsExpected;
}

}  // namespace console_test

#endif
