#ifndef VEK_DRIVERS_DP_PHY_H
#define VEK_DRIVERS_DP_PHY_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "drivers/dpcd.h"
#include "pause.h"

namespace vek
{

/// The register file of a DisplayPort PHY: 64 registers of 32 bits, at byte addresses 0x00 to 0xfc in steps of 4. Only
/// longs at these addresses are answered.
///
///     0x00  phy_id      read-only: the PHY's kind and revision
///     0x04  phy_ctrl    control, below
///     0x08  phy_status  read-only, below
///     0x0c  phy_rate    link rate in units of 0.27 Gbit/s a lane, as in the DPCD: 0x06, 0x0a or 0x14
///     0x10  phy_pattern training pattern that is sent: 1 to 3; 0 none
///     0x20  phy_drive0  drive of lane 0, below; lanes 1 to 3 at 0x24, 0x28 and 0x2c
///     all others hold what is written
namespace dp_phy
{

constexpr std::uint64_t kRegisterStep = 4;
constexpr std::uint64_t kRegisterCount = 64;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kId = 0x00;
constexpr std::uint64_t kControl = 0x04;
constexpr std::uint64_t kStatus = 0x08;
constexpr std::uint64_t kRate = 0x0c;
constexpr std::uint64_t kPattern = 0x10;
constexpr std::uint64_t kDrive0 = 0x20;

/// phy_ctrl: power.
constexpr std::uint32_t kControlPower = 1U << 0;
/// phy_ctrl: written as 1, every register returns to its reset value, this one too.
constexpr std::uint32_t kControlReset = 1U << 1;
/// phy_ctrl: lanes that send, one bit each from lane 0 upwards.
constexpr unsigned kControlLanesShift = 4;
constexpr std::uint32_t kControlLanes = 0xfU << kControlLanesShift;

/// phy_status: power is on, the rate is one of the three, and the PLL is locked.
constexpr std::uint32_t kStatusLocked = 1U << 0;
/// phy_status: the sink drives the hot-plug line.
constexpr std::uint32_t kStatusHotPlug = 1U << 1;

/// phy_drive0 to 3: voltage swing in bits 1 and 0, pre-emphasis in bits 5 and 4, levels 0 to 3 each.
constexpr unsigned kDrivePreEmphasisShift = 4;

}  // namespace dp_phy

/// How a lane is driven: levels 0 to 3.
struct LaneDrive {
    std::uint8_t swing = 0;
    std::uint8_t preEmphasis = 0;

    bool operator==(const LaneDrive&) const = default;
};

using LaneDrives = std::array<LaneDrive, dpcd::kMaxLanes>;

/// Drives a DisplayPort PHY through its registers. Results are those of enum VekResult.
class DpPhyDriver
{
public:
    DpPhyDriver(AddressSpace& registers, Pause& pause) : registers_(registers), pause_(pause) {}

    /// Resets the PHY and switches its power on; no lane sends.
    int init();

    /// Sends nothing but the clock on `lanes` lanes at a link rate and waits until the PLL is locked; VEK_TIMED_OUT
    /// when it does not lock.
    int start(std::uint8_t rate, std::uint8_t lanes);

    /// Sends a training pattern, 1 to 3, or none.
    int sendPattern(std::uint8_t pattern);

    /// Sets the drive of every lane.
    int drive(const LaneDrives& lanes);

private:
    int write(std::uint64_t address, std::uint32_t value);

    AddressSpace& registers_;
    Pause& pause_;
};

}  // namespace vek

#endif
