#include <cstdint>
#include <cstdio>

#include "api/displays.h"
#include "api/spaces.h"
#include "drivers/gamma_setting.h"
#include "drivers/gamma_table.h"
#include "drivers/output_routing.h"
#include "drivers/vga_dac.h"
#include "vek.h"

namespace vek
{
namespace
{

auto findVgaDac()
{
    return findSpace<&AccessPath::vgaDac>();
}

/// How many display controllers of the open path have gamma tables.
unsigned controllersWithGamma()
{
    unsigned count = 0;
    for (const AddressSpace* table : openPath->gammaTables) {
        count += table != nullptr ? 1U : 0U;
    }
    return count;
}

}  // namespace
}  // namespace vek

int vekCrtcModeRead(int channel, VekDisplayMode* mode)
{
    const int found = vek::findDisplays();
    if (found != VEK_OK) {
        return found;
    }
    const vek::CardHold hold(vek::openCardLock());
    return mode == nullptr ? VEK_BAD_ARGUMENT : vek::controllerTiming(vek::openDisplays(), channel, *mode);
}

int vekCrtcOutputPrint()
{
    const int found = vek::findDisplays();
    if (found != VEK_OK) {
        return found;
    }
    uint32_t routing = 0;
    const int result = vek::readRouting(*vek::openPath->registerRegion, routing);
    if (result == VEK_OK) {
        vek::printRouting(stdout, routing, vek::openPath->displays);
    }
    return result;
}

int vekCrtcGammaSet(const char* setting)
{
    const int found = vek::findChannel<&vek::AccessPath::gammaTables>(0, VEK_BAD_ARGUMENT).result;
    if (found != VEK_OK) {
        return found;
    }
    vek::GammaSetting parsed;
    const char* fault = vek::parseGammaSetting(setting == nullptr ? "" : setting, vek::controllersWithGamma(), parsed);
    if (fault != nullptr) {
        // What was printed before has to stand before it.
        std::fflush(stdout);
        std::fprintf(stderr, "gamma: %s\n", fault);
        return VEK_BAD_ARGUMENT;
    }
    const vek::CardHold hold(vek::openCardLock());
    return vek::programGammaTables(*vek::openPath->gammaTables[parsed.controller], parsed);
}

int vekVgaSetGain(uint8_t red, uint8_t green, uint8_t blue)
{
    const auto [found, dac] = vek::findVgaDac();
    const vek::CardHold hold(vek::openCardLock());
    return found == VEK_OK ? vek::setVgaGains(*dac, red, green, blue) : found;
}

int vekVgaSetSigleGain(int colour, uint8_t gain)
{
    const auto [found, dac] = vek::findVgaDac();
    return found == VEK_OK ? vek::setVgaGain(*dac, colour, gain) : found;
}
