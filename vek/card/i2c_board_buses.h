#ifndef VEK_CARD_I2C_BOARD_BUSES_H
#define VEK_CARD_I2C_BOARD_BUSES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "card/eeprom_24c02.h"
#include "card/eeprom_board_record.h"
#include "card/i2c_simulated_bus.h"

namespace vek
{

/// The I2C channels of a board with what is soldered to them: on channel 0 the board's EEPROM at 0x50.
class BoardI2cBuses
{
public:
    static constexpr std::size_t kChannels = 4;

    constexpr explicit BoardI2cBuses(const BoardRecord& record) : eeprom_(boardEepromWith(record)) {}

    // The buses point to the devices beside them.
    BoardI2cBuses(const BoardI2cBuses&) = delete;
    BoardI2cBuses& operator=(const BoardI2cBuses&) = delete;

    constexpr I2cBus* bus(std::size_t channel) { return &buses_[channel]; }

private:
    static constexpr std::uint8_t kEepromAddress = 0x50;

    Eeprom24c02 eeprom_;
    std::array<I2cSeat, 1> channel0Seats_{{{kEepromAddress, &eeprom_}}};
    std::array<SimulatedI2cBus, kChannels> buses_{SimulatedI2cBus(channel0Seats_), SimulatedI2cBus({}),
                                                  SimulatedI2cBus({}), SimulatedI2cBus({})};
};

}  // namespace vek

#endif
