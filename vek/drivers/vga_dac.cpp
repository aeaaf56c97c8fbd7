#include "drivers/vga_dac.h"

#include "vek.h"

namespace vek
{

int setVgaGain(AddressSpace& dac, int colour, std::uint8_t gain)
{
    switch (colour) {
        case 'R':
            return dac.write(vga_dac::kRed, sizeof gain, gain);
        case 'G':
            return dac.write(vga_dac::kGreen, sizeof gain, gain);
        case 'B':
            return dac.write(vga_dac::kBlue, sizeof gain, gain);
        default:
            return VEK_BAD_ARGUMENT;
    }
}

int setVgaGains(AddressSpace& dac, std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    int result = setVgaGain(dac, 'R', red);
    if (result == VEK_OK) {
        result = setVgaGain(dac, 'G', green);
    }
    return result == VEK_OK ? setVgaGain(dac, 'B', blue) : result;
}

}  // namespace vek
