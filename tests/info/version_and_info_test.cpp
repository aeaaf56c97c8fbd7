// version and info: the driver's version, and the live display of the use of video memory, byte by byte and as a user
// sees it, with the state that it leaves the terminal in.

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "allocation_failure.h"
#include "child_process.h"
#include "console_support.h"
#include "info_support.h"
#include "pty_console.h"
#include "screen.h"
#include "tovira_parse/handlers.h"

namespace info_test
{
namespace
{

using console_test::AllocationFailure;
using console_test::call;
using console_test::ConsoleTest;
using console_test::Outcome;
using console_test::runLine;
using console_test::takeDeviceCalls;
using testing::ElementsAre;
using testing::MatchesRegex;

using Lines = std::vector<std::string>;

std::string backspaces(std::size_t count)
{
    return std::string(count, '\b');
}

class VersionTest : public ConsoleTest
{
protected:
    VersionTest() { recording_vek::outputs().version = {1, 22, 333, 4444}; }
};

TEST_F(VersionTest, PrintsTheDottedVersionOnly)
{
    for (const char* text : {"version", "ver", "VER", "Version", "VERSION x", " ver,\t\r\n", "ver\n"}) {
        EXPECT_EQ(call(doVer, text), (Outcome{0, "1.22.333.4444\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRvtcoreVer()")) << text;
    }
    EXPECT_EQ(recording_vek::calls().size(), 7U);
}

TEST_F(VersionTest, PrintsTheNumbersAsTheyAre)
{
    recording_vek::outputs().version = {0, -1, 2147483647, 0};
    EXPECT_EQ(call(doVer, "ver"), (Outcome{0, "0.-1.2147483647.0\n"}));
}

TEST_F(VersionTest, ReportsAFailure)
{
    for (const int error : {-1, -19, 5}) {
        recording_vek::setResult("vekRvtcoreVer", error);
        for (const char* text : {"version", "ver"}) {
            EXPECT_EQ(call(doVer, text),
                      (Outcome{0, "get rvtcore version failed with err=" + std::to_string(error) + "\n"}));
        }
    }
}

TEST_F(VersionTest, RefusesOtherWords)
{
    for (const char* text : {"", " ,\t\r\n", "versio", "versions", "v", "inf", "infos", "version/ver", "x info"}) {
        EXPECT_EQ(call(doVer, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(recording_vek::calls(), ElementsAre());
}

TEST_F(VersionTest, DispatcherReachesItByEachName)
{
    for (const char* word : {"version", "ver", "VER", "Version"}) {
        EXPECT_EQ(runLine(word), (Outcome{0, "1.22.333.4444\n"})) << word;
        EXPECT_EQ(runLine(""), Outcome{}) << "it is not repeated";
    }
}

const std::string kGateLine =
    "To support display of GPU information, the version number must be greater than 1.0.0.0\n";
const std::string kVersionLine = "Driver version 1.2.3.4\n";
const std::string kHintLine = "Press q to exit this command\n";
const std::string kTitle = "Video Mem (M): " + std::string(38, ' ');
const std::string kStart = kVersionLine + kHintLine + kTitle;
const std::string kKeyEnd = backspaces(38) + backspaces(15) + "\n";

std::string errorEnd(int error)
{
    return backspaces(15) + "\nget vram information failed with err=" + std::to_string(error) + "\n";
}

/** What has reached descriptor 1 so far, wherever the C library keeps the rest. */
std::string visibleOutput()
{
    struct stat status = {};
    fstat(STDOUT_FILENO, &status);
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    EXPECT_EQ(pread(STDOUT_FILENO, text.data(), text.size(), 0), status.st_size);
    return text;
}

class InfoTest : public ConsoleTest
{
protected:
    InfoTest()
    {
        recording_vek::outputs().version = {1, 2, 3, 4};
        recording_vek::outputs().info = kUse;
        setWatch();
    }

    /** Lets something happen in the sleep behind a refresh, the first one being number 1. */
    void atSleep(int number, std::function<void()> action) { atSleep_[number] = std::move(action); }

    static constexpr gpu_info kUse{.reserved = 77, .used = 96, .free = 4000, .total = 4096};
    static inline const std::string kFrame = backspaces(44) + "  4096mb total,   4000mb free,     96mb used";

    static std::string frames(int count)
    {
        std::string all;
        while (count-- > 0) {
            all += kFrame;
        }
        return all;
    }

    int sleeps_ = 0;

private:
    void setWatch()
    {
        watch_.emplace([this](unsigned int seconds) {
            recording_vek::note("sleep(" + std::to_string(seconds) + ")");
            const auto action = atSleep_.find(++sleeps_);
            if (action != atSleep_.end()) {
                action->second();
            }
            if (sleeps_ > 1000) {
                std::fputs("the display does not end\n", stderr);
                std::abort();
            }
        });
    }

    std::map<int, std::function<void()>> atSleep_;
    std::optional<SleepWatch> watch_;
};

TEST_F(InfoTest, NeedsADriverOfVersionOne)
{
    Keyboard keyboard;
    const SettingsWatch watch([](int, int, const termios&) { ADD_FAILURE() << "the terminal has been changed"; });
    recording_vek::outputs().version = {0, 9, 0, 0};
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, "Driver version 0.9.0.0\n" + kGateLine}));
    recording_vek::outputs().version = {-1, 9, 9, 9};
    EXPECT_EQ(call(doVer, "INFO"), (Outcome{0, "Driver version -1.9.9.9\n" + kGateLine}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRvtcoreVer()", "vekRvtcoreVer()"));
}

TEST_F(InfoTest, LooksAtTheFirstNumberOfTheVersionOnly)
{
    const Keyboard keyboard;
    recording_vek::setResult("vekInfoRead", -3);
    for (const int major : {1, 2, 100}) {
        recording_vek::outputs().version = {major, 0, 0, 0};
        EXPECT_EQ(call(doVer, "info"), (Outcome{0, "Driver version " + std::to_string(major) + ".0.0.0\n" + kHintLine +
                                                       kTitle + errorEnd(-3)}));
    }
}

TEST_F(InfoTest, NeedsAVersion)
{
    const Keyboard keyboard;
    recording_vek::setResult("vekRvtcoreVer", -19);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, "get rvtcore version failed with err=-19\n" + kGateLine}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRvtcoreVer()"));
}

TEST_F(InfoTest, RefreshesUntilTheKey)
{
    Keyboard keyboard;
    atSleep(3, [&] { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(3) + kKeyEnd}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRvtcoreVer()", "vekInfoRead()", "sleep(1)", "vekInfoRead()",
                                                    "sleep(1)", "vekInfoRead()", "sleep(1)"));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(InfoTest, IsRawWhileItRuns)
{
    Keyboard keyboard;
    termios before{};
    ASSERT_EQ(tcgetattr(keyboard.descriptor(), &before), 0);
    cfmakeraw(&before);
    const std::string raw = describe(before);
    Lines states;
    recording_vek::setOnCall([&](const std::string& line) {
        const std::string now = keyboard.settings();
        states.push_back(line + (now == raw ? " raw" : now == keyboard.settingsBefore() ? " as before" : " otherwise"));
    });
    atSleep(1, [&] { EXPECT_EQ(keyboard.settings(), raw); });
    atSleep(2, [&] { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info").status, 0);
    EXPECT_THAT(states, ElementsAre("vekRvtcoreVer() as before", "vekInfoRead() raw", "vekInfoRead() raw"));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(InfoTest, ChangesTheTerminalOnceAndBackAtOnce)
{
    Keyboard keyboard;
    Lines changes;
    const SettingsWatch watch([&](int descriptor, int when, const termios& settings) {
        changes.push_back(std::to_string(descriptor) + (when == TCSANOW ? " now " : " later ") +
                          (describe(settings) == keyboard.settingsBefore() ? "back" : "raw"));
        // Whoever is at the terminal has seen everything when it is put back.
        EXPECT_EQ(visibleOutput().size(), changes.size() == 1 ? 0 : (kStart + frames(1) + kKeyEnd).size());
    });
    atSleep(1, [&] { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info").status, 0);
    EXPECT_THAT(changes, ElementsAre("0 now raw", "0 now back"));
}

TEST_F(InfoTest, ShowsEveryRefreshAtOnce)
{
    Keyboard keyboard;
    std::string atFirstRead;
    recording_vek::setOnCall([&](const std::string& line) {
        if (line == "vekInfoRead()" && atFirstRead.empty()) {
            atFirstRead = visibleOutput();
        }
    });
    atSleep(1, [&] { EXPECT_EQ(visibleOutput(), kStart + frames(1)); });
    atSleep(2, [&] {
        EXPECT_EQ(visibleOutput(), kStart + frames(2));
        keyboard.type("q");
    });
    EXPECT_EQ(call(doVer, "info").status, 0);
    EXPECT_EQ(atFirstRead, kStart);
}

class InfoEndKeyTest : public InfoTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(InfoEndKeyTest, EndsTheDisplay)
{
    Keyboard keyboard;
    atSleep(2, [&] { keyboard.type(GetParam()); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(2) + kKeyEnd}));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

INSTANTIATE_TEST_SUITE_P(Keys, InfoEndKeyTest, testing::Values("q", "Q", "\x03"));

TEST_F(InfoTest, GoesOnAtOtherKeys)
{
    Keyboard keyboard;
    int next = 1;
    // '#' is Ctrl-C with the bit that tells q from Q.
    for (const char key : std::string("pPrR#cCaA1 \x1b\r\n\x11\x04\x13\x1a\x1c\x7f\xf1\xd1\xff")) {
        atSleep(next++, [&keyboard, key] { keyboard.type(std::string(1, key)); });
    }
    atSleep(next++, [&keyboard] { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(next - 1) + kKeyEnd}));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(InfoTest, TakesOneKeyARefresh)
{
    Keyboard keyboard;
    atSleep(1, [&] { keyboard.type("xyqz"); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(3) + kKeyEnd}));
    EXPECT_EQ(getc(stdin), 'z');
}

TEST_F(InfoTest, KeyTypedAheadEndsItBeforeTheFirstRead)
{
    Keyboard keyboard(Delivery::kByKey);
    recording_vek::setOnCall([&](const std::string&) { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + kKeyEnd}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRvtcoreVer()"));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

// The version's failure is the last one then; one that comes with a version, as only another library's can.
TEST_F(InfoTest, KeyBeforeTheFirstReadEndsItWithTheFailureOfTheVersion)
{
    Keyboard keyboard(Delivery::kByKey);
    recording_vek::setResult("vekRvtcoreVer", 5);
    recording_vek::setOnCall([&](const std::string&) { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info"),
              (Outcome{0, "get rvtcore version failed with err=5\n" + kHintLine + kTitle + errorEnd(5)}));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(InfoTest, ReadForgetsTheFailureOfTheVersion)
{
    Keyboard keyboard;
    recording_vek::setResult("vekRvtcoreVer", 5);
    atSleep(1, [&] { keyboard.type("q"); });
    EXPECT_EQ(call(doVer, "info"),
              (Outcome{0, "get rvtcore version failed with err=5\n" + kHintLine + kTitle + frames(1) + kKeyEnd}));
}

class InfoFailureTest : public InfoTest, public testing::WithParamInterface<std::pair<int, int>>
{
};

TEST_P(InfoFailureTest, EndsTheDisplay)
{
    const auto [reads, error] = GetParam();
    Keyboard keyboard;
    recording_vek::setResultOnCall("vekInfoRead", reads + 1, error);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(reads) + errorEnd(error)}));
    EXPECT_EQ(sleeps_, reads);
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

INSTANTIATE_TEST_SUITE_P(Reads, InfoFailureTest,
                         testing::Values(std::pair(0, -1), std::pair(0, -19), std::pair(0, 7), std::pair(1, -5),
                                         std::pair(4, -110)));

TEST_F(InfoTest, PutsTheTerminalBackBehindTheMessageOfAFailure)
{
    Keyboard keyboard;
    recording_vek::setResult("vekInfoRead", -5);
    std::string visible;
    const SettingsWatch watch([&](int, int, const termios&) { visible = visibleOutput(); });
    EXPECT_EQ(call(doVer, "info").status, 0);
    EXPECT_EQ(visible, kStart + errorEnd(-5));
}

TEST_F(InfoTest, KeyAheadOfAFailureWins)
{
    Keyboard keyboard;
    atSleep(1, [&] { keyboard.type("q"); });
    recording_vek::setResultOnCall("vekInfoRead", 2, -5);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(1) + kKeyEnd}));
}

TEST_F(InfoTest, PrintsTheNumbersOfEachRefreshInTheirFields)
{
    const Keyboard keyboard;
    const std::vector<std::pair<gpu_info, std::string>> uses = {
        {{0, 1, 2, 3}, "     3mb total,      2mb free,      1mb used"},
        {{0, 0, 0, 0}, "     0mb total,      0mb free,      0mb used"},
        {{9, 123456, 654321, 777777}, "777777mb total, 654321mb free, 123456mb used"},
        {{0, 7654321, 2, 2147483647}, "2147483647mb total,      2mb free, 7654321mb used"},
        {{0, -1, -12345, -123456}, "-123456mb total, -12345mb free,     -1mb used"},
    };
    std::string expected = kStart;
    recording_vek::outputs().info = uses[0].first;
    int next = 1;
    for (const auto& [info, line] : uses) {
        expected += backspaces(44) + line;
        atSleep(next, [&uses, next] {
            recording_vek::outputs().info = uses[static_cast<std::size_t>(next) % uses.size()].first;
        });
        ++next;
    }
    recording_vek::setResultOnCall("vekInfoRead", next, -1);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, expected + errorEnd(-1)}));
}

/** Output as a terminal gets it: its own line ends are complete only outside raw mode. */
std::string onTerminal(const std::string& output, std::size_t cooked)
{
    std::string all;
    for (std::size_t i = 0; i < output.size(); ++i) {
        all += i < cooked && output[i] == '\n' ? "\r\n" : std::string(1, output[i]);
    }
    return all;
}

TEST_F(InfoTest, IsOneLineThatStaysInPlace)
{
    Keyboard keyboard;
    const std::size_t cooked = (kVersionLine + kHintLine).size();
    const auto seen = [cooked](const std::string& output) {
        Screen screen;
        screen.feed(onTerminal(output, cooked));
        EXPECT_EQ(screen.row(0), "Driver version 1.2.3.4");
        EXPECT_EQ(screen.row(1), "Press q to exit this command");
        EXPECT_EQ(screen.row(3), "");
        return std::pair(screen.row(2), std::pair(screen.cursorRow(), screen.cursorColumn()));
    };
    // The line is longer than the blanks behind the title, whose end gives way to it.
    const std::string firstRow = "Video Mem  4096mb total,   4000mb free,     96mb used";
    const std::string secondRow = "Video Mem  4096mb total,     95mb free,   4001mb used";
    atSleep(1, [&] {
        EXPECT_EQ(seen(visibleOutput()), std::pair(firstRow, std::pair(2, 53)));
        recording_vek::outputs().info = {.reserved = 0, .used = 4001, .free = 95, .total = 4096};
    });
    atSleep(2, [&] {
        EXPECT_EQ(seen(visibleOutput()), std::pair(secondRow, std::pair(2, 53)));
        keyboard.type("q");
    });
    EXPECT_EQ(seen(call(doVer, "info").output), std::pair(secondRow, std::pair(3, 0)));
}

TEST_F(InfoTest, NeedsMemoryForItsNumbers)
{
    Keyboard keyboard;
    const SettingsWatch watch([](int, int, const termios&) { ADD_FAILURE() << "the terminal has been changed"; });
    const AllocationFailure failure(1);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kVersionLine + "fail to alloc gpu_info struct!"}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekRvtcoreVer()"));
}

TEST_F(InfoTest, GoesOnBehindTheEndOfAnInputThatIsNoTerminal)
{
    const InputFile input("");
    recording_vek::setResultOnCall("vekInfoRead", 5, -4);
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(4) + errorEnd(-4)}));
}

TEST_F(InfoTest, TakesKeysOfAnInputThatIsNoTerminal)
{
    const InputFile input("x\nqz");
    const SettingsWatch watch([](int, int, const termios&) { ADD_FAILURE() << "no settings have been saved"; });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(2) + kKeyEnd}));
    EXPECT_EQ(StandardInput::rest(), "z");
}

TEST_F(InfoTest, EndsWhenTheTerminalIsTakenAway)
{
    Keyboard keyboard;
    atSleep(2, [&] { keyboard.hangUp(); });
    EXPECT_EQ(call(doVer, "info"), (Outcome{0, kStart + frames(2) + kKeyEnd}));
}

TEST_F(InfoTest, IsNotRepeatedAtAnEmptyLine)
{
    const Keyboard keyboard;
    recording_vek::setResult("vekInfoRead", -5);
    EXPECT_EQ(runLine("Info"), (Outcome{0, kStart + errorEnd(-5)}));
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_EQ(call(doVer, "info", 1), (Outcome{0, kStart + errorEnd(-5)}));
}

class InfoSignalTest : public InfoTest, public testing::WithParamInterface<int>
{
};

TEST_P(InfoSignalTest, EndsTheProgramWithTheTerminalPutBack)
{
    Keyboard keyboard;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    atSleep(2, [&] {
        const char raw = keyboard.isRaw() ? 'r' : '-';
        EXPECT_EQ(write(ends[1], &raw, 1), 1);
        raise(GetParam());
    });
    const child_process::Result result = child_process::runForked([&] {
        dup2(keyboard.descriptor(), STDIN_FILENO);
        std::string text = "info";
        doVer(text.data(), 0);
    });
    char raw = '-';
    EXPECT_EQ(read(ends[0], &raw, 1), 1);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(raw, 'r');
    EXPECT_EQ(result.signal, GetParam());
    EXPECT_EQ(result.output, kStart + frames(2));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

INSTANTIATE_TEST_SUITE_P(Signals, InfoSignalTest, testing::Values(SIGTERM, SIGHUP, SIGINT, SIGQUIT));

// The finished program at a terminal, with its simulated card.

class InfoTerminalTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string start = "enter command line with /dev/vekrw for QZ201!\r\n>";
        ASSERT_EQ(console_.read(start.size()), start);
    }

    void startDisplay()
    {
        ASSERT_TRUE(console_.send("info\r"));
        EXPECT_THAT(console_.readThrough("mb used"), testing::HasSubstr("Press q to exit this command\r\nVideo Mem"));
        ASSERT_TRUE(isRaw());
    }

    bool isRaw() const
    {
        termios raw = console_.settingsBefore();
        cfmakeraw(&raw);
        return describe(console_.settings()) == describe(raw);
    }

    void expectSettingsAsBefore() { EXPECT_EQ(describe(console_.settings()), describe(console_.settingsBefore())); }

    void expectKilledBy(int signalNumber)
    {
        const std::optional<ProcessEvent> event = console_.waitForEvent();
        ASSERT_TRUE(event.has_value()) << "the program goes on";
        EXPECT_TRUE(event->killedBy(signalNumber)) << testing::PrintToString(*event);
        expectSettingsAsBefore();
    }

    PtyConsole console_{{.arguments = {TOVIRA_UTIL_TOOL}}};
};

TEST_F(InfoTerminalTest, ShowsTheUseUntilTheKey)
{
    ASSERT_NO_FATAL_FAILURE(startDisplay());
    EXPECT_THAT(console_.screen().row(2), MatchesRegex("Driver version [0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+"));
    EXPECT_EQ(console_.screen().row(3), "Press q to exit this command");
    const std::string shown = console_.screen().row(4);
    EXPECT_THAT(shown, MatchesRegex("Video Mem +[0-9]+mb total, +[0-9]+mb free, +[0-9]+mb used"));
    // Ctrl-C is a key like q: it reaches the display, not the program.
    ASSERT_TRUE(console_.send("\x03"));
    const std::string end = kKeyEnd + ">";
    EXPECT_THAT(console_.readThrough("\n>"), testing::EndsWith(end));
    EXPECT_EQ(console_.screen().row(4), shown);
    EXPECT_EQ(console_.screen().row(5), ">");
    EXPECT_EQ(console_.screen().cursorColumn(), 1);
    ASSERT_TRUE(console_.send("quit\r"));
    const std::optional<ProcessEvent> event = console_.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
    expectSettingsAsBefore();
}

TEST_F(InfoTerminalTest, KeysTypedAheadReachTheDisplayAndThePrompt)
{
    ASSERT_TRUE(console_.send("info\rqrrb 40\r"));
    EXPECT_THAT(console_.readThrough("\n>"), testing::EndsWith("(M): " + std::string(38, ' ') + kKeyEnd + ">"));
    const std::string answer = "rrb 40\r\r\n00000040: 00\r\n>";
    EXPECT_EQ(console_.read(answer.size()), answer);
}

TEST_F(InfoTerminalTest, SignalsPutTheTerminalBack)
{
    ASSERT_NO_FATAL_FAILURE(startDisplay());
    console_.signal(SIGTERM);
    expectKilledBy(SIGTERM);
}

TEST_F(InfoTerminalTest, HangUpSignalPutsTheTerminalBack)
{
    ASSERT_NO_FATAL_FAILURE(startDisplay());
    console_.signal(SIGHUP);
    expectKilledBy(SIGHUP);
}

TEST_F(InfoTerminalTest, EndsWhenTheTerminalIsTakenAway)
{
    ASSERT_NO_FATAL_FAILURE(startDisplay());
    console_.hangUp();
    const std::optional<ProcessEvent> event = console_.waitForEvent();
    ASSERT_TRUE(event.has_value()) << "the program goes on";
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
}

}  // namespace
}  // namespace info_test
