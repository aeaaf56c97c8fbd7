#ifndef VEK_DRIVERS_DRIVER_CORE_H
#define VEK_DRIVERS_DRIVER_CORE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "drivers/output_routing.h"
#include "drivers/output_timing.h"
#include "drivers/video_memory.h"
#include "drivers/zoom_video.h"

namespace vek
{

/// The version of the kernel driver's core.
struct DriverVersion {
    int major;
    int minor;
    int third;
    int fourth;
};

/// What the driver has to know of the card to keep its buffers.
struct CardInUse {
    Displays displays;
    AddressSpace& features;  ///< The register file of the feature switches.
};

/// Sizes of the driver's buffers in video memory.
namespace driver_buffers
{

constexpr std::uint64_t kMebibyte = 0x10'0000;

constexpr std::uint64_t kFirmware = 16 * kMebibyte;
/// A ring of commands each for 3D, 2D, the video processor and DMA.
constexpr std::uint64_t kRings = 4;
constexpr std::uint64_t kRing = kMebibyte;
/// One entry of 8 bytes for each page of video memory.
constexpr std::uint64_t kPageTableEntry = 8;

/// A line of a frame buffer begins at a multiple of this; a pixel takes 4 bytes.
constexpr std::uint64_t kPitch = 256;
constexpr std::uint64_t kPixel = 4;
/// Three pictures of the largest size that comes in, 720 by 576 in YUV 4:2:2, so that one is always whole.
constexpr std::uint64_t kCapture = std::uint64_t{3} * 720 * 576 * 2;
constexpr std::uint64_t kTrace = 4 * kMebibyte;
constexpr std::uint64_t kTextureStaging = 32 * kMebibyte;

}  // namespace driver_buffers

/// The core of the kernel driver of one card. It keeps buffers in the card's video memory: for good the firmware's
/// area, page tables and command rings; a frame buffer for each display controller that feeds a display, in its timing
/// as it was when the output routing last changed; a capture buffer for each zoom-video port with a window; a buffer
/// for each trace that is open, and one to stage textures in while Texture is open.
class DriverCore
{
public:
    constexpr DriverCore(const DriverVersion& version, std::uint64_t videoMemoryBytes)
        : version_(version), memory_(videoMemoryBytes)
    {
        memory_.allocate(driver_buffers::kFirmware);
        memory_.allocate(videoMemoryBytes / VideoMemory::kPageSize * driver_buffers::kPageTableEntry);
        for (std::uint64_t ring = 0; ring < driver_buffers::kRings; ++ring) {
            memory_.allocate(driver_buffers::kRing);
        }
    }

    const DriverVersion& version() const { return version_; }

    /// Gives back the buffers that the card no longer needs and takes those that it needs by now, as far as there is
    /// room for them. Returns VEK_OK, or
    /// what the card's registers answered: everything stays as it was then.
    int followCard(const CardInUse& card);

    /// Use of video memory as followCard() left it.
    const VideoMemory& memory() const { return memory_; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(memory_, sizes_, addresses_, routing_, frameBuffers_);
    }

private:
    static constexpr std::size_t kControllers = 4;
    static constexpr std::size_t kTraces = 4;
    static constexpr std::size_t kCaptures = kControllers;
    static constexpr std::size_t kTraceBuffers = kCaptures + zoom_video::kPorts;
    static constexpr std::size_t kTexture = kTraceBuffers + kTraces;
    static constexpr std::size_t kBuffers = kTexture + 1;

    /// Bytes by buffer, 0 for none.
    using Sizes = std::array<std::uint64_t, kBuffers>;

    int findFrameBuffers(const Displays& displays);
    void hold(const Sizes& sizes);

    DriverVersion version_;
    VideoMemory memory_;
    Sizes sizes_{};
    std::array<std::uint64_t, kBuffers> addresses_{};
    std::uint32_t routing_ = 0;                               ///< Of the present modes; 0 feeds no display.
    std::array<std::uint64_t, kControllers> frameBuffers_{};  ///< Bytes that the modes ask for, by controller.
};

}  // namespace vek

#endif
