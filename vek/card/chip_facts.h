#ifndef VEK_CARD_CHIP_FACTS_H
#define VEK_CARD_CHIP_FACTS_H

#include <array>
#include <cstdint>

#include "card/sizes.h"
#include "drivers/chip_units.h"
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

/// What the control register of an AXI monitor takes (drivers/axi_monitor.h).
struct AxiCommands {
    std::uint32_t start;
    std::uint32_t stop;  ///< With a timer only.
    std::uint32_t final;
    std::uint32_t clear;
};

/// The AXI monitor of a chip, and the masters that it watches, the first `masterCount` of them.
struct AxiMonitorFacts {
    std::uint32_t base;  ///< Where it lies in the register region.
    bool timed;          ///< A timer cuts the run into spans.
    AxiCommands commands;
    std::uint8_t masterCount;
    std::array<UnitId, 8> masters;
};

/// A version with two numbers.
struct FirmwareVersion {
    std::uint8_t major;
    std::uint8_t minor;
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
    std::uint8_t memoryBusBits;  ///< Width of the bus to video memory.
    FirmwareVersion gop;         ///< The UEFI driver that the firmware starts the displays with.
    AxiMonitorFacts axiMonitor;
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
    .memoryBusBits = 128,
    .gop = {.major = 1, .minor = 12},
    .axiMonitor = {.base = 0x30'9000,
                   .timed = false,
                   .commands = {.start = 1, .stop = 0, .final = 2, .clear = 4},
                   .masterCount = 8,
                   .masters = {{{ChipUnit::kHost, 0},
                                {ChipUnit::k3d, 0},
                                {ChipUnit::k3d, 1},
                                {ChipUnit::k2d, 0},
                                {ChipUnit::kVpu, 0},
                                {ChipUnit::kDisplay, 0},
                                {ChipUnit::kDma, 0},
                                {ChipUnit::kMcu, 0}}}},
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
    .memoryBusBits = 64,
    .gop = {.major = 1, .minor = 9},
    .axiMonitor = {.base = 0x28'8800,
                   .timed = true,
                   .commands = {.start = 0x14, .stop = 0, .final = 1, .clear = 2},
                   .masterCount = 6,
                   .masters = {{{ChipUnit::kHost, 0},
                                {ChipUnit::k3d, 0},
                                {ChipUnit::k2d, 0},
                                {ChipUnit::kVpu, 0},
                                {ChipUnit::kDisplay, 0},
                                {ChipUnit::kDma, 0}}}},
};

/// Size of the register region, the same on every chip of the family (PCI BAR 0 decodes all of it).
constexpr std::uint64_t kRegisterRegionSize = 16 * kMiB;

}  // namespace vek

#endif
