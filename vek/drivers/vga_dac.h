#ifndef VEK_DRIVERS_VGA_DAC_H
#define VEK_DRIVERS_VGA_DAC_H

#include <cstdint>

#include "address_space.h"

namespace vek
{

/// The registers of the VGA output's digital-to-analogue converter: the gain of each colour, a byte each. Full scale of
/// a colour is gain / 255 of the converter's largest level; 0xff after power-on.
namespace vga_dac
{

constexpr std::uint64_t kRed = 0x0;
constexpr std::uint64_t kGreen = 0x1;
constexpr std::uint64_t kBlue = 0x2;
constexpr std::uint64_t kRegisterCount = 3;

}  // namespace vga_dac

/// Sets the gain of one colour. `colour` is its letter, 'R', 'G' or 'B'; VEK_BAD_ARGUMENT for any other.
int setVgaGain(AddressSpace& dac, int colour, std::uint8_t gain);

/// Sets the gains of all colours, up to the first failure.
int setVgaGains(AddressSpace& dac, std::uint8_t red, std::uint8_t green, std::uint8_t blue);

}  // namespace vek

#endif
