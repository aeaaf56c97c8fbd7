#ifndef VEK_DESCRIPTION_SUMMARY_H
#define VEK_DESCRIPTION_SUMMARY_H

#include <cstdio>

#include "description/described_cards.h"

namespace vek
{

/// Prints what a description says, card by card.
void printSummary(std::FILE* out, const DescribedCards& cards);

}  // namespace vek

#endif
