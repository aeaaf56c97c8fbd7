// Vendor-specific data blocks: those of HDMI 1.4b and of the HDMI Forum decoded, others named.

#include <array>
#include <cstdio>

#include "drivers/edid/cta_data_block.h"
#include "drivers/edid/vic_table.h"

namespace vek::edid
{
namespace
{

constexpr std::size_t kOuiSize = 3;
constexpr unsigned kHdmiOui = 0x000C03;
constexpr unsigned kHdmiForumOui = 0xC45DD8;
constexpr unsigned kDolbyOui = 0x00D046;
constexpr unsigned kTmdsUnitMhz = 5;

const char* vendorName(unsigned oui, VendorBlock kind)
{
    if (oui == kDolbyOui) {
        return kind == VendorBlock::kVideo ? "Dolby Vision" : "Dolby";
    }
    struct Vendor {
        unsigned oui;
        const char* name;
    };
    constexpr std::array<Vendor, 6> kVendors = {Vendor{kHdmiOui, "HDMI"},   Vendor{kHdmiForumOui, "HDMI Forum"},
                                                Vendor{0x90848B, "HDR10+"}, Vendor{0x00001A, "AMD"},
                                                Vendor{0x00044B, "NVIDIA"}, Vendor{0xCA125C, "Microsoft"}};
    for (const Vendor& vendor : kVendors) {
        if (vendor.oui == oui) {
            return vendor.name;
        }
    }
    return nullptr;
}

const char* blockTitle(VendorBlock kind)
{
    switch (kind) {
        case VendorBlock::kVideo:
            return "Vendor-Specific Video Data Block";
        case VendorBlock::kAudio:
            return "Vendor-Specific Audio Data Block";
        case VendorBlock::kGeneral:
            break;
    }
    return "Vendor-Specific Data Block";
}

void printLatency(Report& report, const char* name, unsigned value)
{
    constexpr unsigned kUnsupported = 255;
    constexpr unsigned kLargest = 251;
    if (value == 0) {
        std::fprintf(report.line(), "%s: not known\n", name);
    } else if (value == kUnsupported) {
        std::fprintf(report.line(), "%s: not supported\n", name);
    } else if (value > kLargest) {
        std::fprintf(report.line(), "%s: reserved value %u\n", name, value);
        std::snprintf(report.finding(), Report::kFindingLength, "%s: value %u is reserved", name, value);
    } else {
        std::fprintf(report.line(), "%s: %u ms\n", name, (value - 1) * 2);
    }
}

const char* structure3dName(unsigned structure)
{
    switch (structure) {
        case 0:
            return "frame packing";
        case 1:
            return "field alternative";
        case 2:
            return "line alternative";
        case 3:
            return "side-by-side (full)";
        case 4:
            return "L + depth";
        case 5:
            return "L + depth + graphics + graphics-depth";
        case 6:
            return "top-and-bottom";
        case 8:
            return "side-by-side (half)";
        default:
            return "reserved";
    }
}

/// The formats with 3D beyond the mandatory ones: for all of the first 16 video codes, for some of them, then one by
/// one.
void print3dFormats(Report& report, unsigned multiPresent, Bytes data)
{
    constexpr unsigned kFirstWithDetail = 8;
    std::size_t next = 0;
    if (multiPresent == 1 || multiPresent == 2) {
        const unsigned structures = data.at(0) << 8 | data.at(1);
        for (unsigned i = 0; i < 16; ++i) {
            if ((structures >> i & 1) != 0) {
                std::fprintf(report.line(), "3D structure: %s\n", structure3dName(i));
            }
        }
        next = 2;
    }
    if (multiPresent == 2) {
        const unsigned mask = data.at(2) << 8 | data.at(3);
        for (unsigned i = 0; i < 16; ++i) {
            if ((mask >> i & 1) != 0) {
                std::fprintf(report.line(), "3D structures hold for video descriptor %u\n", i + 1);
            }
        }
        next = 4;
    }
    while (next < data.size()) {
        const unsigned structure = data.bits(next, 3, 0);
        std::fprintf(report.line(), "3D of video descriptor %u: %s\n", data.bits(next, 7, 4) + 1,
                     structure3dName(structure));
        next += structure >= kFirstWithDetail ? 2 : 1;
    }
}

void printHdmiVideo(Report& report, Bytes data)
{
    constexpr std::array<const char*, 4> kSizes = {nullptr, "aspect ratio is right, size is not",
                                                   "right, in centimeters", "right, in units of 5 centimeters"};
    const unsigned multiPresent = data.bits(0, 6, 5);
    if (data.bit(0, 7)) {
        report.line("3D: mandatory formats");
    }
    if (const char* const meaning = kSizes[data.bits(0, 4, 3)]) {
        std::fprintf(report.line(), "Base block image size: %s\n", meaning);
    }
    const std::size_t vicCount = data.bits(1, 7, 5);
    const std::size_t length3d = data.bits(1, 4, 0);
    const Bytes vics = data.part(2, vicCount);
    for (std::size_t i = 0; i < vics.size(); ++i) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "HDMI VIC %u", vics.at(i));
        if (const Timing* const timing = findHdmiVic(vics.at(i))) {
            report.timing(name.data(), *timing);
        } else {
            std::fprintf(report.line(), "%s: reserved\n", name.data());
            std::snprintf(report.finding(), Report::kFindingLength, "%s is reserved", name.data());
        }
    }
    print3dFormats(report, multiPresent, data.part(2 + vicCount, length3d));
    if (2 + vicCount + length3d > data.size()) {
        report.finding("HDMI block: its video formats reach past its end");
    }
}

/// The parts behind the maximum TMDS clock, each there only when a flag of the byte before them says so.
void printHdmiOptionalParts(Report& report, Bytes data)
{
    constexpr std::array<const char*, 4> kContents = {"Content type: graphics", "Content type: photo",
                                                      "Content type: cinema", "Content type: game"};
    report.flags(data.bits(0, 3, 0), kContents);
    std::size_t next = 1;
    if (data.bit(0, 7)) {
        printLatency(report, "Video latency", data.at(next));
        printLatency(report, "Audio latency", data.at(next + 1));
        next += 2;
    }
    if (data.bit(0, 6)) {
        printLatency(report, "Interlaced video latency", data.at(next));
        printLatency(report, "Interlaced audio latency", data.at(next + 1));
        next += 2;
    }
    if (data.bit(0, 5)) {
        printHdmiVideo(report, data.from(next));
    }
    if (next > data.size()) {
        report.finding("HDMI block: its latencies reach past its end");
    }
}

void printHdmi(Report& report, Bytes data)
{
    constexpr std::array<const char*, 8> kFlags = {"DVI dual link",
                                                   nullptr,
                                                   nullptr,
                                                   "Deep color: YCbCr 4:4:4",
                                                   "Deep color: 30 bits",
                                                   "Deep color: 36 bits",
                                                   "Deep color: 48 bits",
                                                   "Supports AI: accepts ACP, ISRC1 and ISRC2 packets"};
    constexpr std::size_t kLeastSize = 2;
    if (data.size() < kLeastSize) {
        report.finding("HDMI block: no source physical address");
        return;
    }
    std::fprintf(report.line(), "Source physical address: %u.%u.%u.%u\n", data.bits(0, 7, 4), data.bits(0, 3, 0),
                 data.bits(1, 7, 4), data.bits(1, 3, 0));
    report.flags(data.at(2), kFlags);
    if (data.at(3) != 0) {
        std::fprintf(report.line(), "Maximum TMDS clock: %u MHz\n", data.at(3) * kTmdsUnitMhz);
    }
    if (data.size() > 4) {
        printHdmiOptionalParts(report, data.from(4));
    }
}

const char* fixedRateLink(unsigned code)
{
    constexpr std::array<const char*, 7> kLinks = {"not supported",
                                                   "3 Gbps per lane on 3 lanes",
                                                   "3 and 6 Gbps per lane on 3 lanes",
                                                   "3 and 6 Gbps per lane on 3 lanes, 6 Gbps on 4 lanes",
                                                   "3 and 6 Gbps per lane on 3 lanes, 6 and 8 Gbps on 4 lanes",
                                                   "3 and 6 Gbps per lane on 3 lanes, 6, 8 and 10 Gbps on 4 lanes",
                                                   "3 and 6 Gbps per lane on 3 lanes, 6, 8, 10 and 12 Gbps on 4 lanes"};
    return code < kLinks.size() ? kLinks[code] : "reserved";
}

void printCompression(Report& report, Bytes data)
{
    constexpr std::array<const char*, 8> kFlags = {"DSC: 10 bits per component",
                                                   "DSC: 12 bits per component",
                                                   "DSC: 16 bits per component",
                                                   "DSC: every 1/16 bit per pixel",
                                                   "QMS TFR minimum",
                                                   "QMS TFR maximum",
                                                   "DSC: native YCbCr 4:2:0",
                                                   "DSC: VESA DSC 1.2a"};
    constexpr std::array<const char*, 8> kSlices = {"none",
                                                    "1, up to 340 MHz each",
                                                    "2, up to 340 MHz each",
                                                    "4, up to 340 MHz each",
                                                    "8, up to 340 MHz each",
                                                    "8, up to 400 MHz each",
                                                    "12, up to 400 MHz each",
                                                    "16, up to 400 MHz each"};
    constexpr unsigned kKilobyte = 1024;
    report.flags(data.at(0), kFlags);
    if (data.size() > 1) {
        std::fprintf(report.line(), "DSC fixed rate link: %s\n", fixedRateLink(data.bits(1, 7, 4)));
        const unsigned slices = data.bits(1, 3, 0);
        std::fprintf(report.line(), "DSC slices: %s\n", slices < kSlices.size() ? kSlices[slices] : "reserved");
    }
    if (data.bits(2, 5, 0) != 0) {
        std::fprintf(report.line(), "DSC chunk bytes in a line: %u\n", (data.bits(2, 5, 0) + 1) * kKilobyte);
    }
}

void printRefreshRange(Report& report, Bytes data)
{
    const unsigned lowest = data.bits(0, 5, 0);
    const unsigned highest = data.bits(0, 7, 6) << 8 | data.at(1);
    if (lowest != 0) {
        std::fprintf(report.line(), "VRR minimum: %u Hz\n", lowest);
    }
    if (highest != 0) {
        std::fprintf(report.line(), "VRR maximum: %u Hz\n", highest);
    }
}

}  // namespace

void printHdmiForumCapabilities(Report& report, Bytes data)
{
    constexpr std::array<const char*, 8> kLink = {"3D OSD disparity indication",
                                                  "3D dual view signaling",
                                                  "3D independent view signaling",
                                                  "Scrambling at or below 340 Mcsc",
                                                  "Color content bits per component indication",
                                                  "Cable status",
                                                  "SCDC read requests",
                                                  "SCDC present"};
    constexpr std::array<const char*, 4> kDeepColor = {"Deep color 4:2:0: 10 bits per component",
                                                       "Deep color 4:2:0: 12 bits per component",
                                                       "Deep color 4:2:0: 16 bits per component", "UHD VIC"};
    constexpr std::array<const char*, 8> kFeatures = {"FAPA in blanking after the first active line",
                                                      "ALLM: auto low-latency mode",
                                                      "FVA: fast vactive",
                                                      "VRR: negative Mvrr values",
                                                      "VRR: cinema rates",
                                                      "VRR: M delta",
                                                      "QMS: quick media switching",
                                                      "FAPA end extended"};
    std::fprintf(report.line(), "Version: %u\n", data.at(0));
    if (data.at(1) != 0) {
        std::fprintf(report.line(), "Maximum TMDS character rate: %u MHz\n", data.at(1) * kTmdsUnitMhz);
    }
    report.flags(data.at(2), kLink);
    std::fprintf(report.line(), "Maximum fixed rate link: %s\n", fixedRateLink(data.bits(3, 7, 4)));
    report.flags(data.bits(3, 3, 0), kDeepColor);
    report.flags(data.at(4), kFeatures);
    printRefreshRange(report, data.from(5));
    if (data.size() > 7) {
        printCompression(report, data.from(7));
    }
    if (data.size() < 4) {
        report.finding("HDMI Forum capabilities are cut short");
    }
}

void printVendorBlock(Report& report, VendorBlock kind, Bytes payload)
{
    const char* const title = blockTitle(kind);
    if (payload.size() < kOuiSize) {
        const Group group(report, title);
        report.dump(payload);
        std::snprintf(report.finding(), Report::kFindingLength, "%s: no OUI", title);
        return;
    }
    const unsigned oui = payload.at24(0);
    const char* const vendor = vendorName(oui, kind);
    std::fprintf(report.line(), "%s (%s), OUI %02X-%02X-%02X:\n", title, vendor != nullptr ? vendor : "unknown vendor",
                 oui >> 16, oui >> 8 & 0xFF, oui & 0xFF);
    const Group group(report);
    const Bytes data = payload.from(kOuiSize);
    if (oui == kHdmiOui) {
        printHdmi(report, data);
    } else if (oui == kHdmiForumOui) {
        printHdmiForumCapabilities(report, data);
    } else {
        report.dump(data);
    }
}

}  // namespace vek::edid
