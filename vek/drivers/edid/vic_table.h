#ifndef VEK_DRIVERS_EDID_VIC_TABLE_H
#define VEK_DRIVERS_EDID_VIC_TABLE_H

#include "drivers/edid/timing.h"

namespace vek::edid
{

/// The timing of a Video Identification Code of CTA-861-I, null for codes that are reserved. Where the standard allows
/// several rates (60 and 59.94 Hz) it is the one that the code's clock is stated for.
const Timing* findVic(unsigned code);

/// The timing of an HDMI_VIC (HDMI 1.4b, 8.2.3.1), null for codes that are reserved.
const Timing* findHdmiVic(unsigned code);

}  // namespace vek::edid

#endif
