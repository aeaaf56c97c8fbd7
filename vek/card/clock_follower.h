#ifndef VEK_CARD_CLOCK_FOLLOWER_H
#define VEK_CARD_CLOCK_FOLLOWER_H

#include <array>
#include <cstdint>

#include "drivers/clocks.h"

namespace vek
{

/// What the clock domains run at, in Hz rounded down, by enum VekClockDomain; 0 where one is off.
using DomainHertz = std::array<std::uint64_t, clock_unit::kDomains>;

/// A part of the card that goes with the clocks and has to know from when on they run otherwise.
class ClockFollower
{
public:
    virtual void followClocks(const DomainHertz& hertz) = 0;

protected:
    constexpr ClockFollower() = default;
    ~ClockFollower() = default;
};

}  // namespace vek

#endif
