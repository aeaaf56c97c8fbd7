// The chip's own sensors: die temperatures, supply voltages and process monitors.

#include <cstdint>
#include <cstdio>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr int kSensors = 2;

// What is read at a sensor site, and how it stands on the screen.
struct Quantity {
    int (*read)(int sensor, double* value);
    const char* name;
    int decimals;
    char unit;
    const char* failureMark;  ///< behind the sensor's number when the reading failed
};

constexpr Quantity kTemperature = {
    .read = vekSensorTemp, .name = "temprature", .decimals = 2, .unit = 'C', .failureMark = ":"};
constexpr Quantity kVoltage = {.read = vekSensorVolt, .name = "voltage", .decimals = 3, .unit = 'V', .failureMark = ""};

template <const Quantity& Kind>
int showSensor(int sensor)
{
    double value = 0;
    if (Kind.read(sensor, &value) != 0) {
        printf("Sensor %d%s get %s failed\n", sensor, Kind.failureMark, Kind.name);
        return kStatusBadArgument;
    }
    printf("Sensor %d %s: %.*f%c\n", sensor, Kind.name, Kind.decimals, value, Kind.unit);
    return kStatusDone;
}

template <const Quantity& Kind>
int showSensors(char* cmdText)
{
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr) {
        return kStatusBadArgument;
    }
    if (const char* const token = tokens.word()) {
        const auto sensor = static_cast<std::uint64_t>(htoi(token));
        // Numbers have no sign; one that is typed all the same names no sensor.
        return *token == '-' || sensor >= kSensors ? kStatusBadArgument : showSensor<Kind>(static_cast<int>(sensor));
    }
    for (int sensor = 0; sensor < kSensors; ++sensor) {
        const int status = showSensor<Kind>(sensor);
        if (status != kStatusDone) {
            return status;
        }
    }
    return kStatusDone;
}

struct ProcessMonitor {
    int kind;
    const char* name;
    const char* failureName;
};

constexpr ProcessMonitor kProcessMonitors[] = {
    {VEK_PROCESS_SVT, "SVT", "svt"}, {VEK_PROCESS_LVT, "LVT", "lvt"}, {VEK_PROCESS_ULVT, "ULVT", "ulvt"}};

// A chip with one set of monitors does not number it.
int showProcess(const ProcessMonitor& monitor, int sensor, bool numbered)
{
    int reading = 0;
    if (vekSensorProcess(monitor.kind, sensor, &reading) != 0) {
        // Always the first sensor's number, whichever failed.
        printf("Sensor %d get %s process failed\n", 0, monitor.failureName);
        return kStatusBadArgument;
    }
    if (numbered) {
        printf("Sensor%d %s Process data: %d\n", sensor, monitor.name, reading);
    } else {
        printf("%s Process data: %d\n", monitor.name, reading);
    }
    return kStatusDone;
}

int showAllProcesses(int sensors)
{
    for (const ProcessMonitor& monitor : kProcessMonitors) {
        for (int sensor = 0; sensor < sensors; ++sensor) {
            const int status = showProcess(monitor, sensor, sensors > 1);
            if (status != kStatusDone) {
                return status;
            }
        }
    }
    return kStatusDone;
}

int processSensors(unsigned deviceId)
{
    if (deviceId == VEK_DEVICE_QZ201) {
        return kSensors;
    }
    return deviceId == VEK_DEVICE_QZ202 ? 1 : 0;
}

}  // namespace

int doTemp(char* cmdText, int /*repeat*/)
{
    return showSensors<kTemperature>(cmdText);
}

int doVolt(char* cmdText, int /*repeat*/)
{
    return showSensors<kVoltage>(cmdText);
}

int doProcess(char* cmdText, int /*repeat*/)
{
    const unsigned deviceId = get_device_id();
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr || tokens.word() != nullptr) {
        return kStatusBadArgument;
    }
    return showAllProcesses(processSensors(deviceId));
}
