#include "card/card_clock.h"

#include <ctime>

namespace vek
{

std::uint64_t HostClock::nanoseconds() const
{
    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace vek
