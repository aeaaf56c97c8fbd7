#ifndef VEK_PATH_DESCRIBED_CARDS_H
#define VEK_PATH_DESCRIBED_CARDS_H

#include "card/kernel_memory.h"
#include "path/fitted_card.h"

namespace vek
{

/// Reads a card description and fits the cards that it describes, which stay for good. VEK_OK; else as of the reader
/// (description/reader.h), with a line on standard error: nothing is fitted then. VEK_NOT_AVAILABLE without the reader.
int fitDescribedCards(const char* file, KernelMemory& kernelMemory);

/// Whether cards of a description are fitted, and how many of them.
int describedCardCount();

/// One of these cards, by an index below their number.
FittedCard describedCard(int index);

}  // namespace vek

#endif
