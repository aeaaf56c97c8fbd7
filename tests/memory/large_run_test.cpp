// Runs as large as a card's memory, with the finished program: they end, cost time in proportion to their length, and
// no more memory than their buffer.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

namespace
{

constexpr long kMiB = 1L << 20;

/** What the program needs besides the buffer of a run. */
constexpr long kSmallConstant = 16 * kMiB;

/** What a run of the program cost. */
struct Cost {
    int exitStatus;
    double seconds;  ///< of processor time, its own and the system's
    long peakBytes;  ///< of resident memory
};

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/** Runs a command with its output thrown away. */
Cost costOf(std::string command)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = TOVIRA_UTIL_TOOL;
    std::string option = "--cmd";
    const std::array<char*, 4> arguments{program.data(), option.data(), command.data(), nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    if (error != 0 || wait4(child, &status, 0, &usage) != child) {
        throw std::system_error(error != 0 ? error : errno, std::generic_category(), program);
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
            usage.ru_maxrss * 1024};
}

/** Runs a command that gathers its items in a buffer. */
void expectBuffered(const std::string& command, long bufferBytes)
{
    const Cost cost = costOf(command);
    EXPECT_EQ(cost.exitStatus, 0) << command;
    EXPECT_GE(cost.peakBytes, bufferBytes) << command;
    EXPECT_LE(cost.peakBytes, bufferBytes + kSmallConstant) << command;
}

TEST(LargeRun, OfAGibibyteNeedsItsBufferOnly)
{
    expectBuffered("vrbs 0 40000000", 1024 * kMiB);
    expectBuffered("vrws 0 20000000", 1024 * kMiB);
    expectBuffered("vrqs 0 8000000", 1024 * kMiB);
    expectBuffered("arls 40000000 10000000", 1024 * kMiB);
}

TEST(LargeRun, OfVideoLongsNeedsItsBufferOnly)
{
    expectBuffered("vrls 0 10000000", 1024 * kMiB);
}

TEST(LargeRun, OfKernelMemoryNeedsNoBuffer)
{
    const Cost cost = costOf("krbs ffff888000000000 10000000");
    EXPECT_EQ(cost.exitStatus, 0);
    EXPECT_LE(cost.peakBytes, kSmallConstant);
}

TEST(LargeRun, WithoutABufferNeedsLittleMemory)
{
    const Cost cost = costOf("crbs 0 1000000;rrqs 0 200000;vwls 0 1 5");
    EXPECT_EQ(cost.exitStatus, 0);
    EXPECT_LE(cost.peakBytes, 3 * kSmallConstant);
}

// Four times the items may take four times the time; twice that is allowed for a busy machine.
TEST(LargeRun, TakesTimeInProportionToItsLength)
{
    for (const char* word : {"vrbs", "vrws", "vrqs", "arbs", "krbs"}) {
        const std::string start = *word == 'k' ? " ffff888000000000 " : *word == 'a' ? " 40000000 " : " 0 ";
        const Cost quarter = costOf(word + start + "1000000");
        const Cost whole = costOf(word + start + "4000000");
        EXPECT_EQ(whole.exitStatus, 0) << word;
        EXPECT_LE(whole.seconds, 8 * quarter.seconds) << word;
    }
}

TEST(LargeRun, BeyondTwoGibibytesEndsAtOnce)
{
    for (const char* command : {"vrqs 0 10000000", "arqs 0 10000000", "vrws 0 40000000", "vrls 0 20000000",
                                "vrbs 0 80000000", "arbs 0 ffffffff"}) {
        const Cost cost = costOf(command);
        EXPECT_EQ(cost.exitStatus, 0) << command;
        EXPECT_LT(cost.seconds, 1) << command;
        EXPECT_LE(cost.peakBytes, kSmallConstant) << command;
    }
}

}  // namespace
