#include "drivers/clocks.h"

#include "api/spaces.h"
#include "drivers/pll.h"
#include "vek.h"

namespace vek
{
namespace
{

/// PLLs divide by whole numbers only.
constexpr int kIntegerMode = 1;

auto findClocks()
{
    return findSpace<&AccessPath::clocks>();
}

int calculatePll(int referenceKhz, int mode, std::uint32_t wantedKhz, std::uint32_t& setting)
{
    if (mode != kIntegerMode || referenceKhz < 0 ||
        !kPllLimits.reference.holds(static_cast<std::uint64_t>(referenceKhz))) {
        return VEK_BAD_ARGUMENT;
    }
    const PllSearch search(static_cast<std::uint64_t>(referenceKhz), wantedKhz);
    if (!search.found()) {
        return VEK_OUT_OF_RANGE;
    }
    setting = encodePll(search.dividers());
    return VEK_OK;
}

}  // namespace
}  // namespace vek

int vek_qz200_get_freq(int domain)
{
    const auto [found, registers] = vek::findClocks();
    if (found != VEK_OK) {
        return found;
    }
    const vek::CardHold hold(vek::openCardLock());
    vek::Rate rate = vek::kNoClock;
    const int result = vek::ClockDriver(*registers).readRate(domain, rate);
    return result == VEK_OK ? static_cast<int>(rate.megahertz()) : result;
}

int vek_qz200_pllcalc(int reference_khz, int mode, uint32_t wanted_khz, uint32_t* setting)
{
    const int found = vek::findClocks().result;
    if (found != VEK_OK) {
        return found;
    }
    return setting == nullptr ? VEK_BAD_ARGUMENT : vek::calculatePll(reference_khz, mode, wanted_khz, *setting);
}

int vek_qz200_set_clk_freq(int domain, uint32_t setting)
{
    const auto [found, registers] = vek::findClocks();
    const vek::CardHold hold(vek::openCardLock());
    return found == VEK_OK ? vek::ClockDriver(*registers).setPll(domain, setting) : found;
}

int vek_qz200_set_clk_mode(int mode, int source)
{
    const auto [found, registers] = vek::findClocks();
    const vek::CardHold hold(vek::openCardLock());
    return found == VEK_OK ? vek::ClockDriver(*registers).setMode(mode, source) : found;
}
