#ifndef VEK_DRIVERS_POLLING_H
#define VEK_DRIVERS_POLLING_H

#include <cstdint>

#include "pause.h"
#include "vek.h"

namespace vek
{

/// How a device is waited for.
struct Patience {
    int eagerLooks;          ///< So often it is looked at without a pause, which would take longer than the device.
    int pausedLooks;         ///< So often it is looked at after them, each time after a pause.
    std::uint32_t interval;  ///< The pause, in microseconds.
};

/// What a look at a device found.
struct Readiness {
    int result;  ///< Of enum VekResult.
    bool ready;  ///< Has a meaning with VEK_OK only.
};

/// Looks at a device by `look`, a function without arguments that returns a Readiness, until it is ready or a look
/// fails. Returns VEK_OK, the failure, or VEK_TIMED_OUT when the patience is over.
template <typename Look>
int awaitReadiness(Pause& pause, const Patience& patience, Look look)
{
    for (int looks = 0; looks < patience.eagerLooks + patience.pausedLooks; ++looks) {
        if (looks >= patience.eagerLooks) {
            pause.microseconds(patience.interval);
        }
        const auto [result, ready] = look();
        if (result != VEK_OK || ready) {
            return result;
        }
    }
    return VEK_TIMED_OUT;
}

}  // namespace vek

#endif
