#ifndef VEK_DRIVERS_EDID_BASE_BLOCK_H
#define VEK_DRIVERS_EDID_BASE_BLOCK_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

/// Offset and number of the 18-byte descriptors of the base block.
constexpr std::size_t kDescriptorsOffset = 54;
constexpr std::size_t kDescriptorCount = 4;

constexpr std::size_t kExtensionCountOffset = 126;

/// Whether the eight bytes of the fixed header stand at the start.
bool hasEdidHeader(Bytes edid);

/// The three-letter manufacturer id of two bytes (EISA and PNP ids, five bits a letter, big-endian), zero-terminated.
struct ManufacturerId {
    char letters[4];
};
ManufacturerId manufacturerId(Bytes bytes);

/// Prints the base block (E-EDID 1.4, section 3). What lies past the end of a short block is left out.
void printBaseBlock(Context& context, Bytes block);

}  // namespace vek::edid

#endif
