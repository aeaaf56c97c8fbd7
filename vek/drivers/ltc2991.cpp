#include "drivers/ltc2991.h"

#include <algorithm>

#include "drivers/polling.h"
#include "vek.h"

namespace vek
{
namespace
{

/// Eight conversions of 1.8 ms at most (the datasheet's electrical characteristics).
constexpr Patience kPatience{.eagerLooks = 0, .pausedLooks = 200, .interval = 500};

constexpr std::uint8_t kAllInputs = 0xff;
constexpr std::uint8_t kSecondInputs = 0xaa;

/// The control nibbles of two pairs.
constexpr std::uint8_t bothPairs(std::uint8_t pairControl)
{
    return static_cast<std::uint8_t>(pairControl << 4 | pairControl);
}

/// Whether the values asked for, a bit each, are all new.
bool allNew(const std::array<std::uint16_t, ltc2991::kInputs>& data, std::uint8_t inputsAsked)
{
    for (unsigned input = 0; input < data.size(); ++input) {
        if ((inputsAsked >> input & 1U) != 0 && (data[input] & ltc299x::kDataValid) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

Ltc2991::Ltc2991(I2cBus& bus, Pause& pause, int addressIndex)
    : registers_(bus, static_cast<std::uint8_t>(ltc2991::kFirstAddress + static_cast<unsigned>(addressIndex))),
      pause_(pause),
      addressExists_(addressIndex >= 0 && addressIndex < ltc2991::kAddresses)
{
}

/// Sets the chip up and starts an acquisition; no value is new after that.
int Ltc2991::acquire(std::uint8_t pairControl, bool repeated)
{
    std::uint8_t control = 0;
    int result = registers_.read(ltc2991::kControl, control);
    if (result != VEK_OK) {
        return result;
    }
    control =
        static_cast<std::uint8_t>(repeated ? control | ltc2991::kControlRepeat : control & ~ltc2991::kControlRepeat);
    struct Setting {
        std::uint8_t index;
        std::uint8_t value;
    };
    // It stops first, so that nothing of what comes from before gets ready later.
    const std::array<Setting, 4> settings{{
        {ltc2991::kChannels, 0},
        {ltc2991::kControlV1ToV4, bothPairs(pairControl)},
        {ltc2991::kControlV5ToV8, bothPairs(pairControl)},
        {ltc2991::kControl, control},
    }};
    for (const auto& [index, value] : settings) {
        result = registers_.write(index, value);
        if (result != VEK_OK) {
            return result;
        }
    }
    Data old{};
    result = registers_.readData(ltc2991::kData, old);
    return result == VEK_OK ? registers_.write(ltc2991::kChannels, ltc2991::kChannelsPairs) : result;
}

int Ltc2991::isSetUp(std::uint8_t pairControl, bool repeated, bool& setUp)
{
    std::uint8_t channels = 0;
    std::uint8_t low = 0;
    std::uint8_t high = 0;
    std::uint8_t control = 0;
    int result = registers_.read(ltc2991::kChannels, channels);
    if (result == VEK_OK) {
        result = registers_.read(ltc2991::kControlV1ToV4, low);
    }
    if (result == VEK_OK) {
        result = registers_.read(ltc2991::kControlV5ToV8, high);
    }
    if (result == VEK_OK) {
        result = registers_.read(ltc2991::kControl, control);
    }
    setUp = (channels & ltc2991::kChannelsPairs) == ltc2991::kChannelsPairs && low == bothPairs(pairControl) &&
            high == bothPairs(pairControl) && ((control & ltc2991::kControlRepeat) != 0) == repeated;
    return result;
}

int Ltc2991::takeNew(std::uint8_t pairControl, std::uint8_t inputsAsked, bool repeated, Data& data)
{
    int result = acquire(pairControl, repeated);
    if (result == VEK_OK) {
        result = awaitReadiness(pause_, kPatience, [&]() -> Readiness {
            std::uint8_t status = 0;
            const int read = registers_.read(ltc2991::kStatus, status);
            return {read, (status & inputsAsked) == inputsAsked};
        });
    }
    if (result == VEK_OK) {
        result = registers_.readData(ltc2991::kData, data);
    }
    return result != VEK_OK || allNew(data, inputsAsked) ? result : VEK_BAD_DATA;
}

int Ltc2991::takeHeld(std::uint8_t pairControl, std::uint8_t inputsAsked, bool repeated, Data& data)
{
    bool setUp = false;
    int result = isSetUp(pairControl, repeated, setUp);
    if (result == VEK_OK && !setUp) {
        result = acquire(pairControl, repeated);
        return result == VEK_OK ? VEK_BAD_DATA : result;
    }
    std::uint8_t channels = 0;
    if (result == VEK_OK) {
        result = registers_.read(ltc2991::kChannels, channels);
    }
    if (result == VEK_OK) {
        result = registers_.readData(ltc2991::kData, data);
    }
    if (result != VEK_OK) {
        return result;
    }
    if ((channels & ltc2991::kChannelsBusy) == 0) {
        return registers_.write(ltc2991::kChannels, ltc2991::kChannelsPairs);
    }
    return allNew(data, inputsAsked) ? VEK_OK : VEK_BAD_DATA;
}

int Ltc2991::measure(std::uint8_t pairControl, std::uint8_t inputsAsked, const ltc299x::Acquisition& acquisition,
                     Data& data)
{
    return acquisition.waitReady ? takeNew(pairControl, inputsAsked, acquisition.repeated, data)
                                 : takeHeld(pairControl, inputsAsked, acquisition.repeated, data);
}

int Ltc2991::readVoltages(const ltc299x::Acquisition& acquisition, std::array<float, 8>& volts)
{
    if (!addressExists_) {
        return VEK_BAD_ARGUMENT;
    }
    Data data{};
    const int result = measure(0, kAllInputs, acquisition, data);
    if (result == VEK_OK) {
        std::transform(data.begin(), data.end(), volts.begin(), [](std::uint16_t value) {
            return static_cast<float>(ltc299x::voltsOf(ltc299x::codeOf(value), ltc299x::kSingleEndedWeight));
        });
    }
    return result;
}

int Ltc2991::readCurrents(const ltc299x::Acquisition& acquisition, const std::array<unsigned, 4>& milliohms,
                          std::array<float, 4>& amperes)
{
    if (!addressExists_ || std::find(milliohms.begin(), milliohms.end(), 0U) != milliohms.end()) {
        return VEK_BAD_ARGUMENT;
    }
    Data data{};
    const int result = measure(ltc2991::kPairDifferential, kSecondInputs, acquisition, data);
    if (result == VEK_OK) {
        for (std::size_t pair = 0; pair < amperes.size(); ++pair) {
            const double volts = ltc299x::voltsOf(ltc299x::codeOf(data[2 * pair + 1]), ltc2991::kDifferentialWeight);
            amperes[pair] = static_cast<float>(volts * 1e3 / milliohms[pair]);
        }
    }
    return result;
}

}  // namespace vek
