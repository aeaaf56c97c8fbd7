// The finished console over a serial line: the same output as on the driver's path, whatever the family of commands.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "board_process.h"
#include "child_process.h"
#include "line_between.h"
#include "pty_console.h"

namespace serial_test
{
namespace
{

using ::testing::EndsWith;
using ::testing::StartsWith;

constexpr const char* kBadArgument = "Invalid argument. Use help or ? for command info\n";
constexpr const char* kModeRefused = "device error:the cmd does not support the visit mode\n";

/** What the console prints behind its start-up line, which has to be this one. */
std::string outputOf(const std::vector<std::string>& options, const std::string& commands, const std::string& startLine)
{
    std::vector<std::string> arguments = {TOVIRA_UTIL_TOOL};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {"--cmd", commands});
    const child_process::Result result = child_process::run({.arguments = arguments,
                                                             .folder = std::filesystem::temp_directory_path().string(),
                                                             .timeout = std::chrono::minutes(20)});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_THAT(result.output, StartsWith(startLine));
    return result.output.substr(std::min(result.output.size(), startLine.size()));
}

std::string onTerminal(const std::string& ttyOption, const std::string& commands, const char* chip = "QZ201")
{
    return outputOf({"--tty", ttyOption}, commands,
                    std::string("enter command line with serial port for ") + chip + "!\n");
}

std::string onSerialLine(const BoardProcess& board, const std::string& commands, const char* chip = "QZ201")
{
    return onTerminal(board.ttyOption(), commands, chip);
}

std::string onDriver(const std::string& card, const std::string& commands, const char* chip)
{
    return outputOf({"--card", card}, commands, std::string("enter command line with /dev/vekrw for ") + chip + "!\n");
}

/** Commands of one family. */
struct Family {
    const char* name;
    const char* commands;
};

void PrintTo(const Family& family, std::ostream* stream)
{
    *stream << family.name;
}

class ServedConsole : public testing::TestWithParam<Family>
{
};

TEST_P(ServedConsole, PrintsWhatItPrintsOnTheDriversPath)
{
    const struct {
        const char* card;
        const char* chip;
    } cards[] = {{"0", "QZ201"}, {"1", "QZ202"}};
    for (const auto& [card, chip] : cards) {
        BoardProcess board({"--card", card});
        EXPECT_EQ(onSerialLine(board, GetParam().commands, chip), onDriver(card, GetParam().commands, chip)) << chip;
    }
}

// One byte in 4000 suffers something, which is one transaction in a hundred.
constexpr Faults kNoise{.drop = 5e-5, .repeat = 5e-5, .flip = 5e-5, .delay = 5e-5, .insert = 5e-5};

TEST_P(ServedConsole, PrintsTheSameOverANoisyLine)
{
    const BoardProcess board({"--card", "1"});
    LineBetween line(board.terminal(), kNoise, 1);
    EXPECT_EQ(onTerminal(line.ttyOption(), GetParam().commands, "QZ202"), onDriver("1", GetParam().commands, "QZ202"));
}

INSTANTIATE_TEST_SUITE_P(
    Families, ServedConsole,
    testing::Values(
        Family{"Amba",
               "arl 1000000;awl 1000700 1234;arls 1000700 8;arq 40000000;arb 0;awbs 20000000 40 a5;arbs 20000000 50;"
               "awq 20000008 1122334455667788;arqs 20000000 4;arws 1000700 3"},
        Family{"Crtc", "crb 3;cwb 3 7;crb 3;crbs 0 20"},
        Family{
            "I2c",
            "i2c set 0 50;i2c rb 0;i2c rbs 0 20;i2c wb 40 11;i2c rbs 40 4;i2c set 0 51;i2c rb 0;i2c set 7 50;i2c rb 0"},
        Family{"Hdmi",
               "hdmi 0 edid r;hdmi 0 hpd r;hdmi 0 mode;hdmi 0 phy r 1;hdmi 0 phy w 1 1234;hdmi 0 phy rs 0 8;"
               "hdmi 0 phy st;hdmi 0 phy en;hdmi 0 ddc i;hdmi 0 ddc r 50 0;hdmi 1 hpd r;hdmi 1 edid r"},
        Family{"DisplayPort",
               "dp 0 init;dp 0 mode;dp 0 aux r 0;dp 0 aux w 100 a;dp 0 aux rs 100 8;dp 0 ddc;dp 0 phy rs 0 4;"
               "dp 0 cdb rs 0 4;dp 0 st 1;dp 0 i2c rs 0 10;dp 1 mode;dp 1 aux r 0"},
        Family{"Edp", "edp pwm 1000;edp light 32;edp pwmen"},
        Family{"DisplayModes",
               "crtc output;crtc 0 mode;crtc 1 mode;crtc 3 mode;vga 0 mode;vga 0 r 20;vga 0 c 10 20 30;"
               "dvo 0 mode;crtc gamma 0 ga 1.0:1.0:1.0 br 0.5 ct 6500;crtc gamma 1 br 2"},
        Family{"Spi", "spi read 0 40;spi erase 0 1000;spi read 0 20;spi prot;spi erase 0 1000;spi unprot"},
        Family{"Sensors", "temp 1;volt 2;process"},
        Family{"PowerMonitors",
               "ltc2990 1 0 7;ltc2990 1 0 6 3 3;ltc2991 1 0 0;ltc2991 1 0 1 5 5 5 5;ina3221 1 5 5;ltc2990 3 3 7"},
        Family{"FanAndFunctions", "fan 20;fan auto;thermal 50000;thermal q;func;func texture on;func"},
        Family{"Clocks", "clk;clk 3d 500;clk;clk pll;clk bypass 1;clk on 1;clk"},
        Family{"Monitor", "monitor f;monitor c;monitor x"}, Family{"Script", "run /not/there"}));

// As many transactions as the memory line gets with the same noise, but on terminals and in real time.
TEST(ServedConsoleModes, WritesAndReadsBackOverANoisyLine)
{
    constexpr std::uint64_t kEveryDay = 0x400;
    const char* const wanted = std::getenv("SERIAL_TEST_TRANSACTIONS");
    const std::uint64_t transactions = wanted == nullptr ? kEveryDay : std::strtoull(wanted, nullptr, 10);
    std::ostringstream commands;
    commands << std::hex << "awls 20000000 " << transactions / 2 << " 5a5a1234;arls 20000000 " << transactions / 2;
    const BoardProcess board;
    LineBetween line(board.terminal(), kNoise, 2);
    EXPECT_EQ(onTerminal(line.ttyOption(), commands.str()), onDriver("0", commands.str(), "QZ201"));
    std::printf("%lu transactions, %lu requests, %lu bytes that suffered something\n", transactions, line.requests(),
                line.faults());
    EXPECT_GE(line.requests(), transactions);
    EXPECT_GT(line.faults(), transactions / 400) << "there was no noise to speak of";
}

// Not a limit but a figure to quote. A read of 4 bytes takes 38 bytes on the line, so 303 of them in a second are the
// most that a line of 115200 bits per second carries.
TEST(ServedConsoleModes, ReadsAsOftenAsTheLineCarriesIt)
{
    constexpr std::uint64_t kReads = 0x100;
    constexpr double kLimit = 115'200.0 / 10 / 38;
    using Clock = std::chrono::steady_clock;
    const BoardProcess board;
    LineBetween line(board.terminal(), {}, 1, 115'200);
    const auto secondsOf = [&](const std::string& commands) {
        const Clock::time_point start = Clock::now();
        onTerminal(line.ttyOption(), commands);
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    const double without = secondsOf("arl 20000000");
    const std::uint64_t requestsBefore = line.requests();
    const double seconds = secondsOf("arls 20000000 100") - without;
    ASSERT_EQ(line.requests() - requestsBefore, kReads + 1) << "a greeting comes first";
    std::printf("%.0f reads of 4 bytes a second over 115200 bits per second, of %.0f\n", kReads / seconds, kLimit);
    EXPECT_LT(kReads / seconds, 1.05 * kLimit);
}

TEST(ServedConsoleModes, TakesAmbaAddressesForRegistersAndVideoMemory)
{
    BoardProcess board;
    EXPECT_EQ(onSerialLine(board, "rwl 1000700 1234abcd;rrl 1000700;arl 1000700;rrl 700"),
              "01000700: 1234abcd\n01000700: 1234abcd\n00000700: ffffffff\n");
    EXPECT_EQ(onSerialLine(board, "vwl 40000000 55aa;vrl 40000000;arl 40000000"),
              "40000000: 000055aa\n40000000: 000055aa\n");
}

TEST(ServedConsoleModes, RefusesWhatOnlyTheDriverDoes)
{
    BoardProcess board;
    for (const char* command : {"pci 0", "ver", "info", "power", "dump", "ddc 0"}) {
        EXPECT_EQ(onSerialLine(board, command), kModeRefused) << command;
    }
}

TEST(ServedConsoleModes, AnswersCardAndQueryWithoutADriver)
{
    BoardProcess board;
    EXPECT_EQ(onSerialLine(board, "query"), kBadArgument);
    EXPECT_EQ(onSerialLine(board, "card"), "current card index: 0\n");
    EXPECT_EQ(onSerialLine(board, "card 1"),
              "card index 1 is out of range [0, 0). current card index: 0\n" + std::string(kBadArgument));
}

/** A console on a terminal of its own that has the board's line open. */
class OpenConsole
{
public:
    explicit OpenConsole(const BoardProcess& board)
        : console_({.arguments = {TOVIRA_UTIL_TOOL, "--tty", board.ttyOption()}})
    {
        EXPECT_THAT(console_.readThrough("!"), EndsWith("with serial port for QZ201!"));
    }

    /** Types a line. @return what is printed through an expected text, all there is if that does not come */
    std::string type(const std::string& line, const std::string& expected)
    {
        EXPECT_TRUE(console_.send(line + "\r"));
        return console_.readThrough(expected);
    }

    void quit()
    {
        EXPECT_TRUE(console_.send("quit\r"));
        const auto end = console_.waitForEvent();
        EXPECT_TRUE(end && end->exitedWith(0));
    }

private:
    PtyConsole console_;
};

TEST(ServedConsoleModes, ReportsABoardThatIsKilledAndGoesOn)
{
    BoardProcess board;
    OpenConsole console(board);
    EXPECT_THAT(console.type("i2c set 0 50;i2c rb 0", "0000: "), EndsWith("0000: "));
    board.signal(SIGKILL);
    board.wait();
    EXPECT_THAT(console.type("i2c rb 0", "I2C error: "), EndsWith("I2C error: "));
    EXPECT_THAT(console.type("temp 1", "failed"), EndsWith("failed"));
    EXPECT_THAT(console.type("arls 0 1000", "00003ff0:"), EndsWith("00003ff0:")) << "no item waits in vain";
    console.quit();
}

TEST(ServedConsoleModes, IsRefusedALineThatAnotherOneUses)
{
    BoardProcess board;
    OpenConsole first(board);
    const child_process::Result second =
        child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--tty", board.ttyOption(), "--cmd", "arl 0"}});
    EXPECT_EQ(second.exitStatus, 1);
    EXPECT_THAT(second.output, StartsWith("Open " + board.terminal() + " device error\n"));
    EXPECT_THAT(first.type("arl 20000000", "20000000: 00000000"), EndsWith("20000000: 00000000"));
    first.quit();
}

TEST(ServedConsoleModes, IsRefusedALineWithoutABoard)
{
    BoardProcess silent;
    silent.signal(SIGSTOP);
    const child_process::Result unanswered =
        child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--tty", silent.ttyOption(), "--cmd", "arl 0"}});
    EXPECT_EQ(unanswered.exitStatus, 1);
    EXPECT_THAT(unanswered.output, StartsWith("Open " + silent.terminal() + " device error\n"));
}

}  // namespace
}  // namespace serial_test
