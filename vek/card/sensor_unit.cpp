#include "card/sensor_unit.h"

#include <algorithm>

#include "card/long_registers.h"
#include "drivers/sensors.h"
#include "vek.h"

namespace vek
{
namespace
{

using namespace sensor_unit;

static_assert(Die::kSites <= kMaxSites);

/// Whether the sensor of a site is among the dead ones.
bool dead(std::uint8_t sites, std::size_t site)
{
    return (sites >> site & 1U) != 0;
}

/// The reading that stands for a code; what the converter cannot express becomes its nearest code.
std::uint32_t reading(double code)
{
    constexpr double kHalf = 0.5;
    const double rounded = std::clamp(code + kHalf, 0.0, static_cast<double>(kCodeMask));
    return kValid | static_cast<std::uint32_t>(rounded);
}

/// What the sensor of a site tells, 0 when it is dead.
std::uint32_t readingOf(std::uint8_t deadSites, std::size_t site, double code)
{
    return dead(deadSites, site) ? 0 : reading(code);
}

}  // namespace

/// The reading of a register of a site, 0 when it is none.
std::uint32_t SensorUnit::readingAtSite(std::uint64_t address, std::size_t site)
{
    if (address == temperatureOf(site)) {
        return readingOf(faults_.temperatures, site, (die_.temperature(site) - kCelsiusAtCode0) * kCodesPerCelsius);
    }
    if (address == voltageOf(site)) {
        return readingOf(faults_.voltages, site, die_.voltage(site) * kCodesPerVolt);
    }
    for (std::size_t kind = 0; site < process_.count && kind < kProcessKinds; ++kind) {
        if (address == processOf(site, kind)) {
            return dead(faults_.processes, site) ? 0 : kValid | process_.counts[site][kind];
        }
    }
    return 0;
}

std::uint32_t SensorUnit::registerAt(std::uint64_t address)
{
    if (address == kInfo) {
        return static_cast<std::uint32_t>(Die::kSites) | std::uint32_t{process_.count} << kInfoSitesBits;
    }
    for (std::size_t site = 0; site < Die::kSites; ++site) {
        const std::uint32_t found = readingAtSite(address, site);
        if (found != 0) {
            return found;
        }
    }
    return 0;
}

ReadResult SensorUnit::read(std::uint64_t address, unsigned width)
{
    return answersLong(address, width, kWindowSize) ? ReadResult{VEK_OK, registerAt(address)} : kUnanswered;
}

int SensorUnit::write(std::uint64_t address, unsigned width, std::uint64_t /*value*/)
{
    return answersLong(address, width, kWindowSize) ? VEK_PROTECTED : VEK_NO_RESPONSE;
}

}  // namespace vek
