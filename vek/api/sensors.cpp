#include "drivers/sensors.h"

#include "api/spaces.h"
#include "vek.h"

namespace vek
{
namespace
{

auto findSensors()
{
    return findSpace<&AccessPath::sensors>();
}

}  // namespace
}  // namespace vek

int vekSensorTemp(int sensor, double* celsius)
{
    const auto [found, registers] = vek::findSensors();
    if (found != VEK_OK) {
        return found;
    }
    return celsius == nullptr ? VEK_BAD_ARGUMENT : vek::SensorDriver(*registers).readTemperature(sensor, *celsius);
}

int vekSensorVolt(int sensor, double* volts)
{
    const auto [found, registers] = vek::findSensors();
    if (found != VEK_OK) {
        return found;
    }
    return volts == nullptr ? VEK_BAD_ARGUMENT : vek::SensorDriver(*registers).readVoltage(sensor, *volts);
}

int vekSensorProcess(int kind, int sensor, int* reading)
{
    const auto [found, registers] = vek::findSensors();
    if (found != VEK_OK) {
        return found;
    }
    return reading == nullptr ? VEK_BAD_ARGUMENT : vek::SensorDriver(*registers).readProcess(kind, sensor, *reading);
}
