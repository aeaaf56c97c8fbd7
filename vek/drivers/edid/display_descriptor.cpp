#include "drivers/edid/display_descriptor.h"

#include <array>
#include <cstdio>

#include "drivers/edid/standard_timing.h"

namespace vek::edid
{
namespace
{

constexpr std::size_t kDataOffset = 5;
constexpr std::size_t kDataSize = 13;

/// The text of a descriptor: up to its line feed, which blanks follow.
void printText(Report& report, const char* name, Bytes data)
{
    constexpr unsigned kEnd = 0x0A;
    std::size_t length = 0;
    while (length < data.size() && data.at(length) != kEnd) {
        ++length;
    }
    std::fprintf(report.line(), "%s: ", name);
    report.quoted(data.part(0, length));
    std::fputc('\n', report.stream());
    if (length == 0 || data.part(0, length).allEqual(' ')) {
        std::snprintf(report.finding(), Report::kFindingLength, "%s: the text is empty", name);
    } else if (!data.from(length + 1).allEqual(' ')) {
        std::snprintf(report.finding(), Report::kFindingLength, "%s: bytes other than blanks follow the text", name);
    }
}

void printSecondaryGtf(Report& report, Bytes data)
{
    constexpr unsigned kStartUnitKhz = 2;
    const Group group(report, "Secondary GTF curve");
    std::fprintf(report.line(), "Start frequency: %u kHz\n", data.at(7) * kStartUnitKhz);
    std::fprintf(report.line(), "C: %.1f %%\n", data.at(8) / 2.0);
    std::fprintf(report.line(), "M: %u %%/kHz\n", data.at16(9));
    std::fprintf(report.line(), "K: %u\n", data.at(11));
    std::fprintf(report.line(), "J: %.1f %%\n", data.at(12) / 2.0);
}

void printCvtSupport(Report& report, Bytes data, unsigned maximumClockMhz)
{
    constexpr std::array<const char*, 8> kRatios = {nullptr, nullptr, nullptr, "15:9", "5:4", "16:10", "16:9", "4:3"};
    constexpr std::array<const char*, 5> kRatioNames = {"4:3", "16:9", "16:10", "5:4", "15:9"};
    constexpr std::array<const char*, 8> kScaling = {nullptr,
                                                     nullptr,
                                                     nullptr,
                                                     nullptr,
                                                     "Scaling: vertical stretch",
                                                     "Scaling: vertical shrink",
                                                     "Scaling: horizontal stretch",
                                                     "Scaling: horizontal shrink"};
    const Group group(report, "CVT support");
    std::fprintf(report.line(), "CVT version: %u.%u\n", data.bits(6, 7, 4), data.bits(6, 3, 0));
    if (const unsigned less = data.bits(7, 7, 2)) {
        std::fprintf(report.line(), "Maximum pixel clock, exact: %.2f MHz\n", maximumClockMhz - less / 4.0);
    }
    if (const unsigned pixels = (data.at(8) | data.bits(7, 1, 0) << 8) * 8) {
        std::fprintf(report.line(), "Maximum active pixels per line: %u\n", pixels);
    } else {
        report.line("Maximum active pixels per line: no limit");
    }
    {
        const Group ratios(report, "Supported aspect ratios");
        report.flags(data.at(9), kRatios);
    }
    const unsigned preferred = data.bits(10, 7, 5);
    std::fprintf(report.line(), "Preferred aspect ratio: %s\n",
                 preferred < kRatioNames.size() ? kRatioNames[preferred] : "reserved");
    constexpr std::array<const char*, 5> kBlanking = {nullptr, nullptr, nullptr, "Standard CVT blanking",
                                                      "Reduced CVT blanking"};
    report.flags(data.at(10), kBlanking);
    report.flags(data.at(11), kScaling);
    if (data.at(12) != 0) {
        std::fprintf(report.line(), "Preferred refresh rate: %u Hz\n", data.at(12));
    } else {
        report.finding("Display Range Limits: no preferred refresh rate with CVT support");
    }
    if (data.bits(9, 2, 0) != 0 || data.bits(10, 2, 0) != 0 || data.bits(11, 3, 0) != 0) {
        report.finding("Display Range Limits: reserved bits of the CVT support are set");
    }
}

/// The two limits of a rate, each of which EDID 1.4 can raise by 255. @param offsets bit 0: the minimum, bit 1: the
/// maximum
void printRange(Report& report, const char* name, const char* unit, Bytes limits, unsigned offsets)
{
    constexpr unsigned kOffset = 255;
    constexpr unsigned kMaximumOnly = 2;
    constexpr unsigned kBoth = 3;
    const unsigned low = limits.at(0) + (offsets == kBoth ? kOffset : 0);
    const unsigned high = limits.at(1) + (offsets >= kMaximumOnly ? kOffset : 0);
    std::fprintf(report.line(), "%s: %u-%u %s\n", name, low, high, unit);
    if (low > high || limits.at(0) == 0) {
        std::snprintf(report.finding(), Report::kFindingLength, "Display Range Limits: %s %u-%u %s is no range", name,
                      low, high, unit);
    }
}

const char* timingSupport(unsigned code, unsigned revision)
{
    constexpr unsigned kSecondaryGtf = 2;
    constexpr unsigned kCvt = 4;
    switch (code) {
        case 0:
            return "default GTF";
        case 1:
            return revision >= 4 ? "range limits only" : "no information";
        case kSecondaryGtf:
            return "secondary GTF";
        case kCvt:
            return "CVT";
        default:
            return "reserved";
    }
}

void printRangeLimits(Context& context, Bytes descriptor)
{
    Report& report = context.report;
    const Group group(report, "Display Range Limits");
    const Bytes data = descriptor.from(kDataOffset - 1);
    const unsigned offsets = context.revision >= 4 ? data.at(0) : 0;
    printRange(report, "Vertical rate", "Hz", data.from(1), offsets & 3);
    printRange(report, "Horizontal rate", "kHz", data.from(3), offsets >> 2 & 3);
    if (offsets >> 4 != 0 || (offsets & 3) == 1 || (offsets >> 2 & 3) == 1) {
        report.finding("Display Range Limits: reserved bits of the rate offsets are set");
    }
    constexpr unsigned kClockUnitMhz = 10;
    const unsigned clock = data.at(5) * kClockUnitMhz;
    if (clock != 0) {
        std::fprintf(report.line(), "Maximum pixel clock: %u MHz\n", clock);
    }
    const unsigned support = data.at(6);
    const char* const name = timingSupport(support, context.revision);
    std::fprintf(report.line(), "Video timing support: %s\n", name);
    constexpr unsigned kSecondaryGtf = 2;
    constexpr unsigned kCvt = 4;
    if (support == kSecondaryGtf) {
        printSecondaryGtf(report, data.from(1));
    } else if (support == kCvt) {
        printCvtSupport(report, data.from(1), clock);
    } else if (support > kCvt || support == 3) {
        std::snprintf(report.finding(), Report::kFindingLength,
                      "Display Range Limits: timing support 0x%02x is reserved", support);
    }
}

void printColorPoints(Report& report, Bytes data)
{
    constexpr std::size_t kPointSize = 5;
    constexpr unsigned kGammaElsewhere = 0xFF;
    const Group group(report, "Color Point Data");
    for (std::size_t start = 0; start < 2 * kPointSize; start += kPointSize) {
        const Bytes point = data.part(start, kPointSize);
        if (point.at(0) == 0) {
            continue;
        }
        const unsigned x = point.at(2) << 2 | point.bits(1, 3, 2);
        const unsigned y = point.at(3) << 2 | point.bits(1, 1, 0);
        std::fprintf(report.line(), "White point %u: %.4f, %.4f\n", point.at(0), x / 1024.0, y / 1024.0);
        if (point.at(4) == kGammaElsewhere) {
            std::fprintf(report.line(), "Gamma %u: given in an extension block\n", point.at(0));
        } else {
            std::fprintf(report.line(), "Gamma %u: %.2f\n", point.at(0), (point.at(4) + 100) / 100.0);
        }
    }
}

void printColorManagement(Report& report, Bytes data)
{
    constexpr std::array<const char*, 6> kNames = {"Red a3", "Red a2", "Green a3", "Green a2", "Blue a3", "Blue a2"};
    const Group group(report, "Display Color Management Data");
    std::fprintf(report.line(), "Version: %u\n", data.at(0));
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        std::fprintf(report.line(), "%s: %.2f\n", kNames[i], data.at16(1 + 2 * i) / 100.0);
    }
}

void printCvtCodes(Report& report, Bytes data)
{
    constexpr std::size_t kCodeSize = 3;
    constexpr std::size_t kCodeCount = 4;
    const Group group(report, "CVT 3-Byte Timing Codes");
    std::fprintf(report.line(), "Version: %u\n", data.at(0));
    for (std::size_t i = 0; i < kCodeCount; ++i) {
        const Bytes code = data.part(1 + i * kCodeSize, kCodeSize);
        if (!code.allEqual(0)) {
            printCvtCode(report, code);
        }
    }
}

void printUnknown(Context& context, unsigned tag, Bytes descriptor)
{
    constexpr unsigned kLastManufacturerTag = 0x0F;
    const bool manufacturers = tag <= kLastManufacturerTag;
    std::fprintf(context.report.line(), "%s descriptor 0x%02x:\n", manufacturers ? "Manufacturer-specific" : "Unknown",
                 tag);
    const Group group(context.report);
    context.report.dump(descriptor.from(kDataOffset - 1));
    if (!manufacturers) {
        std::snprintf(context.report.finding(), Report::kFindingLength, "display descriptor tag 0x%02x is reserved",
                      tag);
    }
}

void printProductName(Context& context, Bytes data)
{
    printText(context.report, "Display Product Name", data);
    if (++context.productNames == 2) {
        context.report.finding("more than one Display Product Name");
    }
}

void printDummy(Report& report, Bytes data)
{
    report.line("Dummy descriptor");
    if (!data.allEqual(0)) {
        report.finding("Dummy descriptor: its bytes are not 0");
    }
}

}  // namespace

void printDisplayDescriptor(Context& context, Bytes descriptor)
{
    Report& report = context.report;
    const unsigned tag = descriptor.at(3);
    const Bytes data = descriptor.part(kDataOffset, kDataSize);
    if (descriptor.at(2) != 0) {
        report.finding("display descriptor: byte 2 is not 0");
    }
    switch (tag) {
        case 0xFF:
            return printText(report, "Display Product Serial Number", data);
        case 0xFE:
            return printText(report, "Alphanumeric Data String", data);
        case 0xFD:
            return printRangeLimits(context, descriptor);
        case 0xFC:
            return printProductName(context, data);
        case 0xFB:
            return printColorPoints(report, data);
        case 0xFA: {
            const Group group(report, "Standard Timing Identifications");
            return printStandardTimings(context, data.part(0, kDataSize - 1));
        }
        case 0xF9:
            return printColorManagement(report, data);
        case 0xF8:
            return printCvtCodes(report, data);
        case 0xF7: {
            const Group group(report, "Established Timings III");
            return printEstablishedTimings3(report, data.from(1));
        }
        case 0x10:
            return printDummy(report, data);
        default:
            return printUnknown(context, tag, descriptor);
    }
}

}  // namespace vek::edid
