#ifndef VEK_CARD_I2C_BOARD_BUSES_H
#define VEK_CARD_I2C_BOARD_BUSES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/eeprom_24c02.h"
#include "card/eeprom_board_record.h"
#include "card/i2c_simulated_bus.h"
#include "card/saa7111a.h"

namespace vek
{

/// The I2C channels of a board with what is soldered to them: on channel 0 the board's EEPROM at 0x50;
/// on channels 0 and 1 the decoders of the zoom-video ports 0 and 1, the first one with its IICSA pin low, the second
/// one with the pin high and nothing at its input.
class BoardI2cBuses
{
public:
    static constexpr std::size_t kChannels = 4;

    constexpr explicit BoardI2cBuses(const BoardRecord& record) : eeprom_(boardEepromWith(record)) {}

    // The buses point to the devices beside them.
    BoardI2cBuses(const BoardI2cBuses&) = delete;
    BoardI2cBuses& operator=(const BoardI2cBuses&) = delete;

    constexpr I2cBus* bus(std::size_t channel) { return &buses_[channel]; }

    constexpr const Saa7111a& videoDecoder0() const { return decoder0_; }
    constexpr const Saa7111a& videoDecoder1() const { return decoder1_; }

private:
    static constexpr std::uint8_t kEepromAddress = 0x50;

    Eeprom24c02 eeprom_;
    Saa7111a decoder0_{VideoSignal::kPal};
    Saa7111a decoder1_{VideoSignal::kNone};
    std::array<I2cSeat, 2> channel0Seats_{{{kEepromAddress, &eeprom_}, {saa7111a::kAddress, &decoder0_}}};
    std::array<I2cSeat, 1> channel1Seats_{{{saa7111a::kAddress + 1, &decoder1_}}};
    std::array<SimulatedI2cBus, kChannels> buses_{SimulatedI2cBus(channel0Seats_), SimulatedI2cBus(channel1Seats_),
                                                  SimulatedI2cBus({}), SimulatedI2cBus({})};
};

}  // namespace vek

#endif
