#include "drivers/edp_panel.h"

#include "drivers/dpcd.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t divideRounded(std::uint64_t dividend, std::uint64_t divisor)
{
    return (dividend + divisor / 2) / divisor;
}

}  // namespace

int EdpBacklightDriver::write(std::uint64_t address, std::uint32_t value)
{
    return registers_.write(address, edp_backlight::kRegisterWidth, value);
}

int EdpBacklightDriver::wantFrequency(int hz)
{
    return hz < kMinHz || hz > kMaxHz ? VEK_BAD_ARGUMENT
                                      : write(edp_backlight::kFrequencyWanted, static_cast<std::uint32_t>(hz));
}

int EdpBacklightDriver::wantBrightness(int percent)
{
    return percent < 0 || percent > kMaxPercent
               ? VEK_BAD_ARGUMENT
               : write(edp_backlight::kBrightnessWanted, static_cast<std::uint32_t>(percent));
}

int EdpBacklightDriver::apply()
{
    const ReadResult frequency = registers_.read(edp_backlight::kFrequencyWanted, edp_backlight::kRegisterWidth);
    const ReadResult brightness = registers_.read(edp_backlight::kBrightnessWanted, edp_backlight::kRegisterWidth);
    if (frequency.result != VEK_OK || brightness.result != VEK_OK) {
        return frequency.result != VEK_OK ? frequency.result : brightness.result;
    }
    if (frequency.value < kMinHz || frequency.value > kMaxHz || brightness.value > kMaxPercent) {
        return VEK_BAD_DATA;
    }
    const std::uint64_t period = divideRounded(edp_backlight::kClockHz, frequency.value);
    const std::uint64_t duty = divideRounded(period * brightness.value, kMaxPercent);
    int result = write(edp_backlight::kPeriod, static_cast<std::uint32_t>(period));
    if (result == VEK_OK) {
        result = write(edp_backlight::kDuty, static_cast<std::uint32_t>(duty));
    }
    return result == VEK_OK
               ? write(edp_backlight::kControl, edp_backlight::kControlEnable | edp_backlight::kControlApply)
               : result;
}

int setPanelSelfTest(AuxTransfer& aux, bool on)
{
    std::uint8_t capability = 0;
    int result = aux.readDpcd(dpcd::kEdpGeneralCapability1, capability);
    if (result != VEK_OK) {
        return result;
    }
    if ((capability & dpcd::kSelfTestOverAux) == 0) {
        return VEK_NOT_AVAILABLE;
    }
    std::uint8_t configuration = 0;
    result = aux.readDpcd(dpcd::kEdpConfigurationSet, configuration);
    if (result != VEK_OK) {
        return result;
    }
    const unsigned others = configuration & ~unsigned{dpcd::kPanelSelfTestEnable};
    return aux.writeDpcd(dpcd::kEdpConfigurationSet,
                         static_cast<std::uint8_t>(others | (on ? dpcd::kPanelSelfTestEnable : 0U)));
}

}  // namespace vek
