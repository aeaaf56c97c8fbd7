#include "drivers/dp_controller.h"

#include <algorithm>
#include <array>

namespace vek
{
namespace
{

constexpr std::uint64_t kLanesMask = 0x1f;
constexpr std::uint64_t kBitsPerPixel = 24;

/// A lane moves a symbol of 8 bits with every clock, which is 27 MHz for every unit of the rate.
constexpr std::uint64_t kSymbolKhzPerUnit = 27'000;
constexpr std::uint64_t kBitsPerSymbol = 8;

constexpr std::int32_t kMaxField = 0xffff;
constexpr std::int32_t kMaxSyncWidth = 0x7fff;

/// One direction of a timing as main stream attributes have it, from the beginning of the sync pulse.
struct StreamAxis {
    std::int32_t total;
    std::int32_t start;
    std::int32_t sync;
    std::int32_t active;
    bool syncLow;

    bool fits() const
    {
        return total > 0 && total <= kMaxField && start >= 0 && start <= total && sync > 0 && sync <= kMaxSyncWidth &&
               active > 0 && active <= total;
    }
};

StreamAxis horizontalOf(const VekDisplayMode& mode)
{
    return {mode.htotal, mode.htotal - mode.hsync_start, mode.hsync_end - mode.hsync_start, mode.hdisplay,
            (mode.flags & VEK_HSYNC_NEGATIVE) != 0};
}

StreamAxis verticalOf(const VekDisplayMode& mode)
{
    return {mode.vtotal, mode.vtotal - mode.vsync_start, mode.vsync_end - mode.vsync_start, mode.vdisplay,
            (mode.flags & VEK_VSYNC_NEGATIVE) != 0};
}

std::uint32_t syncField(const StreamAxis& axis)
{
    return static_cast<std::uint32_t>(axis.sync) | (axis.syncLow ? dp_controller::kSyncLow : 0);
}

}  // namespace

int DpControllerDriver::write(std::uint64_t address, std::uint32_t value)
{
    return registers_.write(address, dp_controller::kRegisterWidth, static_cast<std::uint16_t>(value));
}

int DpControllerDriver::init()
{
    const int result = write(dp_controller::kControl, dp_controller::kControlReset);
    return result == VEK_OK ? write(dp_controller::kControl, dp_controller::kControlEnable) : result;
}

int DpControllerDriver::setLink(const DpLink& link)
{
    int result = write(dp_controller::kControl, dp_controller::kControlEnable);
    if (result == VEK_OK) {
        result = write(dp_controller::kRate, link.rate);
    }
    const unsigned framing = link.enhancedFraming ? dp_controller::kEnhancedFraming : 0U;
    return result == VEK_OK ? write(dp_controller::kLanes, link.lanes | framing) : result;
}

int DpControllerDriver::dropLink()
{
    return setLink({.rate = 0, .lanes = 0, .enhancedFraming = false});
}

int DpControllerDriver::writeAttributes(const VekDisplayMode& mode, std::uint32_t mvid)
{
    struct Field {
        std::uint64_t address;
        std::uint32_t value;
    };
    constexpr unsigned kWordBits = 16;
    const StreamAxis horizontal = horizontalOf(mode);
    const StreamAxis vertical = verticalOf(mode);
    const std::array<Field, 14> fields{{
        {dp_controller::kMvidLow, mvid},
        {dp_controller::kMvidHigh, mvid >> kWordBits},
        {dp_controller::kNvidLow, dp_controller::kNvid},
        {dp_controller::kNvidHigh, dp_controller::kNvid >> kWordBits},
        {dp_controller::kHtotal, static_cast<std::uint32_t>(horizontal.total)},
        {dp_controller::kVtotal, static_cast<std::uint32_t>(vertical.total)},
        {dp_controller::kHstart, static_cast<std::uint32_t>(horizontal.start)},
        {dp_controller::kVstart, static_cast<std::uint32_t>(vertical.start)},
        {dp_controller::kHsync, syncField(horizontal)},
        {dp_controller::kVsync, syncField(vertical)},
        {dp_controller::kHwidth, static_cast<std::uint32_t>(horizontal.active)},
        {dp_controller::kVheight, static_cast<std::uint32_t>(vertical.active)},
        {dp_controller::kMisc0, dp_controller::kMisc0Rgb8},
        {dp_controller::kMisc1, 0},
    }};
    int result = VEK_OK;
    for (const auto& [address, value] : fields) {
        if (result == VEK_OK) {
            result = write(address, value);
        }
    }
    return result;
}

int DpControllerDriver::sendStream(const VekDisplayMode& mode)
{
    const auto [answered, status] = registers_.read(dp_controller::kStatus, dp_controller::kRegisterWidth);
    if (answered != VEK_OK) {
        return answered;
    }
    if ((status & dp_controller::kStatusLinkUp) == 0) {
        return VEK_IO_ERROR;
    }
    const auto [rateResult, rate] = registers_.read(dp_controller::kRate, dp_controller::kRegisterWidth);
    const auto [lanesResult, laneSetting] = registers_.read(dp_controller::kLanes, dp_controller::kRegisterWidth);
    if (rateResult != VEK_OK || lanesResult != VEK_OK) {
        return rateResult != VEK_OK ? rateResult : lanesResult;
    }
    const std::uint64_t lanes = laneSetting & kLanesMask;
    const std::uint64_t symbolKhz = rate * kSymbolKhzPerUnit;
    const auto pixelKhz = static_cast<std::uint64_t>(std::max(mode.clock, 0));
    if (pixelKhz == 0 || pixelKhz * kBitsPerPixel > symbolKhz * kBitsPerSymbol * lanes || !horizontalOf(mode).fits() ||
        !verticalOf(mode).fits()) {
        return VEK_OUT_OF_RANGE;
    }
    const auto mvid = static_cast<std::uint32_t>(pixelKhz * dp_controller::kNvid / symbolKhz);
    const int result = writeAttributes(mode, mvid);
    return result == VEK_OK
               ? write(dp_controller::kControl, dp_controller::kControlEnable | dp_controller::kControlStream)
               : result;
}

}  // namespace vek
