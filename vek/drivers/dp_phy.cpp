#include "drivers/dp_phy.h"

#include "drivers/polling.h"
#include "vek.h"

namespace vek
{
namespace
{

/// How the PLL is waited for, which takes 0.2 ms to lock.
constexpr Patience kLockPatience{.eagerLooks = 1, .pausedLooks = 20, .interval = 100};

}  // namespace

int DpPhyDriver::write(std::uint64_t address, std::uint32_t value)
{
    return registers_.write(address, dp_phy::kRegisterWidth, value);
}

int DpPhyDriver::init()
{
    const int result = write(dp_phy::kControl, dp_phy::kControlReset);
    return result == VEK_OK ? write(dp_phy::kControl, dp_phy::kControlPower) : result;
}

int DpPhyDriver::start(std::uint8_t rate, std::uint8_t lanes)
{
    const auto [read, control] = registers_.read(dp_phy::kControl, dp_phy::kRegisterWidth);
    int result = read;
    if (result == VEK_OK) {
        result = write(dp_phy::kRate, rate);
    }
    if (result == VEK_OK) {
        const std::uint32_t sending = ((1U << lanes) - 1) << dp_phy::kControlLanesShift;
        result = write(dp_phy::kControl, (static_cast<std::uint32_t>(control) & ~dp_phy::kControlLanes) | sending);
    }
    if (result != VEK_OK) {
        return result;
    }
    return awaitReadiness(pause_, kLockPatience, [this] {
        const auto [answered, status] = registers_.read(dp_phy::kStatus, dp_phy::kRegisterWidth);
        return Readiness{answered, (status & dp_phy::kStatusLocked) != 0};
    });
}

int DpPhyDriver::sendPattern(std::uint8_t pattern)
{
    return write(dp_phy::kPattern, pattern);
}

int DpPhyDriver::drive(const LaneDrives& lanes)
{
    std::uint64_t address = dp_phy::kDrive0;
    for (const LaneDrive& lane : lanes) {
        const unsigned levels = lane.swing | unsigned{lane.preEmphasis} << dp_phy::kDrivePreEmphasisShift;
        const int result = write(address, levels);
        if (result != VEK_OK) {
            return result;
        }
        address += dp_phy::kRegisterStep;
    }
    return VEK_OK;
}

}  // namespace vek
