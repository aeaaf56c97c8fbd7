#include "drivers/axi_data.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>

namespace vek
{
namespace
{

using TimeText = std::array<char, 64>;

TimeText formatTime(const timespec& when)
{
    constexpr long kNanosecondsPerMillisecond = 1'000'000;
    tm utc = {};
    gmtime_r(&when.tv_sec, &utc);
    std::array<char, 32> seconds{};
    strftime(seconds.data(), seconds.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    TimeText text;
    std::snprintf(text.data(), text.size(), "%s.%03ldZ", seconds.data(), when.tv_nsec / kNanosecondsPerMillisecond);
    return text;
}

/// Tenths of cycles that a transaction took on average, rounded down.
std::uint64_t latencyTenths(const AxiCounts& counts)
{
    constexpr std::uint64_t kTenths = 10;
    const std::uint64_t transactions = counts.reads + counts.writes;
    if (transactions == 0) {
        return 0;
    }
    // Whole cycles first: the sum of a long run times ten might not fit.
    return counts.latencyCycles / transactions * kTenths + counts.latencyCycles % transactions * kTenths / transactions;
}

}  // namespace

std::string_view formatAxiSample(const AxiSample& sample, const timespec& when, AxiDataText& text)
{
    constexpr std::uint64_t kTenths = 10;
    const TimeText time = formatTime(when);
    std::size_t length = 0;
    for (const AxiCounts& counts : sample.byMaster()) {
        const std::uint64_t latency = latencyTenths(counts);
        const int added =
            std::snprintf(text.data() + length, text.size() - length,
                          "%s,%s%u,%" PRIu64 ",%" PRIu64 ",%" PRIu64 ",%" PRIu64 ".%" PRIu64 "\n", time.data(),
                          unitName(counts.unit.kind), static_cast<unsigned>(counts.unit.instance), counts.reads,
                          counts.writes, counts.bytes, latency / kTenths, latency % kTenths);
        if (added < 0 || static_cast<std::size_t>(added) >= text.size() - length) {
            break;
        }
        length += static_cast<std::size_t>(added);
    }
    return {text.data(), length};
}

}  // namespace vek
