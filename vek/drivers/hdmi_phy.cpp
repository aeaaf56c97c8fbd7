#include "drivers/hdmi_phy.h"

#include "vek.h"

namespace vek
{
namespace
{

/// How often phy_ctrl is read at most until the PLL has locked, which takes 0.1 ms, some hundred reads over PCI
/// Express.
constexpr int kMaxLockReads = 10000;

}  // namespace

int HdmiPhyDriver::writeControl(std::uint16_t value)
{
    return registers_.write(hdmi_phy::kControl, hdmi_phy::kRegisterWidth, value);
}

int HdmiPhyDriver::open()
{
    return writeControl(hdmi_phy::kControlOpen);
}

int HdmiPhyDriver::close()
{
    const int written = writeControl(0);
    if (written != VEK_OK) {
        return written;
    }
    for (int reads = 0; reads < kMaxLockReads; ++reads) {
        const auto [result, control] = registers_.read(hdmi_phy::kControl, hdmi_phy::kRegisterWidth);
        if (result != VEK_OK || (control & hdmi_phy::kControlLocked) != 0) {
            return result;
        }
    }
    return VEK_TIMED_OUT;
}

int HdmiPhyDriver::reset()
{
    return writeControl(hdmi_phy::kControlReset);
}

int HdmiPhyDriver::senseHotPlug(bool& attached)
{
    const auto [result, status] = registers_.read(hdmi_phy::kStatus0, hdmi_phy::kRegisterWidth);
    if (result == VEK_OK) {
        attached = (status & hdmi_phy::kStatus0HotPlug) != 0;
    }
    return result;
}

}  // namespace vek
