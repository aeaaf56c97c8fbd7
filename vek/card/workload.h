#ifndef VEK_CARD_WORKLOAD_H
#define VEK_CARD_WORKLOAD_H

#include <algorithm>
#include <cstdint>

#include "card/clock_follower.h"
#include "drivers/chip_units.h"
#include "vek.h"

namespace vek
{

/// What a kind of unit has to do on a card that is in use, and what that means for the AXI interconnect.
struct UnitWork {
    VekClockDomain clock;         ///< What it runs with.
    std::uint64_t wantedHertz;    ///< Clock cycles of work that come in a second, for the first unit of the kind.
    std::uint64_t cyclesPerRead;  ///< Busy cycles from one read transaction to the next.
    std::uint64_t cyclesPerWrite;
    std::uint64_t bytesPerRead;  ///< In one transaction.
    std::uint64_t bytesPerWrite;
    std::uint64_t readLatency;  ///< AXI clock cycles that one transaction takes.
    std::uint64_t writeLatency;
};

constexpr UnitWork workOf(ChipUnit kind)
{
    constexpr std::uint64_t kMhz = 1'000'000;
    switch (kind) {
        case ChipUnit::kHost:
            return {VEK_CLOCK_PCIE, 90 * kMhz, 20, 12, 64, 64, 52, 30};
        case ChipUnit::k3d:
            return {VEK_CLOCK_3D, 620 * kMhz, 9, 24, 64, 64, 88, 41};
        case ChipUnit::k2d:
            return {VEK_CLOCK_2D, 150 * kMhz, 8, 8, 32, 32, 64, 36};
        case ChipUnit::kVpu:
            return {VEK_CLOCK_VPU, 200 * kMhz, 10, 32, 64, 64, 71, 39};
        case ChipUnit::kDisplay:
            return {VEK_CLOCK_AXI, 180 * kMhz, 6, 4096, 128, 16, 45, 28};
        case ChipUnit::kDma:
            return {VEK_CLOCK_AXI, 60 * kMhz, 16, 16, 128, 128, 58, 33};
        case ChipUnit::kMcu:
            return {VEK_CLOCK_APB, 12 * kMhz, 40, 160, 4, 4, 24, 18};
        case ChipUnit::kNone:
            break;
    }
    return {VEK_CLOCK_AXI, 0, 1, 1, 0, 0, 0, 0};
}

/// The cycles that a unit is busy for in a second. Each further unit of a kind has less to do, and what a unit's clock
/// cannot do is left undone.
constexpr std::uint64_t busyHertz(const UnitId& unit, const DomainHertz& hertz)
{
    const UnitWork work = workOf(unit.kind);
    return std::min(work.wantedHertz / (1U + unit.instance), hertz[work.clock]);
}

}  // namespace vek

#endif
