#include "tovira_parse/terminal.h"

#include <poll.h>
#include <pthread.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <initializer_list>

#include "tovira_parse/progress.h"

namespace
{

// Raw mode as the console wants it, and as the terminal has it: in the background the terminal is another's.
volatile std::sig_atomic_t wantsRaw = 0;
volatile std::sig_atomic_t isRaw = 0;
volatile std::sig_atomic_t wasStopped = 0;
termios savedSettings;  // those before raw mode, while isRaw

bool isInForeground()
{
    return isForegroundOf(STDIN_FILENO);
}

// The terminal's driver stops a process of the background that reads, here with no signal held back. It goes on in the
// foreground, or at once where job control does not reach it.
void awaitForeground()
{
    if (!isInForeground()) {
        char none = 0;
        [[maybe_unused]] const ssize_t nothing = read(STDIN_FILENO, &none, 0);
    }
}

// Puts the terminal into raw mode if that is wanted. Settings that are the console's own already are not saved: a shell
// may have kept them for a process that it continues. Async-signal-safe calls only.
void takeTerminal()
{
    if (wantsRaw == 0 || !isInForeground() || (isRaw == 0 && tcgetattr(STDIN_FILENO, &savedSettings) != 0)) {
        return;
    }
    termios raw = savedSettings;
    cfmakeraw(&raw);
    // Ahead of the change, for a signal that meets it: to put back settings that are still there does no harm.
    isRaw = 1;
    if (tcsetattr(STDIN_FILENO, TCSANOW, &raw) != 0) {
        isRaw = 0;
    }
}

// False when the terminal call fails. Async-signal-safe calls only.
bool giveTerminalBack()
{
    if (isRaw == 0 || !isInForeground()) {
        return true;
    }
    const bool restored = tcsetattr(STDIN_FILENO, TCSANOW, &savedSettings) == 0;
    isRaw = 0;
    return restored;
}

bool endsOrStopsByDefault(int signalNumber)
{
    switch (signalNumber) {
        case SIGKILL:
        case SIGSTOP:
        case SIGCHLD:
        case SIGCONT:
        case SIGURG:
        case SIGWINCH:
            return false;
        default:
            return true;
    }
}

// Calls the function with every signal that is guarded. The C library keeps those below SIGRTMIN to itself.
template <typename Function>
void forEachGuardedSignal(Function function)
{
    constexpr int kLastStandardSignal = SIGSYS;
    for (int signalNumber = 1; signalNumber <= SIGRTMAX; ++signalNumber) {
        const bool exists = signalNumber <= kLastStandardSignal || signalNumber >= SIGRTMIN;
        if (exists && endsOrStopsByDefault(signalNumber)) {
            function(signalNumber);
        }
    }
}

// The signals that must not meet a change of the terminal half made. Held back, those of the terminal's driver would
// let a process of the background change it; and a fault that is held back ends the program at once.
sigset_t signalsOfTheConsole()
{
    sigset_t signals;
    sigfillset(&signals);
    for (const int signalNumber :
         {SIGTTIN, SIGTTOU, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT, SIGCHLD, SIGURG, SIGWINCH}) {
        sigdelset(&signals, signalNumber);
    }
    return signals;
}

// Whether the driver stopped a process of the background that its shell has put into the foreground since then: raised
// again, the signal would stop what the shell believes to be running. Async-signal-safe calls only.
bool isStopOutdated(int signalNumber, const siginfo_t& origin)
{
    const bool isForBackground = signalNumber == SIGTTIN || signalNumber == SIGTTOU;
    return isForBackground && origin.si_code == SI_KERNEL && isInForeground();
}

// Async-signal-safe calls only.
void deliverAsByDefault(int signalNumber)
{
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
}

// Lets the signal have its default effect with the terminal as it was. Only a stop comes back from that: the settings
// are then saved afresh, since the shell may have changed them meanwhile. Async-signal-safe calls only; all signals are
// held back while it runs, but for the one that it delivers, at that moment.
void deliverWithTerminalRestored(int signalNumber, siginfo_t* origin, void* /*context*/)
{
    const int savedErrno = errno;
    hideProgressFromSignal();
    giveTerminalBack();
    if (!isStopOutdated(signalNumber, *origin)) {
        deliverAsByDefault(signalNumber);
    }
    wasStopped = 1;
    takeTerminal();
    errno = savedErrno;
}

// After a stop that cannot be caught the terminal is what the shell has made of it.
void goOnAfterStop(int /*signalNumber*/, siginfo_t* /*origin*/, void* /*context*/)
{
    const int savedErrno = errno;
    wasStopped = 1;
    takeTerminal();
    errno = savedErrno;
}

void install(int signalNumber, void (*handler)(int, siginfo_t*, void*))
{
    struct sigaction action = {};
    // A signal that whoever started the program has set to be ignored stays ignored, and another's handler stays.
    if (sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) {
        return;
    }
    action = {};
    action.sa_sigaction = handler;
    sigfillset(&action.sa_mask);
    action.sa_flags = SA_RESTART | SA_ONSTACK | SA_SIGINFO;
    sigaction(signalNumber, &action, nullptr);
}

// A fault for want of stack leaves none for its handler.
void provideSignalStack()
{
    constexpr std::size_t kSignalStack = 0x10000;
    alignas(std::max_align_t) static unsigned char memory[kSignalStack];
    stack_t stack = {};
    if (sigaltstack(nullptr, &stack) == 0 && (stack.ss_flags & SS_DISABLE) != 0) {
        stack = {};
        stack.ss_sp = memory;
        stack.ss_size = sizeof memory;
        sigaltstack(&stack, nullptr);
    }
}

bool inputIsBuffered()
{
    return stdin->_IO_read_ptr < stdin->_IO_read_end;
}

// Waits until there is something to read, or until the program goes on after a stop, which is what false tells. A stop
// just before the wait ends it too: signals come in during the wait only.
bool waitForInput()
{
    const sigset_t before = holdBackSignals();
    pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    while (!inputIsBuffered() && wasStopped == 0 && ppoll(&input, 1, nullptr, &before) < 0 && errno == EINTR) {
    }
    releaseSignals(before);
    return wasStopped == 0;
}

// Runs a change of the terminal with no signal to meet it half made.
template <typename Change>
bool changeTerminal(Change change)
{
    const sigset_t before = holdBackSignals();
    const bool changed = change();
    releaseSignals(before);
    return changed;
}

}  // namespace

bool isForegroundOf(int descriptor)
{
    const pid_t owner = tcgetpgrp(descriptor);
    return owner < 0 || owner == getpgrp();
}

void guardTerminalSignals()
{
    static bool guarded = false;
    if (guarded) {
        return;
    }
    guarded = true;
    provideSignalStack();
    forEachGuardedSignal([](int signalNumber) { install(signalNumber, deliverWithTerminalRestored); });
    install(SIGCONT, goOnAfterStop);
}

void guardBusErrors()
{
    install(SIGBUS, deliverWithTerminalRestored);
}

sigset_t holdBackSignals()
{
    const sigset_t signals = signalsOfTheConsole();
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    return before;
}

void releaseSignals(const sigset_t& before)
{
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool enterRawTerminal()
{
    guardTerminalSignals();
    awaitForeground();
    return changeTerminal([] {
        wantsRaw = 1;
        takeTerminal();
        wantsRaw = isRaw;
        return isRaw != 0;
    });
}

bool leaveRawTerminal()
{
    return changeTerminal([] {
        wantsRaw = 0;
        return giveTerminalBack();
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
    if (inputIsBuffered()) {
        return true;
    }
    awaitForeground();
    // A shell that takes the program for running brings it to the foreground without a signal.
    if (wantsRaw != 0 && isRaw == 0) {
        changeTerminal([] {
            takeTerminal();
            return isRaw != 0;
        });
    }
    constexpr suseconds_t kMomentMicroseconds = 10;
    fd_set descriptors;
    FD_ZERO(&descriptors);
    FD_SET(STDIN_FILENO, &descriptors);
    timeval moment = {.tv_sec = 0, .tv_usec = kMomentMicroseconds};
    return select(STDIN_FILENO + 1, &descriptors, nullptr, nullptr, &moment) > 0;
}

bool readIsToBeRepeated()
{
    if (ferror(stdin) == 0) {
        return false;
    }
    if (errno == EAGAIN) {
        // Whoever used the terminal before has left it so that a read does not wait.
        pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        poll(&input, 1, -1);
        return true;
    }
    return errno == EINTR;
}

int readKey()
{
    int key = getc(stdin);
    while (key == EOF && readIsToBeRepeated()) {
        clearerr(stdin);
        key = getc(stdin);
    }
    return key;
}

int my_getch()
{
    flushTerminalOutput();
    wasStopped = 0;
    if (!enterRawTerminal()) {
        return -1;
    }
    int key = kKeyAfterStop;
    if (waitForInput()) {
        key = readKey();
        if (key == EOF) {
            clearerr(stdin);
        }
    }
    return leaveRawTerminal() ? key : -1;
}
