#include <array>
#include <cstddef>

#include "api/channels.h"
#include "drivers/ina3221.h"
#include "drivers/ltc2990.h"
#include "drivers/ltc2991.h"
#include "pause.h"
#include "vek.h"

namespace
{

/// Lets `measure` work on an I2C channel of the open path, then hands the values to the caller's cells.
template <std::size_t Count, typename Measure>
int measureInto(const std::array<float*, Count>& cells, int channel, Measure measure)
{
    const auto [found, bus] = vek::findChannel<&vek::AccessPath::i2c>(channel, VEK_NO_BUS);
    if (found != VEK_OK) {
        return found;
    }
    for (const float* cell : cells) {
        if (cell == nullptr) {
            return VEK_BAD_ARGUMENT;
        }
    }
    const vek::CardHold hold(vek::openCardLock());
    vek::HostPause pause;
    std::array<float, Count> values{};
    const int result = measure(*bus, pause, values);
    if (result == VEK_OK) {
        for (std::size_t at = 0; at < Count; ++at) {
            *cells[at] = values[at];
        }
    }
    return result;
}

vek::ltc299x::Acquisition acquisitionOf(int repeated, int waitReady)
{
    return {.repeated = repeated != 0, .waitReady = waitReady != 0};
}

}  // namespace

int vekLTC2990GetCurrent2(int channel, int address_index, unsigned int rsense1, unsigned int rsense2, float* current1,
                          float* current2, int repeated, int wait_ready)
{
    return measureInto(std::array{current1, current2}, channel,
                       [&](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 2>& amperes) {
                           return vek::Ltc2990(bus, pause, address_index)
                               .readCurrents(acquisitionOf(repeated, wait_ready), {rsense1, rsense2}, amperes);
                       });
}

int vekLTC2990GetVolt4(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, int repeated,
                       int wait_ready)
{
    return measureInto(
        std::array{v1, v2, v3, v4}, channel, [&](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 4>& volts) {
            return vek::Ltc2990(bus, pause, address_index).readVoltages(acquisitionOf(repeated, wait_ready), volts);
        });
}

int vekLTC2991GetCurrent4(int channel, int address_index, unsigned int rsense1, unsigned int rsense2,
                          unsigned int rsense3, unsigned int rsense4, float* current1, float* current2, float* current3,
                          float* current4, int repeated, int wait_ready)
{
    return measureInto(std::array{current1, current2, current3, current4}, channel,
                       [&](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 4>& amperes) {
                           return vek::Ltc2991(bus, pause, address_index)
                               .readCurrents(acquisitionOf(repeated, wait_ready), {rsense1, rsense2, rsense3, rsense4},
                                             amperes);
                       });
}

int vekLTC2991GetVolt8(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, float* v5, float* v6,
                       float* v7, float* v8, int repeated, int wait_ready)
{
    return measureInto(
        std::array{v1, v2, v3, v4, v5, v6, v7, v8}, channel,
        [&](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 8>& volts) {
            return vek::Ltc2991(bus, pause, address_index).readVoltages(acquisitionOf(repeated, wait_ready), volts);
        });
}

int vekINA3221GetVolt2(int channel, float* millivolts1, float* millivolts2)
{
    return measureInto(std::array{millivolts1, millivolts2}, channel,
                       [](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 2>& millivolts) {
                           return vek::Ina3221(bus, pause).readVoltages(millivolts);
                       });
}

int vekINA3221GetCurrent2(int channel, unsigned int rsense1, unsigned int rsense2, float* current1, float* current2)
{
    return measureInto(std::array{current1, current2}, channel,
                       [&](vek::I2cBus& bus, vek::Pause& pause, std::array<float, 2>& amperes) {
                           return vek::Ina3221(bus, pause).readCurrents({rsense1, rsense2}, amperes);
                       });
}
