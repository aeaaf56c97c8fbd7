#ifndef VEK_CARD_CHIP_FACTS_H
#define VEK_CARD_CHIP_FACTS_H

#include <cstdint>

#include "card/sizes.h"

namespace vek
{

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
};

/// Size of the register region, the same on every chip of the family (PCI BAR 0 decodes all of it).
constexpr std::uint64_t kRegisterRegionSize = 16 * kMiB;

}  // namespace vek

#endif
