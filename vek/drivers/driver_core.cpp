#include "drivers/driver_core.h"

#include <algorithm>
#include <optional>

#include "drivers/feature_switches.h"
#include "vek.h"

namespace vek
{
namespace
{

std::uint64_t frameBufferSize(const VekDisplayMode& mode)
{
    using namespace driver_buffers;
    if (mode.hdisplay <= 0 || mode.vdisplay <= 0) {
        return 0;
    }
    const std::uint64_t line = static_cast<std::uint64_t>(mode.hdisplay) * kPixel;
    return (line + kPitch - 1) / kPitch * kPitch * static_cast<std::uint64_t>(mode.vdisplay);
}

int readFunctions(AddressSpace& features, std::uint32_t& functions)
{
    const auto [result, value] = features.read(feature_switches::kFunctions, feature_switches::kRegisterWidth);
    functions = static_cast<std::uint32_t>(value);
    return result;
}

/// Whether a zoom-video port shows its window.
int readShown(AddressSpace& registers, std::size_t port, bool& shown)
{
    constexpr unsigned kLong = 4;
    const auto [result, control] =
        registers.read(zoom_video::kBase + zoom_video::kCaptureStep * port + zoom_video::kControl, kLong);
    shown = (control & zoom_video::kControlShow) != 0;
    return result;
}

}  // namespace

/// Finds how large the frame buffers have to be: modes are set when the routing changes, and kept until then.
int DriverCore::findFrameBuffers(const Displays& displays)
{
    std::uint32_t routing = 0;
    const int result = readRouting(displays.registers, routing);
    if (result != VEK_OK || routing == routing_) {
        return result;
    }
    for (std::size_t controller = 0; controller < kControllers; ++controller) {
        VekDisplayMode mode{};
        const bool lit = controllerTiming(displays, static_cast<int>(controller), mode) == VEK_OK;
        frameBuffers_[controller] = lit ? frameBufferSize(mode) : 0;
    }
    routing_ = routing;
    return VEK_OK;
}

/// Goes over to other buffers: what is given back first makes room for the rest. Those that there is no room for are
/// asked for again the next time.
void DriverCore::hold(const Sizes& sizes)
{
    for (std::size_t buffer = 0; buffer < kBuffers; ++buffer) {
        if (sizes_[buffer] != 0 && sizes[buffer] != sizes_[buffer]) {
            memory_.release(addresses_[buffer]);
            sizes_[buffer] = 0;
        }
    }
    for (std::size_t buffer = 0; buffer < kBuffers; ++buffer) {
        if (sizes[buffer] == sizes_[buffer]) {
            continue;
        }
        const std::optional<std::uint64_t> address = memory_.allocate(sizes[buffer]);
        if (address) {
            addresses_[buffer] = *address;
            sizes_[buffer] = sizes[buffer];
        }
    }
}

int DriverCore::followCard(const CardInUse& card)
{
    Sizes sizes = sizes_;
    std::uint32_t functions = 0;
    int result = readFunctions(card.features, functions);
    for (std::size_t port = 0; result == VEK_OK && port < zoom_video::kPorts; ++port) {
        bool shown = false;
        result = readShown(card.displays.registers, port, shown);
        sizes[kCaptures + port] = shown ? driver_buffers::kCapture : 0;
    }
    if (result == VEK_OK) {
        result = findFrameBuffers(card.displays);
    }
    if (result != VEK_OK) {
        return result;
    }
    std::copy(frameBuffers_.begin(), frameBuffers_.end(), sizes.begin());
    for (std::size_t trace = 0; trace < kTraces; ++trace) {
        sizes[kTraceBuffers + trace] = (functions >> trace & 1U) != 0 ? driver_buffers::kTrace : 0;
    }
    sizes[kTexture] = (functions & feature_switches::kTexture) != 0 ? driver_buffers::kTextureStaging : 0;
    hold(sizes);
    return VEK_OK;
}

}  // namespace vek
