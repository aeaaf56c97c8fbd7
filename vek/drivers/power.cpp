#include "drivers/power.h"

namespace vek
{

int PowerDriver::writeLong(std::uint64_t address, std::uint32_t value)
{
    return registers_.write(address, power_unit::kRegisterWidth, value);
}

int PowerDriver::readState(int& state)
{
    const auto [result, value] = registers_.read(power_unit::kState, power_unit::kRegisterWidth);
    if (result != VEK_OK) {
        return result;
    }
    // A chip that has gone from the bus reads as all ones.
    if (value > VEK_POWER_STANDBY) {
        return VEK_BAD_DATA;
    }
    state = static_cast<int>(value);
    return VEK_OK;
}

int PowerDriver::setState(int state)
{
    if (state < VEK_POWER_PERFORMANCE || state > VEK_POWER_STANDBY) {
        return VEK_BAD_ARGUMENT;
    }
    return writeLong(power_unit::kState, static_cast<std::uint32_t>(state));
}

int PowerDriver::setFan(int rate)
{
    if (rate == kFanAutomatic) {
        return writeLong(power_unit::kFan, 0);
    }
    if (rate < 0 || rate > kMaxFanDuty) {
        return VEK_BAD_ARGUMENT;
    }
    return writeLong(power_unit::kFan, power_unit::kFanManual | static_cast<std::uint32_t>(rate));
}

int PowerDriver::simulate(int temperature)
{
    if (temperature == kEndSimulation) {
        return writeLong(power_unit::kSimulation, 0);
    }
    if (temperature < kMinSimulated || temperature > kMaxSimulated) {
        return VEK_BAD_ARGUMENT;
    }
    // The regulation must not see the switch before the temperature.
    const int result = writeLong(power_unit::kSimulated, static_cast<std::uint32_t>(temperature));
    return result == VEK_OK ? writeLong(power_unit::kSimulation, power_unit::kSimulationOn) : result;
}

}  // namespace vek
