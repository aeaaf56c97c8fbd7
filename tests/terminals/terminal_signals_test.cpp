// Wherever the console waits, every signal that ends it leaves the terminal as it was before and shows in its exit
// status; a stop gives the terminal back for its time; a hang-up ends the console without a busy loop.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "board_process.h"
#include "pty_console.h"
#include "scratch_folder.h"

namespace
{

const std::string kTool = TOVIRA_UTIL_TOOL;
const std::string kControlC = "\x03";
const std::string kControlQ = "\x11";
const std::string kControlS = "\x13";
const std::string kControlZ = "\x1a";

/** More than a terminal takes before it is read. */
const std::string kLongDump = "rrbs 0 40000";

/** Signals of Linux that end a process unless it catches them, but for the one that the console ignores. */
std::vector<int> endingSignals()
{
    std::vector<int> signals = {SIGHUP,  SIGINT,  SIGQUIT, SIGTRAP,  SIGABRT,   SIGUSR1, SIGUSR2,
                                SIGPIPE, SIGALRM, SIGTERM, SIGXCPU,  SIGVTALRM, SIGPROF, SIGSTKFLT,
                                SIGIO,   SIGPWR,  SIGSYS,  SIGRTMIN, SIGRTMAX};
    // A sanitizer catches these for a report of its own.
    if (!TOVIRA_SANITIZED) {
        signals.insert(signals.end(), {SIGILL, SIGBUS, SIGFPE, SIGSEGV});
    }
    return signals;
}

/** A place where the console waits. */
struct WaitingPlace {
    std::string name;
    std::vector<std::string> arguments;
    /** On the serial line of a board that answers no more from when. */
    enum class Board { kNone, kSilent, kSilentOnceOpen } board = Board::kNone;
    /** What a user does to get there. */
    std::function<bool(PtyConsole&)> reach;
    bool isRaw = false;
    /** Whether the program reads there, and so finds out by itself that the terminal is gone. */
    bool endsAtHangUp = true;
};

void PrintTo(const WaitingPlace& place, std::ostream* stream)
{
    *stream << place.name;
}

bool shows(PtyConsole& console, const std::string& text)
{
    return console.readThrough(text).ends_with(text);
}

bool enter(PtyConsole& console, const std::string& line)
{
    return shows(console, ">") && console.send(line + "\r");
}

bool enterLongDump(PtyConsole& console)
{
    return enter(console, kLongDump) && console.waitForSleepingCommand();
}

// The terminal lets nothing more out at Ctrl-S, of whatever is in it already.
bool pauseLongDump(PtyConsole& console)
{
    return enterLongDump(console) && console.sendToCommand(kControlS) && shows(console, "\n00000010: ") &&
           console.waitForSleepingCommand();
}

/** A folder with a file "memory" in the place of /dev/mem, and room for the state of cards. */
const std::string& cardFolder()
{
    static const ScratchFolder folder;
    static const std::string path = [] {
        folder.write("memory", std::string(0x4000, '\0'));
        return folder.path("");
    }();
    return path;
}

bool showPrompt(PtyConsole& console)
{
    return shows(console, ">") && console.waitForRawMode();
}

std::vector<WaitingPlace> waitingPlaces()
{
    const std::string foreign = "LD_LIBRARY_PATH=" TOVIRA_FOREIGN_LIBRARY_FOLDER;
    return {
        {.name = "Prompt", .arguments = {kTool}, .reach = showPrompt, .isRaw = true},
        {.name = "KeptCardPrompt",
         .arguments = {"/usr/bin/env", "VEK_STATE_FOLDER=" + cardFolder() + "state", kTool},
         .reach = showPrompt,
         .isRaw = true},
        {.name = "MappedMemoryPrompt",
         .arguments = {"/usr/bin/env", "VEK_MEM_DEVICE=" + cardFolder() + "memory", kTool, "--mem", "1000,2000,0,0"},
         .reach = showPrompt,
         .isRaw = true},
        {.name = "LineHalfTyped",
         .arguments = {kTool},
         .reach =
             [](PtyConsole& console) {
                 return shows(console, ">") && console.send("rrb 4\x1b[D") && shows(console, "\b") &&
                        console.waitForRawMode();
             },
         .isRaw = true},
        {.name = "LiveDisplay",
         .arguments = {kTool},
         .reach = [](PtyConsole& console) { return enter(console, "info") && shows(console, "mb used"); },
         .isRaw = true},
        {.name = "MonitorKey",
         .arguments = {kTool, "--card", "1"},
         .reach =
             [](PtyConsole& console) {
                 return enter(console, "monitor start") && shows(console, "time_foldername: ") &&
                        console.waitForRawMode();
             },
         .isRaw = true},
        {.name = "Measuring",
         .arguments = {kTool},
         .reach = [](PtyConsole& console) { return enter(console, "zv start 0") && console.waitForSleepingCommand(); }},
        {.name = "MicrocontrollerAnswer",
         .arguments = {"/usr/bin/env", foreign, kTool},
         .reach =
             [](PtyConsole& console) {
                 return enter(console, "rwl 3ff00 deadbeef;mcu aux ws 100 1 11 22") &&
                        shows(console, "data: 0x11 0x22\r\n");
             },
         .endsAtHangUp = false},
        {.name = "SerialGreeting",
         .arguments = {kTool},
         .board = WaitingPlace::Board::kSilent,
         .reach = [](PtyConsole& console) { return console.waitForSleepingCommand(); },
         .endsAtHangUp = false},
        {.name = "SerialAnswer",
         .arguments = {kTool},
         .board = WaitingPlace::Board::kSilentOnceOpen,
         .reach =
             [](PtyConsole& console) { return enter(console, "spi read 0 1000") && console.waitForSleepingCommand(); },
         .endsAtHangUp = false},
        {.name = "SlowReader", .arguments = {kTool}, .reach = enterLongDump},
        {.name = "PausedOutput", .arguments = {kTool}, .reach = pauseLongDump},
    };
}

void expectSettingsAsBefore(const PtyConsole& console)
{
    EXPECT_EQ(describe(console.settings()), describe(console.settingsBefore()));
}

class Waiting : public testing::TestWithParam<WaitingPlace>
{
protected:
    Waiting() : folder_(testing::TempDir() + "terminals-XXXXXX")
    {
        // The monitor leaves a folder of its own where it is started.
        if (mkdtemp(folder_.data()) == nullptr || chdir(folder_.c_str()) != 0) {
            ADD_FAILURE() << "no folder for the test";
        }
    }
    ~Waiting() override
    {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        std::filesystem::remove_all(folder_, ignored);
    }

    std::unique_ptr<PtyConsole> start()
    {
        PtyCommand command{.arguments = GetParam().arguments};
        if (GetParam().board != WaitingPlace::Board::kNone) {
            // A slow line has long waits.
            board_ = std::make_unique<BoardProcess>();
            command.arguments.insert(command.arguments.end(), {"--tty", board_->ttyOption(9600)});
        }
        if (GetParam().board == WaitingPlace::Board::kSilent) {
            board_->signal(SIGSTOP);
        }
        auto console = std::make_unique<PtyConsole>(command);
        if (GetParam().board == WaitingPlace::Board::kSilentOnceOpen) {
            EXPECT_TRUE(shows(*console, "serial port for QZ201!"));
            board_->signal(SIGSTOP);
        }
        EXPECT_TRUE(GetParam().reach(*console));
        return console;
    }

    static void expectEvent(PtyConsole& console, bool (ProcessEvent::*is)(int) const, int number)
    {
        const std::optional<ProcessEvent> event = console.waitForEvent();
        ASSERT_TRUE(event.has_value()) << "nothing happens";
        EXPECT_TRUE((*event.*is)(number)) << testing::PrintToString(*event) << " instead of " << number;
    }

    /** Continues the stopped program, up to where it has the terminal as it needs it. */
    static void resume(PtyConsole& console)
    {
        console.signal(SIGCONT);
        const std::optional<ProcessEvent> event = console.waitForEvent();
        ASSERT_TRUE(event.has_value());
        ASSERT_TRUE(event->continued()) << testing::PrintToString(*event);
        ASSERT_TRUE(!GetParam().isRaw || console.waitForRawMode());
    }

private:
    std::string folder_;
    std::unique_ptr<BoardProcess> board_;
};

TEST_P(Waiting, HasTheTerminalAsTheWaitNeedsIt)
{
    const std::unique_ptr<PtyConsole> console = start();
    termios expected = console->settingsBefore();
    if (GetParam().isRaw) {
        cfmakeraw(&expected);
    }
    EXPECT_EQ(describe(console->settings()), describe(expected));
}

TEST_P(Waiting, EndsAtEverySignalWithTheSettingsAsBefore)
{
    for (const int signalNumber : endingSignals()) {
        SCOPED_TRACE(strsignal(signalNumber));
        const std::unique_ptr<PtyConsole> console = start();
        console->signal(signalNumber);
        ASSERT_NO_FATAL_FAILURE(expectEvent(*console, &ProcessEvent::killedBy, signalNumber));
        expectSettingsAsBefore(*console);
    }
}

TEST_P(Waiting, GoesOnAtSignalsThatEndNothing)
{
    const std::unique_ptr<PtyConsole> console = start();
    for (const int signalNumber : {SIGXFSZ, SIGCHLD, SIGURG}) {
        console->signal(signalNumber);
    }
    for (const int columns : {1, 200, 0, 80}) {
        console->resize(columns, columns);
    }
    console->signal(SIGTERM);
    expectEvent(*console, &ProcessEvent::killedBy, SIGTERM);
    expectSettingsAsBefore(*console);
}

TEST_P(Waiting, GivesTheTerminalBackWhileItIsStopped)
{
    const std::unique_ptr<PtyConsole> console = start();
    for (const int signalNumber : {SIGTSTP, SIGTTIN, SIGTTOU}) {
        SCOPED_TRACE(strsignal(signalNumber));
        console->signal(signalNumber);
        ASSERT_NO_FATAL_FAILURE(expectEvent(*console, &ProcessEvent::stoppedBy, signalNumber));
        expectSettingsAsBefore(*console);
        ASSERT_NO_FATAL_FAILURE(resume(*console));
    }
    console->signal(SIGTERM);
    expectEvent(*console, &ProcessEvent::killedBy, SIGTERM);
    expectSettingsAsBefore(*console);
}

// Such a stop leaves the terminal raw, and the shell makes it what it wants.
TEST_P(Waiting, TakesTheTerminalAgainAfterAStopThatCannotBeCaught)
{
    const std::unique_ptr<PtyConsole> console = start();
    console->signal(SIGSTOP);
    ASSERT_NO_FATAL_FAILURE(expectEvent(*console, &ProcessEvent::stoppedBy, SIGSTOP));
    console->changeSettings(console->settingsBefore());
    ASSERT_NO_FATAL_FAILURE(resume(*console));
    console->signal(SIGTERM);
    expectEvent(*console, &ProcessEvent::killedBy, SIGTERM);
    expectSettingsAsBefore(*console);
}

double childrenProcessorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST_P(Waiting, EndsWhenTheTerminalIsTakenAway)
{
    const double before = childrenProcessorSeconds();
    {
        const std::unique_ptr<PtyConsole> console = start();
        console->hangUp();
        if (GetParam().endsAtHangUp) {
            expectEvent(*console, &ProcessEvent::exitedWith, 0);
        } else {
            // What the shell sends to its jobs.
            console->signal(SIGHUP);
            expectEvent(*console, &ProcessEvent::killedBy, SIGHUP);
        }
    }
    constexpr double kBusy = TOVIRA_SANITIZED ? 2.0 : 0.5;
    EXPECT_LT(childrenProcessorSeconds() - before, kBusy);
}

INSTANTIATE_TEST_SUITE_P(Terminal, Waiting, testing::ValuesIn(waitingPlaces()),
                         [](const auto& place) { return place.param.name; });

PtyConsole& reached(PtyConsole& console, bool done)
{
    EXPECT_TRUE(done);
    return console;
}

// The terminal's own keys work while a command has the terminal as it was; at the prompt they are bytes of the line.
TEST(TerminalKeys, StopAndEndAWaitingCommand)
{
    PtyConsole console({.arguments = {"/usr/bin/env", "LD_LIBRARY_PATH=" TOVIRA_FOREIGN_LIBRARY_FOLDER, kTool}});
    reached(console, enter(console, "rwl 3ff00 deadbeef;mcu aux ws 100 1 11 22") && shows(console, "0x22\r\n"));
    ASSERT_TRUE(console.sendToCommand(kControlZ));
    std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value() && event->stoppedBy(SIGTSTP));
    expectSettingsAsBefore(console);
    console.signal(SIGCONT);
    event = console.waitForEvent();
    ASSERT_TRUE(event.has_value() && event->continued());
    ASSERT_TRUE(console.sendToCommand(kControlC));
    event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->killedBy(SIGINT)) << testing::PrintToString(*event);
    expectSettingsAsBefore(console);
}

TEST(TerminalKeys, PauseAndContinueALongOutput)
{
    PtyConsole console({.arguments = {kTool}});
    ASSERT_TRUE(pauseLongDump(console));
    ASSERT_TRUE(console.sendToCommand(kControlQ));
    EXPECT_TRUE(shows(console, "\n0003fff0: 00"));
    ASSERT_TRUE(enter(console, "quit"));
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value() && event->exitedWith(0));
    expectSettingsAsBefore(console);
}

// The display writes with the terminal raw: nobody reads its output any more.
TEST(TerminalPipe, EndsTheLiveDisplayWithTheSettingsAsBefore)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    PtyConsole console({.arguments = {kTool, "--cmd", "info"}, .standardOutput = ends[1]});
    close(ends[1]);
    ASSERT_TRUE(console.waitForRawMode());
    close(ends[0]);
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->killedBy(SIGPIPE)) << testing::PrintToString(*event);
    expectSettingsAsBefore(console);
}

TEST(TerminalSize, ChangesInTheMidstOfALongLine)
{
    PtyConsole console({.arguments = {kTool}});
    ASSERT_TRUE(shows(console, ">"));
    const std::string first(100, 'a');
    ASSERT_TRUE(console.send(first) && shows(console, first));
    for (const int columns : {40, 1, 200, 0}) {
        ASSERT_TRUE(console.waitForRawMode());
        console.resize(24, columns);
        ASSERT_TRUE(console.send("b"));
        ASSERT_EQ(console.read(1), "b");
    }
    ASSERT_TRUE(console.send("\x1b[1~rrb 41;\x1b[4~\r"));
    EXPECT_TRUE(shows(console, first + "bbbb\r\r\n00000041: 00\r\n"));
}

}  // namespace
