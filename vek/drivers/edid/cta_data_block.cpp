#include "drivers/edid/cta_data_block.h"

#include <array>
#include <cstdio>

#include "drivers/edid/vic_table.h"

namespace vek::edid
{
namespace
{

enum Tag : unsigned {
    kAudio = 1,
    kVideo,
    kVendorSpecific,
    kSpeakerAllocation,
    kTransferCharacteristic,
    kVideoFormat,
    kExtended
};

void printVideoBlock(Context& context, Bytes payload)
{
    Report& report = context.report;
    const Group group(report, "Video Data Block");
    for (std::size_t i = 0; i < payload.size(); ++i) {
        const VideoCode code = videoCode(payload.at(i));
        printVic(report, code.vic != 0 ? code.vic : payload.at(i), code.native ? "native" : nullptr);
        if (context.videoCodeCount < context.videoCodes.size()) {
            context.videoCodes[context.videoCodeCount++] = code.vic;
        }
    }
}

void printTransferCharacteristic(Report& report, Bytes payload)
{
    constexpr std::array<const char*, 4> kCurves = {"white", "red", "green", "blue"};
    const Group group(report, "VESA Display Transfer Characteristic Data Block");
    std::fprintf(report.line(), "Curve: %s\n", kCurves[payload.bits(0, 7, 6)]);
    report.dump(payload.from(1));
}

void printSpeakerBlock(Report& report, Bytes payload)
{
    constexpr std::size_t kSize = 3;
    const Group group(report, "Speaker Allocation Data Block");
    printSpeakers(report, payload.at24(0));
    if (payload.size() != kSize) {
        report.finding("Speaker Allocation Data Block: its length is not 3");
    }
}

}  // namespace

VideoCode videoCode(unsigned descriptor)
{
    constexpr unsigned kNativeBit = 0x80;
    constexpr unsigned kLastWithNative = 64;
    constexpr unsigned kLastShort = 127;
    constexpr unsigned kFirstLong = 193;
    constexpr unsigned kLastLong = 253;
    const unsigned low = descriptor & ~kNativeBit;
    if (descriptor > kNativeBit && low <= kLastWithNative) {
        return {low, true};
    }
    if ((descriptor >= 1 && descriptor <= kLastShort) || (descriptor >= kFirstLong && descriptor <= kLastLong)) {
        return {descriptor, false};
    }
    return {0, false};
}

void printVic(Report& report, unsigned vic, const char* note)
{
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "VIC %u", vic);
    const Timing* const timing = findVic(vic);
    if (timing != nullptr) {
        report.timing(name.data(), *timing, note);
    } else {
        std::fprintf(report.line(), "%s: reserved\n", name.data());
        std::snprintf(report.finding(), Report::kFindingLength, "%s is reserved", name.data());
    }
}

void printCtaDataBlock(Context& context, const CtaDataBlock& dataBlock)
{
    Report& report = context.report;
    switch (dataBlock.tag) {
        case kAudio:
            return printAudioBlock(report, dataBlock.payload);
        case kVideo:
            return printVideoBlock(context, dataBlock.payload);
        case kVendorSpecific:
            return printVendorBlock(report, VendorBlock::kGeneral, dataBlock.payload);
        case kSpeakerAllocation:
            return printSpeakerBlock(report, dataBlock.payload);
        case kTransferCharacteristic:
            return printTransferCharacteristic(report, dataBlock.payload);
        case kVideoFormat: {
            const Group group(report, "Video Format Data Block");
            return report.dump(dataBlock.payload);
        }
        case kExtended:
            if (dataBlock.payload.empty()) {
                return report.finding("a data block lacks its extended tag");
            }
            return printExtendedBlock(context, dataBlock.payload.at(0), dataBlock.payload.from(1));
        default: {
            const Group group(report, "Reserved data block, tag 0");
            report.dump(dataBlock.payload);
            return report.finding("a data block has the reserved tag 0");
        }
    }
}

}  // namespace vek::edid
