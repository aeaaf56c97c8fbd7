#include "drivers/output_routing.h"

#include <array>
#include <cinttypes>

#include "vek.h"

namespace vek
{
namespace
{

using OutputName = std::array<char, 11>;

constexpr std::array<OutputName, kDisplayOutputs> kNames{{"HDMI-0", "HDMI-1", "DP-0", "DP-1 (eDP)", "VGA", "DVO"}};

/// Calls `visit` with the number, from 0, of every output that the chip has.
template <typename Visitor>
void forEachOutput(const DisplayUnits& units, Visitor visit)
{
    for (std::size_t number = 0; number < kDisplayOutputs; ++number) {
        if (hasOutput(units, static_cast<DisplayOutput>(number))) {
            visit(number);
        }
    }
}

/// Prints a line with the names of the outputs that `selected` picks.
template <typename Selector>
void printOutputs(std::FILE* out, std::uint32_t routing, const DisplayUnits& units, Selector selected)
{
    bool any = false;
    forEachOutput(units, [&](std::size_t number) {
        if (selected(routeOf(routing, static_cast<DisplayOutput>(number)))) {
            std::fprintf(out, "%s%s", any ? ", " : "", kNames[number].data());
            any = true;
        }
    });
    std::fprintf(out, "%s\n", any ? "" : "none");
}

}  // namespace

bool hasOutput(const DisplayUnits& units, DisplayOutput output)
{
    switch (output) {
        case DisplayOutput::kHdmi0:
            return units.hdmiOutputs > 0;
        case DisplayOutput::kHdmi1:
            return units.hdmiOutputs > 1;
        case DisplayOutput::kDp0:
            return units.dpOutputs > 0;
        case DisplayOutput::kDp1:
            return units.dpOutputs > 1;
        case DisplayOutput::kVga:
            return units.vgaDdc != kNoDdc;
        case DisplayOutput::kDvo:
            return units.dvoDdc != kNoDdc;
    }
    return false;
}

int ddcChannelOf(const DisplayUnits& units, DisplayOutput output)
{
    switch (output) {
        case DisplayOutput::kHdmi0:
            return 0;
        case DisplayOutput::kHdmi1:
            return 1;
        case DisplayOutput::kVga:
            return units.vgaDdc;
        case DisplayOutput::kDvo:
            return units.dvoDdc;
        case DisplayOutput::kDp0:
        case DisplayOutput::kDp1:
            break;
    }
    return kNoDdc;
}

const char* outputName(DisplayOutput output)
{
    return kNames[static_cast<std::size_t>(output)].data();
}

OutputRoute routeOf(std::uint32_t routing, DisplayOutput output)
{
    const std::uint32_t field = routing >> (static_cast<unsigned>(output) * output_routing::kFieldBits);
    return {(field & output_routing::kFieldOn) != 0, field & output_routing::kFieldController};
}

int readRouting(AddressSpace& registers, std::uint32_t& routing)
{
    const auto [result, value] = registers.read(output_routing::kRegister, output_routing::kRegisterWidth);
    if (result == VEK_OK) {
        routing = static_cast<std::uint32_t>(value);
    }
    return result;
}

void printRouting(std::FILE* out, std::uint32_t routing, const DisplayUnits& units)
{
    std::fprintf(out, "output routing, reg[0x%03" PRIx64 "] = 0x%08" PRIx32 "\n", output_routing::kRegister, routing);
    for (unsigned controller = 0; controller < units.controllers; ++controller) {
        std::fprintf(out, "  CRTC-%u -> ", controller);
        printOutputs(out, routing, units,
                     [=](const OutputRoute& route) { return route.on && route.controller == controller; });
    }
    std::fprintf(out, "  off:      ");
    printOutputs(out, routing, units, [](const OutputRoute& route) { return !route.on; });
    forEachOutput(units, [&](std::size_t number) {
        const OutputRoute route = routeOf(routing, static_cast<DisplayOutput>(number));
        if (route.on && route.controller >= units.controllers) {
            std::fprintf(out, "  CRTC-%u -> %s, but this chip has no CRTC-%u\n", route.controller,
                         kNames[number].data(), route.controller);
        }
    });
}

}  // namespace vek
