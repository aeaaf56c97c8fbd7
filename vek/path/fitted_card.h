#ifndef VEK_PATH_FITTED_CARD_H
#define VEK_PATH_FITTED_CARD_H

#include <cstdint>

#include "card/simulated_card.h"
#include "drivers/driver_core.h"
#include "path/access_path.h"

namespace vek
{

/// A simulated card in its slot, all of which lives as long as the program.
struct FittedCard {
    const AccessPath* path;  ///< To the card through its driver; null when there is no such card.
    SimulatedCard* card;
    DriverCore* driver;
    std::uint64_t fingerprint;  ///< fingerprintOf() its facts.
};

}  // namespace vek

#endif
