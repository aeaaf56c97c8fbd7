#ifndef VEK_DRIVERS_LTC299X_H
#define VEK_DRIVERS_LTC299X_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "i2c_bus.h"

/// What the monitors LTC2990 and LTC2991 of Linear Technology have in common: data registers of two bytes, the high one
/// first, and their drivers' way of talking to them. Tables named here and in their own headers are those of the
/// datasheets, LTC2990 revision E and LTC2991 revision D.
namespace vek::ltc299x
{

/// A data register (table 9 of the LTC2990, table 10 of the LTC2991): 15 bits in two's complement, and on top the bit
/// that is set with each new result and cleared when the register is read.
constexpr std::uint16_t kDataValid = 0x8000;

/// In a temperature's register (table 8 of the LTC2990): no diode is connected.
constexpr std::uint16_t kSensorOpen = 0x2000;

/// Weight of the lowest bit of a voltage against ground, in nanovolts; the supply voltage has 2.5 V subtracted.
constexpr int kSingleEndedWeight = 305'180;
constexpr int kSupplyOffsetMicrovolts = 2'500'000;

/// The code in a data register.
constexpr int codeOf(std::uint16_t data)
{
    constexpr int kSign = 0x4000;
    const int bits = data & ~kDataValid;
    return (bits ^ kSign) - kSign;
}

/// What a code stands for, in volts. `weight` is that of its lowest bit, in nanovolts.
constexpr double voltsOf(int code, int weight)
{
    return code * (weight * 1e-9);
}

/// A measurement to be done.
struct Acquisition {
    bool repeated;   ///< The chip goes on acquiring afterwards.
    bool waitReady;  ///< Wait for values that are all new; else take what the chip holds.
};

/// Most data registers that the drivers read at a time.
constexpr std::size_t kMostData = 8;

/// A chip's registers at its 7-bit address. Results are those of I2cTransaction.
class Registers
{
public:
    Registers(I2cBus& bus, std::uint8_t device) : bus_(bus), device_(device) {}

    int read(std::uint8_t index, std::uint8_t& value);
    int write(std::uint8_t index, std::uint8_t value);

    /// Reads consecutive data registers, kMostData at most, which clears their bit kDataValid.
    int readData(std::uint8_t index, std::span<std::uint16_t> data);

private:
    I2cBus& bus_;
    std::uint8_t device_;
};

}  // namespace vek::ltc299x

#endif
