#ifndef VEK_DRIVERS_EDID_DISPLAY_DESCRIPTOR_H
#define VEK_DRIVERS_EDID_DISPLAY_DESCRIPTOR_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

/// Prints a display descriptor (E-EDID 1.4, section 3.10.3). @param descriptor 18 bytes, the first two of them 0
void printDisplayDescriptor(Context& context, Bytes descriptor);

}  // namespace vek::edid

#endif
