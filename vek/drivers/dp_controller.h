#ifndef VEK_DRIVERS_DP_CONTROLLER_H
#define VEK_DRIVERS_DP_CONTROLLER_H

#include <cstdint>

#include "address_space.h"
#include "vek.h"

namespace vek
{

/// The register block of a DisplayPort controller: 256 registers of 16 bits, at byte addresses 0x000 to 0x1fe in steps
/// of 2. Only words at these addresses are answered.
///
///     0x000  ctl_id      read-only: the controller's kind and revision
///     0x002  ctl_ctrl    control, below
///     0x004  ctl_status  read-only, below
///     0x006  ctl_rate    link rate in units of 0.27 Gbit/s a lane, as in the DPCD
///     0x008  ctl_lanes   lanes of the link: 1, 2 or 4; bit 7 enhanced framing
///     0x010  main stream attributes as VESA DisplayPort 1.2, section 2.2.4, names them: Mvid, low and high word, Nvid,
///            low and high word, Htotal, Vtotal, Hstart, Vstart, HSP|HSW, VSP|VSW, Hwidth, Vheight, MISC0, MISC1
///     all others hold what is written
namespace dp_controller
{

constexpr std::uint64_t kRegisterStep = 2;
constexpr std::uint64_t kRegisterCount = 256;
constexpr unsigned kRegisterWidth = 2;

constexpr std::uint64_t kId = 0x000;
constexpr std::uint64_t kControl = 0x002;
constexpr std::uint64_t kStatus = 0x004;
constexpr std::uint64_t kRate = 0x006;
constexpr std::uint64_t kLanes = 0x008;
constexpr std::uint64_t kMvidLow = 0x010;
constexpr std::uint64_t kMvidHigh = 0x012;
constexpr std::uint64_t kNvidLow = 0x014;
constexpr std::uint64_t kNvidHigh = 0x016;
constexpr std::uint64_t kHtotal = 0x018;
constexpr std::uint64_t kVtotal = 0x01a;
constexpr std::uint64_t kHstart = 0x01c;
constexpr std::uint64_t kVstart = 0x01e;
constexpr std::uint64_t kHsync = 0x020;
constexpr std::uint64_t kVsync = 0x022;
constexpr std::uint64_t kHwidth = 0x024;
constexpr std::uint64_t kVheight = 0x026;
constexpr std::uint64_t kMisc0 = 0x028;
constexpr std::uint64_t kMisc1 = 0x02a;

/// ctl_ctrl: the controller runs.
constexpr std::uint16_t kControlEnable = 1U << 0;
/// ctl_ctrl: written as 1, every register returns to its reset value, this one too.
constexpr std::uint16_t kControlReset = 1U << 1;
/// ctl_ctrl: the main stream is sent.
constexpr std::uint16_t kControlStream = 1U << 2;

/// ctl_status: the controller runs and the rate and lanes are those of a link.
constexpr std::uint16_t kStatusLinkUp = 1U << 0;
/// ctl_status: the link is up and the main stream is sent.
constexpr std::uint16_t kStatusStreaming = 1U << 1;

/// ctl_lanes: enhanced framing.
constexpr std::uint16_t kEnhancedFraming = 1U << 7;

/// HSP and VSP: the sync pulse is low.
constexpr std::uint16_t kSyncLow = 1U << 15;

/// MISC0: 8 bits a colour, RGB, the clocks of link and stream are independent.
constexpr std::uint16_t kMisc0Rgb8 = 1U << 5;

/// Nvid of a stream clock that is independent of the link's.
constexpr std::uint32_t kNvid = 0x8000;

}  // namespace dp_controller

/// What a link was trained to.
struct DpLink {
    std::uint8_t rate;  ///< In units of 0.27 Gbit/s a lane.
    std::uint8_t lanes;
    bool enhancedFraming;
};

/// Drives a DisplayPort controller through its registers. Results are those of enum VekResult.
class DpControllerDriver
{
public:
    explicit DpControllerDriver(AddressSpace& registers) : registers_(registers) {}

    /// Resets the controller and lets it run; there is no link and no stream.
    int init();

    /// Takes a link over that has been trained; the stream stops.
    int setLink(const DpLink& link);

    /// Has no link any more; the stream stops.
    int dropLink();

    /// Sends a picture of 8 bits a colour with this timing: programs the main stream attributes and starts the stream.
    /// Returns VEK_IO_ERROR when the controller does not run or has no link, VEK_OUT_OF_RANGE when the link does not
    /// carry the stream or a number does not fit its field; the registers stay as they were then.
    int sendStream(const VekDisplayMode& mode);

private:
    int write(std::uint64_t address, std::uint32_t value);
    int writeAttributes(const VekDisplayMode& mode, std::uint32_t mvid);

    AddressSpace& registers_;
};

}  // namespace vek

#endif
