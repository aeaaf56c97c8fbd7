#include "drivers/colour_temperature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace
{

using vek::whiteOfColourTemperature;

using Colour = std::array<double, 3>;

struct Chromaticity {
    double x;
    double y;
};

// The Planckian locus by the cubic splines of Kim et al. (US 7,024,034 B2), for 1667 to 25000 K.
Chromaticity splineOf(double kelvin)
{
    const double t = 1000 / kelvin;
    const double x = kelvin <= 4000 ? ((-0.2661239 * t - 0.2343589) * t + 0.8776956) * t + 0.179910
                                    : ((-3.0258469 * t + 2.1070379) * t + 0.2226347) * t + 0.240390;
    if (kelvin <= 2222) {
        return {x, ((-1.1063814 * x - 1.34811020) * x + 2.18555832) * x - 0.20219683};
    }
    if (kelvin <= 4000) {
        return {x, ((-0.9549476 * x - 1.37418593) * x + 2.09137015) * x - 0.16748867};
    }
    return {x, ((3.0817580 * x - 5.87338670) * x + 3.75112997) * x - 0.37001483};
}

Colour linearRgbOf(const Chromaticity& colour)
{
    const double x = colour.x / colour.y;
    const double z = (1 - colour.x - colour.y) / colour.y;
    return {std::max(0.0, 3.2406 * x - 1.5372 - 0.4986 * z), std::max(0.0, -0.9689 * x + 1.8758 + 0.0415 * z),
            std::max(0.0, 0.0557 * x - 0.2040 + 1.0570 * z)};
}

Colour gainsOf(const Chromaticity& colour)
{
    const Colour neutral = linearRgbOf(splineOf(6500));
    Colour gains = linearRgbOf(colour);
    for (std::size_t i = 0; i < gains.size(); ++i) {
        gains[i] /= neutral[i];
    }
    const double largest = *std::max_element(gains.begin(), gains.end());
    for (double& gain : gains) {
        gain /= largest;
    }
    return gains;
}

void expectGains(double kelvin, const Colour& expected, double tolerance)
{
    const Colour gains = whiteOfColourTemperature(kelvin);
    for (std::size_t i = 0; i < gains.size(); ++i) {
        EXPECT_NEAR(gains[i], expected[i], tolerance) << "colour " << i << " at " << kelvin << " K";
    }
}

TEST(ColourTemperature, FollowsThePlanckianLocus)
{
    for (double kelvin = 1667; kelvin <= 25000; kelvin += 13) {
        expectGains(kelvin, gainsOf(splineOf(kelvin)), 0.006);
    }
}

// Chromaticities of black bodies as tables of the locus give them, to four places.
TEST(ColourTemperature, MeetsTheTableBeyondTheSplines)
{
    expectGains(1000, gainsOf({0.6528, 0.3444}), 0.003);
    expectGains(1500, gainsOf({0.5857, 0.3931}), 0.003);
    expectGains(25000, gainsOf({0.2525, 0.2522}), 0.006);
}

TEST(ColourTemperature, IsNeutralAt6500)
{
    EXPECT_EQ(whiteOfColourTemperature(6500), (Colour{1, 1, 1}));
    for (const double kelvin : {6499.0, 6501.0}) {
        expectGains(kelvin, {1, 1, 1}, 0.0005);
        EXPECT_NE(whiteOfColourTemperature(kelvin), (Colour{1, 1, 1}));
    }
}

TEST(ColourTemperature, NeverExceedsFullScale)
{
    for (double kelvin = 1000; kelvin <= 25100; kelvin += 50) {
        const Colour gains = whiteOfColourTemperature(kelvin);
        EXPECT_EQ(*std::max_element(gains.begin(), gains.end()), 1) << kelvin;
        EXPECT_GE(*std::min_element(gains.begin(), gains.end()), 0) << kelvin;
    }
}

TEST(ColourTemperature, IsWarmBelowAndCoolAbove)
{
    for (double kelvin = 1100; kelvin <= 25100; kelvin += 100) {
        const Colour before = whiteOfColourTemperature(kelvin - 100);
        const Colour gains = whiteOfColourTemperature(kelvin);
        EXPECT_LE(gains[0], before[0]) << kelvin;
        EXPECT_GE(gains[2], before[2]) << kelvin;
        EXPECT_NE(gains, before) << kelvin;
    }
    EXPECT_EQ(whiteOfColourTemperature(1000)[0], 1);
    EXPECT_EQ(whiteOfColourTemperature(1000)[2], 0);
    EXPECT_LT(whiteOfColourTemperature(1000)[1], 0.03);
    EXPECT_EQ(whiteOfColourTemperature(25100)[2], 1);
    EXPECT_LT(whiteOfColourTemperature(25100)[0], 0.5);
}

}  // namespace
