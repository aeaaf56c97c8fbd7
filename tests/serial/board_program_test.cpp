// The program vek_board: its options and how it ends.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>

#include "board_process.h"
#include "child_process.h"
#include "memory_line.h"
#include "vek.h"

namespace serial_test
{
namespace
{

using ::testing::HasSubstr;
using ::testing::StartsWith;

child_process::Result run(std::vector<std::string> options)
{
    options.insert(options.begin(), VEK_BOARD);
    return child_process::run({.arguments = options});
}

TEST(BoardProgram, ExplainsItself)
{
    const child_process::Result result = run({"--help"});
    EXPECT_EQ(result.exitStatus, 0);
    for (const char* option : {"--card", "--pty", "--tty", "--baud", "--once", "--help"}) {
        EXPECT_THAT(result.output, HasSubstr(option));
    }
}

TEST(BoardProgram, RefusesWhatItDoesNotUnderstand)
{
    const std::vector<std::vector<std::string>> wrong = {{"--card", "2"},
                                                         {"--card", "-1"},
                                                         {"--card", "x"},
                                                         {"--card", ""},
                                                         {"--card"},
                                                         {"--baud", "1200"},
                                                         {"--baud", "9600x"},
                                                         {"--what"},
                                                         {"more"},
                                                         {"--pty", "--tty", "/dev/null"},
                                                         {"--tty", "/dev/null"},
                                                         {"--tty", "/not/there"},
                                                         {"--tty"}};
    for (const std::vector<std::string>& options : wrong) {
        const child_process::Result result = run(options);
        EXPECT_EQ(result.exitStatus, 1) << testing::PrintToString(options);
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.error, "");
    }
}

TEST(BoardProgram, NamesItsTerminal)
{
    EXPECT_THAT(BoardProcess().terminal(), StartsWith("/dev/pts/"));
    EXPECT_THAT(BoardProcess({"--pty"}).terminal(), StartsWith("/dev/pts/"));
}

TEST(BoardProgram, EndsWellOnASignal)
{
    for (const int number : {SIGTERM, SIGINT}) {
        BoardProcess board;
        board.signal(number);
        EXPECT_EQ(board.wait(), 0);
    }
}

TEST(BoardProgram, EndsWithItsHostIfAskedTo)
{
    BoardProcess board({"--once"});
    ASSERT_GT(vekSerialOpen(board.terminal().c_str(), 9600), 0);
    uint32_t value = 0;
    EXPECT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_OK);
    vekClose();
    EXPECT_EQ(board.wait(), 0);
}

/** A pseudo-terminal whose one side the test has; the other one stands for a real line. */
class Line
{
public:
    Line() : side_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        EXPECT_EQ(grantpt(side_), 0);
        EXPECT_EQ(unlockpt(side_), 0);
        name_ = ptsname(side_);
    }
    ~Line() { hangUp(); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void hangUp()
    {
        if (side_ >= 0) {
            close(side_);
            side_ = -1;
        }
    }

    /** The reply to a message. */
    std::vector<Bytes> ask(const Bytes& message) const
    {
        const Bytes frame = framed(message);
        EXPECT_EQ(write(side_, frame.data(), frame.size()), static_cast<ssize_t>(frame.size()));
        Bytes got;
        std::uint8_t byte = 0;
        while (messagesIn(got).empty() && read(side_, &byte, 1) == 1) {
            got.push_back(byte);
        }
        return messagesIn(got);
    }

    bool isRaw() const
    {
        termios settings{};
        return tcgetattr(side_, &settings) == 0 && (settings.c_lflag & (ECHO | ICANON)) == 0;
    }

    const std::string& name() const { return name_; }

private:
    int side_;
    std::string name_;
};

TEST(BoardProgram, ServesOnALineOfTheHostUntilItHangsUp)
{
    Line line;
    BoardProcess board({"--card", "1", "--tty", line.name(), "--baud", "115200", "--once"});
    EXPECT_EQ(board.terminal(), line.name());
    EXPECT_TRUE(line.isRaw());
    const std::vector<Bytes> replies = line.ask({0x01, 1, 0, 0, 0, 1});
    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].at(9), 0x02) << "the chip's number, 0x202";
    line.hangUp();
    EXPECT_EQ(board.wait(), 0);
}

}  // namespace
}  // namespace serial_test
