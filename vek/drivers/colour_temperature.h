#ifndef VEK_DRIVERS_COLOUR_TEMPERATURE_H
#define VEK_DRIVERS_COLOUR_TEMPERATURE_H

#include <array>

namespace vek
{

/// The colour temperature, in kelvin, at which a display shows its own white.
constexpr double kNeutralKelvin = 6500;

constexpr double kMinKelvin = 1000;
constexpr double kMaxKelvin = 25100;

/// How much light red, green and blue give for the white of a black body of `kelvin`, kMinKelvin to kMaxKelvin, as
/// factors of 0 to 1 in linear light. The largest is 1; at kNeutralKelvin all three are 1 exactly.
///
/// The black body's colour is Planck's law weighted with the colour-matching functions of the CIE 1931 standard
/// observer (CIE 15, the table in steps of 10 nm), which holds at any temperature, where the usual polynomials for the
/// Planckian locus end at 1667 K (Kim et al., US 7,024,034 B2); from there to 25000 K both agree to 0.0005 in x and y.
/// It is taken to the primaries of sRGB (IEC 61966-2-1), cut off where it lies outside of their triangle, and divided
/// by the same for the neutral temperature: the displays' own white point stays what it is, whatever it is.
std::array<double, 3> whiteOfColourTemperature(double kelvin);

}  // namespace vek

#endif
