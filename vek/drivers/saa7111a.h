#ifndef VEK_DRIVERS_SAA7111A_H
#define VEK_DRIVERS_SAA7111A_H

#include <cstddef>
#include <cstdint>

#include "i2c_bus.h"

namespace vek
{

/// The SAA7111A, a decoder of analogue video with 32 registers on I2C (Philips data sheet of 15 May 1998, section 17).
/// The sub-address moves on with every byte.
namespace saa7111a
{

/// 7-bit address with the IICSA pin low; one more with the pin high.
constexpr std::uint8_t kAddress = 0x24;

constexpr std::size_t kRegisterCount = 0x20;

constexpr std::uint8_t kChipVersion = 0x00;  ///< Read-only; the version in bits 7:4.

/// Analogue input control 1: bits 2:0 choose the input. Modes 0 to 3 take composite video from AI11, AI12, AI21 and
/// AI22, modes 4 to 7 Y from AI11 or AI12 (even and odd) and C from AI21 or AI22.
constexpr std::uint8_t kInputControl = 0x02;
constexpr std::uint8_t kInputMode = 0x07;

constexpr std::uint8_t kFirstControl = kInputControl;

constexpr std::uint8_t kStatus = 0x1f;                   ///< Read-only, below.
constexpr std::uint8_t kStatusUnlocked = 1U << 6;        ///< HLCK: no line frequency to lock to.
constexpr std::uint8_t kStatus60Hz = 1U << 5;            ///< FIDT: the field frequency, 60 Hz or 50 Hz.
constexpr std::uint8_t kStatusColourDetected = 1U << 0;  ///< CODE.

}  // namespace saa7111a

/// Sets a decoder up to digitise composite video at AI11 and finds out the field frequency by itself.
/// `iicsaHigh` is the level of its IICSA pin. Returns VEK_NO_RESPONSE when no decoder answers there, else as
/// I2cTransaction does.
int setUpSaa7111a(I2cBus& bus, bool iicsaHigh);

}  // namespace vek

#endif
