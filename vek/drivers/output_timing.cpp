#include "drivers/output_timing.h"

#include <cstddef>
#include <cstdint>

#include "drivers/ddc_edid.h"
#include "drivers/edid/edid.h"

namespace vek
{
namespace
{

/// Reads the EDID of the display at an output that the chip has.
int readOutputEdid(const Displays& displays, DisplayOutput output, EdidBuffer& bytes, std::size_t& length)
{
    const int channel = ddcChannelOf(displays.units, output);
    const auto index = static_cast<std::size_t>(channel);
    I2cBus* bus = channel >= 0 && index < displays.ddc.size() ? displays.ddc[index] : nullptr;
    return bus == nullptr ? VEK_NOT_AVAILABLE : readEdid(*bus, bytes, length);
}

}  // namespace

int attachedTiming(const Displays& displays, DisplayOutput output, VekDisplayMode& mode)
{
    EdidBuffer bytes;
    std::size_t length = 0;
    const int result = readOutputEdid(displays, output, bytes, length);
    if (result != VEK_OK) {
        return result;
    }
    const auto edid = std::span(bytes).first(length);
    return checkEdid(edid).valid() && preferredTiming(edid, mode) ? VEK_OK : VEK_BAD_DATA;
}

int outputTiming(const Displays& displays, DisplayOutput output, VekDisplayMode& mode)
{
    std::uint32_t routing = 0;
    const int result = readRouting(displays.registers, routing);
    if (result != VEK_OK) {
        return result;
    }
    const OutputRoute route = routeOf(routing, output);
    const bool fed = hasOutput(displays.units, output) && route.on && route.controller < displays.units.controllers;
    return fed ? attachedTiming(displays, output, mode) : VEK_NO_RESPONSE;
}

int controllerTiming(const Displays& displays, int controller, VekDisplayMode& mode)
{
    if (controller < 0 || controller >= displays.units.controllers) {
        return VEK_BAD_ARGUMENT;
    }
    std::uint32_t routing = 0;
    const int result = readRouting(displays.registers, routing);
    if (result != VEK_OK) {
        return result;
    }
    for (std::size_t number = 0; number < kDisplayOutputs; ++number) {
        const auto output = static_cast<DisplayOutput>(number);
        const OutputRoute route = routeOf(routing, output);
        if (!hasOutput(displays.units, output) || !route.on || route.controller != static_cast<unsigned>(controller)) {
            continue;
        }
        const int timing = attachedTiming(displays, output, mode);
        if (timing != VEK_NO_RESPONSE) {
            return timing;
        }
    }
    return VEK_NO_RESPONSE;
}

}  // namespace vek
