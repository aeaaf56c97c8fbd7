#ifndef VEK_CARD_I2C_BOARD_BUSES_H
#define VEK_CARD_I2C_BOARD_BUSES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/board_rails.h"
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

/// The I2C channels of a board with what is soldered to them: on channel 0 the board's EEPROM at 0x50;
/// on channels 0 and 1 the decoders of the zoom-video ports 0 and 1, the first one with its IICSA pin low, the second
/// one with the pin high and nothing at its input; the power monitors of `rails`, the LTC2990 and the LTC2991 at their
/// first addresses on channel 1, the INA3221 on channel 2.
class BoardI2cBuses
{
public:
    static constexpr std::size_t kChannels = 4;

    /// The clock has to live as long as the buses.
    constexpr BoardI2cBuses(const BoardRecord& record, const BoardRails& rails, const CardClock& clock)
        : eeprom_(boardEepromWith(record)),
          ltc2990_(clock, inputsAt(rails.ltc2990, rails.monitorSupply, rails.boardTemperature)),
          ltc2991_(clock, inputsAt(rails.ltc2991, rails.monitorSupply, rails.boardTemperature)),
          ina3221_(clock, rails.ina3221)
    {
    }

    // The buses point to the devices beside them.
    BoardI2cBuses(const BoardI2cBuses&) = delete;
    BoardI2cBuses& operator=(const BoardI2cBuses&) = delete;

    constexpr I2cBus* bus(std::size_t channel) { return &buses_[channel]; }

    constexpr const Saa7111a& videoDecoder0() const { return decoder0_; }
    constexpr const Saa7111a& videoDecoder1() const { return decoder1_; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(eeprom_, decoder0_, decoder1_, ltc2990_, ltc2991_, ina3221_, buses_);
    }

private:
    static constexpr std::uint8_t kEepromAddress = 0x50;

    Eeprom24c02 eeprom_;
    Saa7111a decoder0_{VideoSignal::kPal};
    Saa7111a decoder1_{VideoSignal::kNone};
    std::array<I2cSeat, 2> channel0Seats_{{{kEepromAddress, &eeprom_}, {saa7111a::kAddress, &decoder0_}}};
    Ltc2990Monitor ltc2990_;
    Ltc2991Monitor ltc2991_;
    Ina3221Monitor ina3221_;
    std::array<I2cSeat, 3> channel1Seats_{{{saa7111a::kAddress + 1, &decoder1_},
                                           {ltc2990::kFirstAddress, &ltc2990_},
                                           {ltc2991::kFirstAddress, &ltc2991_}}};
    std::array<I2cSeat, 1> channel2Seats_{{{ina3221::kAddress, &ina3221_}}};
    std::array<SimulatedI2cBus, kChannels> buses_{SimulatedI2cBus(channel0Seats_), SimulatedI2cBus(channel1Seats_),
                                                  SimulatedI2cBus(channel2Seats_), SimulatedI2cBus({})};
};

}  // namespace vek

#endif
