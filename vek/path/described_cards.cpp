#include "path/described_cards.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <new>

#include "card/host_pages.h"
#include "card/stuck_memory.h"
#include "description/described_cards.h"
#include "description/load_reader.h"
#include "drivers/clocks.h"
#include "drivers/feature_switches.h"
#include "drivers/info_unit.h"
#include "drivers/power.h"
#include "drivers/sensors.h"
#include "path/path_to_card.h"

namespace vek
{
namespace
{

/// The memories of a card with bits stuck in them, each as it is reached: a device of the register region has a way of
/// its own beside the region's.
class StuckMemories
{
public:
    StuckMemories(SimulatedCard& card, StuckBits bits)
        : registers_(card.registers, 0, bits),
          sensors_(card.sensors, sensor_unit::kWindowBase, bits),
          clocks_(card.clocks, clock_unit::kWindowBase, bits),
          power_(card.power, power_unit::kWindowBase, bits),
          features_(card.features, feature_switches::kWindowBase, bits),
          information_(card.information, info_unit::kWindowBase, bits),
          axiMonitor_(card.axiMonitor, card.axiMonitor.base(), bits),
          videoMemory_(card.videoMemory, bits)
    {
    }

    /// Goes between the card and all that leads to it.
    void stepBetween(AccessPath& path, SimulatedCard& card)
    {
        path.registers = &registers_;
        path.registerRegion = &registers_;
        path.sensors = &sensors_;
        path.clocks = &clocks_;
        path.power = &power_;
        path.features = &features_;
        path.information = &information_;
        path.axiMonitor = &axiMonitor_;
        path.videoMemory = &videoMemory_;
        card.amba.setTarget(SimulatedCard::kAmbaRegisters, &registers_);
        card.amba.setTarget(SimulatedCard::kAmbaVideoMemory, &videoMemory_);
    }

private:
    StuckRegisters registers_;
    StuckRegisters sensors_;
    StuckRegisters clocks_;
    StuckRegisters power_;
    StuckRegisters features_;
    StuckRegisters information_;
    StuckRegisters axiMonitor_;
    StuckVideoMemory videoMemory_;
};

/// A described card in its slot.
struct CardSlot {
    CardSlot(int index, const CardFacts& facts, KernelMemory& kernelMemory)
        : card(facts),
          driver(kDriverVersion, facts.chip.videoMemorySize),
          path(pathTo(index, facts.chip, card, driver, kernelMemory)),
          stuckMemories(card, facts.stuckBits),
          fingerprint(fingerprintOf(facts))
    {
        card.spi.array().ship(facts.flashImage, facts.stuckBits);
        if (!facts.stuckBits.empty()) {
            stuckMemories.stepBetween(path, card);
        }
    }

    SimulatedCard card;
    DriverCore driver;
    AccessPath path;
    StuckMemories stuckMemories;
    std::uint64_t fingerprint;
};

/// The description with room for its cards, in pages that nothing else lies in.
struct Fitting {
    DescribedCards description;
    alignas(CardSlot) std::array<std::byte, sizeof(CardSlot) * kMostCards> slots;

    CardSlot& slot(std::size_t index)
    {
        return *std::launder(reinterpret_cast<CardSlot*>(slots.data() + index * sizeof(CardSlot)));
    }

    void fill(KernelMemory& kernelMemory)
    {
        for (std::size_t index = 0; index < description.count; ++index) {
            new (slots.data() + index * sizeof(CardSlot))
                CardSlot(static_cast<int>(index), description.cards[index].facts, kernelMemory);
        }
    }
};

constinit Fitting* fitting = nullptr;

/// Prints the first mistake: the others often follow from it.
void printFirstMistake(void* context, bool warning, const char* line)
{
    bool& printed = *static_cast<bool*>(context);
    if (!warning && !printed) {
        std::fprintf(stderr, "%s\n", line);
        printed = true;
    }
}

}  // namespace

int fitDescribedCards(const char* file, KernelMemory& kernelMemory)
{
    auto* const readDescription = loadDescriptionReader();
    if (readDescription == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    unsigned char* const pages = mapHostPages(sizeof(Fitting));
    if (pages == nullptr) {
        return VEK_NO_MEMORY;
    }
    auto* const made = new (pages) Fitting;
    bool printed = false;
    const DescriptionListener listener{.tell = printFirstMistake, .context = &printed};
    const int result = readDescription(file, &made->description, sizeof made->description, &listener);
    if (result != VEK_OK) {
        unmapHostPages(pages, sizeof(Fitting));
        return result;
    }
    made->fill(kernelMemory);
    fitting = made;
    return VEK_OK;
}

int describedCardCount()
{
    return fitting == nullptr ? 0 : static_cast<int>(fitting->description.count);
}

FittedCard describedCard(int index)
{
    CardSlot& slot = fitting->slot(static_cast<std::size_t>(index));
    return {&slot.path, &slot.card, &slot.driver, slot.fingerprint};
}

}  // namespace vek
