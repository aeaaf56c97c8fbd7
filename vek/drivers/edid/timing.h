#ifndef VEK_DRIVERS_EDID_TIMING_H
#define VEK_DRIVERS_EDID_TIMING_H

#include <cstdint>

namespace vek::edid
{

/// How the lines of a frame are sent.
enum class Scan {
    kProgressive,
    kInterlaced,   ///< Two fields, half a line longer than their whole lines.
    kEqualFields,  ///< Two fields of whole lines.
};

/// One direction of a timing, in pixels or lines. Porches may come out negative from impossible descriptors.
struct Axis {
    std::int32_t active;
    std::int32_t frontPorch;
    std::int32_t sync;
    std::int32_t backPorch;
    std::int32_t border;  ///< On each side, between the picture and the porch.
    bool positiveSync;

    [[nodiscard]] constexpr std::int32_t total() const { return active + frontPorch + sync + backPorch + 2 * border; }
};

/// Width to height of the picture; 0:0 when it is that of the pixel counts.
struct Ratio {
    std::int32_t width;
    std::int32_t height;
};

/// A video timing. The vertical axis of an interlaced timing counts the lines of one field.
struct Timing {
    std::int64_t clockKhz;
    Axis horizontal;
    Axis vertical;
    Scan scan;
    Ratio ratio;
    bool reducedBlanking = false;
};

/// What a formula turns into a timing.
struct FormulaInput {
    std::int32_t width;
    std::int32_t height;
    double refreshHz;
    Ratio ratio;
};

/// Lines of the picture: those of both fields when interlaced.
std::int32_t frameHeight(const Timing& timing);

/// Lines per second in kHz; 0 when the timing has no pixels.
double horizontalRateKhz(const Timing& timing);

/// Frames per second, fields when interlaced; 0 when the timing has no pixels.
double refreshRateHz(const Timing& timing);

/// The ratio of a picture, from the pixel counts where the timing states none.
Ratio pictureRatio(const Timing& timing);

/// VESA CVT 1.2 with standard CRT blanking. The input must be positive in all its sizes, as for the other formulas.
Timing cvt(const FormulaInput& input);

/// VESA CVT 1.2 with reduced blanking, version 1.
Timing cvtReducedBlanking(const FormulaInput& input);

/// VESA CVT 1.2 with reduced blanking, version 2.
Timing cvtReducedBlanking2(const FormulaInput& input);

/// VESA GTF 1.1 with the default blanking curve.
Timing gtf(const FormulaInput& input);

}  // namespace vek::edid

#endif
