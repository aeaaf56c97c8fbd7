#ifndef VEK_DRIVERS_HDMI_PHY_H
#define VEK_DRIVERS_HDMI_PHY_H

#include <cstdint>

#include "address_space.h"

namespace vek
{

/// The register file of an HDMI PHY: 256 registers of 16 bits, at byte addresses 0x000 to 0x3fc in steps of 4. Only
/// words at these addresses are answered.
///
///     0x000  phy_ctrl     control and status, below
///     0x004  phy_status0  read-only, below
///     0x008  phy_id       read-only: the PHY's kind and revision
///     0x00c  and all others: configuration, which takes what is written while it is open
namespace hdmi_phy
{

constexpr std::uint64_t kRegisterStep = 4;
constexpr std::uint64_t kRegisterCount = 256;
constexpr unsigned kRegisterWidth = 2;

constexpr std::uint64_t kControl = 0x000;
constexpr std::uint64_t kStatus0 = 0x004;
constexpr std::uint64_t kId = 0x008;

/// phy_ctrl: the configuration is open. While it is, nothing is locked; closing it puts the configuration into effect.
constexpr std::uint16_t kControlOpen = 1U << 0;
/// phy_ctrl: written as 1, every register returns to its reset value, this one too.
constexpr std::uint16_t kControlReset = 1U << 1;
/// phy_ctrl, read-only: the PLL runs with the configuration and is locked.
constexpr std::uint16_t kControlLocked = 1U << 8;

/// phy_status0: the sink drives the hot-plug line.
constexpr std::uint16_t kStatus0HotPlug = 1U << 0;

}  // namespace hdmi_phy

/// Drives an HDMI PHY through its registers. Results are those of enum VekResult.
class HdmiPhyDriver
{
public:
    explicit HdmiPhyDriver(AddressSpace& registers) : registers_(registers) {}

    /// Opens the configuration.
    int open();

    /// Closes the configuration and waits until the PHY runs with it; VEK_TIMED_OUT when it does not.
    int close();

    /// Resets all registers.
    int reset();

    /// Reads the state of the hot-plug line; `attached` is touched on success only.
    int senseHotPlug(bool& attached);

private:
    int writeControl(std::uint16_t value);

    AddressSpace& registers_;
};

}  // namespace vek

#endif
