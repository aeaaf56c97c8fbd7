// The library's functions over a real pseudo-terminal with a board at its other end.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "board_process.h"
#include "captured_output.h"
#include "child_process.h"
#include "vek.h"

namespace serial_test
{
namespace
{

using Clock = std::chrono::steady_clock;

class SerialPath : public testing::Test
{
protected:
    ~SerialPath() override { vekClose(); }

    int open(int rate = 115200) { return vekSerialOpen(board_.terminal().c_str(), rate); }

    BoardProcess board_;
};

TEST_F(SerialPath, OpensAtEachRateAndTellsWhoTheBoardIs)
{
    for (const int rate : {9600, 19200, 38400, 115200, 460800}) {
        EXPECT_GT(open(rate), 0) << "0 means to the console that nothing is open";
        EXPECT_EQ(get_s_type(), VEK_ACCESS_SERIAL);
        EXPECT_EQ(get_device_id(), 0x201U);
        vekClose();
        EXPECT_EQ(get_s_type(), VEK_NO_PATH);
    }
    BoardProcess other({"--card", "1"});
    ASSERT_GT(vekSerialOpen(other.terminal().c_str(), 9600), 0);
    EXPECT_EQ(get_device_id(), 0x202U);
    EXPECT_EQ(vekGetCard(), 1);
}

TEST_F(SerialPath, TakesAmbaAddressesForRegistersAndVideoMemory)
{
    ASSERT_GT(open(), 0);
    uint32_t value = 0;
    EXPECT_EQ(vekRegWriteLong(0x0100'0700, 0x1234'5678), VEK_OK);
    EXPECT_EQ(vekAmbaReadLong(0x0100'0700, &value), VEK_OK);
    EXPECT_EQ(value, 0x1234'5678U);
    value = 0;
    EXPECT_EQ(vekRegReadLong(0x700, &value), VEK_NO_RESPONSE);
    EXPECT_EQ(value, 0xffff'ffffU);
    EXPECT_EQ(vekVramWriteLong(0x4000'0010, 0xabcd), VEK_OK);
    EXPECT_EQ(vekAmbaReadLong(0x4000'0010, &value), VEK_OK);
    EXPECT_EQ(value, 0xabcdU);
    EXPECT_EQ(vekVramReadLong(0x10, &value), VEK_NO_RESPONSE);
}

TEST_F(SerialPath, MovesRunsOfVideoMemory)
{
    ASSERT_GT(open(), 0);
    EXPECT_EQ(vekMultVramWriteLong(0x55, 0x4000'0000, 100'000, nullptr), VEK_OK);
    std::vector<uint32_t> longs(5000);
    EXPECT_EQ(vekMultiVramReadLong(longs.data(), 0x4000'0000, 5000, nullptr), VEK_OK);
    EXPECT_EQ(longs, std::vector<uint32_t>(5000, 0x55));
}

TEST_F(SerialPath, LeavesWhatBelongsToTheHostToTheHost)
{
    ASSERT_GT(open(), 0);
    uint32_t value = 7;
    int cards = 7;
    char report[VEK_QUERY_REPORT_SIZE] = "";
    EXPECT_EQ(vekKmemReadLong(0, &value), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekPciRead(0, &value), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekQueryInt(VEK_QUERY_CARD_COUNT, &cards, 0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekQueryInfo("", report), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekSetCard(1), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekDumpVramFree(), VEK_NOT_AVAILABLE);
    EXPECT_EQ(value, 7U);
    EXPECT_EQ(cards, 7);
}

TEST_F(SerialPath, IsLockedWhileItIsOpen)
{
    const int other = ::open(board_.terminal().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(other, 0);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    termios before{};
    ASSERT_EQ(tcgetattr(other, &before), 0);
    before.c_lflag |= ECHO;
    ASSERT_EQ(tcsetattr(other, TCSANOW, &before), 0);
    EXPECT_EQ(open(), VEK_IO_ERROR) << "somebody else has it";
    termios after{};
    ASSERT_EQ(tcgetattr(other, &after), 0);
    EXPECT_EQ(after.c_lflag, before.c_lflag) << "and keeps it as it is";
    ASSERT_EQ(flock(other, LOCK_UN), 0);
    ASSERT_GT(open(), 0);
    EXPECT_NE(flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(open(), VEK_IO_ERROR);
    uint32_t value = 0;
    EXPECT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_OK) << "what was open stays open";
    close(other);
}

/** Whether a user without privileges, who has the rights to a terminal, can open it. */
bool opensForAnybody(const std::string& terminal)
{
    constexpr uid_t kNobody = 65534;
    constexpr mode_t kForAll = 0666;
    EXPECT_EQ(chmod(terminal.c_str(), kForAll), 0);
    const child_process::Result result = child_process::runForked([&] {
        const bool dropped = setresuid(kNobody, kNobody, kNobody) == 0;
        _exit(dropped && ::open(terminal.c_str(), O_RDWR | O_NOCTTY) >= 0 ? 0 : 1);
    });
    return result.exitStatus == 0;
}

TEST(SerialLine, KeepsOthersOutWhileItIsOpen)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    const int line = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(grantpt(line) == 0 && unlockpt(line) == 0);
    const std::string terminal = ptsname(line);
    ASSERT_TRUE(opensForAnybody(terminal));
    const int other = ::open(terminal.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    BoardProcess board({"--tty", terminal});
    ASSERT_EQ(board.terminal(), terminal);
    EXPECT_FALSE(opensForAnybody(terminal));
    board.signal(SIGTERM);
    EXPECT_EQ(board.wait(), 0);
    EXPECT_TRUE(opensForAnybody(terminal)) << "also when somebody has had it open all the time";
    close(other);
    close(line);
}

TEST_F(SerialPath, IsOpenToOthersWhenItsProgramWasKilled)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    const child_process::Result killed = child_process::runForked([&] {
        if (open() > 0) {
            raise(SIGKILL);
        }
    });
    ASSERT_EQ(killed.signal, SIGKILL);
    EXPECT_TRUE(opensForAnybody(board_.terminal()));
}

TEST_F(SerialPath, GivesTheLineItsSettingsBack)
{
    const int other = ::open(board_.terminal().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(other, 0);
    termios before{};
    ASSERT_EQ(tcgetattr(other, &before), 0);
    before.c_lflag |= ECHO | ICANON;
    before.c_iflag |= ICRNL | IXON | IXOFF;
    before.c_cflag |= CSTOPB | CRTSCTS;
    before.c_cc[VMIN] = 5;
    cfsetospeed(&before, B1200);
    cfsetispeed(&before, B1200);
    ASSERT_EQ(tcsetattr(other, TCSANOW, &before), 0);
    ASSERT_EQ(tcgetattr(other, &before), 0);
    ASSERT_GT(open(38400), 0);
    termios open{};
    ASSERT_EQ(tcgetattr(other, &open), 0);
    EXPECT_EQ(cfgetospeed(&open), static_cast<speed_t>(B38400));
    EXPECT_EQ(open.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS), static_cast<tcflag_t>(CS8));
    EXPECT_EQ(open.c_lflag & (ECHO | ICANON | ISIG), 0U);
    EXPECT_EQ(open.c_iflag & (IXON | IXOFF | ICRNL), 0U);
    vekClose();
    termios after{};
    ASSERT_EQ(tcgetattr(other, &after), 0);
    EXPECT_EQ(std::memcmp(&after, &before, sizeof after), 0);
    close(other);
}

TEST_F(SerialPath, MakesWayForOtherPathsAndTakesTheirPlace)
{
    ASSERT_GE(vekRwOpen(1), 0);
    ASSERT_GT(open(), 0);
    EXPECT_EQ(get_device_id(), 0x201U);
    BoardProcess second({"--card", "1"});
    ASSERT_GT(vekSerialOpen(second.terminal().c_str(), 115200), 0);
    EXPECT_EQ(get_device_id(), 0x202U);
    ASSERT_GT(open(), 0) << "the line was given up for the second one";
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_DRIVER);
    const int other = ::open(board_.terminal().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0) << "it is not locked any more";
    close(other);
}

TEST_F(SerialPath, FindsTheBoardsStateAgainOnTheNextLine)
{
    ASSERT_GT(open(), 0);
    EXPECT_EQ(vekAmbaWriteLong(0x2000'0000, 77), VEK_OK);
    vekClose();
    ASSERT_GT(open(), 0);
    uint32_t value = 0;
    EXPECT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_OK);
    EXPECT_EQ(value, 77U);
}

TEST_F(SerialPath, ReportsABoardThatIsGone)
{
    ASSERT_GT(open(), 0);
    board_.signal(SIGKILL);
    board_.wait();
    const Clock::time_point start = Clock::now();
    uint32_t value = 7;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_LT(vekAmbaReadLong(0x2000'0000, &value), 0);
    }
    EXPECT_EQ(value, 7U);
    uint8_t byte = 0;
    EXPECT_LT(vekI2cRead(0, 0x50, 0, 1, &byte), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(vekClose(), VEK_OK);
}

TEST_F(SerialPath, ReportsABoardThatHangs)
{
    ASSERT_GT(open(), 0);
    board_.signal(SIGSTOP);
    const Clock::time_point start = Clock::now();
    uint32_t value = 7;
    EXPECT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_TIMED_OUT);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
    board_.signal(SIGCONT);
    EXPECT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_OK);
}

// Not a limit but a figure to quote.
TEST_F(SerialPath, MakesManyTransactionsASecond)
{
    constexpr int kTransactions = 20'000;
    ASSERT_GT(open(), 0);
    const Clock::time_point start = Clock::now();
    uint32_t value = 0;
    for (int i = 0; i < kTransactions; ++i) {
        ASSERT_EQ(vekAmbaReadLong(0x2000'0000, &value), VEK_OK);
    }
    const std::chrono::duration<double> seconds = Clock::now() - start;
    std::printf("%.0f reads of 4 bytes a second over a pseudo-terminal\n", kTransactions / seconds.count());
}

}  // namespace
}  // namespace serial_test
