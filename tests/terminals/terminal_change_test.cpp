// A signal that comes in the midst of a change of the terminal finds the change done.

#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>

#include "child_process.h"
#include "pty_console.h"
#include "tovira_parse/terminal.h"

namespace
{

/** Comes as soon as the settings are others, before the program knows it; 0 for none. */
int signalAtChange = 0;

}  // namespace

extern "C" int __real_tcsetattr(int descriptor, int action, const termios* settings);

extern "C" int __wrap_tcsetattr(int descriptor, int action, const termios* settings)
{
    const int result = __real_tcsetattr(descriptor, action, settings);
    const int number = signalAtChange;
    signalAtChange = 0;
    if (number != 0) {
        raise(number);
    }
    return result;
}

namespace
{

class TerminalChange : public testing::TestWithParam<int>
{
protected:
    TerminalChange()
    {
        EXPECT_EQ(openpty(&master_, &slave_, nullptr, nullptr, nullptr), 0);
        before_ = settings();
    }
    ~TerminalChange() override
    {
        close(master_);
        close(slave_);
    }

    /** Runs the function with the terminal as its standard input. */
    void expectEndWithTheTerminalAsBefore(const std::function<void()>& function)
    {
        const child_process::Result result = child_process::runForked([&] {
            dup2(slave_, STDIN_FILENO);
            function();
        });
        EXPECT_EQ(result.signal, GetParam());
        EXPECT_EQ(settings(), before_);
    }

private:
    std::string settings() const
    {
        termios now{};
        EXPECT_EQ(tcgetattr(slave_, &now), 0);
        return describe(now);
    }

    int master_ = -1;
    int slave_ = -1;
    std::string before_;
};

TEST_P(TerminalChange, ToRawIsTakenBackByASignalInItsMidst)
{
    expectEndWithTheTerminalAsBefore([] {
        signalAtChange = GetParam();
        enterRawTerminal();
    });
}

TEST_P(TerminalChange, BackIsDoneAtASignalInItsMidst)
{
    expectEndWithTheTerminalAsBefore([] {
        enterRawTerminal();
        signalAtChange = GetParam();
        leaveRawTerminal();
    });
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminalChange, testing::Values(SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGALRM));

}  // namespace
