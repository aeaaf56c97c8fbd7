#include "tovira_parse/wait.h"

#include <cerrno>
#include <cstdio>
#include <ctime>

void waitMicroseconds(std::uint32_t microseconds)
{
    constexpr std::uint32_t kPerSecond = 1'000'000;
    constexpr std::int64_t kNanoseconds = 1000;
    fflush(stdout);
    timespec left = {.tv_sec = microseconds / kPerSecond, .tv_nsec = microseconds % kPerSecond * kNanoseconds};
    // A stop and a continuation interrupt it as any signal does that is handled.
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}
