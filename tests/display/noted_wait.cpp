#include "noted_wait.h"

#include <cerrno>
#include <ctime>
#include <string>

#include "recording_vek.h"

namespace
{

int interruptedWaits = 0;

long microsecondsOf(const timespec& time)
{
    return time.tv_sec * 1'000'000 + time.tv_nsec / 1000;
}

}  // namespace

void interruptWaits(int waits)
{
    interruptedWaits = waits;
}

// Stands in for the C library's.
extern "C" int clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* request, timespec* left)
{
    const long whole = microsecondsOf(*request);
    recording_vek::note("wait(" + std::to_string(whole) + ")");
    if (interruptedWaits == 0) {
        return 0;
    }
    --interruptedWaits;
    *left = {.tv_sec = whole / 2 / 1'000'000, .tv_nsec = whole / 2 % 1'000'000 * 1000};
    return EINTR;
}
