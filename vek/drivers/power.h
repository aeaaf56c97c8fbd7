#ifndef VEK_DRIVERS_POWER_H
#define VEK_DRIVERS_POWER_H

#include <cstdint>

#include "address_space.h"
#include "vek.h"

namespace vek
{

/// The power unit: 64 registers of 32 bits. Only longs at multiples of 4 are answered; registers and bits that are not
/// listed read 0 and ignore writes.
///
///     0x000  state       bits 1:0 the power state (enum VekPowerState); a write of the state 3 is ignored
///     0x004  fan         bits 6:0 the PWM duty in per cent that holds while bit 8 is set, at most 100; while bit 8 is
///                        clear the temperature regulation sets the duty
///     0x008  fan_duty    read-only: bits 6:0 the PWM duty in effect, in per cent
///     0x00c  simulation  bit 0: the temperature regulation works from the simulated temperature
///     0x010  simulated   the simulated temperature, signed, in thousandths of a degree Celsius
namespace power_unit
{

constexpr std::uint64_t kWindowBase = 0x30'c000;  ///< Where it lies in the register region.
constexpr std::uint64_t kWindowSize = 0x100;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kState = 0x000;
constexpr std::uint64_t kFan = 0x004;
constexpr std::uint64_t kFanDuty = 0x008;
constexpr std::uint64_t kSimulation = 0x00c;
constexpr std::uint64_t kSimulated = 0x010;

constexpr std::uint32_t kStateMask = 0x3;
constexpr std::uint32_t kFanDutyMask = 0x7f;
constexpr std::uint32_t kFanManual = 1U << 8;
constexpr std::uint32_t kSimulationOn = 1U << 0;

}  // namespace power_unit

constexpr int kFanAutomatic = -1;
constexpr int kMaxFanDuty = 100;

constexpr int kEndSimulation = -1;
/// What a die can have, in thousandths of a degree Celsius.
constexpr int kMinSimulated = -40'000;
constexpr int kMaxSimulated = 150'000;

/// Drives the power unit. Results are those of enum VekResult: VEK_BAD_ARGUMENT for a number out of its range, which
/// leaves everything as it was.
class PowerDriver
{
public:
    explicit PowerDriver(AddressSpace& registers) : registers_(registers) {}

    /// Reads the power state; VEK_BAD_DATA when the register holds none. `state` is touched on success only.
    int readState(int& state);

    int setState(int state);

    /// Sets the fan to a duty in per cent, or with kFanAutomatic gives it to the temperature regulation.
    int setFan(int rate);

    /// Feeds a temperature in thousandths of a degree Celsius to the temperature regulation, or with kEndSimulation
    /// lets it work from the die's own again.
    int simulate(int temperature);

private:
    int writeLong(std::uint64_t address, std::uint32_t value);

    AddressSpace& registers_;
};

}  // namespace vek

#endif
