#ifndef VEK_DRIVERS_EDID_DISPLAYID_BLOCK_H
#define VEK_DRIVERS_EDID_DISPLAYID_BLOCK_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

constexpr unsigned kDisplayIdTag = 0x70;

/// Prints a DisplayID 1.x or 2.x section in an extension block of 128 bytes.
void printDisplayIdBlock(Context& context, Bytes block);

}  // namespace vek::edid

#endif
