#include "card/hdmi_phy.h"

#include "card/stepped_registers.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr SteppedRegisters kRegisters = {
    .width = hdmi_phy::kRegisterWidth, .step = hdmi_phy::kRegisterStep, .count = hdmi_phy::kRegisterCount};

}  // namespace

void HdmiPhy::writeControl(std::uint64_t value)
{
    if ((value & hdmi_phy::kControlReset) != 0) {
        reset();
        return;
    }
    const bool open = (value & hdmi_phy::kControlOpen) != 0;
    at(hdmi_phy::kControl) = open ? hdmi_phy::kControlOpen : hdmi_phy::kControlLocked;
}

ReadResult HdmiPhy::read(std::uint64_t address, unsigned width)
{
    return kRegisters.answer(address, width) ? ReadResult{VEK_OK, at(address)} : kUnanswered;
}

int HdmiPhy::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!kRegisters.answer(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (address == hdmi_phy::kControl) {
        writeControl(value);
        return VEK_OK;
    }
    const bool open = (at(hdmi_phy::kControl) & hdmi_phy::kControlOpen) != 0;
    if (!open || address == hdmi_phy::kStatus0 || address == hdmi_phy::kId) {
        return VEK_PROTECTED;
    }
    at(address) = static_cast<std::uint16_t>(value);
    return VEK_OK;
}

}  // namespace vek
