#ifndef VEK_API_DP_TIMING_H
#define VEK_API_DP_TIMING_H

#include "drivers/aux_transfer.h"
#include "vek.h"

namespace vek
{

/// Reads the timing that a DisplayPort output runs at: the preferred one of its sink's EDID. `mode` is touched on
/// success only. Returns VEK_BAD_DATA when the EDID is damaged or has no timing, else as AuxI2cTransaction does.
int readDpTiming(AuxTransfer& aux, VekDisplayMode& mode);

}  // namespace vek

#endif
