#ifndef VEK_DRIVERS_LTC2990_H
#define VEK_DRIVERS_LTC2990_H

#include <array>
#include <cstdint>

#include "drivers/ltc299x.h"
#include "i2c_bus.h"
#include "pause.h"

namespace vek
{

/// The registers of an LTC2990 (tables 3 to 7 of its datasheet).
namespace ltc2990
{

constexpr std::uint8_t kStatus = 0x00;   ///< Read-only, below.
constexpr std::uint8_t kControl = 0x01;  ///< Below.
constexpr std::uint8_t kTrigger = 0x02;  ///< Any value starts an acquisition.
constexpr std::uint8_t kData = 0x04;     ///< The data registers of the six slots, read-only.

/// What is measured, in the order of the data registers.
enum Slot : std::uint8_t { kInternalTemperature, kV1, kV2, kV3, kV4, kSupply, kSlots };

constexpr std::uint8_t kStatusBusy = 0x01;  ///< Always set while acquisitions are repeated.

/// The bit in the status register of a slot with new data.
constexpr std::uint8_t readyBit(unsigned slot)
{
    return static_cast<std::uint8_t>(0x02U << slot);
}

constexpr std::uint8_t kControlKelvin = 0x80;            ///< Temperatures in Kelvin, not in degrees Celsius.
constexpr std::uint8_t kControlSingle = 0x40;            ///< One acquisition, not over and over.
constexpr std::uint8_t kControlReserved = 0x20;          //
constexpr std::uint8_t kControlFirst = 0x08;             ///< Of the mode only what V1 and V2 are for.
constexpr std::uint8_t kControlSecond = 0x10;            ///< Of the mode only what V3 and V4 are for.
constexpr std::uint8_t kControlAll = 0x18;               ///< All of the mode, after the internal temperature.
constexpr std::uint8_t kControlMode = 0x07;              ///< What V1 to V4 are for.
constexpr std::uint8_t kControlModeDifferential = 0x06;  ///< V1 - V2 in the slot of V1, V3 - V4 in that of V3.
constexpr std::uint8_t kControlModeVoltages = 0x07;      ///< V1 to V4 against ground.

/// Weight of the lowest bit of a differential voltage, in nanovolts (table 10).
constexpr int kDifferentialWeight = 19'420;

/// 7-bit address of the first of the four chips that a bus can have (table 1).
constexpr std::uint8_t kFirstAddress = 0x4c;
constexpr int kAddresses = 4;

}  // namespace ltc2990

/// An LTC2990 at one of its addresses. A measurement sets the chip up and starts an acquisition; that of the internal
/// temperature comes first always, and takes the most time. Results are those of enum VekResult: VEK_BAD_ARGUMENT for
/// an address or a resistor that there is not, without a transfer; VEK_TIMED_OUT when values do not get ready,
/// VEK_BAD_DATA when one that was to be new is not; and those of I2cTransaction. Outputs are touched on success only.
///
/// Without waiting, what the chip holds is taken when it was set up for the same before: after a single acquisition has
/// ended, and the next one is started then, or new values of repeated ones. In any other case the result is
/// VEK_BAD_DATA, and the chip is at work for the next call.
class Ltc2990
{
public:
    /// `addressIndex` counts the addresses upwards; any other than 0 to 3 is refused by each measurement.
    Ltc2990(I2cBus& bus, Pause& pause, int addressIndex);

    /// Measures the voltages of V1 to V4 against ground, in volts.
    int readVoltages(const ltc299x::Acquisition& acquisition, std::array<float, 4>& volts);

    /// Measures the currents through resistors of so many milliohms from V1 to V2 and from V3 to V4, in amperes.
    int readCurrents(const ltc299x::Acquisition& acquisition, const std::array<unsigned, 2>& milliohms,
                     std::array<float, 2>& amperes);

private:
    using Data = std::array<std::uint16_t, 4>;

    int measure(std::uint8_t mode, std::uint8_t slotsAsked, const ltc299x::Acquisition& acquisition, Data& data);
    int acquire(std::uint8_t control);
    int takeNew(std::uint8_t control, std::uint8_t slotsAsked, Data& data);
    int takeHeld(std::uint8_t control, std::uint8_t slotsAsked, Data& data);

    ltc299x::Registers registers_;
    Pause& pause_;
    bool addressExists_;
};

}  // namespace vek

#endif
