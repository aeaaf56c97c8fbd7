#include "drivers/ina3221.h"

#include <algorithm>

#include "drivers/i2c_transfer.h"
#include "drivers/polling.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Six conversions of 1.1 ms take 6.6 ms, with the clock's tolerance 7.3 ms.
constexpr Patience kPatience{.eagerLooks = 0, .pausedLooks = 100, .interval = 500};

/// Shunt and bus voltage of one channel lie before those of the next.
constexpr std::uint8_t kRegistersPerChannel = 2;

}  // namespace

int Ina3221::readRegister(std::uint8_t index, std::uint16_t& value)
{
    std::array<std::uint8_t, 2> bytes{};
    const int result = readI2c(bus_, ina3221::kAddress, index, bytes);
    if (result == VEK_OK) {
        value = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    }
    return result;
}

int Ina3221::writeRegister(std::uint8_t index, std::uint16_t value)
{
    const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    return writeI2c(bus_, ina3221::kAddress, index, bytes);
}

int Ina3221::identify()
{
    std::uint16_t manufacturer = 0;
    std::uint16_t die = 0;
    int result = readRegister(ina3221::kManufacturerId, manufacturer);
    if (result == VEK_OK) {
        result = readRegister(ina3221::kDieId, die);
    }
    if (result != VEK_OK) {
        return result;
    }
    return manufacturer == ina3221::kManufacturer && die == ina3221::kDie ? VEK_OK : VEK_BAD_DATA;
}

int Ina3221::convert()
{
    const int result = writeRegister(ina3221::kConfiguration, ina3221::kConfigurationDefault);
    if (result != VEK_OK) {
        return result;
    }
    return awaitReadiness(pause_, kPatience, [this]() -> Readiness {
        std::uint16_t flags = 0;
        const int read = readRegister(ina3221::kMaskEnable, flags);
        return {read, (flags & ina3221::kConversionReady) != 0};
    });
}

int Ina3221::measure(std::uint8_t firstRegister, int weight, std::array<int, 2>& microvolts)
{
    int result = identify();
    if (result == VEK_OK) {
        result = convert();
    }
    for (std::uint8_t channel = 0; channel < microvolts.size() && result == VEK_OK; ++channel) {
        std::uint16_t value = 0;
        result = readRegister(static_cast<std::uint8_t>(firstRegister + kRegistersPerChannel * channel), value);
        microvolts[channel] = ina3221::microvoltsOf(value, weight);
    }
    return result;
}

int Ina3221::readVoltages(std::array<float, 2>& millivolts)
{
    std::array<int, 2> microvolts{};
    const int result = measure(ina3221::kShunt1 + 1, ina3221::kBusWeight, microvolts);
    if (result == VEK_OK) {
        std::transform(microvolts.begin(), microvolts.end(), millivolts.begin(),
                       [](int value) { return static_cast<float>(value / 1e3); });
    }
    return result;
}

int Ina3221::readCurrents(const std::array<unsigned, 2>& milliohms, std::array<float, 2>& amperes)
{
    if (std::find(milliohms.begin(), milliohms.end(), 0U) != milliohms.end()) {
        return VEK_BAD_ARGUMENT;
    }
    std::array<int, 2> microvolts{};
    const int result = measure(ina3221::kShunt1, ina3221::kShuntWeight, microvolts);
    if (result == VEK_OK) {
        std::transform(microvolts.begin(), microvolts.end(), milliohms.begin(), amperes.begin(),
                       [](int drop, unsigned resistance) { return static_cast<float>(drop / 1e3 / resistance); });
    }
    return result;
}

}  // namespace vek
