#ifndef VEK_API_DP_AUX_H
#define VEK_API_DP_AUX_H

#include "api/channels.h"
#include "drivers/aux_transfer.h"
#include "pause.h"
#include "vek.h"

namespace vek
{

/// Lets `use`, a function of an AuxTransfer that returns a result, work on the AUX channel of a DisplayPort output of
/// the open path.
template <typename Use>
int withDpAux(int channel, Use use)
{
    const auto [found, target] = findChannel<&AccessPath::dpAux>(channel, VEK_BAD_ARGUMENT);
    if (found != VEK_OK) {
        return found;
    }
    const CardHold hold(openCardLock());
    HostPause pause;
    AuxTransfer aux(*target, pause);
    return use(aux);
}

}  // namespace vek

#endif
