#ifndef VEK_DRIVERS_OUTPUT_ROUTING_H
#define VEK_DRIVERS_OUTPUT_ROUTING_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "address_space.h"

namespace vek
{

/// The display outputs of the family, in the order of their fields in the routing register.
enum class DisplayOutput : std::uint8_t { kHdmi0, kHdmi1, kDp0, kDp1, kVga, kDvo };

constexpr std::size_t kDisplayOutputs = 6;

/// DDC channel of an output that the chip lacks.
constexpr std::int8_t kNoDdc = -1;

/// Which display controllers and outputs a chip has.
struct DisplayUnits {
    std::uint8_t controllers;  ///< Display controllers, up to 4; 0 when nothing is known of the chip's displays.
    std::uint8_t hdmiOutputs;  ///< Up to 2; output n is on DDC channel n.
    std::uint8_t dpOutputs;    ///< Up to 2, with an AUX channel each; the second one is the eDP.
    std::int8_t vgaDdc;        ///< DDC channel of the VGA output, or kNoDdc.
    std::int8_t dvoDdc;        ///< DDC channel of the DVO output, or kNoDdc.
};

/// What stands for a chip of which nothing is known.
constexpr DisplayUnits kNoDisplays{
    .controllers = 0, .hdmiOutputs = 0, .dpOutputs = 0, .vgaDdc = kNoDdc, .dvoDdc = kNoDdc};

/// Whether the chip has an output.
bool hasOutput(const DisplayUnits& units, DisplayOutput output);

/// The DDC channel of an output, kNoDdc when it has none, as DisplayPort.
int ddcChannelOf(const DisplayUnits& units, DisplayOutput output);

/// The name of an output on the board.
const char* outputName(DisplayOutput output);

/// Register 0x024 of the register region: a field of 4 bits an output, HDMI-0 in bits 3:0, then HDMI-1, DP-0, DP-1,
/// VGA, and DVO in bits 23:20. Bit 3 of a field switches the output on, bits 2:0 name the display controller that
/// feeds it. Bits 31:24, and the fields of outputs that the chip lacks, only hold what is written.
namespace output_routing
{

constexpr std::uint64_t kRegister = 0x024;
constexpr unsigned kRegisterWidth = 4;
constexpr unsigned kFieldBits = 4;
constexpr std::uint32_t kFieldOn = 1U << 3;
constexpr std::uint32_t kFieldController = 0x7;

/// The register's value with an output switched on and fed by a controller.
constexpr std::uint32_t with(std::uint32_t routing, DisplayOutput output, std::uint32_t controller)
{
    const unsigned shift = static_cast<unsigned>(output) * kFieldBits;
    return (routing & ~(0xfU << shift)) | (kFieldOn | controller) << shift;
}

}  // namespace output_routing

/// What the routing register says of one output.
struct OutputRoute {
    bool on;
    unsigned controller;  ///< Has a meaning only while the output is on; may be one that the chip lacks.
};

OutputRoute routeOf(std::uint32_t routing, DisplayOutput output);

/// Reads the routing register from the register region; `routing` is touched on success only.
int readRouting(AddressSpace& registers, std::uint32_t& routing);

/// Prints which controller feeds which outputs, which outputs are off, and which are fed by a controller that the chip
/// lacks.
void printRouting(std::FILE* out, std::uint32_t routing, const DisplayUnits& units);

}  // namespace vek

#endif
