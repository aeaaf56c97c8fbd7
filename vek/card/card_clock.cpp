#include "card/card_clock.h"

#include <ctime>

namespace vek
{

std::uint64_t HostClock::nanoseconds() const
{
    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t host =
        static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
    if (!kept_) {
        return host;
    }
    // Since the host was restarted its clock counts from 0 again.
    if (host + offset_ < shown_) {
        offset_ = shown_ - host;
    }
    shown_ = host + offset_;
    return shown_;
}

}  // namespace vek
