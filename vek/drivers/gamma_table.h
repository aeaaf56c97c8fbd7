#ifndef VEK_DRIVERS_GAMMA_TABLE_H
#define VEK_DRIVERS_GAMMA_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "drivers/gamma_setting.h"

namespace vek
{

/// The gamma tables of a display controller: for each colour 256 entries of 16 bits, which say what goes out for each
/// value of an 8-bit component, 0xffff being full scale. Only words at even addresses are answered.
///
///     0x000  red, entry 0 first
///     0x200  green
///     0x400  blue
namespace gamma_table
{

constexpr std::size_t kColours = 3;
constexpr std::size_t kEntries = 256;
constexpr unsigned kEntryWidth = 2;
constexpr std::uint64_t kColourStep = kEntries * kEntryWidth;
constexpr std::uint64_t kSize = kColours * kColourStep;
constexpr std::uint16_t kFullScale = 0xffff;

constexpr std::uint64_t addressOf(std::size_t colour, std::size_t entry)
{
    return colour * kColourStep + entry * kEntryWidth;
}

/// What an entry holds when a component goes out as it is.
constexpr std::uint16_t identity(std::size_t entry)
{
    return static_cast<std::uint16_t>(kFullScale / (kEntries - 1) * entry);
}

}  // namespace gamma_table

/// The table of one colour.
using GammaCurve = std::array<std::uint16_t, gamma_table::kEntries>;

/// Computes the table of a colour,
///
///     entry i = full scale * brightness * tint * (i / 255)^(1 / gamma)
///
/// The exponent is the reciprocal, as is usual where a gamma is given for a display's correction: 1 leaves the picture
/// as it is and less makes its middle darker while black and white stay in place. Gamma 0 is the limit of that: all is
/// black but the brightest entry. `tint` is of 0 to 1, as a factor of the entries.
GammaCurve gammaCurve(double gamma, double brightness, double tint);

/// Programs all tables of a display controller as a setting asks. The white of its colour temperature is in linear
/// light, the entries are not: they drive displays of gamma 2.2, so its gains are raised to 1 / 2.2 for the tint.
/// Returns the first failure of `table`.
int programGammaTables(AddressSpace& table, const GammaSetting& setting);

}  // namespace vek

#endif
