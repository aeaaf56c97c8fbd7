#ifndef VEK_CARD_LTC299X_INPUTS_H
#define VEK_CARD_LTC299X_INPUTS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "card/board_rails.h"
#include "drivers/ltc299x.h"

namespace vek
{

/// What is at the pins of an LTC2990 or LTC2991.
template <std::size_t Inputs>
struct Ltc299xInputs {
    std::array<std::int32_t, Inputs> microvolts;  ///< V1 and so on.
    std::int32_t supplyMicrovolts;
    std::int32_t temperature;  ///< Of the chip, in thousandths of a degree Celsius.
};

/// A chip with a rail at each pair of its inputs.
template <std::size_t Rails>
constexpr Ltc299xInputs<2 * Rails> inputsAt(const std::array<MonitoredRail, Rails>& rails, std::int32_t supply,
                                            std::int32_t temperature)
{
    Ltc299xInputs<2 * Rails> inputs{{}, supply, temperature};
    for (std::size_t rail = 0; rail < Rails; ++rail) {
        inputs.microvolts[2 * rail] = rails[rail].microvolts;
        inputs.microvolts[2 * rail + 1] = rails[rail].loadMicrovolts();
    }
    return inputs;
}

namespace ltc299x
{

// How long conversions take (typical, the datasheets' electrical characteristics), in nanoseconds.
constexpr std::uint64_t kVoltageTime = 1'500'000;
constexpr std::uint64_t kTemperatureTime = 46'000'000;

/// The nearest whole quotient.
constexpr std::int64_t roundedQuotient(std::int64_t value, std::int64_t divisor)
{
    const std::int64_t half = divisor / 2;
    return (value < 0 ? value - half : value + half) / divisor;
}

/// The data of a new voltage. `weight` is that of the lowest bit, in nanovolts. What is out of range is cut.
constexpr std::uint16_t voltageData(std::int32_t microvolts, int weight)
{
    constexpr std::int64_t kLowest = -0x4000;
    constexpr std::int64_t kHighest = 0x3fff;
    const std::int64_t code = std::clamp(roundedQuotient(std::int64_t{microvolts} * 1000, weight), kLowest, kHighest);
    return static_cast<std::uint16_t>(kDataValid | (code & 0x7fff));
}

/// The data of a new temperature: 13 bits, of 1/16 degree each.
constexpr std::uint16_t temperatureData(std::int32_t thousandthsCelsius, bool kelvin)
{
    constexpr std::int32_t kZeroCelsius = 273'150;
    constexpr std::int64_t kStepsPerDegree = 16;
    const std::int32_t thousandths = thousandthsCelsius + (kelvin ? kZeroCelsius : 0);
    return static_cast<std::uint16_t>(kDataValid | (roundedQuotient(thousandths * kStepsPerDegree, 1000) & 0x1fff));
}

}  // namespace ltc299x

}  // namespace vek

#endif
