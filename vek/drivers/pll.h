#ifndef VEK_DRIVERS_PLL_H
#define VEK_DRIVERS_PLL_H

#include <algorithm>
#include <cstdint>

namespace vek
{

/// The dividers of a PLL. The reference over `pre` is what the phase detector compares; `feedback` times that is the
/// frequency of the VCO; that over `post` is the output.
struct PllDividers {
    std::uint64_t pre;
    std::uint64_t feedback;
    std::uint64_t post;
};

/// From the least to the most.
struct PllRange {
    std::uint64_t least;
    std::uint64_t most;

    constexpr bool holds(std::uint64_t value) const { return value >= least && value <= most; }
    /// Whether numerator / denominator lies in the range.
    constexpr bool holds(std::uint64_t numerator, std::uint64_t denominator) const
    {
        return numerator >= least * denominator && numerator <= most * denominator;
    }
};

/// What the PLLs of the family can do; frequencies in kHz. The VCO spans an octave, so that some output divider puts it
/// into its range for every output frequency; a phase detector at 1 MHz reaches every whole megahertz.
struct PllLimits {
    PllRange pre{1, 63};
    PllRange feedback{16, 4095};
    PllRange post{1, 127};
    PllRange reference{10'000, 100'000};
    PllRange phaseDetector{1'000, 50'000};
    PllRange vco{1'200'000, 2'400'000};
    PllRange output{10'000, 2'400'000};
    std::uint64_t errorDivisor = 200;  ///< The output is off by at most 1 / 200, that is 0.5 per cent.
};
constexpr PllLimits kPllLimits;

/// The crystal that all PLLs of a card run from, in kHz.
constexpr std::uint64_t kCrystalKhz = 27'000;

/// A frequency as a fraction, so that nothing is rounded on the way.
struct Rate {
    std::uint64_t khz;
    std::uint64_t divisor;

    /// In MHz, rounded to the nearest, halves upwards.
    constexpr std::uint64_t megahertz() const
    {
        constexpr std::uint64_t kKhzPerMhz = 1000;
        return (khz + divisor * kKhzPerMhz / 2) / (divisor * kKhzPerMhz);
    }

    constexpr double gigahertz() const
    {
        constexpr double kKhzPerGhz = 1e6;
        return static_cast<double>(khz) / (static_cast<double>(divisor) * kKhzPerGhz);
    }
};

constexpr Rate kNoClock{0, 1};

/// A setting of a PLL, as its register holds it: bits 5:0 the divider before the phase detector, 19:8 the one in the
/// feedback, 30:24 the one behind the VCO. All others are 0.
constexpr std::uint32_t encodePll(const PllDividers& dividers)
{
    return static_cast<std::uint32_t>(dividers.post << 24 | dividers.feedback << 8 | dividers.pre);
}

constexpr PllDividers decodePll(std::uint32_t setting)
{
    return {.pre = setting & 0x3f, .feedback = setting >> 8 & 0xfff, .post = setting >> 24 & 0x7f};
}

/// Whether a setting has only the bits of its dividers and each of them in its range.
constexpr bool isPllSetting(std::uint32_t setting)
{
    const PllDividers dividers = decodePll(setting);
    return encodePll(dividers) == setting && kPllLimits.pre.holds(dividers.pre) &&
           kPllLimits.feedback.holds(dividers.feedback) && kPllLimits.post.holds(dividers.post);
}

/// Whether dividers that are in their ranges keep every frequency in its own.
constexpr bool pllRuns(std::uint64_t referenceKhz, const PllDividers& dividers, const PllLimits& limits = kPllLimits)
{
    const std::uint64_t vcoTimesPre = referenceKhz * dividers.feedback;
    return limits.reference.holds(referenceKhz) && limits.phaseDetector.holds(referenceKhz, dividers.pre) &&
           limits.vco.holds(vcoTimesPre, dividers.pre) &&
           limits.output.holds(vcoTimesPre, dividers.pre * dividers.post);
}

/// The output of a PLL on the card's crystal. One that is set beyond its limits does not lock and gives no clock.
constexpr Rate pllOutput(std::uint32_t setting)
{
    const PllDividers dividers = decodePll(setting);
    if (!isPllSetting(setting) || !pllRuns(kCrystalKhz, dividers)) {
        return kNoClock;
    }
    return {.khz = kCrystalKhz * dividers.feedback, .divisor = dividers.pre * dividers.post};
}

/// Looks for the dividers that come nearest to a frequency.
class PllSearch
{
public:
    /// Searches for `wantedKhz` from `referenceKhz`, which has to be in its range. Among dividers that are equally near
    /// it takes those with the highest frequency at the phase detector, which multiply the reference's noise least, and
    /// among these the ones with the fastest VCO, whose jitter is divided most.
    constexpr PllSearch(std::uint64_t referenceKhz, std::uint64_t wantedKhz, const PllLimits& limits = kPllLimits)
        : limits_(limits), referenceKhz_(referenceKhz), wantedKhz_(wantedKhz)
    {
        if (!limits_.output.holds(wantedKhz)) {
            return;
        }
        for (std::uint64_t pre = limits_.pre.least; pre <= limits_.pre.most; ++pre) {
            if (limits_.phaseDetector.holds(referenceKhz, pre)) {
                tryPre(pre);
            }
        }
    }

    /// Whether there are dividers that keep to all limits.
    constexpr bool found() const { return errorDivisor_ != 0; }
    /// These dividers.
    constexpr const PllDividers& dividers() const { return dividers_; }

private:
    constexpr void tryPre(std::uint64_t pre)
    {
        const PllRange feedback{
            std::max(limits_.feedback.least, (limits_.vco.least * pre + referenceKhz_ - 1) / referenceKhz_),
            std::min(limits_.feedback.most, limits_.vco.most * pre / referenceKhz_)};
        if (feedback.least > feedback.most) {
            return;
        }
        // With any other divider the VCO would be out of its range by more than the error that is allowed.
        const std::uint64_t least = std::max(limits_.post.least, limits_.vco.least / wantedKhz_);
        const std::uint64_t most = std::min(limits_.post.most, limits_.vco.most / wantedKhz_ + 1);
        for (std::uint64_t post = most; post >= least; --post) {
            const std::uint64_t nearest = (wantedKhz_ * pre * post + referenceKhz_ / 2) / referenceKhz_;
            consider({.pre = pre, .feedback = std::clamp(nearest, feedback.least, feedback.most), .post = post});
        }
    }

    constexpr void consider(const PllDividers& candidate)
    {
        const std::uint64_t divisor = candidate.pre * candidate.post;
        const std::uint64_t reached = referenceKhz_ * candidate.feedback;
        const std::uint64_t wanted = wantedKhz_ * divisor;
        const std::uint64_t error = reached > wanted ? reached - wanted : wanted - reached;
        if (error * limits_.errorDivisor > wanted || !pllRuns(referenceKhz_, candidate, limits_)) {
            return;
        }
        if (!found() || error * errorDivisor_ < error_ * divisor) {
            dividers_ = candidate;
            error_ = error;
            errorDivisor_ = divisor;
        }
    }

    PllLimits limits_;
    std::uint64_t referenceKhz_;
    std::uint64_t wantedKhz_;
    PllDividers dividers_{};
    // The error of these dividers in kHz is error_ / errorDivisor_; a divisor of 0 stands for none found.
    std::uint64_t error_ = 0;
    std::uint64_t errorDivisor_ = 0;
};

}  // namespace vek

#endif
