#ifndef VEK_CARD_CLOCK_UNIT_H
#define VEK_CARD_CLOCK_UNIT_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "card/chip_facts.h"
#include "card/clock_follower.h"
#include "card/die.h"
#include "drivers/clocks.h"

namespace vek
{

/// A clock unit as its register file says (drivers/clocks.h). PLLs lock at once. The die warms up with the clocks of
/// the graphics cores.
class ClockUnit final : public AddressSpace
{
public:
    /// A clock unit as the firmware leaves it, with its die settled. `follower`, if any, knows these clocks already.
    constexpr ClockUnit(const FirmwareClocks& megahertz, Die& die, ClockFollower* follower = nullptr)
        : die_(die), follower_(follower)
    {
        for (std::size_t domain = 0; domain < settings_.size(); ++domain) {
            constexpr std::uint64_t kKhzPerMhz = 1000;
            const PllSearch search(kCrystalKhz, megahertz[domain] * kKhzPerMhz);
            settings_[domain] = search.found() ? encodePll(search.dividers()) : 0;
        }
        die_.settle(coreRates());
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Throttles the graphics cores, with one of the values of the register.
    void setThrottle(std::uint32_t throttle);

    /// What all domains run at.
    DomainHertz hertz() const;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(settings_);
        for (std::uint32_t& mode : modes_) {
            visit.upTo(mode, VEK_CLOCK_OFF);
        }
        visit.upTo(throttle_, clock_unit::kThrottleStopped);
    }

private:
    constexpr Rate rate(std::size_t domain) const
    {
        const ClockDomain& facts = kClockDomains[domain];
        return domainRate({.setting = settings_[domain],
                           .bankMode = modes_[facts.bank],
                           .coreMode = modes_[facts.core],
                           .throttle = facts.throttled ? throttle_ : clock_unit::kThrottleNone});
    }

    constexpr CoreRates coreRates() const
    {
        return {.core3d = rate(VEK_CLOCK_3D).gigahertz(),
                .shader = rate(VEK_CLOCK_3D_SHADER).gigahertz(),
                .core2d = rate(VEK_CLOCK_2D).gigahertz()};
    }

    std::uint32_t* writable(std::uint64_t address);
    void tellRates();

    Die& die_;
    ClockFollower* follower_;
    std::array<std::uint32_t, clock_unit::kDomains> settings_{};
    // The first one, of no source, stays on.
    std::array<std::uint32_t, clock_unit::kSources> modes_{};
    std::uint32_t throttle_ = clock_unit::kThrottleNone;
};

}  // namespace vek

#endif
