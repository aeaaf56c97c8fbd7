#ifndef VEK_DESCRIPTION_CHIPS_READER_H
#define VEK_DESCRIPTION_CHIPS_READER_H

#include "card/board_chips.h"
#include "description/table_reader.h"

namespace vek
{

/// Reads the chips on the I2C channels of a card, [[card.i2c]].
void readChips(TableReader& card, BoardChips& chips);

}  // namespace vek

#endif
