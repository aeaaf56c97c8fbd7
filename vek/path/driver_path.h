#ifndef VEK_PATH_DRIVER_PATH_H
#define VEK_PATH_DRIVER_PATH_H

#include "path/access_path.h"

namespace vek
{

/// How many cards are fitted; their indices go from 0 on.
constexpr int kDriverCards = 2;

/// The path through the driver to the simulated card with the given index, or null when no such card is fitted. On it
/// the card is as it comes up, and this program's alone.
const AccessPath* driverPath(int card);

/// Opens the path through the driver to a card: one to a card that keeps its state, and may be shared, when a folder is
/// named for that (state/kept_path.h). VEK_NO_RESPONSE when no such card is fitted, else as of keepPath(). A card that
/// has been opened stays as it is.
OpenedPath openDriverPath(int card);

}  // namespace vek

#endif
