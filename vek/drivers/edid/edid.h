/**
 * @file edid.h
 * Decodes a display's EDID to readable text: VESA E-EDID 1.4 (base block and its extensions), CTA-861-I, HDMI 1.4b and
 * 2.1, DisplayID 1.3 and 2.0, with the timings of VESA DMT 1.0 revision 13, CVT 1.2 and GTF 1.1. Bytes of any length
 * and content are safe: what is missing is left out, what is wrong is reported.
 */
#ifndef VEK_DRIVERS_EDID_EDID_H
#define VEK_DRIVERS_EDID_EDID_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

#include "vek.h"

namespace vek
{

/** What can be said of an EDID as a whole (VESA E-EDID 1.4, section 3). Blocks have 128 bytes. */
struct EdidVerdict {
    bool headerValid;        /**< bytes 0 to 7 are 00 FF FF FF FF FF FF 00 */
    bool allChecksumsValid;  /**< every whole block sums up to 0 modulo 256, and there is one at least */
    std::size_t wholeBlocks; /**< blocks that are there in full, the base block included */
    /** Blocks that the EDID says it has, the base block included: from the extension count of the base block, or of an
        HDMI Forum EDID Extension Override Data Block in the first extension. 1 when the base block is not whole. */
    std::size_t declaredBlocks;

    /** @return whether the EDID can be relied on */
    [[nodiscard]] constexpr bool valid() const
    {
        return headerValid && allChecksumsValid && wholeBlocks >= declaredBlocks;
    }
};

/** Checks header, checksums and length. @param edid of any length */
EdidVerdict checkEdid(std::span<const std::uint8_t> edid);

/** Prints an EDID decoded, the verdict on each block's checksum, and the errors and oddities at the end.
    @param out receives the text; errors of the stream are its owner's to look at
    @param edid of any length; the first 256 blocks are decoded
    @param withExtensions false leaves all but the base block out */
void printEdid(std::FILE* out, std::span<const std::uint8_t> edid, bool withExtensions);

/** Finds the first detailed timing, which is the preferred one: of the base block, else of the CTA-861 extensions.
    @param mode receives it, the vertical fields in lines of a frame also when it is interlaced; polarities are left 0
    where the descriptor does not state them
    @return false, with `mode` untouched, when there is none or it is impossible */
bool preferredTiming(std::span<const std::uint8_t> edid, VekDisplayMode& mode);

}  // namespace vek

#endif
