#include "drivers/colour_temperature.h"

#include <algorithm>
#include <cstddef>

#include "drivers/power_function.h"

namespace vek
{
namespace
{

using Colour = std::array<double, 3>;

constexpr double kFirstWavelength = 380e-9;
constexpr double kWavelengthStep = 10e-9;

/// The colour-matching functions x, y and z of the CIE 1931 standard observer from 380 to 780 nm.
constexpr std::array<Colour, 41> kObserver{{
    {0.001368, 0.000039, 0.006450}, {0.004243, 0.000120, 0.020050}, {0.014310, 0.000396, 0.067850},
    {0.043510, 0.001210, 0.207400}, {0.134380, 0.004000, 0.645600}, {0.283900, 0.011600, 1.385600},
    {0.348280, 0.023000, 1.747060}, {0.336200, 0.038000, 1.772110}, {0.290800, 0.060000, 1.669200},
    {0.195360, 0.090980, 1.287640}, {0.095640, 0.139020, 0.812950}, {0.032010, 0.208020, 0.465180},
    {0.004900, 0.323000, 0.272000}, {0.009300, 0.503000, 0.158200}, {0.063270, 0.710000, 0.078250},
    {0.165500, 0.862000, 0.042160}, {0.290400, 0.954000, 0.020300}, {0.433450, 0.994950, 0.008750},
    {0.594500, 0.995000, 0.003900}, {0.762100, 0.952000, 0.002100}, {0.916300, 0.870000, 0.001650},
    {1.026300, 0.757000, 0.001100}, {1.062200, 0.631000, 0.000800}, {1.002600, 0.503000, 0.000340},
    {0.854450, 0.381000, 0.000190}, {0.642400, 0.265000, 0.000050}, {0.447900, 0.175000, 0.000020},
    {0.283500, 0.107000, 0.000000}, {0.164900, 0.061000, 0.000000}, {0.087400, 0.032000, 0.000000},
    {0.046770, 0.017000, 0.000000}, {0.022700, 0.008210, 0.000000}, {0.011359, 0.004102, 0.000000},
    {0.005790, 0.002091, 0.000000}, {0.002899, 0.001047, 0.000000}, {0.001440, 0.000520, 0.000000},
    {0.000690, 0.000249, 0.000000}, {0.000332, 0.000120, 0.000000}, {0.000166, 0.000060, 0.000000},
    {0.000083, 0.000030, 0.000000}, {0.000042, 0.000015, 0.000000},
}};

/// XYZ to the linear RGB of sRGB.
constexpr std::array<Colour, 3> kXyzToRgb{{
    {3.2404542, -1.5371385, -0.4985314},
    {-0.9692660, 1.8760108, 0.0415560},
    {0.0556434, -0.2040259, 1.0572252},
}};

/// What a black body radiates at a wavelength in metres, in a unit of its own.
double radiance(double wavelength, double kelvin)
{
    constexpr double kSecondRadiationConstant = 1.438777e-2;  // metre kelvin
    const double square = wavelength * wavelength;
    return 1 / (square * square * wavelength * (exponential(kSecondRadiationConstant / (wavelength * kelvin)) - 1));
}

Colour rgbOfBlackBody(double kelvin)
{
    Colour xyz{};
    for (std::size_t step = 0; step < kObserver.size(); ++step) {
        const double power = radiance(kFirstWavelength + static_cast<double>(step) * kWavelengthStep, kelvin);
        for (std::size_t axis = 0; axis < xyz.size(); ++axis) {
            xyz[axis] += power * kObserver[step][axis];
        }
    }
    Colour rgb{};
    for (std::size_t colour = 0; colour < rgb.size(); ++colour) {
        const Colour& row = kXyzToRgb[colour];
        rgb[colour] = std::max(0.0, row[0] * xyz[0] + row[1] * xyz[1] + row[2] * xyz[2]);
    }
    return rgb;
}

}  // namespace

std::array<double, 3> whiteOfColourTemperature(double kelvin)
{
    const Colour neutral = rgbOfBlackBody(kNeutralKelvin);
    Colour white = rgbOfBlackBody(kelvin);
    for (std::size_t colour = 0; colour < white.size(); ++colour) {
        white[colour] /= neutral[colour];
    }
    const double largest = *std::max_element(white.begin(), white.end());
    for (double& gain : white) {
        gain /= largest;
    }
    return white;
}

}  // namespace vek
