#ifndef VEK_CARD_CHIP_FACTS_H
#define VEK_CARD_CHIP_FACTS_H

#include <array>
#include <cstdint>

#include "card/sizes.h"
#include "drivers/output_routing.h"

namespace vek
{

/// What the firmware sets the clock domains to, in MHz, by enum VekClockDomain; 0 where there is none.
using FirmwareClocks = std::array<std::uint16_t, 9>;

/// What the process monitors of a site count, which tells the wafer's corner, by kind: SVT, LVT, ULVT.
using ProcessCounts = std::array<std::uint16_t, 3>;

/// The process monitors of a chip, at the first `count` sensor sites.
struct ProcessSites {
    std::uint8_t count;
    std::array<ProcessCounts, 2> counts;
};

/// What tells one chip of the family from another.
struct ChipFacts {
    std::uint16_t deviceId;         ///< PCI device id; its hexadecimal form is the chip number.
    std::uint8_t revision;          ///< PCI revision id.
    std::uint16_t subsystemId;      ///< PCI subsystem id of the board.
    std::uint64_t videoMemorySize;  ///< Bytes.
    std::uint8_t linkWidth;         ///< PCI Express lanes.
    std::uint8_t linkSpeed;         ///< PCI Express speed code: 3 is 8 GT/s, 4 is 16 GT/s.
    std::uint8_t ddcChannels;       ///< Monitor connectors with a DDC, up to 4.
    std::uint8_t hdmiOutputs;       ///< Up to 2; output n is on DDC channel n.
    std::uint8_t dpOutputs;         ///< DisplayPort outputs, up to 2.
    bool edpBacklight;              ///< There is an eDP panel, on the last of them.
    std::uint8_t controllers;       ///< Display controllers, up to 4.
    std::int8_t vgaDdc;             ///< DDC channel of the VGA output; kNoDdc when there is none.
    std::int8_t dvoDdc;             ///< DDC channel of the DVO output; kNoDdc when there is none.
    FirmwareClocks clocks;
    ProcessSites process;
};

constexpr ChipFacts kQz201{
    .deviceId = 0x0201,
    .revision = 0x01,
    .subsystemId = 0x2010,
    .videoMemorySize = 4 * kGiB,
    .linkWidth = 16,
    .linkSpeed = 3,
    .ddcChannels = 4,
    .hdmiOutputs = 2,
    .dpOutputs = 2,
    .edpBacklight = true,
    .controllers = 4,
    .vgaDdc = 3,
    .dvoDdc = 2,
    .clocks = {600, 0, 150, 500, 500, 1000, 1000, 600, 1200},
    .process = {.count = 2, .counts = {{{1012, 1284, 1530}, {1019, 1291, 1542}}}},
};

constexpr ChipFacts kQz202{
    .deviceId = 0x0202,
    .revision = 0x00,
    .subsystemId = 0x2020,
    .videoMemorySize = 2 * kGiB,
    .linkWidth = 8,
    .linkSpeed = 3,
    .ddcChannels = 2,
    .hdmiOutputs = 1,
    .dpOutputs = 1,
    .edpBacklight = false,
    .controllers = 2,
    .vgaDdc = 1,
    .dvoDdc = kNoDdc,
    .clocks = {500, 0, 125, 500, 400, 800, 900, 500, 1066},
    .process = {.count = 1, .counts = {{{987, 1251, 1497}}}},
};

/// Size of the register region, the same on every chip of the family (PCI BAR 0 decodes all of it).
constexpr std::uint64_t kRegisterRegionSize = 16 * kMiB;

}  // namespace vek

#endif
