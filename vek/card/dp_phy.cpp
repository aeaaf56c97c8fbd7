#include "card/dp_phy.h"

#include <bit>

#include "card/stepped_registers.h"
#include "drivers/dpcd.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr SteppedRegisters kRegisters = {
    .width = dp_phy::kRegisterWidth, .step = dp_phy::kRegisterStep, .count = dp_phy::kRegisterCount};

}  // namespace

void DpPhy::updateStatus()
{
    const bool runs = (at(dp_phy::kControl) & dp_phy::kControlPower) != 0 && dpcd::isLinkRate(at(dp_phy::kRate));
    registers_[dp_phy::kStatus / dp_phy::kRegisterStep] =
        (runs ? dp_phy::kStatusLocked : 0) | (attached_ ? dp_phy::kStatusHotPlug : 0);
}

MainLink DpPhy::mainLink() const
{
    if (!locked()) {
        return {};
    }
    const std::uint32_t lanes = (at(dp_phy::kControl) & dp_phy::kControlLanes) >> dp_phy::kControlLanesShift;
    MainLink link{.rate = static_cast<std::uint8_t>(at(dp_phy::kRate)),
                  .lanes = static_cast<std::uint8_t>(std::countr_one(lanes)),
                  .pattern = static_cast<std::uint8_t>(at(dp_phy::kPattern))};
    std::uint64_t address = dp_phy::kDrive0;
    for (LaneDrive& drive : link.drives) {
        drive.swing = at(address) & dpcd::kLevelMask;
        drive.preEmphasis = at(address) >> dp_phy::kDrivePreEmphasisShift & dpcd::kLevelMask;
        address += dp_phy::kRegisterStep;
    }
    return link;
}

ReadResult DpPhy::read(std::uint64_t address, unsigned width)
{
    return kRegisters.answer(address, width) ? ReadResult{VEK_OK, at(address)} : kUnanswered;
}

int DpPhy::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!kRegisters.answer(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (address == dp_phy::kId || address == dp_phy::kStatus) {
        return VEK_PROTECTED;
    }
    if (address == dp_phy::kControl && (value & dp_phy::kControlReset) != 0) {
        reset();
        return VEK_OK;
    }
    registers_[address / dp_phy::kRegisterStep] = static_cast<std::uint32_t>(value);
    updateStatus();
    return VEK_OK;
}

}  // namespace vek
