#ifndef VEK_DRIVERS_INA3221_H
#define VEK_DRIVERS_INA3221_H

#include <array>
#include <cstdint>

#include "i2c_bus.h"
#include "pause.h"

namespace vek
{

/// The registers of an INA3221 of Texas Instruments, 16 bits each, the high byte first (SBOS576B, table 3 and section
/// 8.6.2).
namespace ina3221
{

constexpr std::uint8_t kConfiguration = 0x00;  ///< Below. A write starts the conversions anew.
constexpr std::uint8_t kShunt1 = 0x01;  ///< Shunt voltage of the first channel; bus voltage; those of the next channel.
constexpr std::uint8_t kChannels = 3;
constexpr std::uint8_t kCritical1 = 0x07;      ///< Limits for the first channel's shunt voltage: critical alert;
constexpr std::uint8_t kShuntSum = 0x0d;       ///< warning alert; those of the next channel.
constexpr std::uint8_t kShuntSumLimit = 0x0e;  //
constexpr std::uint8_t kMaskEnable = 0x0f;     ///< Below.
constexpr std::uint8_t kPowerValidUpper = 0x10;
constexpr std::uint8_t kPowerValidLower = 0x11;
constexpr std::uint8_t kManufacturerId = 0xfe;
constexpr std::uint8_t kDieId = 0xff;

constexpr std::uint16_t kManufacturer = 0x5449;
constexpr std::uint16_t kDie = 0x3220;

constexpr std::uint16_t kConfigurationReset = 0x8000;  ///< Sets all registers to what they hold after power-on.

/// What the configuration holds after power-on: all three channels, no averaging, 1.1 ms a conversion, shunt and bus
/// voltage over and over.
constexpr std::uint16_t kConfigurationDefault = 0x7127;

/// In the mask/enable register: all channels have been converted since it was read or the configuration written.
constexpr std::uint16_t kConversionReady = 0x0001;

/// Voltages are 13 bits in two's complement in the high bits; weights of the lowest one in microvolts.
constexpr int kVoltageShift = 3;
constexpr int kShuntWeight = 40;
constexpr int kBusWeight = 8'000;

/// What a voltage register stands for, in microvolts.
constexpr int microvoltsOf(std::uint16_t value, int weight)
{
    return (static_cast<std::int16_t>(value) >> kVoltageShift) * weight;
}

/// 7-bit address with the pin A0 at ground (table 1).
constexpr std::uint8_t kAddress = 0x40;

}  // namespace ina3221

/// The INA3221 of a bus, at its first address. A measurement sets the chip up as after power-on, which starts its
/// conversions anew, and waits for them. Results are those of enum VekResult: VEK_BAD_ARGUMENT for a resistor of 0,
/// without a transfer; VEK_BAD_DATA when something else is at the address, which is left alone; VEK_TIMED_OUT when
/// values do not get ready; and those of I2cTransaction. Outputs are touched on success only.
class Ina3221
{
public:
    Ina3221(I2cBus& bus, Pause& pause) : bus_(bus), pause_(pause) {}

    /// Measures the bus voltages of channels 1 and 2, in millivolts.
    int readVoltages(std::array<float, 2>& millivolts);

    /// Measures the currents through the shunts of channels 1 and 2, of so many milliohms, in amperes.
    int readCurrents(const std::array<unsigned, 2>& milliohms, std::array<float, 2>& amperes);

private:
    int readRegister(std::uint8_t index, std::uint16_t& value);
    int writeRegister(std::uint8_t index, std::uint16_t value);
    int identify();
    int convert();
    int measure(std::uint8_t firstRegister, int weight, std::array<int, 2>& microvolts);

    I2cBus& bus_;
    Pause& pause_;
};

}  // namespace vek

#endif
