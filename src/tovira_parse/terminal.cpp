#include "tovira_parse/terminal.h"

#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace
{

termios savedSettings;
volatile std::sig_atomic_t isRaw = 0;

constexpr int kGuardedSignals[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGTSTP,
                                   SIGPIPE, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU};

bool applyRawSettings()
{
    termios raw = savedSettings;
    cfmakeraw(&raw);
    return tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
}

sigset_t guardedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signalNumber : kGuardedSignals) {
        sigaddset(&signals, signalNumber);
    }
    return signals;
}

// Lets the signal have its default effect with the terminal as it was. Only a stop comes back from that: the settings
// are then saved afresh, since the shell may have changed them meanwhile. Async-signal-safe calls only; all guarded
// signals are blocked while it runs, but for the one that it delivers, at that moment.
void deliverWithTerminalRestored(int signalNumber)
{
    const int savedErrno = errno;
    const bool wasRaw = isRaw != 0;
    if (wasRaw) {
        tcsetattr(STDIN_FILENO, TCSANOW, &savedSettings);
    }

    struct sigaction defaultAction = {};
    struct sigaction ownAction = {};
    defaultAction.sa_handler = SIG_DFL;
    sigaction(signalNumber, &defaultAction, &ownAction);
    sigset_t delivered;
    sigemptyset(&delivered);
    sigaddset(&delivered, signalNumber);
    raise(signalNumber);
    sigprocmask(SIG_UNBLOCK, &delivered, nullptr);

    sigprocmask(SIG_BLOCK, &delivered, nullptr);
    sigaction(signalNumber, &ownAction, nullptr);
    if (wasRaw && tcgetattr(STDIN_FILENO, &savedSettings) == 0) {
        applyRawSettings();
    }
    errno = savedErrno;
}

// A signal that whoever started the program has set to be ignored stays ignored.
void guardSignals()
{
    static bool guarded = false;
    if (guarded) {
        return;
    }
    guarded = true;
    for (const int signalNumber : kGuardedSignals) {
        struct sigaction action = {};
        if (sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) {
            continue;
        }
        action = {};
        action.sa_handler = deliverWithTerminalRestored;
        action.sa_mask = guardedSignals();
        action.sa_flags = SA_RESTART;
        sigaction(signalNumber, &action, nullptr);
    }
}

// Runs a change of the terminal with the guarded signals held back, so that none of them meets it half made.
template <typename Change>
bool changeTerminal(Change change)
{
    const sigset_t signals = guardedSignals();
    sigset_t before;
    sigprocmask(SIG_BLOCK, &signals, &before);
    const bool changed = change();
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return changed;
}

}  // namespace

bool enterRawTerminal()
{
    guardSignals();
    return changeTerminal([] {
        const bool entered = tcgetattr(STDIN_FILENO, &savedSettings) == 0 && applyRawSettings();
        isRaw = entered ? 1 : 0;
        return entered;
    });
}

bool leaveRawTerminal()
{
    return changeTerminal([] {
        isRaw = 0;
        return tcsetattr(STDIN_FILENO, TCSANOW, &savedSettings) == 0;
    });
}

void flushTerminalOutput()
{
    static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    if (isTerminal) {
        fflush(stdout);
    }
}

bool keyIsWaiting()
{
    // What was typed together with the key before it stands in the stream's buffer already.
    if (stdin->_IO_read_ptr < stdin->_IO_read_end) {
        return true;
    }
    constexpr suseconds_t kMomentMicroseconds = 10;
    fd_set descriptors;
    FD_ZERO(&descriptors);
    FD_SET(STDIN_FILENO, &descriptors);
    timeval moment = {.tv_sec = 0, .tv_usec = kMomentMicroseconds};
    return select(STDIN_FILENO + 1, &descriptors, nullptr, nullptr, &moment) > 0;
}

int my_getch()
{
    flushTerminalOutput();
    if (!enterRawTerminal()) {
        return -1;
    }
    const int key = getc(stdin);
    if (key == EOF) {
        clearerr(stdin);
    }
    return leaveRawTerminal() ? key : -1;
}
