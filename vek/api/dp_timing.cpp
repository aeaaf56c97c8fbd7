#include "api/channels.h"
#include "api/displays.h"
#include "vek.h"

int vekDpModeRead(int channel, VekDisplayMode* mode)
{
    const int found = vek::findChannel<&vek::AccessPath::dpAux>(channel, VEK_BAD_ARGUMENT).result;
    if (found != VEK_OK) {
        return found;
    }
    return vek::readOutputTiming(channel == 0 ? vek::DisplayOutput::kDp0 : vek::DisplayOutput::kDp1, mode);
}
