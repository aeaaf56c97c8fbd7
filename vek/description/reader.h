#ifndef VEK_DESCRIPTION_READER_H
#define VEK_DESCRIPTION_READER_H

#include <cstddef>

#include "description/described_cards.h"

/// The environment variable that names a card description.
#define VEK_CARD_DESCRIPTION_VARIABLE "VEK_CARD_DESCRIPTION"

/// The reader of card descriptions is a library of its own, which lies beside libutil_vek.so.
#define VEK_DESCRIPTION_LIBRARY "libvek_description.so"
#define VEK_DESCRIPTION_ENTRY "vekReadCardDescription"

namespace vek
{

/// Takes a line of text about a description, "FILE:LINE: KEY: what is wrong", without a line end and of printable
/// characters only. A warning leaves the description usable.
struct DescriptionListener {
    void (*tell)(void* context, bool warning, const char* line);
    void* context;
};

/// Reads a description into `cards`, which lies in memory that was 0. `size` is that of DescribedCards; another one
/// means that the caller and the reader are not of the same version. Every mistake is told, each with its line and key.
/// VEK_OK; VEK_BAD_DATA when there are mistakes, VEK_IO_ERROR when a file cannot be read, VEK_NO_MEMORY;
/// VEK_BAD_ARGUMENT for another size. `cards` have a meaning with VEK_OK only.
using ReadCardDescription = int(const char* file, DescribedCards* cards, std::size_t size,
                                const DescriptionListener* listener);

}  // namespace vek

extern "C" [[gnu::visibility("default")]] vek::ReadCardDescription vekReadCardDescription;

#endif
