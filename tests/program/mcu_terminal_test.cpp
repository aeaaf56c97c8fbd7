// The finished program at a terminal, waiting for a microcontroller that does not answer: on the recording library,
// whose registers hold what is written to them and nothing else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "pty_console.h"

namespace
{

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!\r\n";
const std::string kControlC = "\x03";

/** Makes the firmware's signature be there, so that nothing is reset, and starts a block write, which shows what it
    has sent before it waits for the completion word. */
const std::string kCommands = "rwl 3ff00 deadbeef;mcu aux ws 100 1 11 22";
const std::string kSent = "\r\ndata: 0x11 0x22\r\n";

std::vector<std::string> commandLine(const std::vector<std::string>& options)
{
    std::vector<std::string> words = {"/usr/bin/env", "LD_LIBRARY_PATH=" TOVIRA_FOREIGN_LIBRARY_FOLDER,
                                      TOVIRA_UTIL_TOOL};
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

void expectEndAtControlC(PtyConsole& console)
{
    ASSERT_TRUE(console.sendToCommand(kControlC));
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value()) << "the program goes on";
    EXPECT_TRUE(event->killedBy(SIGINT)) << testing::PrintToString(*event);
    EXPECT_EQ(console.readToEnd(), "^C");
    EXPECT_EQ(describe(console.settings()), describe(console.settingsBefore()));
}

TEST(TerminalWithoutMicrocontroller, EndsAtControlCWithTheSettingsAsBefore)
{
    PtyConsole console({.arguments = commandLine({})});
    ASSERT_TRUE(console.send(kCommands + "\r"));
    const std::string expected = kStartLine + ">" + kCommands + "\r\r\n" + kSent;
    ASSERT_EQ(console.read(expected.size()), expected);
    expectEndAtControlC(console);
}

TEST(TerminalWithoutMicrocontroller, EndsAtControlCAfterAnAnswer)
{
    PtyConsole console({.arguments = commandLine({})});
    const std::string answered = "rwl 3ff1c 55aa55aa;mcu i2c r 10";
    ASSERT_TRUE(console.send("rwl 3ff00 deadbeef;" + answered + "\r"));
    const std::string first = kStartLine + ">rwl 3ff00 deadbeef;" + answered + "\r\r\n00000010: 00\r\n>";
    ASSERT_EQ(console.read(first.size()), first);
    // The completion word has been released: it does not serve a second request.
    ASSERT_TRUE(console.send(kCommands + "\r"));
    const std::string second = kCommands + "\r\r\n" + kSent;
    ASSERT_EQ(console.read(second.size()), second);
    expectEndAtControlC(console);
}

TEST(TerminalWithoutMicrocontroller, EndsASingleCommandLineToo)
{
    PtyConsole console({.arguments = commandLine({"--cmd", kCommands})});
    const std::string expected = kStartLine + kSent;
    ASSERT_EQ(console.read(expected.size()), expected);
    expectEndAtControlC(console);
}

}  // namespace
