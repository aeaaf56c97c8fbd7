#ifndef VEK_DRIVERS_EDID_CTA_BLOCK_H
#define VEK_DRIVERS_EDID_CTA_BLOCK_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

constexpr unsigned kCtaTag = 0x02;

/// The data blocks of a CTA-861 extension, from byte 4 up to its detailed timings; empty when it holds none.
Bytes ctaDataBlocks(Bytes block);

/// The detailed timings of a CTA-861 extension with what fills it up to the checksum; empty when it holds none.
Bytes ctaDetailedTimings(Bytes block);

/// One data block of the collection (CTA-861-I, section 7.4).
struct CtaDataBlock {
    unsigned tag;
    Bytes payload;  ///< Cut where the collection ends.
    bool overruns;  ///< The block reaches past the end of the collection.
};

/// Takes the first data block off a collection that is not empty.
CtaDataBlock takeCtaDataBlock(Bytes& collection);

/// Extension blocks that an HDMI Forum EDID Extension Override Data Block (HDMI 2.1, 10.3.6) states, 0 without one.
unsigned overriddenExtensionCount(Bytes block);

/// Prints a CTA-861 extension. @param block 128 bytes
void printCtaBlock(Context& context, Bytes block);

/// Prints a collection of CTA-861 data blocks.
void printCtaCollection(Context& context, Bytes collection);

}  // namespace vek::edid

#endif
