#ifndef VEK_API_DRIVER_CORE_H
#define VEK_API_DRIVER_CORE_H

#include "api/displays.h"
#include "drivers/driver_core.h"
#include "vek.h"

namespace vek
{

/// The driver of the open path's card. It has a meaning with VEK_OK only.
struct FoundDriver {
    int result;
    DriverCore* core;
};

/// Finds the driver, whose buffers are then as the card needs them.
inline FoundDriver findDriver()
{
    if (openPath == nullptr) {
        return {VEK_NO_PATH, nullptr};
    }
    DriverCore* core = openPath->driver;
    if (core == nullptr) {
        return {VEK_NOT_AVAILABLE, nullptr};
    }
    return {core->followCard({.displays = openDisplays(), .features = *openPath->features}), core};
}

}  // namespace vek

#endif
