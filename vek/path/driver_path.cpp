#include "path/driver_path.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "card/chip_facts.h"
#include "card/dp_sinks.h"
#include "card/kernel_memory.h"
#include "card/monitor_edids.h"
#include "card/simulated_card.h"
#include "state/kept_path.h"

namespace vek
{
namespace
{

constexpr BoardRecord kFirstBoard{
    .chip = kQz201.deviceId,
    .revision = 2,
    .ddcChannels = kQz201.ddcChannels,
    .name = "TV201-4G",
    .serial = "TV20121170042",
};

constexpr BoardRecord kSecondBoard{
    .chip = kQz202.deviceId,
    .revision = 1,
    .ddcChannels = kQz202.ddcChannels,
    .name = "TV202-2G",
    .serial = "TV20222030007",
};

// The loads of a card that shows a desktop. The resistors are of 3 and 5 milliohms.
constexpr BoardRails kFirstRails{
    .ltc2990 = {{{.microvolts = 903'000, .milliamperes = 18'400, .milliohms = 3},     // core
                 {.microvolts = 1'352'000, .milliamperes = 7'250, .milliohms = 3}}},  // video memory
    .ltc2991 = {{{.microvolts = 3'310'000, .milliamperes = 1'260, .milliohms = 5},    // display outputs
                 {.microvolts = 1'806'000, .milliamperes = 2'420, .milliohms = 5},    // memory interface
                 {.microvolts = 1'204'000, .milliamperes = 1'880, .milliohms = 5},    // PCI Express PHY
                 {.microvolts = 951'000, .milliamperes = 3'100, .milliohms = 5}}},    // logic beside the core
    .ina3221 = {{{.microvolts = 12'080'000, .milliamperes = 2'160, .milliohms = 5},   // slot, 12 V
                 {.microvolts = 12'130'000, .milliamperes = 1'740, .milliohms = 5},   // power connector
                 {.microvolts = 3'328'000, .milliamperes = 1'120, .milliohms = 5}}},  // slot, 3.3 V
    .monitorSupply = 3'300'000,
    .boardTemperature = 41'500,
};

constexpr BoardRails kSecondRails{
    .ltc2990 = {{{.microvolts = 884'000, .milliamperes = 9'650, .milliohms = 3},
                 {.microvolts = 1'203'000, .milliamperes = 3'840, .milliohms = 3}}},
    .ltc2991 = {{{.microvolts = 3'296'000, .milliamperes = 720, .milliohms = 5},
                 {.microvolts = 1'797'000, .milliamperes = 1'310, .milliohms = 5},
                 {.microvolts = 1'198'000, .milliamperes = 1'040, .milliohms = 5},
                 {.microvolts = 902'000, .milliamperes = 1'570, .milliohms = 5}}},
    .ina3221 = {{{.microvolts = 12'040'000, .milliamperes = 1'480, .milliohms = 5},
                 {.microvolts = 0, .milliamperes = 0, .milliohms = 5},  // there is no power connector
                 {.microvolts = 3'304'000, .milliamperes = 640, .milliohms = 5}}},
    .monitorSupply = 3'300'000,
    .boardTemperature = 36'250,
};

constexpr AttachedMonitors kFirstMonitors{kMonitor1080p, kMonitor2160p, {}, kMonitorSxga};
constexpr AttachedMonitors kSecondMonitors{kMonitorWuxga, {}, {}, {}};

constexpr AttachedSinks kFirstSinks{kDpMonitorQhd, kEdpPanel};
constexpr AttachedSinks kSecondSinks{kDpMonitorWuxga, kNoDpSink};

using Route = std::pair<DisplayOutput, std::uint32_t>;

/// A routing with some outputs switched on, each fed by the display controller beside it.
constexpr std::uint32_t routingOf(std::initializer_list<Route> routes)
{
    std::uint32_t routing = 0;
    for (const auto& [output, controller] : routes) {
        routing = output_routing::with(routing, output, controller);
    }
    return routing;
}

// What has a display is on. The eDP panel shows the picture of the other DisplayPort output.
constexpr std::uint32_t kFirstRouting = routingOf({{DisplayOutput::kHdmi0, 0},
                                                   {DisplayOutput::kHdmi1, 1},
                                                   {DisplayOutput::kDp0, 2},
                                                   {DisplayOutput::kDp1, 2},
                                                   {DisplayOutput::kVga, 3}});
constexpr std::uint32_t kSecondRouting = routingOf({{DisplayOutput::kHdmi0, 0}, {DisplayOutput::kDp0, 1}});

// Cards keep their state while the program runs, as cards in their slots do, whichever of them is open.
constinit SimulatedCard firstCard{kQz201, kFirstBoard, kFirstRails, kFirstMonitors, kFirstSinks, kFirstRouting};
constinit SimulatedCard secondCard{kQz202, kSecondBoard, kSecondRails, kSecondMonitors, kSecondSinks, kSecondRouting};

// Their driver, which looks after each of them.
constexpr DriverVersion kDriverVersion{.major = 1, .minor = 4, .third = 2, .fourth = 0};
constinit DriverCore firstDriver{kDriverVersion, kQz201.videoMemorySize};
constinit DriverCore secondDriver{kDriverVersion, kQz202.videoMemorySize};

// The host has one kernel, whatever card is open.
constinit KernelMemory kernelMemory;

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

constexpr DisplayUnits displaysOf(const ChipFacts& chip)
{
    return {.controllers = chip.controllers,
            .hdmiOutputs = chip.hdmiOutputs,
            .dpOutputs = chip.dpOutputs,
            .vgaDdc = chip.vgaDdc,
            .dvoDdc = chip.dvoDdc};
}

constexpr AccessPath pathTo(int index, const ChipFacts& chip, SimulatedCard& card, DriverCore& driver)
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

constinit const std::array<AccessPath, kDriverCards> driverPaths{pathTo(0, kQz201, firstCard, firstDriver),
                                                                 pathTo(1, kQz202, secondCard, secondDriver)};

// Of the cards that keep their state, those that have been opened.
constinit std::array<const AccessPath*, kDriverCards> keptPaths{};

KeptCard keptCard(int index)
{
    return index == 0 ? KeptCard{index, firstCard, firstDriver, kQz201.deviceId}
                      : KeptCard{index, secondCard, secondDriver, kQz202.deviceId};
}

}  // namespace

const AccessPath* driverPath(int card)
{
    if (card < 0 || static_cast<std::size_t>(card) >= driverPaths.size()) {
        return nullptr;
    }
    return &driverPaths[static_cast<std::size_t>(card)];
}

OpenedPath openDriverPath(int card)
{
    const AccessPath* path = driverPath(card);
    if (path == nullptr) {
        return {VEK_NO_RESPONSE, nullptr};
    }
    const AccessPath*& kept = keptPaths[static_cast<std::size_t>(card)];
    const char* folder = kept == nullptr ? stateFolder() : nullptr;
    if (folder != nullptr) {
        const OpenedPath opened = keepPath(*path, keptCard(card), folder);
        if (opened.result != VEK_OK) {
            return opened;
        }
        kept = opened.path;
    }
    return {VEK_OK, kept == nullptr ? path : kept};
}

}  // namespace vek
