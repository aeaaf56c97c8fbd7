// A signal that comes in the midst of a change of the terminal finds the change done.

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "child_process.h"
#include "pty_console.h"
#include "tovira_parse/terminal.h"

namespace
{

/** Comes as soon as the settings are others, before the program knows it; 0 for none. */
int signalAtChange = 0;

/** Changes of the terminal until its process goes to the background; negative when it stays. */
int changesToBackground = -1;

}  // namespace

extern "C" int __real_tcsetattr(int descriptor, int action, const termios* settings);
extern "C" pid_t __real_tcgetpgrp(int descriptor);

extern "C" pid_t __wrap_tcgetpgrp(int descriptor)
{
    return changesToBackground == 0 ? getpgrp() + 1 : __real_tcgetpgrp(descriptor);
}

extern "C" int __wrap_tcsetattr(int descriptor, int action, const termios* settings)
{
    const int result = __real_tcsetattr(descriptor, action, settings);
    const int number = signalAtChange;
    signalAtChange = 0;
    if (changesToBackground > 0) {
        --changesToBackground;
    }
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

/** Sends a process the signal once it has been stopped. */
void signalWhenStopped(pid_t process, int signalNumber)
{
    std::string state;
    while (state.find(") T") == std::string::npos) {
        usleep(1000);
        std::ifstream file("/proc/" + std::to_string(process) + "/stat");
        std::getline(file, state);
    }
    kill(process, signalNumber);
}

/** Starts what sends this process the signal once it has been stopped. */
pid_t startWatchingForStop(int signalNumber)
{
    const pid_t watched = getpid();
    const pid_t other = fork();
    if (other == 0) {
        signalWhenStopped(watched, signalNumber);
        _exit(EXIT_SUCCESS);
    }
    return other;
}

void endWatching(pid_t other)
{
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
}

// What goes on in the background does not have the terminal, but is to have it when it comes to the foreground.
TEST(TerminalStop, InTheMidstOfTheChangeToRawIsOneAfterIt)
{
    int master = -1;
    int slave = -1;
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    const child_process::Result result = child_process::runForked([&] {
        dup2(slave, STDIN_FILENO);
        const pid_t other = startWatchingForStop(SIGCONT);
        signalAtChange = SIGTSTP;
        // The change to raw and, at the stop, back.
        changesToBackground = 2;
        const bool entered = enterRawTerminal();
        endWatching(other);
        _exit(entered ? EXIT_SUCCESS : EXIT_FAILURE);
    });
    close(master);
    close(slave);
    EXPECT_EQ(result.exitStatus, EXIT_SUCCESS);
}

/** Has the guarded process send itself a stop of that origin; it is killed when it stops at it. */
child_process::Result receiveStop(int signalNumber, int origin)
{
    return child_process::runForked([=] {
        // A group of its own is stopped even where that of the tests has nobody to continue it.
        setpgid(0, 0);
        guardTerminalSignals();
        const pid_t other = startWatchingForStop(SIGKILL);
        siginfo_t info{};
        info.si_signo = signalNumber;
        info.si_code = origin;
        const bool isSent = syscall(SYS_rt_sigqueueinfo, getpid(), signalNumber, &info) == 0;
        endWatching(other);
        _exit(isSent ? EXIT_SUCCESS : EXIT_FAILURE);
    });
}

class BackgroundStop : public testing::TestWithParam<int>
{
};

TEST_P(BackgroundStop, ByTheDriverIsNoneInTheForeground)
{
    EXPECT_EQ(receiveStop(GetParam(), SI_KERNEL).exitStatus, EXIT_SUCCESS);
}

TEST_P(BackgroundStop, BySomebodyElseStopsInTheForegroundToo)
{
    EXPECT_EQ(receiveStop(GetParam(), SI_USER).signal, SIGKILL);
}

INSTANTIATE_TEST_SUITE_P(Signals, BackgroundStop, testing::Values(SIGTTIN, SIGTTOU));

TEST(TerminalStop, ByTheTerminalsKeyStopsInTheForeground)
{
    EXPECT_EQ(receiveStop(SIGTSTP, SI_KERNEL).signal, SIGKILL);
}

}  // namespace
