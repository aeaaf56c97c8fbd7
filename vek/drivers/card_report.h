#ifndef VEK_DRIVERS_CARD_REPORT_H
#define VEK_DRIVERS_CARD_REPORT_H

#include <cstdio>
#include <string_view>

#include "address_space.h"
#include "drivers/output_timing.h"
#include "drivers/video_memory.h"

namespace vek
{

/// What a report on a card is drawn from.
struct ReportSources {
    AddressSpace& pciConfiguration;
    AddressSpace& clocks;       ///< The register file of the clock unit.
    AddressSpace& information;  ///< The register file of the information unit.
    const VideoMemory& memory;
    Displays displays;
    unsigned i2cChannels;
    unsigned cards;  ///< How many the host has.
};

/// Prints one item of a card's report to `out`, or all of them for an empty keyword. Keywords, in upper case, in the
/// order of the whole report:
///
///     ID  CARD  GOP  AXI  VPU  3D  2D  DDR  3DCORE  2DCORE  VRAM  BANDWIDTH  LOAD  CHANNEL
///
/// Returns VEK_BAD_ARGUMENT for any other keyword, or the first failure of the registers.
int printCardReport(std::FILE* out, const ReportSources& card, std::string_view keyword);

}  // namespace vek

#endif
