#ifndef VEK_DRIVERS_LTC2991_H
#define VEK_DRIVERS_LTC2991_H

#include <array>
#include <cstdint>

#include "drivers/ltc299x.h"
#include "i2c_bus.h"
#include "pause.h"

namespace vek
{

/// The registers of an LTC2991 (tables 2 to 9 of its datasheet).
namespace ltc2991
{

constexpr std::uint8_t kStatus = 0x00;         ///< Read-only: a bit for each of V1 to V8, set while its data is new.
constexpr std::uint8_t kChannels = 0x01;       ///< Below. A write with a channel in it starts an acquisition.
constexpr std::uint8_t kControlV1ToV4 = 0x06;  ///< A control nibble for each pair, the lower one in the low bits.
constexpr std::uint8_t kControlV5ToV8 = 0x07;
constexpr std::uint8_t kControl = 0x08;       ///< Below.
constexpr std::uint8_t kPwmThreshold = 0x09;  ///< The high bits.
constexpr std::uint8_t kData = 0x0a;          ///< The data registers of the ten slots, read-only.

/// What is measured, in the order of the data registers.
enum Slot : std::uint8_t { kV1, kInternalTemperature = 8, kSupply, kSlots };
constexpr unsigned kInputs = 8;

constexpr std::uint8_t kChannelsPairs = 0xf0;             ///< A bit for each pair of inputs, V1 and V2 in the lowest.
constexpr std::uint8_t kChannelsInternal = 0x08;          ///< Internal temperature and supply voltage.
constexpr std::uint8_t kChannelsEnables = 0xf8;           //
constexpr std::uint8_t kChannelsBusy = 0x04;              ///< Read-only; always set while acquisitions are repeated.
constexpr std::uint8_t kChannelsTemperatureReady = 0x02;  ///< Read-only, as the next.
constexpr std::uint8_t kChannelsSupplyReady = 0x01;

// The control nibble of a pair.
constexpr std::uint8_t kPairDifferential = 0x1;  ///< The difference in the slot of the second input.
constexpr std::uint8_t kPairTemperature = 0x2;   ///< A diode between the two.
constexpr std::uint8_t kPairKelvin = 0x4;

constexpr std::uint8_t kControlRepeat = 0x10;  ///< Acquisitions over and over.
constexpr std::uint8_t kControlKelvin = 0x04;  ///< Of the internal temperature.

/// Weight of the lowest bit of a differential voltage, in nanovolts (table 10).
constexpr int kDifferentialWeight = 19'075;

/// 7-bit address of the first of the eight chips that a bus can have (table 1).
constexpr std::uint8_t kFirstAddress = 0x48;
constexpr int kAddresses = 8;

}  // namespace ltc2991

/// An LTC2991 at one of its addresses, driven as class Ltc2990 says of its own chip, results and all. Only the inputs
/// are acquired, without the internal temperature; what drives the PWM output stays as it is.
class Ltc2991
{
public:
    /// `addressIndex` counts the addresses upwards; any other than 0 to 7 is refused by each measurement.
    Ltc2991(I2cBus& bus, Pause& pause, int addressIndex);

    /// Measures the voltages of V1 to V8 against ground, in volts.
    int readVoltages(const ltc299x::Acquisition& acquisition, std::array<float, 8>& volts);

    /// Measures the currents through resistors of so many milliohms from V1 to V2, V3 to V4, V5 to V6 and V7 to V8, in
    /// amperes.
    int readCurrents(const ltc299x::Acquisition& acquisition, const std::array<unsigned, 4>& milliohms,
                     std::array<float, 4>& amperes);

private:
    using Data = std::array<std::uint16_t, ltc2991::kInputs>;

    int measure(std::uint8_t pairControl, std::uint8_t inputsAsked, const ltc299x::Acquisition& acquisition,
                Data& data);
    int acquire(std::uint8_t pairControl, bool repeated);
    int isSetUp(std::uint8_t pairControl, bool repeated, bool& setUp);
    int takeNew(std::uint8_t pairControl, std::uint8_t inputsAsked, bool repeated, Data& data);
    int takeHeld(std::uint8_t pairControl, std::uint8_t inputsAsked, bool repeated, Data& data);

    ltc299x::Registers registers_;
    Pause& pause_;
    bool addressExists_;
};

}  // namespace vek

#endif
