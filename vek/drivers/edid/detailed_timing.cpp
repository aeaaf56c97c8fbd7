#include "drivers/edid/detailed_timing.h"

#include <array>
#include <cstdio>

namespace vek::edid
{
namespace
{

std::int32_t field(unsigned low, unsigned high, unsigned shift)
{
    return static_cast<std::int32_t>(low | high << shift);
}

void printSync(Report& report, const DetailedTiming& detailed)
{
    const unsigned flags = detailed.flags;
    const bool serrated = (flags & 0x04) != 0;
    if (detailed.separateSync()) {
        report.line("Sync: digital separate");
    } else if (detailed.digitalCompositeSync()) {
        std::fprintf(report.line(), "Sync: digital composite%s\n", serrated ? ", serrated" : "");
    } else {
        std::fprintf(report.line(), "Sync: %sanalog composite%s, on %s\n", (flags & 0x08) != 0 ? "bipolar " : "",
                     serrated ? ", serrated" : "", (flags & 0x02) != 0 ? "all three video signals" : "green only");
    }
}

void printStereo(Report& report, unsigned flags)
{
    constexpr std::array<const char*, 8> kModes = {nullptr,
                                                   nullptr,
                                                   "field sequential, right image at sync",
                                                   "2-way interleaved, right image on even lines",
                                                   "field sequential, left image at sync",
                                                   "2-way interleaved, left image on even lines",
                                                   "4-way interleaved",
                                                   "side by side interleaved"};
    const char* const mode = kModes[(flags >> 4 & 6) | (flags & 1)];
    if (mode != nullptr) {
        std::fprintf(report.line(), "Stereo: %s\n", mode);
    }
}

}  // namespace

bool isDetailedTiming(Bytes descriptor)
{
    return descriptor.size() >= kDetailedTimingSize && descriptor.at16(0) != 0;
}

DetailedTiming parseDetailedTiming(Bytes descriptor)
{
    constexpr int kClockUnitKhz = 10;
    Axis horizontal{field(descriptor.at(2), descriptor.bits(4, 7, 4), 8),
                    field(descriptor.at(8), descriptor.bits(11, 7, 6), 8),
                    field(descriptor.at(9), descriptor.bits(11, 5, 4), 8),
                    0,
                    field(descriptor.at(15), 0, 0),
                    false};
    Axis vertical{field(descriptor.at(5), descriptor.bits(7, 7, 4), 8),
                  field(descriptor.bits(10, 7, 4), descriptor.bits(11, 3, 2), 4),
                  field(descriptor.bits(10, 3, 0), descriptor.bits(11, 1, 0), 4),
                  0,
                  field(descriptor.at(16), 0, 0),
                  false};
    // The descriptor states the whole blanking, in which both borders lie.
    const std::int32_t horizontalBlanking = field(descriptor.at(3), descriptor.bits(4, 3, 0), 8);
    const std::int32_t verticalBlanking = field(descriptor.at(6), descriptor.bits(7, 3, 0), 8);
    horizontal.backPorch = horizontalBlanking - horizontal.frontPorch - horizontal.sync - 2 * horizontal.border;
    vertical.backPorch = verticalBlanking - vertical.frontPorch - vertical.sync - 2 * vertical.border;

    DetailedTiming result{};
    result.flags = descriptor.at(17);
    horizontal.positiveSync = (result.separateSync() || result.digitalCompositeSync()) && descriptor.bit(17, 1);
    vertical.positiveSync = result.separateSync() && descriptor.bit(17, 2);
    result.timing = {static_cast<std::int64_t>(descriptor.at16(0)) * kClockUnitKhz,
                     horizontal,
                     vertical,
                     descriptor.bit(17, 7) ? Scan::kInterlaced : Scan::kProgressive,
                     {0, 0}};
    result.widthMm = descriptor.at(12) | descriptor.bits(14, 7, 4) << 8;
    result.heightMm = descriptor.at(13) | descriptor.bits(14, 3, 0) << 8;
    return result;
}

const char* impossibility(const Timing& timing)
{
    if (timing.clockKhz <= 0) {
        return "no pixel clock";
    }
    if (timing.horizontal.active <= 0 || timing.vertical.active <= 0) {
        return "no picture";
    }
    if (timing.horizontal.sync <= 0 || timing.vertical.sync <= 0) {
        return "no sync pulse";
    }
    if (timing.horizontal.backPorch < 0 || timing.vertical.backPorch < 0) {
        return "blanking too short for front porch, sync and border";
    }
    return nullptr;
}

void printDetailedTiming(Context& context, Bytes descriptor)
{
    Report& report = context.report;
    const DetailedTiming detailed = parseDetailedTiming(descriptor);
    const unsigned number = ++context.detailedTimings;
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "DTD %u", number);
    report.timing(name.data(), detailed.timing);
    report.timingParts(detailed.timing, !detailed.digitalCompositeSync());
    const Group group(report);
    if (detailed.widthMm != 0 || detailed.heightMm != 0) {
        std::fprintf(report.line(), "Image size: %u mm x %u mm\n", detailed.widthMm, detailed.heightMm);
    }
    printSync(report, detailed);
    printStereo(report, detailed.flags);
    if (const char* const reason = impossibility(detailed.timing)) {
        std::snprintf(report.finding(), Report::kFindingLength, "detailed timing %u is impossible: %s", number, reason);
    }
}

}  // namespace vek::edid
