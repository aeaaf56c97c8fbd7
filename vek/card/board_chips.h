#ifndef VEK_CARD_BOARD_CHIPS_H
#define VEK_CARD_BOARD_CHIPS_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "card/board_rails.h"
#include "card/saa7111a.h"

namespace vek
{

/// Where on the board's I2C channels a chip is soldered.
struct ChipSeat {
    std::uint8_t channel = 0;
    std::uint8_t address = 0;  ///< 7 bits; 0, the general call, where there is no chip.
    bool dead = false;         ///< The chip does not acknowledge its address.

    constexpr bool fitted() const { return address != 0; }
    constexpr bool operator==(const ChipSeat&) const = default;
};

/// A video decoder with what is connected to its input.
struct DecoderFacts {
    ChipSeat seat;
    VideoSignal signal = VideoSignal::kNone;

    constexpr bool operator==(const DecoderFacts&) const = default;
};

/// An LTC2990 or LTC2991. Each pair of its inputs is at the two ends of a resistor, the lower number at the source.
template <std::size_t Rails>
struct Ltc299xFacts {
    ChipSeat seat;
    std::array<MonitoredRail, Rails> rails{};
    std::int32_t supply = 0;       ///< Of the chip, in microvolts.
    std::int32_t temperature = 0;  ///< Of the chip, in thousandths of a degree Celsius.

    constexpr bool operator==(const Ltc299xFacts&) const = default;
};

/// An INA3221, which measures the bus voltage at the load's end of each resistor.
struct Ina3221Facts {
    ChipSeat seat;
    std::array<MonitoredRail, 3> rails{};

    constexpr bool operator==(const Ina3221Facts&) const = default;
};

/// What is on the I2C channels of a board.
struct BoardChips {
    static constexpr std::size_t kChannels = 4;
    static constexpr std::size_t kMostMonitors = 2;  ///< Power monitors of each kind.
    static constexpr std::size_t kDecoders = 2;

    ChipSeat eeprom{};
    std::array<DecoderFacts, kDecoders> decoders{};  ///< By the zoom-video port that they feed.
    std::array<Ltc299xFacts<2>, kMostMonitors> ltc2990{};
    std::array<Ltc299xFacts<4>, kMostMonitors> ltc2991{};
    std::array<Ina3221Facts, kMostMonitors> ina3221{};

    constexpr bool operator==(const BoardChips&) const = default;
};

}  // namespace vek

#endif
