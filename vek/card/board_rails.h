#ifndef VEK_CARD_BOARD_RAILS_H
#define VEK_CARD_BOARD_RAILS_H

#include <array>
#include <cstdint>

namespace vek
{

/// A supply rail with a sense resistor in it.
struct MonitoredRail {
    std::int32_t microvolts;    ///< At the source's end of the resistor.
    std::int32_t milliamperes;  ///< Into the load.
    std::int32_t milliohms;     ///< The resistor.

    /// Voltage over the resistor, in microvolts.
    constexpr std::int32_t drop() const { return milliamperes * milliohms; }

    /// Voltage at the load's end of the resistor, in microvolts.
    constexpr std::int32_t loadMicrovolts() const { return microvolts - drop(); }
};

/// What the power monitors of a board are connected to. Each pair of inputs of the LTC2990 and the LTC2991 is at the
/// two ends of a resistor, the lower number at the source; the INA3221 measures the bus voltage at the load.
struct BoardRails {
    std::array<MonitoredRail, 2> ltc2990;
    std::array<MonitoredRail, 4> ltc2991;
    std::array<MonitoredRail, 3> ina3221;
    std::int32_t monitorSupply;     ///< Of the LTC2990 and the LTC2991, in microvolts.
    std::int32_t boardTemperature;  ///< In thousandths of a degree Celsius.
};

}  // namespace vek

#endif
