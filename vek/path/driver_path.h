#ifndef VEK_PATH_DRIVER_PATH_H
#define VEK_PATH_DRIVER_PATH_H

#include "path/access_path.h"

namespace vek
{

/// How many cards are fitted; their indices go from 0 on.
constexpr int kDriverCards = 2;

/// The path through the driver to the simulated card with the given index, or null when no such card is fitted.
const AccessPath* driverPath(int card);

}  // namespace vek

#endif
