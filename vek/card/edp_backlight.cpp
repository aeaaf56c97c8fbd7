#include "card/edp_backlight.h"

#include <algorithm>

#include "card/stepped_registers.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr SteppedRegisters kRegisters = {.width = edp_backlight::kRegisterWidth,
                                         .step = edp_backlight::kRegisterStep,
                                         .count = edp_backlight::kRegisterCount};

}  // namespace

void EdpBacklight::writeControl(std::uint32_t value)
{
    const bool enabled = (value & edp_backlight::kControlEnable) != 0;
    at(edp_backlight::kControl) = value & edp_backlight::kControlEnable;
    if (!enabled) {
        at(edp_backlight::kPeriodNow) = 0;
        at(edp_backlight::kDutyNow) = 0;
    } else if ((value & edp_backlight::kControlApply) != 0) {
        at(edp_backlight::kPeriodNow) = at(edp_backlight::kPeriod);
        at(edp_backlight::kDutyNow) = std::min(at(edp_backlight::kDuty), at(edp_backlight::kPeriod));
    }
}

ReadResult EdpBacklight::read(std::uint64_t address, unsigned width)
{
    return kRegisters.answer(address, width) ? ReadResult{VEK_OK, at(address)} : kUnanswered;
}

int EdpBacklight::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!kRegisters.answer(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (address == edp_backlight::kId || address == edp_backlight::kPeriodNow || address == edp_backlight::kDutyNow) {
        return VEK_PROTECTED;
    }
    if (address == edp_backlight::kControl) {
        writeControl(static_cast<std::uint32_t>(value));
    } else {
        at(address) = static_cast<std::uint32_t>(value);
    }
    return VEK_OK;
}

}  // namespace vek
