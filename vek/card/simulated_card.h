#ifndef VEK_CARD_SIMULATED_CARD_H
#define VEK_CARD_SIMULATED_CARD_H

#include <array>
#include <cstdint>

#include "card/amba_bus.h"
#include "card/chip_facts.h"
#include "card/pci_configuration.h"
#include "card/sizes.h"
#include "card/sparse_memory.h"

namespace vek
{

/// A card with one of the chips on it, as it stands after power-on and the driver's start. What is on the card speaks
/// to its other parts through address spaces only, so a part may be replaced by one with more behaviour of its own.
///
/// AMBA map: 0x01000000 the register region, 16 MiB; 0x20000000 the board's RAM, 1 MiB; 0x40000000 the first GiB of
/// video memory.
struct SimulatedCard {
    constexpr explicit SimulatedCard(const ChipFacts& chip)
        : videoMemory(chip.videoMemorySize),
          amba(std::to_array<AmbaWindow>({
              {.base = 0x0100'0000, .length = kRegisterRegionSize, .target = &registers},
              {.base = 0x2000'0000, .length = kBoardRamSize, .target = &boardRam},
              {.base = 0x4000'0000, .length = kVideoMemoryWindowSize, .target = &videoMemory},
          })),
          pciConfiguration(chip)
    {
    }

    // The bus points into its own card.
    SimulatedCard(const SimulatedCard&) = delete;
    SimulatedCard& operator=(const SimulatedCard&) = delete;

    static constexpr std::uint64_t kBoardRamSize = kMiB;
    static constexpr std::uint64_t kVideoMemoryWindowSize = kGiB;
    static constexpr std::uint64_t kCrtcRegisters = 4096;

    SparseMemory registers{kRegisterRegionSize};
    SparseMemory videoMemory;
    SparseMemory boardRam{kBoardRamSize};
    SparseMemory crtc{kCrtcRegisters};
    AmbaBus amba;
    PciConfiguration pciConfiguration;
};

}  // namespace vek

#endif
