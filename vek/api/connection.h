#ifndef VEK_API_CONNECTION_H
#define VEK_API_CONNECTION_H

#include "path/access_path.h"

namespace vek
{

/// The path that the process has open, null when there is none.
extern constinit const AccessPath* openPath;

/// The same for a thread that runs beside the one which opens, closes and selects.
const AccessPath* openPathFromAnyThread();

/// The lock of the open path's card, null when there is none. Whatever does several things to the card that belong
/// together holds it, but not while it waits for anything else than the card.
inline CardLock* openCardLock()
{
    return openPath == nullptr ? nullptr : openPath->lock;
}

}  // namespace vek

#endif
