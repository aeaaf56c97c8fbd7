#include "card/power_unit.h"

#include <algorithm>

#include "card/long_registers.h"
#include "drivers/power.h"
#include "vek.h"

namespace vek
{
namespace
{

using namespace power_unit;

std::uint32_t throttleIn(VekPowerState state)
{
    switch (state) {
        case VEK_POWER_SAVE:
            return clock_unit::kThrottleHalf;
        case VEK_POWER_STANDBY:
            return clock_unit::kThrottleStopped;
        default:
            return clock_unit::kThrottleNone;
    }
}

}  // namespace

void PowerUnit::writeState(std::uint32_t value)
{
    const std::uint32_t wanted = value & kStateMask;
    if (wanted > VEK_POWER_STANDBY) {
        return;
    }
    state_ = wanted;
    const auto state = static_cast<VekPowerState>(wanted);
    clocks_.setThrottle(throttleIn(state));
    die_.setPowerState(state);
}

void PowerUnit::applyFan()
{
    constexpr double kMilli = 1000;
    die_.setFan({.manual = (fan_ & kFanManual) != 0,
                 .manualDuty = static_cast<double>(fan_ & kFanDutyMask),
                 .simulated = (simulation_ & kSimulationOn) != 0,
                 .simulatedCelsius = static_cast<std::int32_t>(simulated_) / kMilli});
}

ReadResult PowerUnit::read(std::uint64_t address, unsigned width)
{
    if (!answersLong(address, width, kWindowSize)) {
        return kUnanswered;
    }
    switch (address) {
        case kState:
            return {VEK_OK, state_};
        case kFan:
            return {VEK_OK, fan_};
        case kFanDuty: {
            constexpr double kHalf = 0.5;
            return {VEK_OK, static_cast<std::uint64_t>(die_.fanDuty() + kHalf)};
        }
        case kSimulation:
            return {VEK_OK, simulation_};
        case kSimulated:
            return {VEK_OK, simulated_};
        default:
            return {VEK_OK, 0};
    }
}

int PowerUnit::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answersLong(address, width, kWindowSize)) {
        return VEK_NO_RESPONSE;
    }
    const auto written = static_cast<std::uint32_t>(value);
    switch (address) {
        case kState:
            writeState(written);
            break;
        case kFan:
            fan_ = (written & kFanManual) | std::min<std::uint32_t>(written & kFanDutyMask, kMaxFanDuty);
            break;
        case kSimulation:
            simulation_ = written & kSimulationOn;
            break;
        case kSimulated:
            simulated_ = written;
            break;
        default:
            break;
    }
    applyFan();
    return VEK_OK;
}

}  // namespace vek
