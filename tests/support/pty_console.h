/**
 * @file pty_console.h
 * Runs a program on a pseudo-terminal, as a shell runs it on a user's terminal, and plays the user.
 *
 * The program is the foreground process group of a session of its own, so that it can be stopped and continued. The
 * terminal has 80 columns and 24 rows.
 *
 * A program that reads single keys has the terminal in raw mode only while it waits for one; what arrives in between is
 * echoed by the terminal itself. Keys are therefore sent in raw mode only, all of one send() at once. Once the output
 * of the last key has arrived, the next change to raw mode is the wait for a key that has not been sent yet; so the
 * last key of a send() must be one that makes the program print something or end.
 */
#ifndef PTY_CONSOLE_H
#define PTY_CONSOLE_H

#include <sys/types.h>
#include <termios.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "screen.h"

/** How to start a program on a pseudo-terminal. */
struct PtyCommand {
    /** The program's path and its arguments. */
    std::vector<std::string> arguments;
    /** Descriptor for standard output instead of the terminal, if not negative. It stays open here. */
    int standardOutput = -1;
    /** A signal that the program finds ignored, if not 0. */
    int ignoredSignal = 0;
};

/** A change of a process's state, with the value that waitpid() gives for it. */
struct ProcessEvent {
    int status;

    bool exitedWith(int code) const;
    bool killedBy(int signalNumber) const;
    bool stoppedBy(int signalNumber) const;
    bool continued() const;
};

/** For messages of failed tests. */
void PrintTo(const ProcessEvent& event, std::ostream* stream);

class PtyConsole
{
public:
    /** The longest wait for anything. */
    static constexpr std::chrono::seconds kTimeout{20};

    /** Starts the program. Throws std::system_error. */
    explicit PtyConsole(PtyCommand command);
    /** Kills the program if it has not ended. */
    ~PtyConsole();
    PtyConsole(const PtyConsole&) = delete;
    PtyConsole& operator=(const PtyConsole&) = delete;

    /** Waits until the terminal is in raw mode. @return false when the time is over */
    bool waitForRawMode();

    /** Waits for raw mode, then types keys. @return false when the time is over */
    bool send(std::string_view keys);

    /** As send(), with a program that may be stopped, or about to be: it is continued again and again meanwhile. */
    bool sendContinuing(std::string_view keys);

    /** Types keys while a command runs, which has the terminal as it was before. @return false when the terminal was in
        raw mode instead, or could not be written to */
    bool sendToCommand(std::string_view keys);

    /** The next bytes of output; fewer when the time is over or the output has ended. */
    std::string read(std::size_t count);

    /** The output up to and with a text; all that came when the time is over or the output has ended. */
    std::string readThrough(std::string_view text);

    /** The output up to its end, which comes after that of the program. */
    std::string readToEnd();

    /** What the user sees of the output that has been read. */
    const Screen& screen() const { return screen_; }

    /** The settings of the terminal before the program was started. */
    const termios& settingsBefore() const { return settingsBefore_; }

    /** The settings of the terminal. */
    termios settings() const;

    /** Changes the settings of the terminal. */
    void changeSettings(const termios& settings);

    /** Changes the size of the terminal; its program is told by a signal. */
    void resize(int rows, int columns);

    /** Sends a signal to the program; nothing happens when that has ended. */
    void signal(int signalNumber);

    /** Waits until the program sleeps with the terminal as before it, as in the midst of a command that waits.
        @return false when the time is over */
    bool waitForSleepingCommand();

    /** Waits until the program stops, goes on or ends. @return nothing when the time is over */
    std::optional<ProcessEvent> waitForEvent();

    /** Takes the terminal away. Only waitForEvent() may be called afterwards. */
    void hangUp();

private:
    using Deadline = std::chrono::steady_clock::time_point;

    bool sleeps() const;
    bool pollForRawMode(const std::function<void()>& meanwhile);
    bool type(std::string_view keys);
    std::string readUntil(const std::function<std::size_t()>& available);
    bool receive(Deadline deadline);
    std::string take(std::size_t count);

    int master_ = -1;
    int events_ = -1;
    pid_t leader_ = -1;
    pid_t program_ = -1;
    bool ended_ = false;
    termios settingsBefore_{};
    std::string unread_;
    Screen screen_;
};

/** Terminal settings as text, for comparisons. */
std::string describe(const termios& settings);

#endif
