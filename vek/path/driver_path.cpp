#include "path/driver_path.h"

#include <array>
#include <cstddef>

#include "card/chip_facts.h"
#include "card/kernel_memory.h"
#include "card/simulated_card.h"

namespace vek
{
namespace
{

// Cards keep their state while the program runs, as cards in their slots do, whichever of them is open.
constinit SimulatedCard firstCard{kQz201};
constinit SimulatedCard secondCard{kQz202};

// The host has one kernel, whatever card is open.
constinit KernelMemory kernelMemory;

constexpr AccessPath pathTo(int index, const ChipFacts& chip, SimulatedCard& card)
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
    };
}

constinit const std::array<AccessPath, 2> driverPaths{pathTo(0, kQz201, firstCard), pathTo(1, kQz202, secondCard)};

}  // namespace

const AccessPath* driverPath(int card)
{
    if (card < 0 || static_cast<std::size_t>(card) >= driverPaths.size()) {
        return nullptr;
    }
    return &driverPaths[static_cast<std::size_t>(card)];
}

}  // namespace vek
