#include "drivers/power_function.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <numbers>

namespace vek
{
namespace
{

static_assert(std::numeric_limits<double>::is_iec559, "numbers are taken apart as IEEE 754 lays them out");

constexpr unsigned kFractionBits = 52;
constexpr std::int64_t kExponentBias = 1023;
constexpr std::uint64_t kFractionMask = (std::uint64_t{1} << kFractionBits) - 1;
constexpr std::uint64_t kExponentOfOne = std::uint64_t{kExponentBias} << kFractionBits;

}  // namespace

double powerOfTwo(double exponent)
{
    constexpr double kLowest = -1022;
    constexpr double kHighest = 1023;
    if (exponent < kLowest) {
        return 0;
    }
    if (exponent > kHighest) {
        return powerOfTwo(kHighest);
    }
    const auto whole = static_cast<std::int64_t>(exponent);
    // The Taylor series of e^x for |x| < ln 2: the first term left out is below 1e-18.
    constexpr int kTerms = 17;
    const double x = (exponent - static_cast<double>(whole)) * std::numbers::ln2;
    double sum = 1;
    for (int n = kTerms; n > 0; --n) {
        sum = 1 + sum * x / n;
    }
    return sum * std::bit_cast<double>(static_cast<std::uint64_t>(whole + kExponentBias) << kFractionBits);
}

double logarithmToBaseTwo(double number)
{
    const auto bits = std::bit_cast<std::uint64_t>(number);
    auto whole = static_cast<std::int64_t>(bits >> kFractionBits) - kExponentBias;
    double fraction = std::bit_cast<double>((bits & kFractionMask) | kExponentOfOne);
    if (fraction > std::numbers::sqrt2) {
        fraction /= 2;
        ++whole;
    }
    // ln f = 2 artanh((f - 1) / (f + 1)), whose series runs in powers of at most 0.03 here: the first term left out is
    // below 1e-17.
    constexpr int kTerms = 11;
    const double t = (fraction - 1) / (fraction + 1);
    double sum = 0;
    for (int n = kTerms - 1; n >= 0; --n) {
        sum = sum * t * t + 1.0 / (2 * n + 1);
    }
    return static_cast<double>(whole) + 2 * t * sum * std::numbers::log2e;
}

double power(double number, double exponent)
{
    return number > 0 ? powerOfTwo(exponent * logarithmToBaseTwo(number)) : 0;
}

double exponential(double exponent)
{
    return powerOfTwo(exponent * std::numbers::log2e);
}

}  // namespace vek
