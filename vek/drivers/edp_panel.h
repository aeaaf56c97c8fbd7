#ifndef VEK_DRIVERS_EDP_PANEL_H
#define VEK_DRIVERS_EDP_PANEL_H

#include <cstdint>

#include "address_space.h"
#include "drivers/aux_transfer.h"

namespace vek
{

/// The registers of an eDP panel's backlight controller, which makes a PWM out of a clock of 27 MHz: 32 bits each, at
/// byte addresses 0x00 to 0x1c in steps of 4. Only longs at these addresses are answered.
///
///     0x00  bl_id       read-only: the controller's kind and revision
///     0x04  bl_ctrl     control, below
///     0x08  bl_period   clocks in a period of the PWM
///     0x0c  bl_duty     clocks of a period during which the backlight is on
///     0x10  bl_period_now  read-only: the period in effect, 0 while the PWM is off
///     0x14  bl_duty_now    read-only: the duty in effect
///     0x18  bl_scratch0 for software: the frequency that is wanted next, in Hz
///     0x1c  bl_scratch1 for software: the brightness that is wanted next, in per cent
namespace edp_backlight
{

constexpr std::uint64_t kRegisterStep = 4;
constexpr std::uint64_t kRegisterCount = 8;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kId = 0x00;
constexpr std::uint64_t kControl = 0x04;
constexpr std::uint64_t kPeriod = 0x08;
constexpr std::uint64_t kDuty = 0x0c;
constexpr std::uint64_t kPeriodNow = 0x10;
constexpr std::uint64_t kDutyNow = 0x14;
constexpr std::uint64_t kFrequencyWanted = 0x18;
constexpr std::uint64_t kBrightnessWanted = 0x1c;

constexpr std::uint32_t kClockHz = 27'000'000;

/// bl_ctrl: the PWM runs.
constexpr std::uint32_t kControlEnable = 1U << 0;
/// bl_ctrl: written as 1 together with kControlEnable, period and duty come into effect; reads 0.
constexpr std::uint32_t kControlApply = 1U << 1;

}  // namespace edp_backlight

/// Drives an eDP panel's backlight. Results are those of enum VekResult.
class EdpBacklightDriver
{
public:
    static constexpr int kMinHz = 200;
    static constexpr int kMaxHz = 1'000'000;
    static constexpr int kMaxPercent = 100;

    explicit EdpBacklightDriver(AddressSpace& registers) : registers_(registers) {}

    /// Sets the frequency that is wanted next; VEK_BAD_ARGUMENT when it is out of its range.
    int wantFrequency(int hz);

    /// Sets the brightness that is wanted next; VEK_BAD_ARGUMENT when it is out of its range.
    int wantBrightness(int percent);

    /// Puts what is wanted into effect, both rounded to the nearest number of clocks. VEK_BAD_DATA when the scratch
    /// registers hold what cannot be wanted.
    int apply();

private:
    int write(std::uint64_t address, std::uint32_t value);

    AddressSpace& registers_;
};

/// Switches the self-test picture of the panel at the end of an AUX channel on or off (VESA eDP 1.3, section 3).
/// Results as of AuxTransfer, and VEK_NOT_AVAILABLE when the sink has no such picture.
int setPanelSelfTest(AuxTransfer& aux, bool on);

}  // namespace vek

#endif
