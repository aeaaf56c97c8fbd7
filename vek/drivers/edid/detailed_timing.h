#ifndef VEK_DRIVERS_EDID_DETAILED_TIMING_H
#define VEK_DRIVERS_EDID_DETAILED_TIMING_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"
#include "drivers/edid/timing.h"

namespace vek::edid
{

constexpr std::size_t kDetailedTimingSize = 18;

/// A detailed timing descriptor of E-EDID 1.4, section 3.10.2.
struct DetailedTiming {
    Timing timing;
    unsigned widthMm;   ///< Of the picture; 0 when not stated, as the height.
    unsigned heightMm;  ///< Of the picture.
    unsigned flags;     ///< The descriptor's last byte.

    /// Sync on a line of its own for each direction; other kinds state no vertical polarity.
    [[nodiscard]] constexpr bool separateSync() const { return (flags >> 3 & 3) == 3; }

    /// Sync without separate lines, yet not of analogue form.
    [[nodiscard]] constexpr bool digitalCompositeSync() const { return (flags >> 3 & 3) == 2; }
};

/// Whether 18 bytes hold a detailed timing; else they hold a display descriptor or nothing.
bool isDetailedTiming(Bytes descriptor);

DetailedTiming parseDetailedTiming(Bytes descriptor);

/// Why a display cannot show a timing, null when nothing speaks against it.
const char* impossibility(const Timing& timing);

/// Prints a detailed timing under its running number, and notes what is wrong with it.
void printDetailedTiming(Context& context, Bytes descriptor);

}  // namespace vek::edid

#endif
