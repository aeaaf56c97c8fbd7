#ifndef VEK_CARD_I2C_BOARD_BUSES_H
#define VEK_CARD_I2C_BOARD_BUSES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/board_chips.h"
#include "card/card_clock.h"
#include "card/eeprom_24c02.h"
#include "card/eeprom_board_record.h"
#include "card/i2c_simulated_bus.h"
#include "card/ina3221_monitor.h"
#include "card/ltc2990_monitor.h"
#include "card/ltc2991_monitor.h"
#include "card/saa7111a.h"

namespace vek
{

/// The I2C channels of a board with the chips that are soldered to them. The EEPROM holds the board's record.
class BoardI2cBuses
{
    // In front of the constructor, for compilers that evaluate it before they know the rest of the class.
    template <std::size_t Rails>
    static constexpr Ltc299xInputs<2 * Rails> inputsOf(const Ltc299xFacts<Rails>& facts)
    {
        return inputsAt(facts.rails, facts.supply, facts.temperature);
    }

public:
    static constexpr std::size_t kChannels = BoardChips::kChannels;

    /// The clock has to live as long as the buses.
    constexpr BoardI2cBuses(const BoardRecord& record, const BoardChips& chips, const CardClock& clock)
        : eeprom_(boardEepromWith(record)),
          decoders_{Saa7111a(chips.decoders[0].signal), Saa7111a(chips.decoders[1].signal)},
          ltc2990s_{Ltc2990Monitor(clock, inputsOf(chips.ltc2990[0])),
                    Ltc2990Monitor(clock, inputsOf(chips.ltc2990[1]))},
          ltc2991s_{Ltc2991Monitor(clock, inputsOf(chips.ltc2991[0])),
                    Ltc2991Monitor(clock, inputsOf(chips.ltc2991[1]))},
          ina3221s_{Ina3221Monitor(clock, chips.ina3221[0].rails), Ina3221Monitor(clock, chips.ina3221[1].rails)},
          buses_{SimulatedI2cBus(seat(chips, 0)), SimulatedI2cBus(seat(chips, 1)), SimulatedI2cBus(seat(chips, 2)),
                 SimulatedI2cBus(seat(chips, 3))}
    {
    }

    // The buses point to the devices beside them.
    BoardI2cBuses(const BoardI2cBuses&) = delete;
    BoardI2cBuses& operator=(const BoardI2cBuses&) = delete;

    constexpr I2cBus* bus(std::size_t channel) { return &buses_[channel]; }

    /// The decoder that feeds a zoom-video port.
    constexpr const Saa7111a& videoDecoder(std::size_t port) const { return decoders_[port]; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(eeprom_, decoders_, ltc2990s_, ltc2991s_, ina3221s_, buses_);
    }

private:
    static constexpr std::size_t kMostMonitors = BoardChips::kMostMonitors;
    static constexpr std::size_t kMostSeats = 1 + BoardChips::kDecoders + 3 * kMostMonitors;

    constexpr void seatOne(const ChipSeat& place, std::size_t channel, I2cDevice& device)
    {
        if (place.fitted() && !place.dead && place.channel == channel) {
            seats_[seatsTaken_++] = {place.address, &device};
        }
    }

    /// Gives the chips of a channel the next seats.
    constexpr std::span<const I2cSeat> seat(const BoardChips& chips, std::size_t channel)
    {
        const std::size_t first = seatsTaken_;
        seatOne(chips.eeprom, channel, eeprom_);
        for (std::size_t port = 0; port < decoders_.size(); ++port) {
            seatOne(chips.decoders[port].seat, channel, decoders_[port]);
        }
        for (std::size_t number = 0; number < kMostMonitors; ++number) {
            seatOne(chips.ltc2990[number].seat, channel, ltc2990s_[number]);
            seatOne(chips.ltc2991[number].seat, channel, ltc2991s_[number]);
            seatOne(chips.ina3221[number].seat, channel, ina3221s_[number]);
        }
        return std::span<const I2cSeat>(seats_).subspan(first, seatsTaken_ - first);
    }

    Eeprom24c02 eeprom_;
    std::array<Saa7111a, BoardChips::kDecoders> decoders_;
    std::array<Ltc2990Monitor, kMostMonitors> ltc2990s_;
    std::array<Ltc2991Monitor, kMostMonitors> ltc2991s_;
    std::array<Ina3221Monitor, kMostMonitors> ina3221s_;
    std::size_t seatsTaken_ = 0;
    std::array<I2cSeat, kMostSeats> seats_{};
    std::array<SimulatedI2cBus, kChannels> buses_;
};

}  // namespace vek

#endif
