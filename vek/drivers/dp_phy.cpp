#include "drivers/dp_phy.h"

#include "vek.h"

namespace vek
{
namespace
{

/// How often the status is read at most until the PLL has locked, which takes 0.2 ms.
constexpr int kMaxLockReads = 20;
constexpr std::uint32_t kLockReadMicroseconds = 100;

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
    for (int reads = 0; result == VEK_OK && reads < kMaxLockReads; ++reads) {
        const auto [answered, status] = registers_.read(dp_phy::kStatus, dp_phy::kRegisterWidth);
        if (answered != VEK_OK || (status & dp_phy::kStatusLocked) != 0) {
            return answered;
        }
        pause_.microseconds(kLockReadMicroseconds);
    }
    return result == VEK_OK ? VEK_TIMED_OUT : result;
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
