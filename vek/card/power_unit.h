#ifndef VEK_CARD_POWER_UNIT_H
#define VEK_CARD_POWER_UNIT_H

#include <cstdint>

#include "address_space.h"
#include "card/clock_unit.h"
#include "card/die.h"

namespace vek
{

/// A power unit as its register file says (drivers/power.h). Of the power states, performance lets the graphics cores
/// run at full rate, save at half, and standby parks them; each has its voltages (card/die.h). A simulated temperature
/// goes to the fan's regulation only: the sensors keep telling what the fan then makes of the real one.
class PowerUnit final : public AddressSpace
{
public:
    constexpr PowerUnit(ClockUnit& clocks, Die& die) : clocks_(clocks), die_(die) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.upTo(state_, VEK_POWER_STANDBY);
        visit(fan_, simulation_, simulated_);
    }

private:
    void writeState(std::uint32_t value);
    void applyFan();

    ClockUnit& clocks_;
    Die& die_;
    std::uint32_t state_ = VEK_POWER_PERFORMANCE;
    std::uint32_t fan_ = 0;
    std::uint32_t simulation_ = 0;
    std::uint32_t simulated_ = 0;
};

}  // namespace vek

#endif
