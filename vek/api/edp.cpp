#include "api/dp_aux.h"
#include "api/spaces.h"
#include "drivers/edp_panel.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Lets `use`, a function of the backlight that returns a result, work on that of the open path.
template <typename Use>
int withBacklight(Use use)
{
    const auto [found, registers] = findSpace<&AccessPath::edpBacklight>();
    if (found != VEK_OK) {
        return found;
    }
    const CardHold hold(openCardLock());
    EdpBacklightDriver backlight(*registers);
    return use(backlight);
}

}  // namespace
}  // namespace vek

int vekEdpEnablePwm()
{
    return vek::withBacklight([](vek::EdpBacklightDriver& backlight) { return backlight.apply(); });
}

int vekEdpPwmSet(int frequency_hz)
{
    return vek::withBacklight(
        [&](vek::EdpBacklightDriver& backlight) { return backlight.wantFrequency(frequency_hz); });
}

int vekEdpLightSet(int percent)
{
    return vek::withBacklight([&](vek::EdpBacklightDriver& backlight) { return backlight.wantBrightness(percent); });
}

int vekEdpSelfTestSet(int channel, uint8_t state)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) {
        return state > 1 ? VEK_BAD_ARGUMENT : vek::setPanelSelfTest(aux, state == 1);
    });
}
