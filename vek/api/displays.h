#ifndef VEK_API_DISPLAYS_H
#define VEK_API_DISPLAYS_H

#include "api/connection.h"
#include "drivers/output_timing.h"
#include "pause.h"
#include "vek.h"

namespace vek
{

/// Whether the open path leads to displays at all: VEK_OK, VEK_NO_PATH or VEK_NOT_AVAILABLE.
inline int findDisplays()
{
    if (openPath == nullptr) {
        return VEK_NO_PATH;
    }
    return openPath->registerRegion == nullptr || openPath->displays.controllers == 0 ? VEK_NOT_AVAILABLE : VEK_OK;
}

inline constinit HostPause displayPause;

/// The displays of the open path, when findDisplays() has found them.
inline Displays openDisplays()
{
    return {.registers = *openPath->registerRegion,
            .units = openPath->displays,
            .ddc = openPath->ddc,
            .aux = openPath->dpAux,
            .pause = displayPause};
}

/// Reads the timing that an output of the open path's card runs at into a caller's record.
inline int readOutputTiming(DisplayOutput output, VekDisplayMode* mode)
{
    const int found = findDisplays();
    if (found != VEK_OK) {
        return found;
    }
    const CardHold hold(openCardLock());
    return mode == nullptr ? VEK_BAD_ARGUMENT : outputTiming(openDisplays(), output, *mode);
}

}  // namespace vek

#endif
