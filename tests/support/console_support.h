/**
 * @file console_support.h
 * What the tests of the console's parts share: running a handler or a line and seeing its status, its output and the
 * calls that it made to the device-access library.
 */
#ifndef CONSOLE_SUPPORT_H
#define CONSOLE_SUPPORT_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "recording_vek.h"
#include "util_cmd.h"

namespace console_test
{

/** The dispatcher's messages. */
inline constexpr std::string_view kBadCommandLine = "command code error: the cmd input code is incorrect\n";
inline constexpr std::string_view kBadArgumentLine = "Invalid argument. Use help or ? for command info\n";
inline constexpr std::string_view kModeRefusedLine = "device error:the cmd does not support the visit mode\n";

/** What a run printed and returned. */
struct Outcome {
    int status = 0;
    std::string output{};
    std::string error{};

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream);

/** Calls a handler with a modifiable copy of the text. */
Outcome call(CmdHandler handler, std::string text, int repeat = 0);

/** Puts the text into CmdLines and runs it as an input line; an empty one is what Enter alone gives. */
Outcome runLine(std::string_view line);

/** Runs whatever CmdLines holds. */
Outcome runCmdLines();

/** Puts the text into CmdLines, filled up with NULs. */
void setCmdLines(std::string_view line);

/** Runs the text as `--cmd` does. */
Outcome runOnce(std::string text);

/** The calls recorded since the last look, those that ask about the connection left out. */
std::vector<std::string> takeDeviceCalls();

/** How often the calls recorded since the last takeDeviceCalls() or reset() asked for the access mode. */
int modeRequests();

/** Starts with a fresh recording library. */
class ConsoleTest : public ::testing::Test
{
protected:
    ConsoleTest();
};

/** Works in an empty folder of its own, which is also the current one. */
class FolderTest : public ConsoleTest
{
protected:
    FolderTest();
    ~FolderTest() override;
    FolderTest(const FolderTest&) = delete;
    FolderTest& operator=(const FolderTest&) = delete;

private:
    std::filesystem::path previous_;
    std::filesystem::path folder_;
};

void writeFile(const std::filesystem::path& path, std::string_view contents);
std::string readFile(const std::filesystem::path& path);

/** The number of descriptors that this process has open. */
std::ptrdiff_t countOpenDescriptors();

/** Bytes given as numbers, as a text. */
std::string bytes(const std::vector<int>& values);

}  // namespace console_test

#endif
