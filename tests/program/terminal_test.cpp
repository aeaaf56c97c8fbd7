// The console on a terminal: what the user sees, and in which state the terminal is left.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "child_process.h"
#include "pty_console.h"

namespace
{

const std::string kTool = TOVIRA_UTIL_TOOL;

const std::string kUp = "\x1b[A";
const std::string kDown = "\x1b[B";
const std::string kRight = "\x1b[C";
const std::string kLeft = "\x1b[D";
const std::string kHome = "\x1b[1~";
const std::string kEnd = "\x1b[4~";
const std::string kControlC = "\x03";
const std::string kDelete = "\x7f";

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!";

// The editor ends a line with CR and LF, before which the terminal puts a CR of its own, as before every LF.
const std::string kEndOfInput = "\r\r\n";

/** A console that waits for its first key. */
class Terminal : public testing::Test
{
protected:
    explicit Terminal(PtyCommand command = {.arguments = {kTool}}) : console_(std::move(command)) {}

    void SetUp() override { expectOutput(kStartLine + "\r\n>"); }

    /** Compares the next bytes of output. */
    void expectOutput(const std::string& expected) { ASSERT_EQ(console_.read(expected.size()), expected); }

    /** Types keys and compares everything that they make the program print. */
    void type(const std::string& keys, const std::string& expected)
    {
        ASSERT_TRUE(console_.send(keys));
        ASSERT_NO_FATAL_FAILURE(expectOutput(expected));
    }

    /** Enters a command and compares what it prints, line ends being LF, before the next prompt. */
    void enter(const std::string& command, const std::string& answer)
    {
        type(command + "\r", command + kEndOfInput + withCarriageReturns(answer) + ">");
    }

    void expectScreen(int row, const std::string& expected) { EXPECT_EQ(console_.screen().row(row), expected); }

    void expectCursor(int row, int column)
    {
        EXPECT_EQ(console_.screen().cursorRow(), row);
        EXPECT_EQ(console_.screen().cursorColumn(), column);
    }

    void expectSettingsAsBefore() { EXPECT_EQ(describe(console_.settings()), describe(console_.settingsBefore())); }

    /** Waits for the end of the program, after which there must be no more output. */
    ProcessEvent end()
    {
        const std::optional<ProcessEvent> event = console_.waitForEvent();
        EXPECT_TRUE(event.has_value()) << "the program goes on";
        EXPECT_EQ(console_.readToEnd(), "");
        return event.value_or(ProcessEvent{0x7f});
    }

    static std::string withCarriageReturns(const std::string& text)
    {
        std::string all;
        for (const char character : text) {
            all += character == '\n' ? "\r\n" : std::string(1, character);
        }
        return all;
    }

    PtyConsole console_;
};

TEST_F(Terminal, ShowsTheStartLineAndThePrompt)
{
    expectScreen(0, kStartLine);
    expectScreen(1, ">");
    expectCursor(1, 1);
}

TEST_F(Terminal, IsRawWhileTheConsoleWaitsForAKey)
{
    ASSERT_TRUE(console_.waitForRawMode());
    termios raw = console_.settingsBefore();
    cfmakeraw(&raw);
    EXPECT_EQ(describe(console_.settings()), describe(raw));
}

TEST_F(Terminal, EchoesEveryKeyAtOnce)
{
    for (const char key : std::string("rrb 0")) {
        type(std::string(1, key), std::string(1, key));
    }
    expectScreen(1, ">rrb 0");
    expectCursor(1, 6);
}

TEST_F(Terminal, EditsTheLine)
{
    type("abc", "abc");
    type(kLeft + kLeft + "X", "\b\bXbc\b\b");
    expectScreen(1, ">aXbc");
    expectCursor(1, 3);
    type(kDelete, "\bbc \b\b\b");
    expectScreen(1, ">abc");
    expectCursor(1, 2);
    type(kHome, "\r>");
    expectCursor(1, 1);
    type(kRight, "a");
    expectCursor(1, 2);
    type(kEnd, "bc");
    expectCursor(1, 4);
    type("\b", "\b \b");
    expectScreen(1, ">ab");
    expectCursor(1, 3);
}

TEST_F(Terminal, RunsAnEditedLine)
{
    type("rwb 4 5a", "rwb 4 5a");
    type(kLeft + kLeft + kLeft + "0", "\b\b\b0 5a\b\b\b");
    type("\r", kEndOfInput + ">");
    enter("rrb 40", "00000040: 5a\n");
    expectScreen(1, ">rwb 40 5a");
    expectScreen(2, ">rrb 40");
    expectScreen(3, "00000040: 5a");
    expectScreen(4, ">");
}

TEST_F(Terminal, RecallsLines)
{
    enter("rwb 40 11", "");
    enter("rrb 40", "00000040: 11\n");
    type(kUp, "\r \r>rrb 40");
    type(kUp, "\r       \r>rwb 40 11");
    expectScreen(4, ">rwb 40 11");
    expectCursor(4, 10);
    type("\b2", "\b \b2");
    type("\r", kEndOfInput + ">");
    type(kUp + kUp, "\r \r>rwb 40 12\r          \r>rrb 40");
    expectScreen(5, ">rrb 40");
    type(kDown, "\r       \r>rwb 40 12");
    expectScreen(5, ">rwb 40 12");
    type(kUp + "\r", "\r          \r>rrb 40" + kEndOfInput + "00000040: 12\r\n>");
}

TEST_F(Terminal, RepeatsAReadAtEveryEmptyLine)
{
    enter("rwl 1000 11111111;rwl 1004 22222222;rwl 1008 33333333;rwl 100c 44444444", "");
    enter("rrl 1000", "00001000: 11111111\n");
    enter("", "00001004: 22222222\n");
    enter("", "00001008: 33333333\n");
    enter("", "0000100c: 44444444\n");
    expectScreen(2, ">rrl 1000");
    expectScreen(3, "00001000: 11111111");
    expectScreen(4, ">");
    expectScreen(9, "0000100c: 44444444");
    expectScreen(10, ">");
}

TEST_F(Terminal, DumpsWhatItHasWritten)
{
    std::string dump;
    for (const char* address : {"00000000", "00000010", "00000020", "00000030"}) {
        dump += std::string(address) + ": a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 \t................\n";
    }
    enter("rwbs 0 40 a5;rrbs 0 40", dump + "\n");
    expectScreen(5, "00000030: a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5 a5       ................");
    expectScreen(6, "");
    expectScreen(7, ">");
}

TEST_F(Terminal, ExplainsACommand)
{
    enter("help rrb",
          "rrb\t read a byte on registr region(hex)\n"
          "rrb [adr]\n"
          "\t[adr]: the address of read on register region\n");
    expectScreen(2, "rrb      read a byte on registr region(hex)");
}

TEST_F(Terminal, ListsTheCommandsAsWithoutATerminal)
{
    const child_process::Result listed = child_process::run({.arguments = {kTool, "--cmd", "help"}});
    ASSERT_THAT(listed.output, testing::StartsWith(kStartLine + "\n"));
    ASSERT_THAT(listed.output, testing::HasSubstr("\nrrb\t- read a byte on registr region(hex)\n"));
    enter("help", listed.output.substr(kStartLine.size() + 1));
}

TEST_F(Terminal, ReportsAnInvalidArgument)
{
    enter("rwb 40", "Invalid argument. Use help or ? for command info\n");
}

/** A script in a folder of its own. */
class ScriptFile
{
public:
    explicit ScriptFile(const std::string& contents)
    {
        std::string folder = testing::TempDir() + "terminal-XXXXXX";
        if (mkdtemp(folder.data()) == nullptr) {
            ADD_FAILURE() << "no folder for a script";
            return;
        }
        folder_ = folder;
        std::ofstream(path()) << contents;
    }
    ~ScriptFile() { std::filesystem::remove_all(folder_); }
    ScriptFile(const ScriptFile&) = delete;
    ScriptFile& operator=(const ScriptFile&) = delete;

    std::string path() const { return folder_ + "/script"; }

private:
    std::string folder_;
};

TEST_F(Terminal, LoadsAScript)
{
    const ScriptFile script("rwb 40 5\nrrb 0040\nrrb 0041\n");
    enter("load " + script.path(),
          "rwb 40 5:\n"
          "rrb 0040:\n"
          "00000040: 05\n"
          "rrb 0041:\n"
          "00000041: 00\n");
    expectScreen(console_.screen().cursorRow() - 1, "00000041: 00");
}

TEST_F(Terminal, HoldsTheKeysThatWereTypedAheadOfALongOutput)
{
    ASSERT_TRUE(console_.send("help\rrrb 41\r"));
    console_.readThrough("\n>");
    expectOutput("rrb 41" + kEndOfInput + "00000041: 00\r\n>");
}

TEST_F(Terminal, QuitsWithTheSettingsAsBefore)
{
    type("quit\r", "quit" + kEndOfInput);
    EXPECT_TRUE(end().exitedWith(0));
    expectSettingsAsBefore();
}

TEST_F(Terminal, EndsAtControlCWithTheSettingsAsBefore)
{
    type("rrb", "rrb");
    ASSERT_TRUE(console_.send(kControlC));
    EXPECT_TRUE(end().exitedWith(0));
    expectSettingsAsBefore();
}

TEST_F(Terminal, EndsAtAMissingScriptWithTheSettingsAsBefore)
{
    type("load /nowhere/script\r",
         "load /nowhere/script" + kEndOfInput + "Open file failed: No such file or directory\r\n");
    EXPECT_TRUE(end().exitedWith(0));
    expectSettingsAsBefore();
}

class TerminalSignals : public Terminal, public testing::WithParamInterface<int>
{
};

TEST_P(TerminalSignals, EndTheConsoleWithTheSettingsAsBefore)
{
    type("rrb", "rrb");
    ASSERT_TRUE(console_.waitForRawMode());
    console_.signal(GetParam());
    const ProcessEvent event = end();
    EXPECT_TRUE(event.killedBy(GetParam())) << testing::PrintToString(event);
    expectSettingsAsBefore();
}

TEST_P(TerminalSignals, EndTheConsoleAfterACommandToo)
{
    enter("rrb 41", "00000041: 00\n");
    ASSERT_TRUE(console_.waitForRawMode());
    console_.signal(GetParam());
    const ProcessEvent event = end();
    EXPECT_TRUE(event.killedBy(GetParam())) << testing::PrintToString(event);
    expectSettingsAsBefore();
}

INSTANTIATE_TEST_SUITE_P(Ending, TerminalSignals, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM),
                         [](const auto& signalNumber) { return std::string(sigabbrev_np(signalNumber.param)); });

class TerminalStop : public Terminal
{
protected:
    void stop()
    {
        ASSERT_TRUE(console_.waitForRawMode());
        console_.signal(SIGTSTP);
        const std::optional<ProcessEvent> event = console_.waitForEvent();
        ASSERT_TRUE(event.has_value());
        ASSERT_TRUE(event->stoppedBy(SIGTSTP)) << testing::PrintToString(*event);
    }

    void resume()
    {
        console_.signal(SIGCONT);
        const std::optional<ProcessEvent> event = console_.waitForEvent();
        ASSERT_TRUE(event.has_value());
        ASSERT_TRUE(event->continued()) << testing::PrintToString(*event);
    }
};

TEST_F(TerminalStop, RestoresTheSettingsAndGoesOnWithTheLine)
{
    type("rrb", "rrb");
    for (int round = 0; round < 2; ++round) {
        stop();
        expectSettingsAsBefore();
        resume();
        expectOutput("\r>rrb");
        type(" 41", " 41");
        type("\b\b\b", "\b \b\b \b\b \b");
    }
    type(" 42\r", " 42" + kEndOfInput + "00000042: 00\r\n>");
    type("quit\r", "quit" + kEndOfInput);
    EXPECT_TRUE(end().exitedWith(0));
    expectSettingsAsBefore();
}

// Signals that meet each other, and the program in the midst of a change of the terminal, leave no trace on it.
TEST_F(TerminalStop, InBurstsRestoresTheSettings)
{
    for (int burst = 0; burst < 200; ++burst) {
        console_.signal(SIGTSTP);
        console_.signal(SIGTSTP);
        console_.signal(SIGCONT);
    }
    ASSERT_TRUE(console_.sendContinuing("quit\r"));
    std::optional<ProcessEvent> event = console_.waitForEvent();
    while (event.has_value() && !event->exitedWith(0)) {
        console_.signal(SIGCONT);
        event = console_.waitForEvent();
    }
    EXPECT_TRUE(event.has_value());
    expectSettingsAsBefore();
}

TEST_F(TerminalStop, KeepsTheSettingsThatWereChangedMeanwhile)
{
    stop();
    termios changed = console_.settings();
    changed.c_cc[VERASE] = '\b';
    changed.c_lflag &= ~static_cast<tcflag_t>(ECHOE);
    console_.changeSettings(changed);
    resume();
    expectOutput("\r>");
    type("rrb 41\r", "rrb 41" + kEndOfInput + "00000041: 00\r\n>");
    type("quit\r", "quit" + kEndOfInput);
    EXPECT_TRUE(end().exitedWith(0));
    EXPECT_EQ(describe(console_.settings()), describe(changed));
}

TEST_F(TerminalStop, LeavesAStoppedConsoleToItsSignals)
{
    stop();
    console_.signal(SIGTERM);
    console_.signal(SIGCONT);
    std::optional<ProcessEvent> event = console_.waitForEvent();
    if (event.has_value() && event->continued()) {
        event = console_.waitForEvent();
    }
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->killedBy(SIGTERM)) << testing::PrintToString(*event);
    expectSettingsAsBefore();
}

TEST_F(Terminal, EndsWhenTheTerminalIsTakenAway)
{
    // The session's leader gets the signal of a hang-up and does not pass it on: the console finds out by reading.
    ASSERT_TRUE(console_.waitForRawMode());
    console_.hangUp();
    const std::optional<ProcessEvent> event = console_.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
}

class TerminalIgnoringSignals : public Terminal
{
protected:
    TerminalIgnoringSignals() : Terminal({.arguments = {kTool}, .ignoredSignal = SIGHUP}) {}
};

TEST_F(TerminalIgnoringSignals, GoesOnAtASignalThatTheStarterIgnores)
{
    ASSERT_TRUE(console_.waitForRawMode());
    console_.signal(SIGHUP);
    type("rrb 41\r", "rrb 41" + kEndOfInput + "00000041: 00\r\n>");
    type("quit\r", "quit" + kEndOfInput);
    EXPECT_TRUE(end().exitedWith(0));
    expectSettingsAsBefore();
}

/** A pipe from which every read gives what one write wrote, or a piece of it that fills a page. */
class PacketPipe
{
public:
    static constexpr std::size_t kLargestPacket = 4096;

    PacketPipe()
    {
        // Room for many small packets: nobody reads before the writer has ended.
        constexpr int kCapacity = 1 << 20;
        EXPECT_EQ(pipe2(ends_.data(), O_DIRECT | O_CLOEXEC), 0);
        EXPECT_GE(fcntl(writeEnd(), F_SETPIPE_SZ, kCapacity), kCapacity);
    }
    ~PacketPipe()
    {
        close(ends_[0]);
        closeWriteEnd();
    }
    PacketPipe(const PacketPipe&) = delete;
    PacketPipe& operator=(const PacketPipe&) = delete;

    int writeEnd() const { return ends_[1]; }

    void closeWriteEnd() { close(std::exchange(ends_[1], -1)); }

    std::vector<std::string> readPackets()
    {
        std::vector<std::string> packets;
        std::array<char, kLargestPacket> packet{};
        for (ssize_t got = 0; (got = read(ends_[0], packet.data(), packet.size())) > 0;) {
            packets.emplace_back(packet.data(), static_cast<std::size_t>(got));
        }
        return packets;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

TEST(TerminalInput, WithAPipeForOutputIsNotWrittenInSmallPieces)
{
    PacketPipe output;
    PtyConsole console({.arguments = {kTool}, .standardOutput = output.writeEnd()});
    ASSERT_TRUE(console.send("help\rrrb 41\rhelp\rquit\r"));
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
    EXPECT_EQ(console.readToEnd(), "");
    output.closeWriteEnd();

    const std::vector<std::string> packets = output.readPackets();
    ASSERT_GE(packets.size(), 2U);
    std::string all;
    for (const std::string& packet : packets) {
        EXPECT_TRUE(packet.size() == PacketPipe::kLargestPacket || &packet == &packets.back()) << packet.size();
        all += packet;
    }
    EXPECT_THAT(all, testing::StartsWith(kStartLine + "\n>help\r\n"));
    EXPECT_THAT(all, testing::HasSubstr("\n>rrb 41\r\n00000041: 00\n>help\r\n"));
    EXPECT_THAT(all, testing::EndsWith("\n>quit\r\n"));
}

class NoTerminal : public testing::TestWithParam<const char*>
{
};

TEST_P(NoTerminal, EndsByItself)
{
    const child_process::Result result =
        child_process::run({.arguments = {"/bin/sh", "-c", GetParam(), kTool}, .input = "rrb 0\nquit\n"});
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, kStartLine + "\n>" + std::string(255, '\xff'));
    EXPECT_EQ(result.error, "");
}

INSTANTIATE_TEST_SUITE_P(Input, NoTerminal,
                         testing::Values("exec \"$0\" </dev/null", "exec \"$0\" <&-", "printf 'rrb 0\\n' | \"$0\"",
                                         "exec \"$0\""));

}  // namespace
