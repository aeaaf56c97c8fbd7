#ifndef VEK_DRIVERS_EDID_CONTEXT_H
#define VEK_DRIVERS_EDID_CONTEXT_H

#include <array>
#include <cstddef>

#include "drivers/edid/bytes.h"
#include "drivers/edid/report.h"

namespace vek::edid
{

/// What one part of an EDID must know of those before it.
struct Context {
    static constexpr std::size_t kMaxVideoCodes = 256;

    Report& report;
    unsigned revision = 0;          ///< Of the EDID 1.x structure.
    unsigned detailedTimings = 0;   ///< Detailed timings so far: those of base and CTA-861 blocks are counted together.
    unsigned extensionTimings = 0;  ///< Timings of DisplayID's kinds in CTA-861 blocks so far.
    bool cvtSupported = false;      ///< The range limits say that the display takes timings of CVT.
    unsigned productNames = 0;
    std::size_t videoCodeCount = 0;
    std::array<unsigned, kMaxVideoCodes> videoCodes{};  ///< VICs of the video data blocks, in order.
};

}  // namespace vek::edid

#endif
