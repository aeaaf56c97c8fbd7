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
        curve[entry] = static_cast<std::uint16_t>(output * gamma_table::kFullScale + 0.5);
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
