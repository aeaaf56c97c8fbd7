#ifndef VEK_DESCRIPTION_MONITOR_READER_H
#define VEK_DESCRIPTION_MONITOR_READER_H

#include <string_view>

#include "description/described_cards.h"
#include "description/table_reader.h"

namespace vek
{

/// Reads the monitors of a card, [[card.monitor]], into its facts. The chip has to be there already. `description` is
/// the description's file.
void readMonitors(TableReader& card, std::string_view description, DescribedCard& into);

}  // namespace vek

#endif
