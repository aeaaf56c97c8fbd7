#ifndef VEK_CARD_BOARD_RAILS_H
#define VEK_CARD_BOARD_RAILS_H

#include <cstdint>

namespace vek
{

/// A supply rail with a sense resistor in it. A power monitor has the resistor's ends at a pair of its inputs.
struct MonitoredRail {
    std::int32_t microvolts = 0;    ///< At the source's end of the resistor.
    std::int32_t milliamperes = 0;  ///< Into the load.
    std::int32_t milliohms = 0;     ///< The resistor.

    /// Voltage over the resistor, in microvolts.
    constexpr std::int32_t drop() const { return milliamperes * milliohms; }

    /// Voltage at the load's end of the resistor, in microvolts.
    constexpr std::int32_t loadMicrovolts() const { return microvolts - drop(); }

    constexpr bool operator==(const MonitoredRail&) const = default;
};

}  // namespace vek

#endif
