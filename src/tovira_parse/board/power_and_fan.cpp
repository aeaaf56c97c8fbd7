// Power state, fan, thermal simulation and feature switches.

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// Gives the fan back to the regulation and ends a thermal simulation.
constexpr int kAutomatic = -1;

void setPowerState(std::int32_t state)
{
    const int error = vekPowerSetState(state);
    const char* const name = textOrUnknown(vekPowerStateName(state));
    if (error != 0) {
        printf("vekPowerSetState: set power state %s error (%d)\n", name, error);
    } else {
        printf("current power state: %s\n", name);
    }
}

void showPowerState()
{
    int state = 0;
    const int error = vekPowerGetState(&state);
    if (error != 0) {
        printf("vekPowerGetState: get power state error (%d)\n", error);
    } else {
        printf("current power state: %s\n", textOrUnknown(vekPowerStateName(state)));
    }
}

}  // namespace

int doPower(char* cmdText, int /*repeat*/)
{
    Tokens arguments{cmdText};
    arguments.word();
    std::uint32_t state = UINT32_MAX;
    arguments.number(state);
    if (state <= VEK_POWER_STANDBY) {
        setPowerState(static_cast<std::int32_t>(state));
    } else {
        showPowerState();
    }
    return kStatusDone;
}

int doFan(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const rate = tokens.word();
    if (rate == nullptr) {
        puts("please input fan <pwm> or fan auto.");
        return kStatusBadCommand;
    }
    vekFanSetRate(strcmp(rate, "auto") == 0 ? kAutomatic : decimal32(rate));
    return kStatusDone;
}

int doThermal(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    const char* const temperature = tokens.word();
    if (temperature == nullptr) {
        return kStatusBadArgument;
    }
    const bool ends = strcmp(temperature, "q") == 0 || strcmp(temperature, "quit") == 0;
    vekThermalDebug(ends ? kAutomatic : decimal32(temperature));
    return kStatusDone;
}

int doFunction(char* cmdText, int repeat)
{
    tovira_func(cmdText, repeat);
    return kStatusDone;
}
