#include "drivers/edid/base_block.h"

#include <array>
#include <cstdio>

#include "drivers/edid/detailed_timing.h"
#include "drivers/edid/display_descriptor.h"
#include "drivers/edid/standard_timing.h"

namespace vek::edid
{
namespace
{

constexpr unsigned kYearBase = 1990;
constexpr std::size_t kFeatures = 24;

bool isDigital(Bytes block)
{
    return block.bit(20, 7);
}

void printDate(Context& context, unsigned week, unsigned year)
{
    constexpr unsigned kModelYear = 0xFF;
    constexpr unsigned kLastWeek = 54;
    Report& report = context.report;
    if (week == kModelYear) {
        std::fprintf(report.line(), "Model year: %u\n", year + kYearBase);
        if (context.revision < 4) {
            report.finding("a model year needs EDID 1.4");
        }
        return;
    }
    if (week != 0) {
        std::fprintf(report.line(), "Week of manufacture: %u\n", week);
    }
    std::fprintf(report.line(), "Year of manufacture: %u\n", year + kYearBase);
    if (week > kLastWeek) {
        std::snprintf(report.finding(), Report::kFindingLength, "week of manufacture %u does not exist", week);
    }
}

void printIdentification(Context& context, Bytes block)
{
    Report& report = context.report;
    const Group group(report, "Vendor and product identification");
    std::fprintf(report.line(), "Manufacturer: %s\n", manufacturerId(block.from(8)).letters);
    std::fprintf(report.line(), "Product code: %u (0x%04x)\n", block.at16(10), block.at16(10));
    if (const unsigned serial = block.at32(12)) {
        std::fprintf(report.line(), "Serial number: %u\n", serial);
    }
    printDate(context, block.at(16), block.at(17));
    const unsigned id = block.at(8) << 8 | block.at(9);
    const auto isLetter = [id](unsigned shift) { return (id >> shift & 0x1F) >= 1 && (id >> shift & 0x1F) <= 26; };
    if ((id & 0x8000) != 0 || !isLetter(10) || !isLetter(5) || !isLetter(0)) {
        std::snprintf(report.finding(), Report::kFindingLength, "manufacturer id 0x%04x is not three letters", id);
    }
}

void printDigitalInput(Context& context, unsigned input)
{
    constexpr std::array<const char*, 8> kDepths = {"not defined", "6", "8", "10", "12", "14", "16", "reserved"};
    constexpr std::array<const char*, 6> kInterfaces = {"not defined", "DVI",  "HDMI-a",
                                                        "HDMI-b",      "MDDI", "DisplayPort"};
    Report& report = context.report;
    report.line("Video input: digital");
    if (context.revision < 4) {
        report.line((input & 1) != 0 ? "Interface: DFP 1.x compatible TMDS" : "Interface: not defined");
        if ((input & 0x7E) != 0) {
            report.finding("reserved bits of the video input definition are set");
        }
        return;
    }
    std::fprintf(report.line(), "Bits per primary color channel: %s\n", kDepths[input >> 4 & 7]);
    const unsigned kind = input & 0x0F;
    std::fprintf(report.line(), "Interface: %s\n", kind < kInterfaces.size() ? kInterfaces[kind] : "reserved");
    if (kind >= kInterfaces.size() || (input >> 4 & 7) == 7) {
        report.finding("reserved value in the video input definition");
    }
}

void printAnalogInput(Report& report, unsigned input)
{
    constexpr std::array<const char*, 4> kLevels = {
        "0.700 V video, 0.300 V sync, 1.000 V p-p", "0.714 V video, 0.286 V sync, 1.000 V p-p",
        "1.000 V video, 0.400 V sync, 1.400 V p-p", "0.700 V video, 0.000 V sync, 0.700 V p-p"};
    constexpr std::array<const char*, 5> kSync = {"Sync: serration on vertical sync", "Sync: composite on green",
                                                  "Sync: composite on horizontal", "Sync: separate",
                                                  "Blank-to-black setup or pedestal"};
    report.line("Video input: analog");
    std::fprintf(report.line(), "Signal level: %s\n", kLevels[input >> 5 & 3]);
    report.flags(input, kSync);
}

void printSize(Context& context, unsigned width, unsigned height)
{
    Report& report = context.report;
    constexpr double kRatioOffset = 99.0;
    if (width != 0 && height != 0) {
        std::fprintf(report.line(), "Image size: %u cm x %u cm\n", width, height);
    } else if (width == 0 && height == 0) {
        report.line("Image size: not defined");
    } else if (context.revision < 4) {
        report.line("Image size: not defined");
        report.finding("an aspect ratio in place of the image size needs EDID 1.4");
    } else if (height == 0) {
        std::fprintf(report.line(), "Aspect ratio: %.2f (landscape)\n", (width + kRatioOffset) / 100.0);
    } else {
        std::fprintf(report.line(), "Aspect ratio: %.2f (portrait)\n", 100.0 / (height + kRatioOffset));
    }
}

void printColorType(Context& context, Bytes block)
{
    constexpr std::array<const char*, 4> kTypes = {"monochrome or grayscale", "RGB color", "non-RGB multicolor",
                                                   "not defined"};
    constexpr std::array<const char*, 4> kEncodings = {"RGB 4:4:4", "RGB 4:4:4, YCbCr 4:4:4", "RGB 4:4:4, YCbCr 4:2:2",
                                                       "RGB 4:4:4, YCbCr 4:4:4, YCbCr 4:2:2"};
    const unsigned type = block.bits(kFeatures, 4, 3);
    if (isDigital(block) && context.revision >= 4) {
        std::fprintf(context.report.line(), "Color encodings: %s\n", kEncodings[type]);
    } else {
        std::fprintf(context.report.line(), "Display color type: %s\n", kTypes[type]);
    }
}

void printFeatures(Context& context, Bytes block)
{
    constexpr std::array<const char*, 8> kPower = {
        nullptr, nullptr, nullptr, nullptr, nullptr, "DPMS: active off", "DPMS: suspend", "DPMS: standby"};
    Report& report = context.report;
    report.flags(block.at(kFeatures), kPower);
    printColorType(context, block);
    const bool recent = context.revision >= 4;
    if (block.bit(kFeatures, 2)) {
        report.line("sRGB is the default color space");
    }
    if (block.bit(kFeatures, 1)) {
        report.line(recent ? "First detailed timing: preferred, with native pixel format and refresh rate"
                           : "First detailed timing: preferred");
    } else if (context.revision == 3) {
        report.finding("EDID 1.3 requires the preferred timing bit");
    }
    if (block.bit(kFeatures, 0)) {
        report.line(recent ? "Display is continuous frequency" : "Supports timings of the default GTF curve");
    }
}

void printBasicParameters(Context& context, Bytes block)
{
    constexpr unsigned kGammaElsewhere = 0xFF;
    Report& report = context.report;
    const Group group(report, "Basic display parameters and features");
    if (isDigital(block)) {
        printDigitalInput(context, block.at(20));
    } else {
        printAnalogInput(report, block.at(20));
    }
    printSize(context, block.at(21), block.at(22));
    if (block.at(23) == kGammaElsewhere) {
        report.line("Gamma: given in an extension block");
    } else {
        std::fprintf(report.line(), "Gamma: %.2f\n", (block.at(23) + 100) / 100.0);
    }
    printFeatures(context, block);
}

void printChromaticity(Report& report, Bytes bytes)
{
    struct Color {
        const char* name;
        std::size_t lowByte;
        unsigned lowShift;  // of x; y lies two bits below
        std::size_t highByte;
    };
    constexpr std::array<Color, 4> kColors = {Color{"Red", 0, 6, 2}, Color{"Green", 0, 2, 4}, Color{"Blue", 1, 6, 6},
                                              Color{"White", 1, 2, 8}};
    constexpr unsigned kUnits = 10000;
    constexpr unsigned kScale = 1024;
    const Group group(report, "Color characteristics");
    for (const Color& color : kColors) {
        const unsigned x = bytes.at(color.highByte) << 2 | (bytes.at(color.lowByte) >> color.lowShift & 3);
        const unsigned y = bytes.at(color.highByte + 1) << 2 | (bytes.at(color.lowByte) >> (color.lowShift - 2) & 3);
        const unsigned roundedX = (x * kUnits + kScale / 2) / kScale;
        const unsigned roundedY = (y * kUnits + kScale / 2) / kScale;
        std::fprintf(report.line(), "%s: 0.%04u, 0.%04u\n", color.name, roundedX, roundedY);
    }
}

/// Whether a descriptor is that of range limits with CVT support (E-EDID 1.4, section 3.10.3.3).
bool hasCvtSupport(Bytes descriptor)
{
    constexpr unsigned kRangeLimits = 0xFD;
    constexpr unsigned kCvt = 4;
    return descriptor.at16(0) == 0 && descriptor.at(3) == kRangeLimits && descriptor.at(10) == kCvt;
}

Bytes descriptorOf(Bytes block, std::size_t number)
{
    return block.part(kDescriptorsOffset + number * kDetailedTimingSize, kDetailedTimingSize);
}

void printDescriptors(Context& context, Bytes block)
{
    const Group group(context.report, "Descriptors");
    for (std::size_t i = 0; i < kDescriptorCount; ++i) {
        const Bytes descriptor = descriptorOf(block, i);
        if (descriptor.size() < kDetailedTimingSize) {
            return;
        }
        if (isDetailedTiming(descriptor)) {
            printDetailedTiming(context, descriptor);
        } else {
            printDisplayDescriptor(context, descriptor);
        }
    }
}

void checkDescriptors(Context& context, Bytes block)
{
    Report& report = context.report;
    if (!isDetailedTiming(descriptorOf(block, 0)) && (context.revision >= 3 || block.bit(kFeatures, 1))) {
        report.finding("the first descriptor is not a detailed timing");
    }
    if (context.productNames == 0) {
        report.finding("no Display Product Name");
    }
}

void printVersion(Context& context, unsigned version, unsigned revision)
{
    constexpr unsigned kNewestRevision = 4;
    context.revision = revision;
    std::fprintf(context.report.line(), "EDID version: %u.%u\n", version, revision);
    if (version != 1 || revision > kNewestRevision) {
        std::snprintf(context.report.finding(), Report::kFindingLength, "EDID version %u.%u is not known", version,
                      revision);
    }
}

}  // namespace

bool hasEdidHeader(Bytes edid)
{
    constexpr std::size_t kSize = 8;
    return edid.size() >= kSize && edid.at(0) == 0x00 && edid.part(1, kSize - 2).allEqual(0xFF) &&
           edid.at(kSize - 1) == 0x00;
}

ManufacturerId manufacturerId(Bytes bytes)
{
    const unsigned id = bytes.at(0) << 8 | bytes.at(1);
    const auto letter = [id](unsigned shift) { return static_cast<char>('@' + (id >> shift & 0x1F)); };
    return {{letter(10), letter(5), letter(0), '\0'}};
}

void printBaseBlock(Context& context, Bytes block)
{
    constexpr std::size_t kIdentificationEnd = 20;
    constexpr std::size_t kParametersEnd = 25;
    constexpr std::size_t kChromaticityEnd = 35;
    constexpr std::size_t kEstablishedEnd = 38;
    constexpr std::size_t kStandardEnd = 54;
    Report& report = context.report;
    if (!hasEdidHeader(block)) {
        report.line("Header: wrong");
        report.finding("the header is not 00 ff ff ff ff ff ff 00");
    } else {
        report.line("Header: valid");
    }
    if (block.size() >= kIdentificationEnd) {
        printVersion(context, block.at(18), block.at(19));
        printIdentification(context, block);
    }
    if (block.size() >= kParametersEnd) {
        printBasicParameters(context, block);
    }
    if (block.size() >= kChromaticityEnd) {
        printChromaticity(report, block.from(kParametersEnd));
    }
    if (block.size() >= kEstablishedEnd) {
        const Group group(report, "Established timings I and II");
        printEstablishedTimings(report, block.part(kChromaticityEnd, kEstablishedEnd - kChromaticityEnd));
    }
    if (block.size() >= kStandardEnd) {
        const Group group(report, "Standard timings");
        for (std::size_t i = 0; i < kDescriptorCount; ++i) {
            context.cvtSupported |= context.revision >= 4 && hasCvtSupport(descriptorOf(block, i));
        }
        printStandardTimings(context, block.part(kEstablishedEnd, kStandardEnd - kEstablishedEnd));
    }
    printDescriptors(context, block);
    if (block.size() > kExtensionCountOffset) {
        checkDescriptors(context, block);
        std::fprintf(report.line(), "Extension blocks: %u\n", block.at(kExtensionCountOffset));
    }
}

}  // namespace vek::edid
