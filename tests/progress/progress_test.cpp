// Work of more than two seconds shows on a terminal how far it is, and leaves nothing of that behind.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "child_process.h"
#include "pty_console.h"

namespace
{

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kErase = "\r\033[K\r";

/** Works in an empty folder of its own. */
class Progress : public ::testing::Test
{
protected:
    Progress()
    {
        std::string name = std::filesystem::temp_directory_path() / "progressXXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::filesystem::filesystem_error("mkdtemp", std::error_code(errno, std::generic_category()));
        }
        folder_ = name;
        std::ofstream(folder_ / "IMAGE") << std::string(4096, 'i');
    }
    ~Progress() override { std::filesystem::remove_all(folder_); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    std::string file(const std::string& name) const { return folder_ / name; }

    std::string contents(const std::string& name) const
    {
        std::ifstream stream(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /** The command line that runs a text over the slow card in the folder. */
    std::vector<std::string> command(const std::string& text, int seconds = 0,
                                     const std::string& terminal = "xterm") const
    {
        return {"/usr/bin/env",
                "--chdir=" + folder_.string(),
                "LD_LIBRARY_PATH=" TOVIRA_SLOW_LIBRARY_FOLDER,
                "TERM=" + terminal,
                "SECONDS_OF_A_CALL=" + std::to_string(seconds),
                TOVIRA_UTIL_TOOL,
                "--cmd",
                text};
    }

    /** What a command, which is to succeed, writes to a terminal on standard error, with standard output going to the
     * file "output". */
    std::string errorOutput(const std::vector<std::string>& arguments)
    {
        const int output = open(file("output").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        PtyConsole console({.arguments = arguments, .standardOutput = output});
        std::string error = console.readToEnd();
        EXPECT_TRUE(hasSucceeded(console));
        close(output);
        return error;
    }

    /** What a command writes to standard output with no terminal about. */
    std::string plainOutput(const std::string& text) const
    {
        const child_process::Result result = child_process::run({.arguments = command(text)});
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.error, "");
        return result.output;
    }

    static bool hasSucceeded(PtyConsole& console)
    {
        const auto event = console.waitForEvent();
        return event.has_value() && event->exitedWith(0);
    }

private:
    std::filesystem::path folder_;
};

std::string elapsed(const std::string& what, int seconds)
{
    return "\r" + what + ", 0:0" + std::to_string(seconds) + " so far\033[K\r";
}

/** As a terminal gets it. */
std::string onTerminal(const std::string& output)
{
    std::string result;
    for (const char character : output) {
        result += character == '\n' ? "\r\n" : std::string(1, character);
    }
    return result;
}

std::string allRows(const Screen& screen)
{
    std::string rows;
    for (int row = 0; row < 24; ++row) {
        rows += screen.row(row) + '\n';
    }
    return rows;
}

/** Work that the library does in one call. */
struct WholeWork {
    std::string command;
    std::string shown;
};

void PrintTo(const WholeWork& work, std::ostream* stream)
{
    *stream << work.command;
}

class WorkOfOneCall : public Progress, public ::testing::WithParamInterface<WholeWork>
{
};

TEST_P(WorkOfOneCall, ShowsItsTimeEverySecondFromTheSecondOn)
{
    const WholeWork& work = GetParam();
    EXPECT_EQ(errorOutput(command(work.command, 4)),
              elapsed(work.shown, 2) + elapsed(work.shown, 3) + elapsed(work.shown, 4) + kErase);
}

TEST_P(WorkOfOneCall, OfLessThanTwoSecondsShowsNothing)
{
    EXPECT_EQ(errorOutput(command(GetParam().command, 1)), "");
}

TEST_P(WorkOfOneCall, LeavesNothingOnTheTerminalOfItsOutput)
{
    const std::string expected = plainOutput(GetParam().command);
    PtyConsole console({.arguments = command(GetParam().command, 3)});
    EXPECT_THAT(console.readToEnd(), HasSubstr(GetParam().shown + ", 0:02 so far"));
    Screen plain;
    plain.feed(onTerminal(expected));
    EXPECT_EQ(allRows(console.screen()), allRows(plain));
}

INSTANTIATE_TEST_SUITE_P(All, WorkOfOneCall,
                         ::testing::Values(WholeWork{"spi read 0 1000 saved", "reading flash: 4.0 KiB"},
                                           WholeWork{"spi erase 10000 180000", "erasing flash: 1.5 MiB"},
                                           WholeWork{"spi program 0 IMAGE", "programming flash: 4.0 KiB"},
                                           WholeWork{"vrls 0 400", "reading: 4.0 KiB"},
                                           WholeWork{"vrls 0 40000000 file", "reading: 4.0 GiB"}));

TEST_F(Progress, OfASmallCallShowsNothing)
{
    std::vector<std::string> arguments = command("spi read 0 fff", 3);
    arguments.insert(arguments.begin() + 2, "UNWATCHED_CALLS=");
    EXPECT_EQ(errorOutput(arguments), "");
}

TEST_F(Progress, OfAFailedCallGoesAsWell)
{
    std::vector<std::string> arguments = command("spi read 0 1000", 2);
    arguments.insert(arguments.begin() + 2, "RECORDING_VEK_RESULT_vekSpiReadBuffer=-5");
    const std::string error = errorOutput(arguments);
    EXPECT_EQ(error, elapsed("reading flash: 4.0 KiB", 2) + kErase);
    EXPECT_EQ(contents("output"), "enter command line with /dev/vekrw for QZ201!\n");
}

TEST_F(Progress, OfADumpTellsShareAmountAndTimeLeft)
{
    // A line of eight words takes two seconds.
    EXPECT_EQ(errorOutput(command("rrws 0 20")),
              "\rreading: 25 %, 16 B of 64 B, 0:06 left\033[K\r"
              "\rreading: 50 %, 32 B of 64 B, 0:04 left\033[K\r"
              "\rreading: 75 %, 48 B of 64 B, 0:02 left\033[K\r"
              "\rreading: 100 %, 64 B of 64 B, 0:00 left\033[K\r" +
                  kErase);
}

TEST_F(Progress, OfADumpOfLessThanTwoSecondsShowsNothing)
{
    EXPECT_EQ(errorOutput(command("rrws 0 7")), "");
}

TEST_F(Progress, CountsHours)
{
    const std::string minutes = errorOutput(command("rrqs 0 2000"));
    EXPECT_THAT(minutes.substr(0, 80), StartsWith("\rreading: 0 %, 64 B of 64.0 KiB, 34:06 left"));
    const std::string hours = errorOutput(command("rrqs 0 8000"));
    EXPECT_THAT(hours.substr(0, 80), StartsWith("\rreading: 0 %, 64 B of 256.0 KiB, 2:16:30 left"));
}

TEST_F(Progress, IsCutToTheWidthOfTheTerminal)
{
    std::vector<std::string> arguments = command("rrws 0 20");
    arguments.insert(arguments.begin(), {"/bin/sh", "-c", "stty cols 19 <&2; exec \"$@\"", "sh"});
    EXPECT_THAT(errorOutput(arguments), StartsWith("\rreading: 25 %, 16 \033[K\r\r"));
}

TEST_F(Progress, NeedsATerminalThatUnderstandsIt)
{
    EXPECT_EQ(errorOutput(command("rrws 0 20", 0, "dumb")), "");
}

/** A run of reads whose lines take more than two seconds. */
class LongDump : public Progress, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(LongDump, LeavesStandardOutputAsItIs)
{
    const std::string expected = plainOutput(GetParam());
    EXPECT_THAT(errorOutput(command(GetParam())), HasSubstr(" left"));
    EXPECT_EQ(contents("output"), expected);
}

TEST_P(LongDump, ShowsNothingOnAPipe)
{
    EXPECT_THAT(plainOutput(GetParam()), Not(HasSubstr("reading")));
}

TEST_P(LongDump, LeavesNothingOnTheTerminalOfItsOutput)
{
    const std::string expected = plainOutput(GetParam());
    PtyConsole console({.arguments = command(GetParam())});
    EXPECT_THAT(console.readToEnd(), HasSubstr(" left\033[K\r"));
    Screen plain;
    plain.feed(onTerminal(expected));
    EXPECT_EQ(allRows(console.screen()), allRows(plain));
}

TEST_P(LongDump, ShowsItsProgressBelowItsOutput)
{
    PtyConsole console({.arguments = command(GetParam())});
    console.readThrough(" left\033[K");
    const Screen& screen = console.screen();
    EXPECT_THAT(screen.currentRow(), StartsWith("reading: ")) << allRows(screen);
}

INSTANTIATE_TEST_SUITE_P(All, LongDump,
                         ::testing::Values("rrbs 0 39", "rrws 0 23", "rrls ffffffff0 20", "rrqs 0 40", "vrbs 0 40 kept",
                                           "vrqs 10 40", "krls 0 40", "arws 0 40", "crbs 0 40", "rrbs 0 30 kept"));

struct SignalEffect {
    int number;
    bool stops;
};

class SignalDuringWork : public Progress, public ::testing::WithParamInterface<SignalEffect>
{
};

TEST_P(SignalDuringWork, TakesTheLineAway)
{
    PtyConsole console({.arguments = command("spi erase 0 dead", 2)});
    console.readThrough("so far\033[K\r");
    console.signal(GetParam().number);
    const auto event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(GetParam().stops ? event->stoppedBy(GetParam().number) : event->killedBy(GetParam().number))
        << ::testing::PrintToString(*event);
    EXPECT_EQ(console.read(kErase.size()), kErase);
    EXPECT_EQ(console.screen().currentRow(), "");
}

INSTANTIATE_TEST_SUITE_P(All, SignalDuringWork,
                         ::testing::Values(SignalEffect{SIGINT, false}, SignalEffect{SIGTERM, false},
                                           SignalEffect{SIGHUP, false}, SignalEffect{SIGTSTP, true}));

}  // namespace
