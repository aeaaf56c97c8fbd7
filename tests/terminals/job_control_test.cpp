// The console as a job of an interactive shell.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "pty_console.h"

namespace
{

const std::string kTool = TOVIRA_UTIL_TOOL;
const std::string kPrompt = "sh> ";

/** A shell that reads its lines with the terminal as it finds it, and has the console as its job. */
class Job : public testing::Test
{
protected:
    Job()
        : shell_({.arguments = {"/usr/bin/env", "-i", "PATH=/usr/bin:/bin", "TERM=dumb", "LC_ALL=C", "HISTFILE=",
                                "PS1=" + kPrompt, "/bin/bash", "--norc", "--noprofile", "--noediting", "-i"}})
    {
    }

    void SetUp() override { awaitPrompt(); }

    void awaitPrompt() { ASSERT_TRUE(shows(kPrompt)); }

    bool shows(const std::string& text)
    {
        last_ = shell_.readThrough(text);
        return last_.ends_with(text);
    }

    /** Enters a line for the shell; its echo is taken off. */
    void enter(const std::string& line)
    {
        ASSERT_TRUE(shell_.sendToCommand(line + "\n")) << "the shell finds the terminal raw";
        ASSERT_TRUE(shows(line + "\r\n")) << last_;
    }

    /** Enters a line and compares all that is shown up to the next prompt. */
    void expectAnswer(const std::string& line, const std::string& answer)
    {
        ASSERT_NO_FATAL_FAILURE(enter(line));
        ASSERT_TRUE(shows(kPrompt)) << last_;
        EXPECT_EQ(last_, answer + kPrompt);
    }

    /** Starts the console as a job in the foreground, up to its prompt. */
    void startConsole()
    {
        ASSERT_NO_FATAL_FAILURE(enter("sh -c 'echo process $$; exec " + kTool + "'"));
        ASSERT_TRUE(shows("process "));
        ASSERT_TRUE(shows("\r\n"));
        process_ = std::stoi(last_);
        ASSERT_TRUE(shows("\n>"));
    }

    void signalConsole(int signalNumber) { ASSERT_EQ(kill(process_, signalNumber), 0); }

    void stopConsole()
    {
        ASSERT_TRUE(shell_.waitForRawMode());
        signalConsole(SIGTSTP);
        ASSERT_TRUE(shows("Stopped")) << last_;
        awaitPrompt();
        EXPECT_EQ(describe(shell_.settings()), describe(shell_.settingsBefore()));
    }

    /** Waits until the shell lists its job in a state, if it has not said so with its last prompt, and leaves the
     * terminal to the shell. */
    void awaitJob(const std::string& state)
    {
        // A shell that is asked without a rest may take the time that its job needs to get there.
        const auto deadline = std::chrono::steady_clock::now() + PtyConsole::kTimeout;
        bool isListed = last_.find(state) != std::string::npos;
        while (!isListed && std::chrono::steady_clock::now() < deadline) {
            // The shell looks at what has become of its children when it waits for one.
            enter("/bin/true; jobs");
            awaitPrompt();
            isListed = last_.find(state) != std::string::npos;
        }
        EXPECT_TRUE(isListed) << state << ": " << last_;
        EXPECT_EQ(describe(shell_.settings()), describe(shell_.settingsBefore()));
    }

    PtyConsole shell_;
    std::string last_;
    pid_t process_ = -1;
};

TEST_F(Job, GoesOnWithItsLineInTheForeground)
{
    startConsole();
    ASSERT_TRUE(shell_.send("rrb 4\x1b[D"));
    ASSERT_TRUE(shows("rrb 4\b"));
    for (int round = 0; round < 2; ++round) {
        stopConsole();
        enter("fg");
        ASSERT_TRUE(shows("\r>rrb 4\b")) << last_;
    }
    ASSERT_TRUE(shell_.send("1\r"));
    ASSERT_TRUE(shows("00000014: 00\r\n>")) << last_;
    ASSERT_TRUE(shell_.send("quit\r"));
    awaitPrompt();
    EXPECT_EQ(describe(shell_.settings()), describe(shell_.settingsBefore()));
    expectAnswer("echo $?", "0\r\n");
}

TEST_F(Job, LiveDisplayLeavesTheTerminalAloneInTheBackgroundAndTakesSignals)
{
    startConsole();
    ASSERT_TRUE(shell_.send("info\r"));
    ASSERT_TRUE(shows("mb used"));
    stopConsole();
    enter("bg");
    awaitPrompt();
    awaitJob("Stopped");
    // As a shell does that ends a job which it knows to be stopped; the job must not go to the foreground for that.
    signalConsole(SIGTERM);
    signalConsole(SIGCONT);
    awaitJob("Terminated");
}

TEST_F(Job, LiveDisplayGoesOnInTheForeground)
{
    startConsole();
    ASSERT_TRUE(shell_.send("info\r"));
    ASSERT_TRUE(shows("mb used"));
    stopConsole();
    enter("bg");
    awaitPrompt();
    enter("fg");
    if (!shell_.waitForRawMode()) {
        // The driver may stop the job just when the shell, for which it still runs, hands it the terminal. The shell
        // takes that back then.
        enter("fg");
        ASSERT_TRUE(shell_.waitForRawMode());
    }
    ASSERT_TRUE(shows("mb used"));
    ASSERT_TRUE(shell_.send("q"));
    ASSERT_TRUE(shows("\n>")) << last_;
    ASSERT_TRUE(shell_.send("quit\r"));
    awaitPrompt();
    EXPECT_EQ(describe(shell_.settings()), describe(shell_.settingsBefore()));
}

TEST_F(Job, StartedInTheBackgroundWaitsForTheForeground)
{
    enter(kTool + " &");
    ASSERT_TRUE(shows("[1] "));
    ASSERT_TRUE(shows("\r\n"));
    process_ = std::stoi(last_);
    awaitPrompt();
    awaitJob("Stopped");
    enter("fg");
    ASSERT_TRUE(shows("\r>")) << last_;
    ASSERT_TRUE(shell_.send("rrb 41\r"));
    ASSERT_TRUE(shows("00000041: 00\r\n>")) << last_;
    signalConsole(SIGTERM);
    ASSERT_TRUE(shows("Terminated")) << last_;
    awaitPrompt();
    EXPECT_EQ(describe(shell_.settings()), describe(shell_.settingsBefore()));
    expectAnswer("echo $?", "143\r\n");
}

}  // namespace
