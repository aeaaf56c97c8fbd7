#ifndef VEK_STATE_KEPT_PATH_H
#define VEK_STATE_KEPT_PATH_H

#include "path/access_path.h"
#include "state/card_keeper.h"

namespace vek
{

/// The environment variable that names the folder in which cards keep their state.
constexpr const char* kStateFolderVariable = "VEK_STATE_FOLDER";

/// The folder in which cards keep their state, null when they are to keep none.
const char* stateFolder();

/// Puts a card into the state that it has in a folder and goes between the card and the path to it: what is done to the
/// card on the path that comes back is done with the card's lock held, or to memories that lie in the folder. Where
/// that fails, the spaces and buses answer as CardKeeper::enter() and leave() do, I2C steps with kTimedOut and AUX
/// requests with kFailed. Results as of CardKeeper::open(). The path and what is behind it live as long as the program.
OpenedPath keepPath(const AccessPath& path, const KeptCard& card, const char* folder);

}  // namespace vek

#endif
