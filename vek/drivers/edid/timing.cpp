#include "drivers/edid/timing.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vek::edid
{
namespace
{

constexpr double kMicroseconds = 1e6;
constexpr double kMinimumSyncAndBackPorch = 550.0;  // microseconds, of CVT and GTF
constexpr double kBlankingSlope = 300.0;            // M' of CVT and GTF, percent per kHz
constexpr double kBlankingOffset = 30.0;            // C' of CVT and GTF, percent
constexpr std::int32_t kCell = 8;                   // pixels

std::int32_t whole(double value)
{
    return static_cast<std::int32_t>(value);
}

/// Halves go up. Unlike std::round() it needs no mathematics library, which would have to be loaded at every start.
double rounded(double value)
{
    return std::floor(value + 0.5);
}

std::int32_t downTo(std::int32_t step, double value)
{
    return whole(std::floor(value / step)) * step;
}

/// Lines of vertical sync, by which CVT tells the shape of the picture.
std::int32_t cvtSyncLines(const FormulaInput& input)
{
    struct Shape {
        std::int32_t width;
        std::int32_t height;
        std::int32_t lines;
    };
    constexpr std::int32_t kOtherShape = 10;
    constexpr Shape kShapes[] = {{4, 3, 4}, {16, 9, 5}, {16, 10, 6}, {5, 4, 7}, {15, 9, 7}};
    for (const Shape& shape : kShapes) {
        if (input.width * shape.height == input.height * shape.width) {
            return shape.lines;
        }
    }
    return kOtherShape;
}

}  // namespace

std::int32_t frameHeight(const Timing& timing)
{
    return timing.scan == Scan::kProgressive ? timing.vertical.active : 2 * timing.vertical.active;
}

double horizontalRateKhz(const Timing& timing)
{
    const std::int32_t total = timing.horizontal.total();
    return total > 0 ? static_cast<double>(timing.clockKhz) / total : 0.0;
}

double refreshRateHz(const Timing& timing)
{
    constexpr double kHalfLine = 0.5;
    const double lines = timing.vertical.total() + (timing.scan == Scan::kInterlaced ? kHalfLine : 0.0);
    return lines > 0 ? horizontalRateKhz(timing) * 1000.0 / lines : 0.0;
}

Ratio pictureRatio(const Timing& timing)
{
    if (timing.ratio.width > 0 && timing.ratio.height > 0) {
        return timing.ratio;
    }
    const std::int32_t height = frameHeight(timing);
    const std::int32_t divisor = std::max(std::gcd(timing.horizontal.active, height), 1);
    return {timing.horizontal.active / divisor, height / divisor};
}

Timing cvt(const FormulaInput& input)
{
    constexpr std::int32_t kFrontPorch = 3;
    constexpr std::int32_t kMinimumBackPorch = 7;
    constexpr double kLeastBlanking = 20.0;  // percent
    constexpr double kClockSteps = 4.0;      // per MHz
    const std::int32_t width = input.width;
    const std::int32_t sync = cvtSyncLines(input);
    const double period = (kMicroseconds / input.refreshHz - kMinimumSyncAndBackPorch) / (input.height + kFrontPorch);
    const std::int32_t syncAndBack =
        std::max(whole(std::floor(kMinimumSyncAndBackPorch / period)) + 1, sync + kMinimumBackPorch);
    const double duty = std::max(kBlankingOffset - kBlankingSlope * period / 1000.0, kLeastBlanking);
    const std::int32_t blanking = downTo(2 * kCell, width * duty / (100.0 - duty));
    const std::int32_t total = width + blanking;
    const std::int32_t horizontalSync = downTo(kCell, 0.08 * total);
    const auto clock = static_cast<std::int64_t>(std::floor(total / period * kClockSteps) * 1000.0 / kClockSteps);
    return {clock,
            {width, blanking / 2 - horizontalSync, horizontalSync, blanking / 2, 0, false},
            {input.height, kFrontPorch, sync, syncAndBack - sync, 0, true},
            Scan::kProgressive,
            input.ratio,
            false};
}

namespace
{

/// What tells the versions of CVT's reduced blanking apart.
struct ReducedBlanking {
    Axis horizontal;               // active left open
    std::int32_t frontPorchLines;  // least number
    std::int32_t syncLines;
    std::int32_t backPorchLines;  // least number
    bool growFrontPorch;          // else the back porch takes the lines that the blanking time asks for
    double clockStepsPerMhz;
};

Timing reducedBlanking(const FormulaInput& input, const ReducedBlanking& version)
{
    constexpr double kBlankingTime = 460.0;  // microseconds
    const double period = (kMicroseconds / input.refreshHz - kBlankingTime) / input.height;
    const std::int32_t least = version.frontPorchLines + version.syncLines + version.backPorchLines;
    const std::int32_t spare = std::max(whole(std::floor(kBlankingTime / period)) + 1 - least, 0);
    Timing result{0,
                  version.horizontal,
                  {input.height, version.frontPorchLines, version.syncLines, version.backPorchLines, 0, false},
                  Scan::kProgressive,
                  input.ratio,
                  true};
    (version.growFrontPorch ? result.vertical.frontPorch : result.vertical.backPorch) += spare;
    const double pixelsPerMicrosecond =
        input.refreshHz * result.vertical.total() * result.horizontal.total() / kMicroseconds;
    result.clockKhz = static_cast<std::int64_t>(std::floor(pixelsPerMicrosecond * version.clockStepsPerMhz) * 1000.0 /
                                                version.clockStepsPerMhz);
    return result;
}

}  // namespace

Timing cvtReducedBlanking(const FormulaInput& input)
{
    return reducedBlanking(input, {{input.width, 48, 32, 80, 0, true}, 3, cvtSyncLines(input), 7, false, 4.0});
}

Timing cvtReducedBlanking2(const FormulaInput& input)
{
    return reducedBlanking(input, {{input.width, 8, 32, 40, 0, true}, 1, 8, 6, true, 1000.0});
}

Timing gtf(const FormulaInput& input)
{
    constexpr std::int32_t kFrontPorch = 1;
    constexpr std::int32_t kSync = 3;
    const std::int32_t width = whole(rounded(static_cast<double>(input.width) / kCell)) * kCell;
    const double estimate = (kMicroseconds / input.refreshHz - kMinimumSyncAndBackPorch) / (input.height + kFrontPorch);
    const std::int32_t syncAndBack = whole(rounded(kMinimumSyncAndBackPorch / estimate));
    const std::int32_t lines = input.height + syncAndBack + kFrontPorch;
    const double period = kMicroseconds / (input.refreshHz * lines);
    const double duty = kBlankingOffset - kBlankingSlope * period / 1000.0;
    const std::int32_t blanking = whole(rounded(width * duty / (100.0 - duty) / (2 * kCell))) * 2 * kCell;
    const std::int32_t total = width + blanking;
    const std::int32_t sync = whole(rounded(0.08 * total / kCell)) * kCell;
    return {static_cast<std::int64_t>(rounded(total / period * 1000.0)),
            {width, blanking / 2 - sync, sync, blanking / 2, 0, false},
            {input.height, kFrontPorch, kSync, syncAndBack - kSync, 0, true},
            Scan::kProgressive,
            input.ratio,
            false};
}

}  // namespace vek::edid
