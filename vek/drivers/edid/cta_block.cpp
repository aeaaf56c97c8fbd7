#include "drivers/edid/cta_block.h"

#include <array>
#include <cstdio>

#include "drivers/edid/cta_data_block.h"
#include "drivers/edid/detailed_timing.h"

namespace vek::edid
{
namespace
{

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kChecksumOffset = kBlockSize - 1;
constexpr unsigned kFirstWithFlags = 2;
constexpr unsigned kFirstWithDataBlocks = 3;

void printFlags(Context& context, Bytes block)
{
    constexpr std::array<const char*, 8> kNames = {nullptr,
                                                   nullptr,
                                                   nullptr,
                                                   nullptr,
                                                   "Supports YCbCr 4:2:2",
                                                   "Supports YCbCr 4:4:4",
                                                   "Supports basic audio",
                                                   "Underscans IT video formats by default"};
    context.report.flags(block.at(3), kNames);
    std::fprintf(context.report.line(), "Native detailed timings: %u\n", block.bits(3, 3, 0));
}

void printDetailedTimings(Context& context, Bytes rest)
{
    if (!isDetailedTiming(rest)) {
        return;
    }
    const Group group(context.report, "Detailed timings");
    while (isDetailedTiming(rest)) {
        printDetailedTiming(context, rest.part(0, kDetailedTimingSize));
        rest = rest.from(kDetailedTimingSize);
    }
    if (!rest.allEqual(0)) {
        context.report.finding("bytes after the last detailed timing are not 0");
    }
}

}  // namespace

Bytes ctaDataBlocks(Bytes block)
{
    const std::size_t end = block.at(2);
    if (block.at(1) < kFirstWithDataBlocks || end <= kHeaderSize || end > kChecksumOffset) {
        return {};
    }
    return block.part(kHeaderSize, end - kHeaderSize);
}

Bytes ctaDetailedTimings(Bytes block)
{
    const std::size_t start = block.at(2);
    return start < kHeaderSize ? Bytes() : block.part(0, kChecksumOffset).from(start);
}

CtaDataBlock takeCtaDataBlock(Bytes& collection)
{
    const std::size_t length = collection.bits(0, 4, 0);
    const CtaDataBlock result{collection.bits(0, 7, 5), collection.part(1, length), length + 1 > collection.size()};
    collection = collection.from(length + 1);
    return result;
}

unsigned overriddenExtensionCount(Bytes block)
{
    constexpr unsigned kExtendedTag = 7;
    constexpr unsigned kOverride = 0x78;
    Bytes collection = ctaDataBlocks(block);
    while (!collection.empty()) {
        const CtaDataBlock dataBlock = takeCtaDataBlock(collection);
        if (dataBlock.tag == kExtendedTag && dataBlock.payload.at(0) == kOverride) {
            return dataBlock.payload.at(1);
        }
    }
    return 0;
}

void printCtaCollection(Context& context, Bytes collection)
{
    while (!collection.empty()) {
        const CtaDataBlock dataBlock = takeCtaDataBlock(collection);
        if (dataBlock.overruns) {
            std::snprintf(context.report.finding(), Report::kFindingLength,
                          "a data block with tag %u reaches past the end of the data blocks", dataBlock.tag);
        }
        printCtaDataBlock(context, dataBlock);
    }
}

void printCtaBlock(Context& context, Bytes block)
{
    Report& report = context.report;
    const unsigned revision = block.at(1);
    const unsigned timingsOffset = block.at(2);
    std::fprintf(report.line(), "CTA-861 revision: %u\n", revision);
    if (revision == 0 || revision > kFirstWithDataBlocks) {
        std::snprintf(report.finding(), Report::kFindingLength, "CTA-861 revision %u is not known", revision);
    }
    if (revision >= kFirstWithFlags) {
        printFlags(context, block);
    }
    if ((timingsOffset != 0 && timingsOffset < kHeaderSize) || timingsOffset > kChecksumOffset) {
        std::snprintf(report.finding(), Report::kFindingLength, "detailed timings cannot start at byte %u",
                      timingsOffset);
    } else if (revision < kFirstWithDataBlocks && timingsOffset > kHeaderSize) {
        std::snprintf(report.finding(), Report::kFindingLength, "CTA-861 revision %u has no data blocks", revision);
    }
    printCtaCollection(context, ctaDataBlocks(block));
    printDetailedTimings(context, ctaDetailedTimings(block));
}

}  // namespace vek::edid
