#ifndef VEK_API_CONNECTION_H
#define VEK_API_CONNECTION_H

#include "path/access_path.h"

namespace vek
{

/// The path that the process has open, null when there is none.
extern constinit const AccessPath* openPath;

/// The same for a thread that runs beside the one which opens, closes and selects.
const AccessPath* openPathFromAnyThread();

}  // namespace vek

#endif
