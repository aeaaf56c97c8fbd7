#include "drivers/output_timing.h"

#include <cstddef>
#include <cstdint>

#include "drivers/aux_i2c.h"
#include "drivers/ddc_edid.h"
#include "drivers/edid/edid.h"

namespace vek
{
namespace
{

/// The number of a DisplayPort output; kDisplayOutputs for another one.
std::size_t auxNumberOf(DisplayOutput output)
{
    switch (output) {
        case DisplayOutput::kDp0:
            return 0;
        case DisplayOutput::kDp1:
            return 1;
        default:
            return kDisplayOutputs;
    }
}

/// The preferred timing of an EDID.
int timingOf(std::span<const std::uint8_t> edid, VekDisplayMode& mode)
{
    return checkEdid(edid).valid() && preferredTiming(edid, mode) ? VEK_OK : VEK_BAD_DATA;
}

/// The preferred timing of the EDID behind a DDC bus or an AUX channel.
template <typename Source>
int timingBehind(Source& source, VekDisplayMode& mode)
{
    EdidBuffer bytes;
    std::size_t length = 0;
    const int result = readEdid(source, bytes, length);
    return result == VEK_OK ? timingOf(std::span(bytes).first(length), mode) : result;
}

}  // namespace

int sinkTiming(AuxTransfer& aux, VekDisplayMode& mode)
{
    AuxEdidBlocks display(aux);
    return timingBehind(display, mode);
}

int attachedTiming(const Displays& displays, DisplayOutput output, VekDisplayMode& mode)
{
    const std::size_t aux = auxNumberOf(output);
    if (aux < displays.aux.size() && displays.aux[aux] != nullptr) {
        AuxTransfer transfer(*displays.aux[aux], displays.pause);
        return sinkTiming(transfer, mode);
    }
    const int ddc = ddcChannelOf(displays.units, output);
    const auto index = static_cast<std::size_t>(ddc);
    if (ddc >= 0 && index < displays.ddc.size() && displays.ddc[index] != nullptr) {
        return timingBehind(*displays.ddc[index], mode);
    }
    return VEK_NOT_AVAILABLE;
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
