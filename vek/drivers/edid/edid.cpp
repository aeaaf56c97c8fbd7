#include "drivers/edid/edid.h"

#include <algorithm>

#include "drivers/edid/base_block.h"
#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"
#include "drivers/edid/cta_block.h"
#include "drivers/edid/detailed_timing.h"
#include "drivers/edid/displayid_block.h"
#include "drivers/edid/report.h"

namespace vek
{
namespace
{

using edid::Bytes;
using edid::Context;
using edid::Group;
using edid::kBlockSize;
using edid::Report;

constexpr std::size_t kMaxBlocks = 256;

Bytes blockOf(Bytes edid, std::size_t number)
{
    return edid.part(number * kBlockSize, kBlockSize);
}

const char* extensionName(unsigned tag)
{
    switch (tag) {
        case edid::kCtaTag:
            return "CTA-861 Extension Block";
        case 0x10:
            return "Video Timing Block Extension (VTB-EXT)";
        case 0x20:
            return "EDID 2.0 Extension";
        case 0x40:
            return "Display Information Extension (DI-EXT)";
        case 0x50:
            return "Localized String Extension (LS-EXT)";
        case 0x60:
            return "Digital Packet Video Link Extension (DPVL-EXT)";
        case edid::kDisplayIdTag:
            return "DisplayID Extension Block";
        case 0xA7:
        case 0xAF:
        case 0xBF:
            return "Display Transfer Characteristics Data Block (DTCDB)";
        case 0xF0:
            return "Block Map Extension Block";
        case 0xFF:
            return "Manufacturer-Specific Extension Block";
        default:
            return "Unknown Extension Block";
    }
}

void printBlockMap(Report& report, Bytes block)
{
    for (std::size_t i = 1; i + 1 < kBlockSize; ++i) {
        if (block.at(i) != 0) {
            std::fprintf(report.line(), "Entry %zu: tag 0x%02x, %s\n", i, block.at(i), extensionName(block.at(i)));
        }
    }
}

void printExtension(Context& context, Bytes block)
{
    constexpr unsigned kBlockMapTag = 0xF0;
    const unsigned tag = block.at(0);
    if (block.size() == kBlockSize && tag == edid::kCtaTag) {
        edid::printCtaBlock(context, block);
    } else if (block.size() == kBlockSize && tag == edid::kDisplayIdTag) {
        edid::printDisplayIdBlock(context, block);
    } else {
        if (tag == kBlockMapTag) {
            printBlockMap(context.report, block);
        }
        context.report.dump(block);
    }
}

/// What a block's last byte should be.
unsigned expectedChecksum(Bytes block)
{
    return (block.at(kBlockSize - 1) - block.sum()) & 0xFF;
}

/// Noted before all else that may be wrong with a block, so that it is kept whatever follows.
void checkChecksum(Report& report, Bytes block)
{
    const unsigned stated = block.at(kBlockSize - 1);
    const unsigned expected = expectedChecksum(block);
    if (block.size() < kBlockSize) {
        std::snprintf(report.finding(), Report::kFindingLength, "the block has only %zu of %zu bytes", block.size(),
                      kBlockSize);
    } else if (stated != expected) {
        std::snprintf(report.finding(), Report::kFindingLength, "the checksum is 0x%02x, should be 0x%02x", stated,
                      expected);
    }
}

void printChecksum(Report& report, Bytes block)
{
    const unsigned stated = block.at(kBlockSize - 1);
    const unsigned expected = expectedChecksum(block);
    if (block.size() < kBlockSize) {
        report.line("Checksum: missing");
    } else if (stated == expected) {
        std::fprintf(report.line(), "Checksum: 0x%02x (valid)\n", stated);
    } else {
        std::fprintf(report.line(), "Checksum: 0x%02x (invalid, should be 0x%02x)\n", stated, expected);
    }
}

void printBlock(Context& context, Bytes block, std::size_t number)
{
    Report& report = context.report;
    report.setBlock(number);
    std::fprintf(report.line(), "Block %zu, %s:\n", number, number == 0 ? "Base EDID" : extensionName(block.at(0)));
    const Group group(report);
    checkChecksum(report, block);
    if (number == 0) {
        edid::printBaseBlock(context, block);
    } else {
        printExtension(context, block);
    }
    printChecksum(report, block);
}

void checkBlockCount(Report& report, const EdidVerdict& verdict, std::size_t size)
{
    if (size == 0) {
        report.finding("there are no bytes");
    }
    if (verdict.wholeBlocks < verdict.declaredBlocks) {
        std::snprintf(report.finding(), Report::kFindingLength, "%zu of %zu declared blocks are missing",
                      verdict.declaredBlocks - verdict.wholeBlocks, verdict.declaredBlocks);
    } else if (size > verdict.declaredBlocks * kBlockSize) {
        std::snprintf(report.finding(), Report::kFindingLength, "%zu bytes follow the declared blocks",
                      size - verdict.declaredBlocks * kBlockSize);
    }
}

void fillMode(const edid::DetailedTiming& detailed, VekDisplayMode& mode)
{
    const edid::Timing& timing = detailed.timing;
    const bool interlaced = timing.scan != edid::Scan::kProgressive;
    const std::int32_t fields = interlaced ? 2 : 1;
    const edid::Axis& horizontal = timing.horizontal;
    const edid::Axis& vertical = timing.vertical;
    mode.clock = static_cast<std::int32_t>(timing.clockKhz);
    mode.hdisplay = horizontal.active;
    mode.hsync_start = horizontal.active + horizontal.border + horizontal.frontPorch;
    mode.hsync_end = mode.hsync_start + horizontal.sync;
    mode.htotal = horizontal.total();
    mode.vdisplay = vertical.active * fields;
    mode.vsync_start = (vertical.active + vertical.border + vertical.frontPorch) * fields;
    mode.vsync_end = mode.vsync_start + vertical.sync * fields;
    mode.vtotal = vertical.total() * fields + (interlaced ? 1 : 0);
    mode.flags = 0;
    if (detailed.separateSync() || detailed.digitalCompositeSync()) {
        mode.flags |= horizontal.positiveSync ? VEK_HSYNC_POSITIVE : VEK_HSYNC_NEGATIVE;
    }
    if (detailed.separateSync()) {
        mode.flags |= vertical.positiveSync ? VEK_VSYNC_POSITIVE : VEK_VSYNC_NEGATIVE;
    }
}

/// The first detailed timing of an EDID, empty when it has none.
Bytes firstDetailedTiming(Bytes edid)
{
    for (std::size_t i = 0; i < edid::kDescriptorCount; ++i) {
        const std::size_t offset = edid::kDescriptorsOffset + i * edid::kDetailedTimingSize;
        const Bytes descriptor = blockOf(edid, 0).part(offset, edid::kDetailedTimingSize);
        if (edid::isDetailedTiming(descriptor)) {
            return descriptor;
        }
    }
    for (std::size_t number = 1; number < kMaxBlocks; ++number) {
        const Bytes block = blockOf(edid, number);
        const Bytes timings = block.at(0) == edid::kCtaTag ? edid::ctaDetailedTimings(block) : Bytes();
        if (edid::isDetailedTiming(timings)) {
            return timings.part(0, edid::kDetailedTimingSize);
        }
    }
    return {};
}

}  // namespace

EdidVerdict checkEdid(std::span<const std::uint8_t> edid)
{
    const Bytes bytes(edid);
    EdidVerdict verdict{edid::hasEdidHeader(bytes), false, bytes.size() / kBlockSize, 1};
    if (verdict.wholeBlocks == 0) {
        return verdict;
    }
    verdict.declaredBlocks += bytes.at(edid::kExtensionCountOffset);
    const Bytes first = blockOf(bytes, 1);
    if (first.size() == kBlockSize && first.at(0) == edid::kCtaTag) {
        verdict.declaredBlocks =
            std::max<std::size_t>(verdict.declaredBlocks, edid::overriddenExtensionCount(first) + 1);
    }
    verdict.allChecksumsValid = true;
    for (std::size_t number = 0; number < verdict.wholeBlocks; ++number) {
        verdict.allChecksumsValid = verdict.allChecksumsValid && blockOf(bytes, number).sum() == 0;
    }
    return verdict;
}

void printEdid(std::FILE* out, std::span<const std::uint8_t> edid, bool withExtensions)
{
    const Bytes bytes(edid);
    const EdidVerdict verdict = checkEdid(edid);
    const std::size_t present = std::min(kMaxBlocks, (bytes.size() + kBlockSize - 1) / kBlockSize);
    Report report(out);
    Context context{report};
    const std::size_t wanted = withExtensions ? present : std::min<std::size_t>(present, 1);
    std::fprintf(report.line(), "EDID: %zu bytes\n", bytes.size());
    checkBlockCount(report, verdict, bytes.size());
    for (std::size_t number = 0; number < wanted; ++number) {
        printBlock(context, blockOf(bytes, number), number);
    }
    report.printFindings();
}

bool preferredTiming(std::span<const std::uint8_t> edid, VekDisplayMode& mode)
{
    const Bytes descriptor = firstDetailedTiming(Bytes(edid));
    if (descriptor.empty()) {
        return false;
    }
    const edid::DetailedTiming detailed = edid::parseDetailedTiming(descriptor);
    if (edid::impossibility(detailed.timing) != nullptr) {
        return false;
    }
    fillMode(detailed, mode);
    return true;
}

}  // namespace vek
