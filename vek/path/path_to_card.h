#ifndef VEK_PATH_PATH_TO_CARD_H
#define VEK_PATH_PATH_TO_CARD_H

#include <cstddef>

#include "card/chip_facts.h"
#include "card/kernel_memory.h"
#include "card/simulated_card.h"
#include "drivers/driver_core.h"
#include "drivers/output_routing.h"
#include "path/access_path.h"

namespace vek
{

/// The version of the simulated driver.
constexpr DriverVersion kDriverVersion{.major = 1, .minor = 4, .third = 2, .fourth = 0};

/// The first `count` channels of a card.
template <typename Target, std::size_t Most, typename ChannelOf>
constexpr Channels<Target, Most> firstChannels(std::size_t count, ChannelOf channelOf)
{
    Channels<Target, Most> channels{};
    for (std::size_t channel = 0; channel < count; ++channel) {
        channels[channel] = channelOf(channel);
    }
    return channels;
}

/// The display units of a chip.
constexpr DisplayUnits displaysOf(const ChipFacts& chip)
{
    return {.controllers = chip.controllers,
            .hdmiOutputs = chip.hdmiOutputs,
            .dpOutputs = chip.dpOutputs,
            .vgaDdc = chip.vgaDdc,
            .dvoDdc = chip.dvoDdc};
}

/// The path through the driver to a card with this index, by way of all that the card has.
constexpr AccessPath pathTo(int index, const ChipFacts& chip, SimulatedCard& card, DriverCore& driver,
                            KernelMemory& kernelMemory)
{
    return {
        .mode = VEK_ACCESS_DRIVER,
        .card = index,
        .deviceId = chip.deviceId,
        .registers = &card.registers,
        .videoMemory = &card.videoMemory,
        .kernelMemory = &kernelMemory,
        .amba = &card.amba,
        .crtc = &card.crtc,
        .pciConfiguration = &card.pciConfiguration,
        .registerRegion = &card.registers,
        .sensors = &card.sensors,
        .clocks = &card.clocks,
        .power = &card.power,
        .features = &card.features,
        .information = &card.information,
        .axiMonitor = &card.axiMonitor,
        .driver = &driver,
        .i2c = firstChannels<I2cBus, 4>(BoardI2cBuses::kChannels, [&](std::size_t n) { return card.i2c.bus(n); }),
        .spi = &card.spi,
        .ddc = firstChannels<I2cBus, 4>(chip.ddcChannels, [&](std::size_t n) { return card.ddc[n].bus(); }),
        .hdmiPhys = firstChannels<AddressSpace, 2>(chip.hdmiOutputs, [&](std::size_t n) { return &card.hdmiPhys[n]; }),
        .displays = displaysOf(chip),
        .gammaTables =
            firstChannels<AddressSpace, 4>(chip.controllers, [&](std::size_t n) { return &card.gammaTables[n]; }),
        .vgaDac = chip.vgaDdc == kNoDdc ? nullptr : &card.vgaDac,
        .dpAux = firstChannels<AuxChannel, 2>(chip.dpOutputs, [&](std::size_t n) { return &card.dpSinks[n]; }),
        .dpPhys = firstChannels<AddressSpace, 2>(chip.dpOutputs, [&](std::size_t n) { return &card.dpPhys[n]; }),
        .dpControllers =
            firstChannels<AddressSpace, 2>(chip.dpOutputs, [&](std::size_t n) { return &card.dpControllers[n]; }),
        .edpBacklight = chip.edpBacklight ? &card.edpBacklight : nullptr,
    };
}

}  // namespace vek

#endif
