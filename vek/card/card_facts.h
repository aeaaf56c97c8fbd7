#ifndef VEK_CARD_CARD_FACTS_H
#define VEK_CARD_CARD_FACTS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "card/board_chips.h"
#include "card/chip_facts.h"
#include "card/dp_sink.h"
#include "card/eeprom_board_record.h"
#include "card/facts_hash.h"
#include "card/mcu.h"
#include "card/sensor_unit.h"
#include "card/stuck_bit.h"

namespace vek
{

/// A display at a connector with a DDC channel.
struct AttachedMonitor {
    bool attached = false;
    std::span<const std::uint8_t> edid{};  ///< Empty when its EDID memory does not answer.
};

/// The displays by DDC channel.
using AttachedMonitors = std::array<AttachedMonitor, 4>;

/// What is at the end of each DisplayPort output.
using AttachedSinks = std::array<DpSinkFacts, 2>;

/// What tells one simulated card from another. All that the facts point to has to live as long as a card made of them.
struct CardFacts {
    ChipFacts chip;
    BoardRecord board;
    BoardChips chips;
    AttachedMonitors monitors;
    AttachedSinks sinks;
    std::uint32_t routing = 0;  ///< What the board comes up with in the output routing register.
    McuCondition mcu = McuCondition::kRunning;
    SensorFaults sensors{};
    bool fanTurns = true;
    std::span<const std::uint8_t> flashImage{};  ///< From address 0 on; the rest of the flash is erased.
    StuckBits stuckBits{};
};

/// Where a chip sits, whether it is dead or not.
constexpr std::uint64_t placeOf(const ChipSeat& seat)
{
    return std::uint64_t{seat.channel} << 8 | seat.address;
}

/// Tells a card from any other one in whose place it cannot be put: chip, video memory, board record, the places of the
/// I2C chips, and the flash as shipped. What is plugged in or breaks leaves it the same card: displays, loads, faults.
constexpr std::uint64_t fingerprintOf(const CardFacts& facts)
{
    FactsHash hash;
    hash.add(facts.chip.deviceId);
    hash.add(facts.chip.videoMemorySize);
    hash.add(facts.board.revision);
    hash.add(facts.board.name);
    hash.add(facts.board.serial);
    hash.add(placeOf(facts.chips.eeprom));
    for (const DecoderFacts& decoder : facts.chips.decoders) {
        hash.add(placeOf(decoder.seat));
    }
    for (const auto& monitor : facts.chips.ltc2990) {
        hash.add(placeOf(monitor.seat));
    }
    for (const auto& monitor : facts.chips.ltc2991) {
        hash.add(placeOf(monitor.seat));
    }
    for (const Ina3221Facts& monitor : facts.chips.ina3221) {
        hash.add(placeOf(monitor.seat));
    }
    hash.add(facts.flashImage);
    return hash.value();
}

}  // namespace vek

#endif
