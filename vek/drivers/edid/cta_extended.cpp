// Data blocks of CTA-861-I under an extended tag.

#include <array>
#include <cstdio>

#include "drivers/edid/cta_data_block.h"
#include "drivers/edid/displayid_timing.h"
#include "drivers/edid/standard_timing.h"

namespace vek::edid
{
namespace
{

void printVideoCapability(Report& report, Bytes payload)
{
    constexpr std::array<const char*, 4> kScan = {"not stated", "always overscanned", "always underscanned",
                                                  "over- and underscan"};
    std::fprintf(report.line(), "YCbCr quantization range: %s\n", payload.bit(0, 7) ? "selectable" : "not stated");
    std::fprintf(report.line(), "RGB quantization range: %s\n", payload.bit(0, 6) ? "selectable" : "not stated");
    std::fprintf(report.line(), "Preferred timing: %s\n", kScan[payload.bits(0, 5, 4)]);
    std::fprintf(report.line(), "IT video formats: %s\n", kScan[payload.bits(0, 3, 2)]);
    std::fprintf(report.line(), "CE video formats: %s\n", kScan[payload.bits(0, 1, 0)]);
}

void printColorimetry(Report& report, Bytes payload)
{
    constexpr std::array<const char*, 16> kNames = {
        "xvYCC601", "xvYCC709", "sYCC601", "opYCC601", "opRGB",       "BT2020cYCC", "BT2020YCC", "BT2020RGB",
        "MD0",      "MD1",      "MD2",     "MD3",      "Default RGB", "sRGB",       "ICtCp",     "ST2113RGB"};
    report.flags(payload.at16(0), kNames);
    if (payload.bits(1, 3, 0) != 0) {
        report.finding("Colorimetry Data Block: reserved bits MD0 to MD3 are set");
    }
}

/// 50 cd/m2 times 2 to the power of code/32, by multiplication: std::exp2() stands in the mathematics library, which
/// would have to be loaded at every start.
double luminance(unsigned code)
{
    constexpr double kStep = 1.0218971486541166;
    double value = 50.0;
    for (unsigned done = 0; done < code; ++done) {
        value *= kStep;
    }
    return value;
}

void printHdrStatic(Report& report, Bytes payload)
{
    constexpr std::array<const char*, 4> kTransfer = {"EOTF: traditional gamma, SDR luminance range",
                                                      "EOTF: traditional gamma, HDR luminance range",
                                                      "EOTF: SMPTE ST 2084", "EOTF: Hybrid Log-Gamma"};
    constexpr std::array<const char*, 1> kMetadata = {"Static metadata type 1"};
    report.flags(payload.at(0), kTransfer);
    report.flags(payload.at(1), kMetadata);
    if (payload.at(2) != 0) {
        std::fprintf(report.line(), "Maximum luminance: %.3f cd/m2\n", luminance(payload.at(2)));
    }
    if (payload.at(3) != 0) {
        std::fprintf(report.line(), "Maximum frame-average luminance: %.3f cd/m2\n", luminance(payload.at(3)));
    }
    if (payload.size() > 4) {
        const double part = payload.at(4) / 255.0;
        std::fprintf(report.line(), "Minimum luminance: %.3f cd/m2\n", luminance(payload.at(2)) * part * part / 100.0);
    }
    if (payload.at(0) >> kTransfer.size() != 0 || payload.at(1) >> kMetadata.size() != 0) {
        report.finding("HDR Static Metadata Data Block: reserved bits are set");
    }
}

void printHdrDynamic(Report& report, Bytes payload)
{
    while (!payload.empty()) {
        const std::size_t length = payload.at(0);
        std::fprintf(report.line(), "HDR dynamic metadata type 0x%04x:\n", payload.at16(1));
        const Group group(report);
        report.dump(payload.part(3, length > 2 ? length - 2 : 0));
        if (length < 2 || length + 1 > payload.size()) {
            report.finding("HDR Dynamic Metadata Data Block: wrong length");
        }
        payload = payload.from(length + 1);
    }
}

void printVideoCodes(Report& report, Bytes payload)
{
    for (std::size_t i = 0; i < payload.size(); ++i) {
        const VideoCode code = videoCode(payload.at(i));
        printVic(report, code.vic != 0 ? code.vic : payload.at(i), code.native ? "native" : nullptr);
    }
}

void printCapabilityMap(Context& context, Bytes payload)
{
    Report& report = context.report;
    if (payload.empty()) {
        report.line("All video descriptors");
        return;
    }
    for (std::size_t i = 0; i < payload.size() * 8; ++i) {
        if (!payload.bit(i / 8, static_cast<unsigned>(i % 8))) {
            continue;
        }
        if (i < context.videoCodeCount) {
            printVic(report, context.videoCodes[i]);
        } else {
            std::snprintf(report.finding(), Report::kFindingLength,
                          "YCbCr 4:2:0 Capability Map Data Block: there is no video descriptor %zu", i + 1);
        }
    }
}

/// Video references: a VIC, or the running number of a detailed timing or of a timing of DisplayID's kinds.
void printReferences(Report& report, Bytes references)
{
    constexpr unsigned kFirstDetailed = 129;
    constexpr unsigned kFirstExtension = 145;
    constexpr unsigned kLastExtension = 160;
    constexpr unsigned kFirstLongVic = 193;
    constexpr unsigned kLastVic = 253;
    for (std::size_t i = 0; i < references.size(); ++i) {
        const unsigned code = references.at(i);
        if ((code >= 1 && code < kFirstDetailed - 1) || (code >= kFirstLongVic && code <= kLastVic)) {
            printVic(report, code);
        } else if (code >= kFirstDetailed && code < kFirstExtension) {
            std::fprintf(report.line(), "DTD %u\n", code - kFirstDetailed + 1);
        } else if (code >= kFirstExtension && code <= kLastExtension) {
            std::fprintf(report.line(), "VTDB %u\n", code - kFirstExtension + 1);
        } else {
            std::fprintf(report.line(), "Video reference 0x%02x\n", code);
        }
    }
}

void printNativeResolution(Report& report, Bytes payload)
{
    printReferences(report, payload.part(0, 1));
    constexpr std::size_t kWithSize = 6;
    if (payload.bit(1, 0) && payload.size() >= kWithSize) {
        const double unit = payload.bit(1, 7) ? 1.0 : 0.1;
        std::fprintf(report.line(), "Image size: %.1f mm x %.1f mm\n", payload.at16(2) * unit, payload.at16(4) * unit);
    }
}

void printRoomConfiguration(Report& report, Bytes payload)
{
    const bool counted = payload.bit(0, 5);
    if (counted) {
        std::fprintf(report.line(), "Speakers: %u\n", payload.bits(0, 4, 0) + 1);
    }
    if (payload.bit(0, 6)) {
        report.line("Speaker locations are given");
    }
    printSpeakers(report, payload.at24(1));
    constexpr std::size_t kWithRoom = 7;
    constexpr std::size_t kWithDisplay = 10;
    if (payload.size() >= kWithRoom) {
        std::fprintf(report.line(), "Room: x %u dm, y %u dm, z %u dm\n", payload.at(4), payload.at(5), payload.at(6));
    }
    if (payload.bit(0, 7) && payload.size() >= kWithDisplay) {
        std::fprintf(report.line(), "Display: x 0x%02x, y 0x%02x, z 0x%02x\n", payload.at(7), payload.at(8),
                     payload.at(9));
    }
}

void printSpeakerLocations(Report& report, Bytes payload)
{
    constexpr std::size_t kShort = 2;
    constexpr std::size_t kWithCoordinates = 5;
    while (payload.size() >= kShort) {
        const std::size_t size = payload.bit(0, 6) ? kWithCoordinates : kShort;
        std::fprintf(report.line(), "Channel %u: speaker id 0x%02x, %s", payload.bits(0, 4, 0), payload.bits(1, 4, 0),
                     payload.bit(0, 5) ? "active" : "inactive");
        if (size == kWithCoordinates) {
            std::fprintf(report.stream(), ", x 0x%02x, y 0x%02x, z 0x%02x", payload.at(2), payload.at(3),
                         payload.at(4));
        }
        std::fputc('\n', report.stream());
        if (size > payload.size()) {
            report.finding("Speaker Location Data Block: its coordinates are cut short");
        }
        payload = payload.from(size);
    }
}

const char* infoFrameName(unsigned type)
{
    constexpr std::array<const char*, 9> kNames = {
        "reserved",    "vendor-specific", "auxiliary video information (AVI)", "source product description", "audio",
        "MPEG source", "NTSC VBI",        "dynamic range and mastering",       "HDR dynamic metadata"};
    return type < kNames.size() ? kNames[type] : "reserved";
}

void printInfoFrames(Report& report, Bytes payload)
{
    constexpr unsigned kVendorSpecific = 1;
    constexpr std::size_t kHeader = 2;
    std::fprintf(report.line(), "Additional vendor-specific InfoFrames at a time: %u\n", payload.at(1));
    Bytes rest = payload.from(kHeader + payload.bits(0, 7, 5));
    while (!rest.empty()) {
        const unsigned type = rest.bits(0, 4, 0);
        std::size_t size = 1;
        std::fprintf(report.line(), "InfoFrame type 0x%02x: %s", type, infoFrameName(type));
        if (type == kVendorSpecific) {
            const unsigned oui = rest.at24(1);
            std::fprintf(report.stream(), ", OUI %02X-%02X-%02X", oui >> 16, oui >> 8 & 0xFF, oui & 0xFF);
            size += 3;
        }
        std::fputc('\n', report.stream());
        size += rest.bits(0, 7, 5);
        if (size > rest.size()) {
            report.finding("InfoFrame Data Block: its last descriptor is cut short");
        }
        rest = rest.from(size);
    }
}

std::array<char, 16> nextTimingName(Context& context)
{
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "VTDB %u", ++context.extensionTimings);
    return name;
}

void printLongTimingBlock(Context& context, Bytes payload)
{
    if (payload.size() != kLongTimingSize + 1) {
        context.report.finding("DisplayID Type VII Video Timing Data Block: wrong length");
    }
    if (payload.size() > kLongTimingSize) {
        printLongTiming(context.report, nextTimingName(context).data(), payload.from(1), kType7InCta);
    }
}

void printCodeTimingBlock(Report& report, Bytes payload)
{
    const bool wide = payload.bit(0, 3);
    const std::size_t size = wide ? 2 : 1;
    const bool dmt = payload.bits(0, 7, 6) == 0;
    for (std::size_t i = 1; i + size <= payload.size(); i += size) {
        const unsigned code = wide ? payload.at16(i) : payload.at(i);
        if (dmt) {
            printDmt(report, code);
        } else {
            std::fprintf(report.line(), "Timing code 0x%02x\n", code);
        }
    }
}

void printFormulaTimingBlock(Context& context, Bytes payload)
{
    const std::size_t size = kFormulaTimingSize + payload.bits(0, 6, 4);
    for (std::size_t i = 1; i + size <= payload.size(); i += size) {
        printFormulaTiming(context.report, nextTimingName(context).data(), payload.part(i, size));
    }
    if ((payload.size() - 1) % size != 0) {
        context.report.finding("DisplayID Type X Video Timing Data Block: wrong length");
    }
}

void printSinkCapability(Report& report, Bytes payload)
{
    constexpr std::size_t kReserved = 2;
    printHdmiForumCapabilities(report, payload.from(kReserved));
}

void printExtensionOverride(Report& report, Bytes payload)
{
    std::fprintf(report.line(), "Extension blocks: %u\n", payload.at(0));
}

/// A block that needs nothing but its own bytes.
struct PlainBlock {
    unsigned tag;
    const char* name;
    void (*print)(Report& report, Bytes payload);  // null: dumped
    std::size_t leastSize;
};

constexpr auto kPlainBlocks = std::to_array<PlainBlock>({
    {0, "Video Capability Data Block", printVideoCapability, 1},
    {2, "VESA Display Device Data Block", nullptr, 0},
    {3, "VESA Video Timing Block", nullptr, 0},
    {4, "Reserved for HDMI video", nullptr, 0},
    {5, "Colorimetry Data Block", printColorimetry, 2},
    {6, "HDR Static Metadata Data Block", printHdrStatic, 2},
    {7, "HDR Dynamic Metadata Data Block", printHdrDynamic, 3},
    {8, "Native Video Resolution Data Block", printNativeResolution, 1},
    {13, "Video Format Preference Data Block", printReferences, 0},
    {14, "YCbCr 4:2:0 Video Data Block", printVideoCodes, 0},
    {16, "Reserved for CTA miscellaneous audio", nullptr, 0},
    {18, "HDMI Audio Data Block", nullptr, 0},
    {19, "Room Configuration Data Block", printRoomConfiguration, 4},
    {20, "Speaker Location Data Block", printSpeakerLocations, 2},
    {32, "InfoFrame Data Block", printInfoFrames, 2},
    {35, "DisplayID Type VIII Video Timing Data Block", printCodeTimingBlock, 1},
    {0x78, "HDMI Forum EDID Extension Override Data Block", printExtensionOverride, 1},
    {0x79, "HDMI Forum Sink Capability Data Block", printSinkCapability, 6},
});

/// A block whose timings or references count on from other blocks.
struct CountingBlock {
    unsigned tag;
    const char* name;
    void (*print)(Context& context, Bytes payload);
    std::size_t leastSize;
};

constexpr auto kCountingBlocks = std::to_array<CountingBlock>({
    {15, "YCbCr 4:2:0 Capability Map Data Block", printCapabilityMap, 0},
    {34, "DisplayID Type VII Video Timing Data Block", printLongTimingBlock, 1},
    {42, "DisplayID Type X Video Timing Data Block", printFormulaTimingBlock, 1},
});

void checkLeastSize(Report& report, const char* name, std::size_t size, std::size_t least)
{
    if (size < least) {
        std::snprintf(report.finding(), Report::kFindingLength, "%s: shorter than %zu bytes", name, least);
    }
}

bool printPlainBlock(Report& report, unsigned tag, Bytes payload)
{
    for (const PlainBlock& block : kPlainBlocks) {
        if (block.tag != tag) {
            continue;
        }
        const Group group(report, block.name);
        checkLeastSize(report, block.name, payload.size(), block.leastSize);
        if (block.print == nullptr || payload.size() < block.leastSize) {
            report.dump(payload);
        } else {
            block.print(report, payload);
        }
        return true;
    }
    return false;
}

bool printCountingBlock(Context& context, unsigned tag, Bytes payload)
{
    for (const CountingBlock& block : kCountingBlocks) {
        if (block.tag != tag) {
            continue;
        }
        const Group group(context.report, block.name);
        checkLeastSize(context.report, block.name, payload.size(), block.leastSize);
        if (payload.size() >= block.leastSize) {
            block.print(context, payload);
        }
        return true;
    }
    return false;
}

}  // namespace

void printExtendedBlock(Context& context, unsigned tag, Bytes payload)
{
    constexpr unsigned kVendorVideo = 1;
    constexpr unsigned kVendorAudio = 17;
    Report& report = context.report;
    if (tag == kVendorVideo) {
        return printVendorBlock(report, VendorBlock::kVideo, payload);
    }
    if (tag == kVendorAudio) {
        return printVendorBlock(report, VendorBlock::kAudio, payload);
    }
    if (printPlainBlock(report, tag, payload) || printCountingBlock(context, tag, payload)) {
        return;
    }
    std::fprintf(report.line(), "Reserved data block, extended tag 0x%02x:\n", tag);
    const Group group(report);
    report.dump(payload);
    std::snprintf(report.finding(), Report::kFindingLength, "extended tag 0x%02x is reserved", tag);
}

}  // namespace vek::edid
