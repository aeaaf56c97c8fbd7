#include "drivers/saa7111a.h"

#include <array>

#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace vek
{
namespace
{

/// What goes into the registers from kFirstControl on, meant as in the data sheet's start set-up: composite video
/// at AI11, automatic gain, automatic field detection, and the outputs on.
constexpr auto kSetUp = std::to_array<std::uint8_t>({
    0xc0,  // analogue input control 1: mode 0
    0x23,  // analogue input control 2: automatic gain, held during the vertical blanking
    0x00,  // analogue input control 3: static gain of channel 1
    0x00,  // analogue input control 4: static gain of channel 2
    0xeb,  // horizontal sync begin
    0xe0,  // horizontal sync stop
    0x88,  // sync control: automatic field detection
    0x01,  // luminance control
    0x80,  // brightness: that of ITU-R BT.601
    0x47,  // contrast: that of ITU-R BT.601
    0x40,  // saturation: that of ITU-R BT.601
    0x00,  // hue
    0x01,  // chrominance control: PAL or NTSC, nominal bandwidth
    0x00,  // reserved
    0x40,  // format: YUV 4:2:2 in 16 bits
    0x1c,  // output control 1: data, HREF and VREF are driven
});

}  // namespace

int setUpSaa7111a(I2cBus& bus, bool iicsaHigh)
{
    const std::uint32_t device = saa7111a::kAddress + (iicsaHigh ? 1U : 0U);
    std::uint8_t version = 0;
    const int result = readI2c(bus, device, saa7111a::kChipVersion, {&version, 1});
    return result == VEK_OK ? writeI2c(bus, device, saa7111a::kFirstControl, kSetUp) : result;
}

}  // namespace vek
