#include "drivers/ltc2990.h"

#include <algorithm>

#include "drivers/polling.h"
#include "vek.h"

namespace vek
{
namespace
{

/// An acquisition of all modes' slots takes up to 167 ms (the datasheet's electrical characteristics).
constexpr Patience kPatience{.eagerLooks = 0, .pausedLooks = 400, .interval = 500};

constexpr std::uint8_t kAskedVoltages = ltc2990::readyBit(ltc2990::kV1) | ltc2990::readyBit(ltc2990::kV2) |
                                        ltc2990::readyBit(ltc2990::kV3) | ltc2990::readyBit(ltc2990::kV4);
constexpr std::uint8_t kAskedDifferences = ltc2990::readyBit(ltc2990::kV1) | ltc2990::readyBit(ltc2990::kV3);
constexpr std::uint8_t kV1Register = ltc2990::kData + 2 * ltc2990::kV1;

/// Whether the values asked for, by their bits in the status register, are all new. `data` begins with V1.
bool allNew(const std::array<std::uint16_t, 4>& data, std::uint8_t slotsAsked)
{
    for (unsigned at = 0; at < data.size(); ++at) {
        const bool asked = (slotsAsked & ltc2990::readyBit(ltc2990::kV1 + at)) != 0;
        if (asked && (data[at] & ltc299x::kDataValid) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

Ltc2990::Ltc2990(I2cBus& bus, Pause& pause, int addressIndex)
    : registers_(bus, static_cast<std::uint8_t>(ltc2990::kFirstAddress + static_cast<unsigned>(addressIndex))),
      pause_(pause),
      addressExists_(addressIndex >= 0 && addressIndex < ltc2990::kAddresses)
{
}

/// Sets the chip up, drops what it holds from before, and starts an acquisition. Nothing is read behind the trigger: on
/// a slow line that would take the new values.
int Ltc2990::acquire(std::uint8_t control)
{
    int result = registers_.write(ltc2990::kControl, control);
    Data old{};
    if (result == VEK_OK) {
        result = registers_.readData(kV1Register, old);
    }
    return result == VEK_OK ? registers_.write(ltc2990::kTrigger, 0) : result;
}

int Ltc2990::takeNew(std::uint8_t control, std::uint8_t slotsAsked, Data& data)
{
    int result = acquire(control);
    if (result == VEK_OK) {
        result = awaitReadiness(pause_, kPatience, [&]() -> Readiness {
            std::uint8_t status = 0;
            const int read = registers_.read(ltc2990::kStatus, status);
            return {read, (status & slotsAsked) == slotsAsked};
        });
    }
    if (result == VEK_OK) {
        result = registers_.readData(kV1Register, data);
    }
    return result != VEK_OK || allNew(data, slotsAsked) ? result : VEK_BAD_DATA;
}

int Ltc2990::takeHeld(std::uint8_t control, std::uint8_t slotsAsked, Data& data)
{
    std::uint8_t found = 0;
    int result = registers_.read(ltc2990::kControl, found);
    if (result == VEK_OK && (found & ~ltc2990::kControlReserved) != control) {
        result = acquire(control);
        return result == VEK_OK ? VEK_BAD_DATA : result;
    }
    std::uint8_t status = 0;
    if (result == VEK_OK) {
        result = registers_.read(ltc2990::kStatus, status);
    }
    if (result == VEK_OK) {
        result = registers_.readData(kV1Register, data);
    }
    if (result != VEK_OK) {
        return result;
    }
    if ((status & ltc2990::kStatusBusy) == 0) {
        return registers_.write(ltc2990::kTrigger, 0);
    }
    return allNew(data, slotsAsked) ? VEK_OK : VEK_BAD_DATA;
}

int Ltc2990::measure(std::uint8_t mode, std::uint8_t slotsAsked, const ltc299x::Acquisition& acquisition, Data& data)
{
    const std::uint8_t repetition = acquisition.repeated ? 0 : ltc2990::kControlSingle;
    const auto control = static_cast<std::uint8_t>(repetition | ltc2990::kControlAll | mode);
    return acquisition.waitReady ? takeNew(control, slotsAsked, data) : takeHeld(control, slotsAsked, data);
}

int Ltc2990::readVoltages(const ltc299x::Acquisition& acquisition, std::array<float, 4>& volts)
{
    if (!addressExists_) {
        return VEK_BAD_ARGUMENT;
    }
    Data data{};
    const int result = measure(ltc2990::kControlModeVoltages, kAskedVoltages, acquisition, data);
    if (result == VEK_OK) {
        std::transform(data.begin(), data.end(), volts.begin(), [](std::uint16_t value) {
            return static_cast<float>(ltc299x::voltsOf(ltc299x::codeOf(value), ltc299x::kSingleEndedWeight));
        });
    }
    return result;
}

int Ltc2990::readCurrents(const ltc299x::Acquisition& acquisition, const std::array<unsigned, 2>& milliohms,
                          std::array<float, 2>& amperes)
{
    if (!addressExists_ || std::find(milliohms.begin(), milliohms.end(), 0U) != milliohms.end()) {
        return VEK_BAD_ARGUMENT;
    }
    Data data{};
    const int result = measure(ltc2990::kControlModeDifferential, kAskedDifferences, acquisition, data);
    if (result == VEK_OK) {
        for (std::size_t pair = 0; pair < amperes.size(); ++pair) {
            const double volts = ltc299x::voltsOf(ltc299x::codeOf(data[2 * pair]), ltc2990::kDifferentialWeight);
            amperes[pair] = static_cast<float>(volts * 1e3 / milliohms[pair]);
        }
    }
    return result;
}

}  // namespace vek
