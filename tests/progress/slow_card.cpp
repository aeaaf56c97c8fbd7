// Added to the stand-in for the card library: a monotonic clock that moves only with the library's calls. A read of one
// item takes a quarter of a second. Calls that do all of their work at once take as many seconds as SECONDS_OF_A_CALL
// says; each of these begins when the program has done what it does in the one before, or with UNWATCHED_CALLS when it
// had the time to begin with it. An erase of 0xdead (57005) bytes never ends.

#include <semaphore.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "recording_vek.h"

namespace
{

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr timespec kMoment = {.tv_sec = 0, .tv_nsec = 100'000};

std::atomic<std::int64_t> currentTime = 1000 * kSecond;
std::atomic<std::int64_t> awaitedTime = 0;

// Whoever shows how the call gets on waits for a time to come.
void letWaitersCatchUp()
{
    constexpr int kMomentsToBegin = 500;
    const bool isUnwatched = getenv("UNWATCHED_CALLS") != nullptr;
    for (int moment = 0; awaitedTime <= currentTime && !(isUnwatched && moment == kMomentsToBegin); ++moment) {
        nanosleep(&kMoment, nullptr);
    }
}

void takeSeconds()
{
    const char* const seconds = getenv("SECONDS_OF_A_CALL");
    const bool isWatched = seconds != nullptr && isatty(STDERR_FILENO) == 1;
    for (int i = 0; isWatched && i < atoi(seconds); ++i) {
        letWaitersCatchUp();
        currentTime += kSecond;
    }
    if (isWatched) {
        letWaitersCatchUp();
    }
    awaitedTime = 0;
}

void passTime(const std::string& line)
{
    const std::string_view call = line;
    if (call.starts_with("vekSpi") || call.starts_with("vekMulti")) {
        takeSeconds();
    } else if (call.find("Read") != std::string_view::npos) {
        currentTime += kSecond / 4;
    }
    while (call.starts_with("vekSpiErase") && call.find(", 57005)") != std::string_view::npos) {
        pause();
    }
}

[[gnu::constructor]] void slowDown()
{
    recording_vek::setOnCall(passTime);
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    *time = {.tv_sec = currentTime / kSecond, .tv_nsec = currentTime % kSecond};
    return 0;
}

extern "C" int sem_clockwait(sem_t* semaphore, clockid_t /*clock*/, const timespec* deadline)
{
    const std::int64_t end = deadline->tv_sec * kSecond + deadline->tv_nsec;
    awaitedTime = end;
    while (sem_trywait(semaphore) != 0) {
        if (currentTime >= end) {
            errno = ETIMEDOUT;
            return -1;
        }
        nanosleep(&kMoment, nullptr);
    }
    return 0;
}
