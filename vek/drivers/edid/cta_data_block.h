#ifndef VEK_DRIVERS_EDID_CTA_DATA_BLOCK_H
#define VEK_DRIVERS_EDID_CTA_DATA_BLOCK_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"
#include "drivers/edid/cta_block.h"

namespace vek::edid
{

/// The VIC of a Short Video Descriptor, 0 when it is reserved, and whether it is marked native (CTA-861-I, 7.5.1).
struct VideoCode {
    unsigned vic;
    bool native;
};
VideoCode videoCode(unsigned descriptor);

/// Prints the timing of a VIC under its number.
void printVic(Report& report, unsigned vic, const char* note = nullptr);

/// Prints a data block under its name; what the standard leaves to others is dumped.
void printCtaDataBlock(Context& context, const CtaDataBlock& dataBlock);

/// Prints an Audio Data Block: its Short Audio Descriptors (CTA-861-I, 7.5.2).
void printAudioBlock(Report& report, Bytes payload);

/// Prints a speaker allocation of three bytes (CTA-861-I, 7.5.3).
void printSpeakers(Report& report, unsigned allocation);

/// Prints a vendor-specific block, which the vendor's 24-bit OUI starts.
enum class VendorBlock { kGeneral, kVideo, kAudio };
void printVendorBlock(Report& report, VendorBlock kind, Bytes payload);

/// Prints the sink capabilities of HDMI 2.1, section 10.3: the HDMI Forum's vendor-specific block after the OUI, and
/// its Sink Capability Data Block after the reserved bytes.
void printHdmiForumCapabilities(Report& report, Bytes data);

/// Prints the data blocks under an extended tag.
void printExtendedBlock(Context& context, unsigned tag, Bytes payload);

}  // namespace vek::edid

#endif
