#ifndef VEK_CARD_SENSOR_UNIT_H
#define VEK_CARD_SENSOR_UNIT_H

#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "card/chip_facts.h"
#include "card/die.h"

namespace vek
{

/// Sensors that have died, one bit for each site. Their readings are never valid.
struct SensorFaults {
    std::uint8_t temperatures = 0;
    std::uint8_t voltages = 0;
    std::uint8_t processes = 0;  ///< All kinds of the site.

    constexpr bool operator==(const SensorFaults&) const = default;
};

/// A sensor unit as its register file says (drivers/sensors.h), on a die. Writes are refused with VEK_PROTECTED.
class SensorUnit final : public AddressSpace
{
public:
    constexpr SensorUnit(Die& die, const ProcessSites& process, const SensorFaults& faults = {})
        : die_(die), process_(process), faults_(faults)
    {
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    std::uint32_t registerAt(std::uint64_t address);
    std::uint32_t readingAtSite(std::uint64_t address, std::size_t site);

    Die& die_;
    ProcessSites process_;
    SensorFaults faults_;
};

}  // namespace vek

#endif
