#include "drivers/power.h"

#include <cstdio>

#include "api/spaces.h"
#include "drivers/feature_switches.h"
#include "vek.h"

namespace vek
{
namespace
{

auto findPower()
{
    return findSpace<&AccessPath::power>();
}

/// Runs one of the operations of the power unit that take a number.
int runOnPower(int (PowerDriver::*operation)(int), int number)
{
    const auto [found, registers] = findPower();
    if (found != VEK_OK) {
        return found;
    }
    const CardHold hold(openCardLock());
    PowerDriver power(*registers);
    return (power.*operation)(number);
}

}  // namespace
}  // namespace vek

int vekPowerGetState(int* state)
{
    const auto [found, registers] = vek::findPower();
    if (found != VEK_OK) {
        return found;
    }
    return state == nullptr ? VEK_BAD_ARGUMENT : vek::PowerDriver(*registers).readState(*state);
}

int vekPowerSetState(int state)
{
    return vek::runOnPower(&vek::PowerDriver::setState, state);
}

const char* vekPowerStateName(int state)
{
    switch (state) {
        case VEK_POWER_PERFORMANCE:
            return "performance";
        case VEK_POWER_SAVE:
            return "power save";
        case VEK_POWER_STANDBY:
            return "standby";
        default:
            return "unknown";
    }
}

int vekFanSetRate(int rate)
{
    return vek::runOnPower(&vek::PowerDriver::setFan, rate);
}

int vekThermalDebug(int temperature)
{
    return vek::runOnPower(&vek::PowerDriver::simulate, temperature);
}

int tovira_func(char* text, int /*repeat*/)
{
    const auto [found, registers] = vek::findSpace<&vek::AccessPath::features>();
    if (found != VEK_OK) {
        return found;
    }
    return text == nullptr ? VEK_BAD_ARGUMENT : vek::runFeatureCommand(*registers, text, stdout, vek::openCardLock());
}
