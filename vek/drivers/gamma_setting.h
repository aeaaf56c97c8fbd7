#ifndef VEK_DRIVERS_GAMMA_SETTING_H
#define VEK_DRIVERS_GAMMA_SETTING_H

#include <array>
#include <string_view>

#include "drivers/colour_temperature.h"

namespace vek
{

/// What a display controller's gamma tables are to be computed from.
struct GammaSetting {
    unsigned controller = 0;
    std::array<double, 3> gamma{1, 1, 1};  ///< Of red, green and blue: 0 to 1.
    double brightness = 1;                 ///< 0 to 1.
    double kelvin = kNeutralKelvin;        ///< kMinKelvin to kMaxKelvin.
};

/// Understands a setting of the form
///
///     id [ga R:G:B] [br B] [ct T]
///
/// with blanks, tabs or line ends between the words: a controller's number, less than `controllers`, then any of the
/// three in any order; the last of a kind counts, what is not given keeps its default. The keywords may be in capitals.
/// Numbers are decimal digits, with a point between digits or without, in every locale: no sign, no exponent.
/// Returns what is wrong with the text, or null; `setting` is touched only when nothing is.
const char* parseGammaSetting(std::string_view text, unsigned controllers, GammaSetting& setting);

}  // namespace vek

#endif
