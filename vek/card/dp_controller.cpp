#include "card/dp_controller.h"

#include "card/stepped_registers.h"
#include "drivers/dpcd.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr SteppedRegisters kRegisters = {.width = dp_controller::kRegisterWidth,
                                         .step = dp_controller::kRegisterStep,
                                         .count = dp_controller::kRegisterCount};

}  // namespace

bool DpController::linkUp()
{
    const unsigned rate = at(dp_controller::kRate);
    const unsigned lanes = at(dp_controller::kLanes) & dpcd::kLaneCountMask;
    return (at(dp_controller::kControl) & dp_controller::kControlEnable) != 0 &&
           (rate == dpcd::kRbr || rate == dpcd::kHbr || rate == dpcd::kHbr2) &&
           (lanes == 1 || lanes == 2 || lanes == dpcd::kMaxLanes);
}

ReadResult DpController::read(std::uint64_t address, unsigned width)
{
    return kRegisters.answer(address, width) ? ReadResult{VEK_OK, at(address)} : kUnanswered;
}

int DpController::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!kRegisters.answer(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (address == dp_controller::kId || address == dp_controller::kStatus) {
        return VEK_PROTECTED;
    }
    if (address == dp_controller::kControl && (value & dp_controller::kControlReset) != 0) {
        reset();
        return VEK_OK;
    }
    at(address) = static_cast<std::uint16_t>(value);
    const bool up = linkUp();
    const bool streaming = up && (at(dp_controller::kControl) & dp_controller::kControlStream) != 0;
    at(dp_controller::kStatus) = static_cast<std::uint16_t>((up ? dp_controller::kStatusLinkUp : 0) |
                                                            (streaming ? dp_controller::kStatusStreaming : 0));
    return VEK_OK;
}

}  // namespace vek
