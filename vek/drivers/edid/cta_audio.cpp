// Audio descriptors and speaker positions of CTA-861-I.

#include <array>
#include <cstdio>

#include "drivers/edid/cta_data_block.h"

namespace vek::edid
{
namespace
{

constexpr std::size_t kDescriptorSize = 3;

enum Format : unsigned {
    kLinearPcm = 1,
    kAc3 = 2,
    kAtrac = 8,
    kOneBit = 9,
    kEnhancedAc3 = 10,
    kDtsHd = 11,
    kMat = 12,
    kDst = 13,
    kWmaPro = 14,
    kExtension = 15
};

enum Extension : unsigned {
    kHeAac = 4,
    kAacLc = 6,
    kDra = 7,
    kHeAacSurround = 8,
    kAacLcSurround = 10,
    kMpegH3d = 11,
    kAc4 = 12,
    kLinearPcm3d = 13
};

constexpr std::array<const char*, 16> kFormats = {"reserved format 0",
                                                  "Linear PCM",
                                                  "AC-3",
                                                  "MPEG 1 (layers 1 and 2)",
                                                  "MPEG 1 layer 3 (MP3)",
                                                  "MPEG 2",
                                                  "AAC LC",
                                                  "DTS",
                                                  "ATRAC",
                                                  "One Bit Audio",
                                                  "Enhanced AC-3",
                                                  "DTS-HD",
                                                  "MAT (MLP)",
                                                  "DST",
                                                  "WMA Pro",
                                                  "extension"};

const char* extensionName(unsigned extension)
{
    constexpr std::array<const char*, 14> kNames = {nullptr,
                                                    "HE AAC (obsolete)",
                                                    "HE AAC v2 (obsolete)",
                                                    "MPEG Surround (obsolete)",
                                                    "MPEG-4 HE AAC",
                                                    "MPEG-4 HE AAC v2",
                                                    "MPEG-4 AAC LC",
                                                    "DRA",
                                                    "MPEG-4 HE AAC + MPEG Surround",
                                                    nullptr,
                                                    "MPEG-4 AAC LC + MPEG Surround",
                                                    "MPEG-H 3D Audio",
                                                    "AC-4",
                                                    "L-PCM 3D Audio"};
    return extension < kNames.size() ? kNames[extension] : nullptr;
}

void printRates(Report& report, unsigned rates)
{
    constexpr std::array<const char*, 7> kRates = {"32", "44.1", "48", "88.2", "96", "176.4", "192"};
    std::fputs("Sample rates (kHz):", report.line());
    for (std::size_t i = 0; i < kRates.size(); ++i) {
        if ((rates >> i & 1) != 0) {
            std::fprintf(report.stream(), " %s", kRates[i]);
        }
    }
    std::fputc('\n', report.stream());
}

void printSampleSizes(Report& report, unsigned sizes)
{
    constexpr std::array<unsigned, 3> kSizes = {16, 20, 24};
    std::fputs("Sample sizes (bits):", report.line());
    for (std::size_t i = 0; i < kSizes.size(); ++i) {
        if ((sizes >> i & 1) != 0) {
            std::fprintf(report.stream(), " %u", kSizes[i]);
        }
    }
    std::fputc('\n', report.stream());
}

unsigned extensionChannels(unsigned extension, Bytes descriptor)
{
    const unsigned low = descriptor.bits(0, 2, 0);
    if (extension == kLinearPcm3d) {
        return (low | descriptor.bits(0, 7, 7) << 3 | descriptor.bits(1, 7, 7) << 4) + 1;
    }
    return low + 1;
}

void printAacFrames(Report& report, unsigned extension, Bytes descriptor)
{
    constexpr std::array<const char*, 3> kFrames = {nullptr, "Frame length: 960 samples", "Frame length: 1024 samples"};
    report.flags(descriptor.bits(2, 2, 0), kFrames);
    if (extension == kAacLc && descriptor.bit(2, 0)) {
        report.line("Supports 22.2 channels (System H)");
    }
    if (extension == kHeAacSurround || extension == kAacLcSurround) {
        report.line(descriptor.bit(2, 0) ? "MPEG Surround: implicitly and explicitly signaled"
                                         : "MPEG Surround: implicitly signaled");
    }
}

void printExtension(Report& report, Bytes descriptor)
{
    const unsigned extension = descriptor.bits(2, 7, 3);
    const char* const name = extensionName(extension);
    if (name == nullptr) {
        std::fprintf(report.line(), "Reserved extension format 0x%02x: %02x %02x %02x\n", extension, descriptor.at(0),
                     descriptor.at(1), descriptor.at(2));
        std::snprintf(report.finding(), Report::kFindingLength, "audio extension format 0x%02x is reserved", extension);
        return;
    }
    const Group group(report, name);
    if (extension == kMpegH3d) {
        std::fprintf(report.line(), "MPEG-H 3D Audio level: %u\n", descriptor.bits(0, 2, 0));
    } else if (extension != kAc4) {
        std::fprintf(report.line(), "Maximum channels: %u\n", extensionChannels(extension, descriptor));
    }
    printRates(report, descriptor.bits(1, 6, 0));
    if (extension == kLinearPcm3d) {
        printSampleSizes(report, descriptor.bits(2, 2, 0));
    } else if (extension == kMpegH3d) {
        constexpr std::array<const char*, 2> kProfiles = {"Low complexity profile", "Baseline profile"};
        report.flags(descriptor.bits(2, 1, 0), kProfiles);
    } else if (extension == kAc4) {
        std::fprintf(report.line(), "AC-4 capability: %u\n", descriptor.bits(2, 2, 0));
    } else if (extension >= kHeAac && extension != kDra) {
        printAacFrames(report, extension, descriptor);
    }
}

void printMat(Report& report, unsigned value)
{
    const bool objectAudio = (value & 1) != 0;
    report.line(objectAudio ? "Supports Dolby TrueHD, object audio PCM and channel-based PCM"
                            : "Supports Dolby TrueHD");
    if (objectAudio) {
        report.line((value & 2) != 0 ? "Hash of PCM audio: not required" : "Hash of PCM audio: required");
    }
}

void printFormatDetail(Report& report, unsigned format, Bytes descriptor)
{
    constexpr unsigned kBitRateUnit = 8;
    const unsigned value = descriptor.at(2);
    if (format == kLinearPcm) {
        printSampleSizes(report, value);
    } else if (format >= kAc3 && format <= kAtrac) {
        std::fprintf(report.line(), "Maximum bit rate: %u kb/s\n", value * kBitRateUnit);
    } else if (format == kEnhancedAc3 && (value & 1) != 0) {
        report.line("Supports joint object coding");
    } else if (format == kMat) {
        printMat(report, value);
    } else if (format == kWmaPro) {
        std::fprintf(report.line(), "Profile: %u\n", value & 7);
    } else if (format != kEnhancedAc3 && value != 0) {
        std::fprintf(report.line(), "Format-dependent value: 0x%02x\n", value);
    }
}

void printDescriptor(Report& report, Bytes descriptor)
{
    const unsigned format = descriptor.bits(0, 6, 3);
    if (format == kExtension) {
        printExtension(report, descriptor);
        return;
    }
    const Group group(report, kFormats[format]);
    std::fprintf(report.line(), "Maximum channels: %u\n", descriptor.bits(0, 2, 0) + 1);
    printRates(report, descriptor.bits(1, 6, 0));
    printFormatDetail(report, format, descriptor);
    if (format == 0) {
        report.finding("audio format 0 is reserved");
    }
}

}  // namespace

void printAudioBlock(Report& report, Bytes payload)
{
    const Group group(report, "Audio Data Block");
    std::size_t start = 0;
    for (; start + kDescriptorSize <= payload.size(); start += kDescriptorSize) {
        printDescriptor(report, payload.part(start, kDescriptorSize));
    }
    if (start != payload.size()) {
        report.finding("Audio Data Block: its length is no multiple of 3");
    }
}

void printSpeakers(Report& report, unsigned allocation)
{
    constexpr std::array<const char*, 20> kSpeakers = {"FL/FR: front left and right",
                                                       "LFE1: low frequency effects 1",
                                                       "FC: front center",
                                                       "BL/BR: back left and right",
                                                       "BC: back center",
                                                       "FLC/FRC: front left and right of center",
                                                       "RLC/RRC: rear left and right of center",
                                                       "FLW/FRW: front left and right wide",
                                                       "TpFL/TpFR: top front left and right",
                                                       "TpC: top center",
                                                       "TpFC: top front center",
                                                       "LS/RS: left and right surround",
                                                       "LFE2: low frequency effects 2",
                                                       "TpBC: top back center",
                                                       "SiL/SiR: side left and right",
                                                       "TpSiL/TpSiR: top side left and right",
                                                       "TpBL/TpBR: top back left and right",
                                                       "BtFC: bottom front center",
                                                       "BtFL/BtFR: bottom front left and right",
                                                       "TpLS/TpRS: top left and right surround"};
    report.flags(allocation, kSpeakers);
    if (allocation >> kSpeakers.size() != 0) {
        report.finding("reserved bits of a speaker allocation are set");
    }
}

}  // namespace vek::edid
