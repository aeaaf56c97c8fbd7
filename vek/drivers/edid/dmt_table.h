#ifndef VEK_DRIVERS_EDID_DMT_TABLE_H
#define VEK_DRIVERS_EDID_DMT_TABLE_H

#include "drivers/edid/timing.h"

namespace vek::edid
{

/// The timing of a mode id of VESA DMT 1.0 revision 13, null for ids that are not assigned.
const Timing* findDmt(unsigned id);

/// The mode id that a two-byte standard timing code stands for, 0 when none does. @param code first byte in bits 15-8
unsigned dmtOfStandardCode(unsigned code);

}  // namespace vek::edid

#endif
