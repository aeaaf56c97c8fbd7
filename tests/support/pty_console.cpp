#include "pty_console.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <system_error>
#include <thread>

namespace
{

using Clock = std::chrono::steady_clock;

void check(bool succeeded, const char* operation)
{
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
}

bool waitForInput(int descriptor, Clock::time_point deadline)
{
    pollfd input{.fd = descriptor, .events = POLLIN, .revents = 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int ready = poll(&input, 1, static_cast<int>(std::max<long>(left.count(), 0)));
        if (ready >= 0 || errno != EINTR) {
            return ready == 1;
        }
    }
}

// The rest of this block runs between fork and exec, in copies of the test's process: system calls only.

[[noreturn]] void becomeProgram(const PtyCommand& command, char* const* argv)
{
    // A process in the background may not bring itself to the foreground unless it ignores the terminal's protest.
    setpgid(0, 0);
    signal(SIGTTOU, SIG_IGN);
    tcsetpgrp(STDIN_FILENO, getpgrp());
    signal(SIGTTOU, SIG_DFL);
    signal(SIGHUP, SIG_DFL);
    if (command.ignoredSignal != 0) {
        signal(command.ignoredSignal, SIG_IGN);
    }
    if (command.standardOutput >= 0) {
        dup2(command.standardOutput, STDOUT_FILENO);
    }
    const rlimit noCoreFile{};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    execv(argv[0], argv);
    _exit(127);
}

void report(int events, int number)
{
    if (write(events, &number, sizeof number) != sizeof number) {
        _exit(EXIT_FAILURE);
    }
}

// Plays the shell: leads the session, starts the program and reports its process id and then what becomes of it.
[[noreturn]] void becomeLeader(const PtyCommand& command, char* const* argv, int slave, int events)
{
    login_tty(slave);
    signal(SIGHUP, SIG_IGN);
    const pid_t program = fork();
    if (program == 0) {
        becomeProgram(command, argv);
    }
    // What the test keeps open must end when the test closes it.
    close_range(STDERR_FILENO + 1, static_cast<unsigned>(events) - 1, 0);
    close_range(static_cast<unsigned>(events) + 1, ~0U, 0);
    report(events, program);
    int status = 0;
    do {
        if (waitpid(program, &status, WUNTRACED | WCONTINUED) != program) {
            _exit(EXIT_FAILURE);
        }
        report(events, status);
    } while (!WIFEXITED(status) && !WIFSIGNALED(status));
    _exit(EXIT_SUCCESS);
}

}  // namespace

bool ProcessEvent::exitedWith(int code) const
{
    return WIFEXITED(status) && WEXITSTATUS(status) == code;
}

bool ProcessEvent::killedBy(int signalNumber) const
{
    return WIFSIGNALED(status) && WTERMSIG(status) == signalNumber;
}

bool ProcessEvent::stoppedBy(int signalNumber) const
{
    return WIFSTOPPED(status) && WSTOPSIG(status) == signalNumber;
}

bool ProcessEvent::continued() const
{
    return WIFCONTINUED(status);
}

void PrintTo(const ProcessEvent& event, std::ostream* stream)
{
    if (WIFEXITED(event.status)) {
        *stream << "exited with " << WEXITSTATUS(event.status);
    } else if (WIFSIGNALED(event.status)) {
        *stream << "killed by signal " << WTERMSIG(event.status);
    } else if (WIFSTOPPED(event.status)) {
        *stream << "stopped by signal " << WSTOPSIG(event.status);
    } else {
        *stream << "continued";
    }
}

std::string describe(const termios& settings)
{
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "input %o output %o control %o local %o characters", settings.c_iflag,
                  settings.c_oflag, settings.c_cflag, settings.c_lflag);
    std::string all = text.data();
    for (const cc_t character : settings.c_cc) {
        all += ' ' + std::to_string(character);
    }
    return all;
}

PtyConsole::PtyConsole(PtyCommand command)
{
    int slave = -1;
    const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    check(openpty(&master_, &slave, nullptr, nullptr, &size) == 0, "openpty");
    check(fcntl(master_, F_SETFD, FD_CLOEXEC) == 0 && fcntl(slave, F_SETFD, FD_CLOEXEC) == 0, "fcntl");
    check(tcgetattr(slave, &settingsBefore_) == 0, "tcgetattr");
    std::array<int, 2> ends{};
    check(pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
    events_ = ends[0];

    std::vector<char*> argv;
    for (std::string& argument : command.arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    leader_ = fork();
    check(leader_ >= 0, "fork");
    if (leader_ == 0) {
        // Only the test holds the master, so that the terminal is gone when the test lets go of it.
        close(master_);
        becomeLeader(command, argv.data(), slave, ends[1]);
    }
    close(slave);
    close(ends[1]);
    check(::read(events_, &program_, sizeof program_) == sizeof program_ && program_ > 0, "start the program");
}

PtyConsole::~PtyConsole()
{
    if (!ended_) {
        kill(program_, SIGKILL);
    }
    hangUp();
    close(events_);
    waitpid(leader_, nullptr, 0);
}

bool PtyConsole::waitForRawMode()
{
    return pollForRawMode([] {});
}

bool PtyConsole::pollForRawMode(const std::function<void()>& meanwhile)
{
    const Deadline deadline = Clock::now() + kTimeout;
    while ((settings().c_lflag & (ICANON | ECHO)) != 0) {
        if (Clock::now() > deadline) {
            return false;
        }
        meanwhile();
        // A change of the settings cannot be waited for.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

bool PtyConsole::send(std::string_view keys)
{
    return waitForRawMode() && type(keys);
}

bool PtyConsole::sendContinuing(std::string_view keys)
{
    return pollForRawMode([this] { signal(SIGCONT); }) && type(keys);
}

bool PtyConsole::sendToCommand(std::string_view keys)
{
    return (settings().c_lflag & (ICANON | ECHO)) != 0 && type(keys);
}

bool PtyConsole::type(std::string_view keys)
{
    return write(master_, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size());
}

std::string PtyConsole::read(std::size_t count)
{
    return count == 0 ? "" : readUntil([this, count] { return unread_.size() < count ? 0 : count; });
}

std::string PtyConsole::readThrough(std::string_view text)
{
    return readUntil([this, text] {
        const std::size_t position = unread_.find(text);
        return position == std::string::npos ? 0 : position + text.size();
    });
}

std::string PtyConsole::readToEnd()
{
    return readUntil([] { return std::size_t{0}; });
}

// Receives until the given function tells how many bytes to take, or all that there will be.
std::string PtyConsole::readUntil(const std::function<std::size_t()>& available)
{
    const Deadline deadline = Clock::now() + kTimeout;
    std::size_t count = available();
    while (count == 0) {
        if (!receive(deadline)) {
            return take(unread_.size());
        }
        count = available();
    }
    return take(count);
}

bool PtyConsole::receive(Deadline deadline)
{
    std::array<char, 4096> chunk{};
    if (!waitForInput(master_, deadline)) {
        return false;
    }
    const ssize_t got = ::read(master_, chunk.data(), chunk.size());
    if (got <= 0) {
        return false;
    }
    unread_.append(chunk.data(), static_cast<std::size_t>(got));
    return true;
}

std::string PtyConsole::take(std::size_t count)
{
    std::string taken = unread_.substr(0, count);
    unread_.erase(0, count);
    screen_.feed(taken);
    return taken;
}

termios PtyConsole::settings() const
{
    termios settings{};
    check(tcgetattr(master_, &settings) == 0, "tcgetattr");
    return settings;
}

void PtyConsole::changeSettings(const termios& settings)
{
    check(tcsetattr(master_, TCSANOW, &settings) == 0, "tcsetattr");
}

void PtyConsole::resize(int rows, int columns)
{
    const winsize size{.ws_row = static_cast<unsigned short>(rows),
                       .ws_col = static_cast<unsigned short>(columns),
                       .ws_xpixel = 0,
                       .ws_ypixel = 0};
    check(ioctl(master_, TIOCSWINSZ, &size) == 0, "ioctl");
}

void PtyConsole::signal(int signalNumber)
{
    check(kill(program_, signalNumber) == 0 || errno == ESRCH, "kill");
}

bool PtyConsole::waitForSleepingCommand()
{
    const Deadline deadline = Clock::now() + kTimeout;
    while (!sleeps()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Between two keys the program does not sleep: it has the terminal as before only while a command runs.
bool PtyConsole::sleeps() const
{
    std::ifstream file("/proc/" + std::to_string(program_) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')');
    return name != std::string::npos && line.substr(name, 3) == ") S" && (settings().c_lflag & (ICANON | ECHO)) != 0;
}

std::optional<ProcessEvent> PtyConsole::waitForEvent()
{
    ProcessEvent event{};
    if (!waitForInput(events_, Clock::now() + kTimeout) ||
        ::read(events_, &event.status, sizeof event.status) != sizeof event.status) {
        return std::nullopt;
    }
    ended_ = WIFEXITED(event.status) || WIFSIGNALED(event.status);
    return event;
}

void PtyConsole::hangUp()
{
    if (master_ >= 0) {
        close(master_);
        master_ = -1;
    }
}
