/// What the commands of the display and bus interfaces print alike.
#ifndef TOVIRA_PARSE_DISPLAY_DISPLAY_OUTPUT_H
#define TOVIRA_PARSE_DISPLAY_DISPLAY_OUTPUT_H

#include <cstdint>

#include "vek.h"

/// How a run of registers stands on the screen.
struct RegisterRunLayout {
    int itemsPerLine;
    int addressDigits;  ///< fewest digits of the address that leads a line
    int digits;         ///< fewest digits of an item
};

/// Prints item `index` (from 0) of a run: behind the item before it, or on a new line led by its address. The first
/// item begins its line where the cursor is; the last one is not followed by a line end.
void printRunItem(const RegisterRunLayout& layout, int index, std::uint32_t address, std::uint32_t value);

/// Prints the heading "<output>-<channel>:" and the nine timings of a mode, a line each.
void printDisplayMode(const char* output, int channel, const VekDisplayMode& mode);

#endif
