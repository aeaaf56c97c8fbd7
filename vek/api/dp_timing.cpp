#include "api/dp_timing.h"

#include <cstddef>
#include <span>

#include "api/dp_aux.h"
#include "drivers/aux_i2c.h"
#include "drivers/ddc_edid.h"
#include "drivers/edid/edid.h"

namespace vek
{

int readDpTiming(AuxTransfer& aux, VekDisplayMode& mode)
{
    EdidBuffer bytes;
    std::size_t length = 0;
    AuxEdidBlocks display(aux);
    const int result = readEdid(display, bytes, length);
    if (result != VEK_OK) {
        return result;
    }
    const auto edid = std::span<const std::uint8_t>(bytes).first(length);
    return checkEdid(edid).valid() && preferredTiming(edid, mode) ? VEK_OK : VEK_BAD_DATA;
}

}  // namespace vek

int vekDpModeRead(int channel, VekDisplayMode* mode)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) {
        return mode == nullptr ? VEK_BAD_ARGUMENT : vek::readDpTiming(aux, *mode);
    });
}
