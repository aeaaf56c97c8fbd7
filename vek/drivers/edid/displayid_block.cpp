#include "drivers/edid/displayid_block.h"

#include <array>
#include <cstdio>

#include "drivers/edid/cta_block.h"
#include "drivers/edid/cta_data_block.h"
#include "drivers/edid/displayid_timing.h"
#include "drivers/edid/standard_timing.h"

namespace vek::edid
{
namespace
{

constexpr std::size_t kSectionHeaderSize = 4;
constexpr std::size_t kDataBlockHeaderSize = 3;
constexpr unsigned kFirstVersion2 = 0x20;

/// One data block of a section.
struct DataBlock {
    unsigned flags;  ///< Revision in bits 2-0, the rest as the tag defines.
    Bytes payload;
};

using PrintBlock = void (*)(Context& context, const DataBlock& block);

/// Calls a function for each part of a payload of one size; the incomplete last one is noted.
template <typename Print>
void forEachPart(Report& report, Bytes payload, std::size_t size, const Print& print)
{
    unsigned number = 0;
    while (payload.size() >= size) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), "Timing %u", ++number);
        print(name.data(), payload.part(0, size));
        payload = payload.from(size);
    }
    if (!payload.empty()) {
        report.finding("DisplayID: a timing is cut short");
    }
}

void printProductString(Report& report, Bytes payload)
{
    constexpr std::size_t kNameOffset = 12;
    const std::size_t length = payload.at(kNameOffset - 1);
    if (length != 0) {
        std::fputs("Product name: ", report.line());
        report.quoted(payload.part(kNameOffset, length));
        std::fputc('\n', report.stream());
    }
}

void printProductNumbers(Report& report, Bytes payload)
{
    constexpr unsigned kYearBase = 2000;
    constexpr unsigned kModelYear = 0xFF;
    std::fprintf(report.line(), "Product code: %u\n", payload.at16(3));
    if (payload.at32(5) != 0) {
        std::fprintf(report.line(), "Serial number: %u\n", payload.at32(5));
    }
    if (payload.at(9) == kModelYear) {
        std::fprintf(report.line(), "Model year: %u\n", payload.at(10) + kYearBase);
    } else {
        std::fprintf(report.line(), "Year of manufacture: %u, week %u\n", payload.at(10) + kYearBase, payload.at(9));
    }
    printProductString(report, payload);
}

void printProduct1(Context& context, const DataBlock& block)
{
    std::fputs("Vendor: ", context.report.line());
    context.report.quoted(block.payload.part(0, 3));
    std::fputc('\n', context.report.stream());
    printProductNumbers(context.report, block.payload);
}

void printProduct2(Context& context, const DataBlock& block)
{
    std::fprintf(context.report.line(), "Vendor OUI: %02X-%02X-%02X\n", block.payload.at(0), block.payload.at(1),
                 block.payload.at(2));
    printProductNumbers(context.report, block.payload);
}

void printParameters1(Context& context, const DataBlock& block)
{
    const Bytes payload = block.payload;
    Report& report = context.report;
    std::fprintf(report.line(), "Image size: %.1f mm x %.1f mm\n", payload.at16(0) / 10.0, payload.at16(2) / 10.0);
    std::fprintf(report.line(), "Native format: %ux%u\n", payload.at16(4), payload.at16(6));
    std::fprintf(report.line(), "Feature support flags: 0x%02x\n", payload.at(8));
    std::fprintf(report.line(), "Gamma: %.2f\n", (payload.at(9) + 100) / 100.0);
    std::fprintf(report.line(), "Aspect ratio: %.2f\n", (payload.at(10) + 100) / 100.0);
    std::fprintf(report.line(), "Dynamic bits per color channel: %u\n", payload.bits(11, 7, 4) + 1);
    std::fprintf(report.line(), "Native bits per color channel: %u\n", payload.bits(11, 3, 0) + 1);
}

void printParameters2(Context& context, const DataBlock& block)
{
    constexpr unsigned kMillimeters = 0x80;
    const Bytes payload = block.payload;
    Report& report = context.report;
    const double unit = (block.flags & kMillimeters) != 0 ? 1.0 : 0.1;
    std::fprintf(report.line(), "Image size: %.1f mm x %.1f mm\n", payload.at16(0) * unit, payload.at16(2) * unit);
    std::fprintf(report.line(), "Native format: %ux%u\n", payload.at16(4), payload.at16(6));
    report.dump(payload.from(8));
}

void printType1(Context& context, const DataBlock& block)
{
    forEachPart(context.report, block.payload, kLongTimingSize,
                [&](const char* name, Bytes part) { printLongTiming(context.report, name, part, kType1); });
}

void printType7(Context& context, const DataBlock& block)
{
    forEachPart(context.report, block.payload, kLongTimingSize,
                [&](const char* name, Bytes part) { printLongTiming(context.report, name, part, kType7); });
}

void printType2(Context& context, const DataBlock& block)
{
    constexpr std::size_t kSize = 11;
    forEachPart(context.report, block.payload, kSize,
                [&](const char* name, Bytes part) { printShortDetailedTiming(context.report, name, part); });
}

void printType3(Context& context, const DataBlock& block)
{
    constexpr std::size_t kSize = 3;
    forEachPart(context.report, block.payload, kSize,
                [&](const char* name, Bytes part) { printShortTiming(context.report, name, part); });
}

/// Codes of one of three lists: DMT ids, VICs and HDMI_VICs.
void printCodes(Context& context, const DataBlock& block)
{
    const unsigned list = block.flags >> 6;
    for (std::size_t i = 0; i < block.payload.size(); ++i) {
        const unsigned code = block.payload.at(i);
        if (list == 0) {
            printDmt(context.report, code);
        } else if (list == 1) {
            printVic(context.report, code);
        } else {
            std::fprintf(context.report.line(), "HDMI VIC or reserved code %u\n", code);
        }
    }
}

void printDmtMap(Context& context, const DataBlock& block)
{
    for (std::size_t i = 0; i < block.payload.size() * 8; ++i) {
        if (block.payload.bit(i / 8, static_cast<unsigned>(i % 8))) {
            printDmt(context.report, static_cast<unsigned>(i) + 1);
        }
    }
}

void printVicMap(Context& context, const DataBlock& block)
{
    for (std::size_t i = 0; i < block.payload.size() * 8; ++i) {
        if (block.payload.bit(i / 8, static_cast<unsigned>(i % 8))) {
            printVic(context.report, static_cast<unsigned>(i) + 1);
        }
    }
}

void printType9(Context& context, const DataBlock& block)
{
    forEachPart(context.report, block.payload, kFormulaTimingSize,
                [&](const char* name, Bytes part) { printFormulaTiming(context.report, name, part); });
}

void printType10(Context& context, const DataBlock& block)
{
    forEachPart(context.report, block.payload, kFormulaTimingSize + (block.flags >> 4 & 7),
                [&](const char* name, Bytes part) { printFormulaTiming(context.report, name, part); });
}

void printText(Context& context, const DataBlock& block)
{
    const Bytes text = block.payload;
    const bool ended = !text.empty() && text.at(text.size() - 1) == '\n';
    std::fputs("Text: ", context.report.line());
    context.report.quoted(text.part(0, text.size() - (ended ? 1 : 0)));
    std::fputc('\n', context.report.stream());
}

void printTileGeometry(Report& report, Bytes tile)
{
    constexpr std::array<const char*, 4> kSeveral = {"not defined", "shown at its tile location",
                                                     "scaled to fit the display", "cloned to the other tiles"};
    report.line(tile.bit(0, 7) ? "Enclosure: single" : "Enclosure: several");
    if (tile.bits(0, 2, 0) < kSeveral.size()) {
        std::fprintf(report.line(), "When it is the only tile: %s\n", kSeveral[tile.bits(0, 2, 0)]);
    }
    const unsigned columns = (tile.bits(1, 7, 4) | tile.bits(3, 7, 6) << 4) + 1;
    const unsigned rows = (tile.bits(1, 3, 0) | tile.bits(3, 5, 4) << 4) + 1;
    std::fprintf(report.line(), "Tiles: %u x %u\n", columns, rows);
    std::fprintf(report.line(), "Tile location: %u, %u\n", tile.bits(2, 7, 4) | tile.bits(3, 3, 2) << 4,
                 tile.bits(2, 3, 0) | tile.bits(3, 1, 0) << 4);
    std::fprintf(report.line(), "Tile resolution: %ux%u\n", tile.at16(4) + 1, tile.at16(6) + 1);
    if (tile.bit(0, 6)) {
        const double unit = tile.at(8) / 10.0;
        std::fprintf(report.line(), "Bezels (pixels): top %.1f, bottom %.1f, right %.1f, left %.1f\n",
                     tile.at(9) * unit, tile.at(10) * unit, tile.at(11) * unit, tile.at(12) * unit);
    }
}

void printTileProduct(Report& report, Bytes tile)
{
    std::fprintf(report.line(), "Tile product code: %u\n", tile.at16(16));
    std::fprintf(report.line(), "Tile serial number: %u\n", tile.at32(18));
}

void printTile1(Context& context, const DataBlock& block)
{
    Report& report = context.report;
    printTileGeometry(report, block.payload);
    std::fputs("Tile vendor: ", report.line());
    report.quoted(block.payload.part(13, 3));
    std::fputc('\n', report.stream());
    printTileProduct(report, block.payload);
}

void printTile2(Context& context, const DataBlock& block)
{
    const Bytes tile = block.payload;
    printTileGeometry(context.report, tile);
    std::fprintf(context.report.line(), "Tile vendor OUI: %02X-%02X-%02X\n", tile.at(13), tile.at(14), tile.at(15));
    printTileProduct(context.report, tile);
}

void printContainerId(Context& context, const DataBlock& block)
{
    const Bytes id = block.payload;
    std::FILE* const out = context.report.line();
    std::fputs("Container id: ", out);
    for (std::size_t i = 0; i < id.size(); ++i) {
        std::fprintf(out, i == 4 || i == 6 || i == 8 || i == 10 ? "-%02x" : "%02x", id.at(i));
    }
    std::fputc('\n', out);
}

void printCta(Context& context, const DataBlock& block)
{
    printCtaCollection(context, block.payload);
}

struct Kind {
    unsigned tag;
    const char* name;
    PrintBlock print;  // null: dumped
    std::size_t leastSize;
};

constexpr auto kKinds = std::to_array<Kind>({
    {0x00, "Product Identification Data Block", printProduct1, 12},
    {0x01, "Display Parameters Data Block", printParameters1, 12},
    {0x02, "Color Characteristics Data Block", nullptr, 0},
    {0x03, "Video Timing Modes Type I: Detailed Timings Data Block", printType1, 0},
    {0x04, "Video Timing Modes Type II: Detailed Timings Data Block", printType2, 0},
    {0x05, "Video Timing Modes Type III: Short Timings Data Block", printType3, 0},
    {0x06, "Video Timing Modes Type IV: DMT Timings Data Block", printCodes, 0},
    {0x07, "Supported Timing Modes Type 1: VESA DMT Timings Data Block", printDmtMap, 0},
    {0x08, "Supported Timing Modes Type 2: CTA-861 Timings Data Block", printVicMap, 0},
    {0x09, "Video Timing Range Data Block", nullptr, 0},
    {0x0A, "Product Serial Number Data Block", printText, 0},
    {0x0B, "General-Purpose ASCII String Data Block", printText, 0},
    {0x0C, "Display Device Data Block", nullptr, 0},
    {0x0D, "Interface Power Sequencing Data Block", nullptr, 0},
    {0x0E, "Transfer Characteristics Data Block", nullptr, 0},
    {0x0F, "Display Interface Data Block", nullptr, 0},
    {0x10, "Stereo Display Interface Data Block", nullptr, 0},
    {0x11, "Video Timing Modes Type V: Short Timings Data Block", nullptr, 0},
    {0x12, "Tiled Display Topology Data Block", printTile1, 22},
    {0x13, "Video Timing Modes Type VI: Detailed Timings Data Block", nullptr, 0},
    {0x20, "Product Identification Data Block", printProduct2, 12},
    {0x21, "Display Parameters Data Block", printParameters2, 8},
    {0x22, "Video Timing Modes Type VII: Detailed Timings Data Block", printType7, 0},
    {0x23, "Video Timing Modes Type VIII: Enumerated Timing Codes Data Block", printCodes, 0},
    {0x24, "Video Timing Modes Type IX: Formula-Based Timings Data Block", printType9, 0},
    {0x25, "Dynamic Video Timing Range Limits Data Block", nullptr, 0},
    {0x26, "Display Interface Features Data Block", nullptr, 0},
    {0x27, "Stereo Display Interface Data Block", nullptr, 0},
    {0x28, "Tiled Display Topology Data Block", printTile2, 22},
    {0x29, "ContainerID Data Block", printContainerId, 16},
    {0x2A, "Video Timing Modes Type X: Formula-Based Timings Data Block", printType10, 0},
    {0x2B, "Adaptive-Sync Data Block", nullptr, 0},
    {0x2C, "ARVR Head-Mounted Display Data Block", nullptr, 0},
    {0x2D, "ARVR Layer Data Block", nullptr, 0},
    {0x7E, "Vendor-Specific Data Block", nullptr, 0},
    {0x7F, "Vendor-Specific Data Block", nullptr, 0},
    {0x81, "CTA DisplayID Data Block", printCta, 0},
});

const Kind* findKind(unsigned tag)
{
    for (const Kind& kind : kKinds) {
        if (kind.tag == tag) {
            return &kind;
        }
    }
    return nullptr;
}

void printDataBlock(Context& context, unsigned tag, const DataBlock& block)
{
    Report& report = context.report;
    const Kind* const kind = findKind(tag);
    std::fprintf(report.line(), "%s (0x%02x), revision %u:\n", kind != nullptr ? kind->name : "Unknown data block", tag,
                 block.flags & 7);
    const Group group(report);
    if (kind == nullptr) {
        std::snprintf(report.finding(), Report::kFindingLength, "DisplayID data block tag 0x%02x is not known", tag);
    } else if (block.payload.size() < kind->leastSize) {
        std::snprintf(report.finding(), Report::kFindingLength, "DisplayID %s: shorter than %zu bytes", kind->name,
                      kind->leastSize);
    } else if (kind->print != nullptr) {
        kind->print(context, block);
        return;
    }
    report.dump(block.payload);
}

void printDataBlocks(Context& context, Bytes data)
{
    Report& report = context.report;
    // What follows the last block up to the section's checksum is filled with zeros.
    while (data.size() >= kDataBlockHeaderSize && !data.allEqual(0)) {
        const std::size_t length = data.at(2);
        const std::size_t size = kDataBlockHeaderSize + length;
        printDataBlock(context, data.at(0), {data.at(1), data.part(kDataBlockHeaderSize, length)});
        if (size > data.size()) {
            std::snprintf(report.finding(), Report::kFindingLength,
                          "DisplayID data block 0x%02x reaches past the end of the section", data.at(0));
        }
        data = data.from(size);
    }
    if (!data.allEqual(0)) {
        report.finding("DisplayID: bytes after the last data block are not 0");
    }
}

const char* useName(unsigned version, unsigned use)
{
    constexpr std::array<const char*, 7> kProductTypes = {
        "extension section",   "test structure only",    "display panel or transducer", "standalone display device",
        "television receiver", "repeater or translator", "direct drive display"};
    constexpr std::array<const char*, 9> kUses = {
        "same as the base section",      "test structure only", "generic display", "television",
        "desktop productivity",          "desktop gaming",      "presentation",    "head-mounted virtual reality",
        "head-mounted augmented reality"};
    if (version >= kFirstVersion2) {
        return use < kUses.size() ? kUses[use] : "reserved";
    }
    return use < kProductTypes.size() ? kProductTypes[use] : "reserved";
}

}  // namespace

void printDisplayIdBlock(Context& context, Bytes block)
{
    constexpr std::size_t kChecksumSize = 1;
    Report& report = context.report;
    const Bytes section = block.part(1, kBlockSize - 1 - kChecksumSize);
    const unsigned version = section.at(0);
    const std::size_t length = section.at(1);
    std::fprintf(report.line(), "DisplayID version: %u.%u\n", version >> 4, version & 0x0F);
    std::fprintf(report.line(), "Section length: %zu\n", length);
    std::fprintf(report.line(), "%s: %s\n", version >= kFirstVersion2 ? "Primary use" : "Product type",
                 useName(version, section.at(2)));
    std::fprintf(report.line(), "Extension sections: %u\n", section.at(3));
    printDataBlocks(context, section.part(kSectionHeaderSize, length));
    if (kSectionHeaderSize + length + kChecksumSize > section.size()) {
        report.finding("DisplayID: the section reaches past the end of the block");
        return;
    }
    const unsigned stated = section.at(kSectionHeaderSize + length);
    const unsigned sum = section.part(0, kSectionHeaderSize + length + kChecksumSize).sum();
    if (sum == 0) {
        std::fprintf(report.line(), "Section checksum: 0x%02x (valid)\n", stated);
        return;
    }
    std::fprintf(report.line(), "Section checksum: 0x%02x (invalid, should be 0x%02x)\n", stated,
                 (stated - sum) & 0xFF);
    report.finding("DisplayID: the section's checksum is wrong");
}

}  // namespace vek::edid
