#ifndef VEK_CARD_SENSOR_UNIT_H
#define VEK_CARD_SENSOR_UNIT_H

#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "card/chip_facts.h"
#include "card/die.h"

namespace vek
{

/// A sensor unit as its register file says (drivers/sensors.h), on a die. Writes are refused with VEK_PROTECTED.
class SensorUnit final : public AddressSpace
{
public:
    constexpr SensorUnit(Die& die, const ProcessSites& process) : die_(die), process_(process) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    std::uint32_t registerAt(std::uint64_t address);
    std::uint32_t readingAtSite(std::uint64_t address, std::size_t site);

    Die& die_;
    ProcessSites process_;
};

}  // namespace vek

#endif
