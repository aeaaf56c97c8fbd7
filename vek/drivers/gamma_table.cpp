#include "drivers/gamma_table.h"

#include "drivers/power_function.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr double kDisplayGamma = 2.2;

double curveAt(double input, double gamma)
{
    if (gamma > 0) {
        return power(input, 1 / gamma);
    }
    return input < 1 ? 0 : 1;
}

/// The entry for an output of 0 to 1.
std::uint16_t nearestEntry(double output)
{
    // Twice as fine, so that the last bit tells whether to round up: lround() would need the mathematics library.
    const auto halves = static_cast<std::uint32_t>(output * (2.0 * gamma_table::kFullScale));
    return static_cast<std::uint16_t>((halves + 1) / 2);
}

int writeCurve(AddressSpace& table, std::size_t colour, const GammaCurve& curve)
{
    for (std::size_t entry = 0; entry < curve.size(); ++entry) {
        const int result = table.write(gamma_table::addressOf(colour, entry), gamma_table::kEntryWidth, curve[entry]);
        if (result != VEK_OK) {
            return result;
        }
    }
    return VEK_OK;
}

}  // namespace

GammaCurve gammaCurve(double gamma, double brightness, double tint)
{
    constexpr auto kLast = static_cast<double>(gamma_table::kEntries - 1);
    GammaCurve curve{};
    for (std::size_t entry = 0; entry < curve.size(); ++entry) {
        const double output = brightness * tint * curveAt(static_cast<double>(entry) / kLast, gamma);
        curve[entry] = nearestEntry(output);
    }
    return curve;
}

int programGammaTables(AddressSpace& table, const GammaSetting& setting)
{
    const std::array<double, 3> white = whiteOfColourTemperature(setting.kelvin);
    for (std::size_t colour = 0; colour < gamma_table::kColours; ++colour) {
        const double tint = power(white[colour], 1 / kDisplayGamma);
        const int result = writeCurve(table, colour, gammaCurve(setting.gamma[colour], setting.brightness, tint));
        if (result != VEK_OK) {
            return result;
        }
    }
    return VEK_OK;
}

}  // namespace vek
