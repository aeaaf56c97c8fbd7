#include "pause.h"

#include <cerrno>
#include <ctime>

namespace vek
{

void HostPause::microseconds(std::uint32_t duration)
{
    constexpr std::uint32_t kPerSecond = 1'000'000;
    constexpr long kNanoseconds = 1000;
    timespec left{.tv_sec = static_cast<time_t>(duration / kPerSecond),
                  .tv_nsec = static_cast<long>(duration % kPerSecond) * kNanoseconds};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

}  // namespace vek
