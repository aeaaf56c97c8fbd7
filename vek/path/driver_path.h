#ifndef VEK_PATH_DRIVER_PATH_H
#define VEK_PATH_DRIVER_PATH_H

#include "path/access_path.h"
#include "path/fitted_card.h"

namespace vek
{

/// Fits the cards of the description that VEK_CARD_DESCRIPTION names (docs/card-description.md), if it names one; it is
/// read once. VEK_OK, or as of fitDescribedCards().
int fitCards();

/// How many cards are fitted; their indices go from 0 on. These are the built-in ones unless fitCards() has fitted
/// others.
int driverCards();

/// The card with the given index; its path is null when no such card is fitted. On this path the card is as it comes
/// up, and this program's alone.
FittedCard fittedCard(int card);

/// The path of fittedCard().
const AccessPath* driverPath(int card);

/// Fits the cards and opens the path through the driver to one of them: to a card that keeps its state, and may be
/// shared, when a folder is named for that (state/kept_path.h). VEK_NO_RESPONSE when no such card is fitted; else as of
/// fitCards() and keepPath(). A card that has been opened stays as it is.
OpenedPath openDriverPath(int card);

}  // namespace vek

#endif
