#include "drivers/edid/displayid_timing.h"

#include <array>
#include <cstdio>

#include "drivers/edid/detailed_timing.h"
#include "drivers/edid/timing.h"

namespace vek::edid
{
namespace
{

constexpr std::int32_t kCell = 8;

/// The ratio of a picture by its code, 0:0 for one that the pixel counts give.
Ratio ratioOfCode(unsigned code)
{
    constexpr std::array<Ratio, 8> kRatios = {Ratio{1, 1},  Ratio{5, 4},   Ratio{4, 3},   Ratio{15, 9},
                                              Ratio{16, 9}, Ratio{16, 10}, Ratio{64, 27}, Ratio{256, 135}};
    return code < kRatios.size() ? kRatios[code] : Ratio{0, 0};
}

/// A count that is stored less one.
std::int32_t count(unsigned stored)
{
    return static_cast<std::int32_t>(stored) + 1;
}

void noteStereo(Report& report, unsigned code)
{
    constexpr std::array<const char*, 4> kStereo = {nullptr, "Stereo: always", "Stereo: by the user's choice",
                                                    "Stereo: reserved value"};
    if (kStereo[code] != nullptr) {
        const Group group(report);
        report.line(kStereo[code]);
    }
}

/// DisplayID counts the lines of a frame, also of an interlaced one.
Axis fieldOfFrame(Axis frame)
{
    frame.active /= 2;
    frame.frontPorch /= 2;
    frame.sync /= 2;
    frame.backPorch /= 2;
    return frame;
}

void checkTiming(Report& report, const char* name, const Timing& timing)
{
    if (const char* const reason = impossibility(timing)) {
        std::snprintf(report.finding(), Report::kFindingLength, "%s is impossible: %s", name, reason);
    }
}

/// Porch and sync with the sync's polarity in the porch's top bit.
Axis longAxis(Bytes bytes)
{
    constexpr unsigned kPorchMask = 0x7FFF;
    Axis axis{count(bytes.at16(0)), count(bytes.at16(4) & kPorchMask), count(bytes.at16(6)), 0, 0, bytes.bit(5, 7)};
    axis.backPorch = count(bytes.at16(2)) - axis.frontPorch - axis.sync;
    return axis;
}

}  // namespace

void printLongTiming(Report& report, const char* name, Bytes descriptor, const LongTimingKind& kind)
{
    const bool interlaced = descriptor.bit(3, 4);
    const Axis vertical = longAxis(descriptor.from(12));
    const Timing timing{(static_cast<std::int64_t>(descriptor.at24(0)) + 1) * kind.clockUnitKhz,
                        longAxis(descriptor.from(4)), interlaced ? fieldOfFrame(vertical) : vertical,
                        interlaced ? Scan::kInterlaced : Scan::kProgressive, ratioOfCode(descriptor.bits(3, 3, 0))};
    report.timing(name, timing, descriptor.bit(3, 7) ? kind.topOption : nullptr);
    report.timingParts(timing);
    noteStereo(report, descriptor.bits(3, 6, 5));
    checkTiming(report, name, timing);
}

void printShortDetailedTiming(Report& report, const char* name, Bytes descriptor)
{
    constexpr unsigned kClockUnitKhz = 10;
    Axis horizontal{count(descriptor.at(4) | descriptor.bits(5, 0, 0) << 8) * kCell,
                    count(descriptor.bits(6, 7, 4)) * kCell,
                    count(descriptor.bits(6, 3, 0)) * kCell,
                    0,
                    0,
                    descriptor.bit(3, 3)};
    horizontal.backPorch = count(descriptor.bits(5, 7, 1)) * kCell - horizontal.frontPorch - horizontal.sync;
    Axis vertical{count(descriptor.at(7) | descriptor.bits(8, 3, 0) << 8),
                  count(descriptor.bits(10, 7, 4)),
                  count(descriptor.bits(10, 3, 0)),
                  0,
                  0,
                  descriptor.bit(3, 2)};
    vertical.backPorch = count(descriptor.at(9)) - vertical.frontPorch - vertical.sync;
    const bool interlaced = descriptor.bit(3, 4);
    const Timing timing{(static_cast<std::int64_t>(descriptor.at24(0)) + 1) * kClockUnitKhz,
                        horizontal,
                        interlaced ? fieldOfFrame(vertical) : vertical,
                        interlaced ? Scan::kInterlaced : Scan::kProgressive,
                        {0, 0}};
    report.timing(name, timing, descriptor.bit(3, 7) ? "preferred" : nullptr);
    report.timingParts(timing);
    noteStereo(report, descriptor.bits(3, 6, 5));
    checkTiming(report, name, timing);
}

void printShortTiming(Report& report, const char* name, Bytes descriptor)
{
    const Ratio ratio = ratioOfCode(descriptor.bits(0, 3, 0));
    const unsigned formula = descriptor.bits(0, 6, 4);
    if (ratio.width == 0 || formula > 1 || descriptor.bit(2, 7)) {
        std::fprintf(report.line(), "%s: %02x %02x %02x\n", name, descriptor.at(0), descriptor.at(1), descriptor.at(2));
        return;
    }
    const std::int32_t width = count(descriptor.at(1)) * kCell;
    const FormulaInput input{width, width * ratio.height / ratio.width,
                             static_cast<double>(count(descriptor.bits(2, 6, 0))), ratio};
    report.timing(name, formula == 0 ? cvt(input) : cvtReducedBlanking(input),
                  descriptor.bit(0, 7) ? "preferred" : nullptr);
}

void printFormulaTiming(Report& report, const char* name, Bytes descriptor)
{
    const std::int32_t width = count(descriptor.at16(1));
    const std::int32_t height = count(descriptor.at16(3));
    const std::int32_t refresh = count(descriptor.at(5) | descriptor.bits(6, 1, 0) << 8);
    const FormulaInput input{width, height, static_cast<double>(refresh), {0, 0}};
    const char* const note = descriptor.bit(0, 4) ? "also at 1000/1001 of the rate" : nullptr;
    switch (descriptor.bits(0, 2, 0)) {
        case 0:
            report.timing(name, cvt(input));
            break;
        case 1:
            report.timing(name, cvtReducedBlanking(input));
            break;
        case 2:
            report.timing(name, cvtReducedBlanking2(input), note);
            break;
        default:
            std::fprintf(report.line(), "%s: %dx%d  %d Hz, formula %u\n", name, width, height, refresh,
                         descriptor.bits(0, 2, 0));
            break;
    }
    noteStereo(report, descriptor.bits(0, 6, 5));
}

}  // namespace vek::edid
