#ifndef VEK_API_LAST_EDID_H
#define VEK_API_LAST_EDID_H

#include <cstdint>
#include <span>

#include "i2c_bus.h"

namespace vek
{

/// Reads the EDID of the display on a DDC channel and keeps it as the last one. A failure leaves the one before in its
/// place. Results as of readEdid().
int fetchEdid(I2cBus& ddc);

/// The EDID that was fetched last; empty when there is none yet.
std::span<std::uint8_t> lastEdid();

}  // namespace vek

#endif
