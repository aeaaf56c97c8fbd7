#include "card/ltc2991_monitor.h"

namespace vek
{
namespace
{

constexpr unsigned kPairs = ltc2991::kInputs / 2;
constexpr std::uint8_t kDataEnd = ltc2991::kData + 2 * ltc2991::kSlots;

}  // namespace

void Ltc2991Monitor::beginTransfer()
{
    sequence_.advance(clock_.nanoseconds(), [this](std::uint8_t slot) { data_[slot] = convert(slot); });
}

/// The control nibble of a pair at the trigger.
std::uint8_t Ltc2991Monitor::pairControl(unsigned pair) const
{
    constexpr unsigned kNibble = 4;
    return runningSettings_[pair / 2] >> (pair % 2 * kNibble) & 0xf;
}

std::uint16_t Ltc2991Monitor::convertInput(unsigned input) const
{
    const std::uint8_t control = pairControl(input / 2);
    if ((control & ltc2991::kPairTemperature) != 0) {
        return ltc299x::kDataValid | ltc299x::kSensorOpen;
    }
    const bool second = input % 2 != 0;
    if (second && (control & ltc2991::kPairDifferential) != 0) {
        return ltc299x::voltageData(inputs_.microvolts[input - 1] - inputs_.microvolts[input],
                                    ltc2991::kDifferentialWeight);
    }
    return ltc299x::voltageData(inputs_.microvolts[input], ltc299x::kSingleEndedWeight);
}

std::uint16_t Ltc2991Monitor::convert(std::uint8_t slot) const
{
    if (slot < ltc2991::kInputs) {
        return convertInput(slot);
    }
    if (slot == ltc2991::kSupply) {
        return ltc299x::voltageData(inputs_.supplyMicrovolts - ltc299x::kSupplyOffsetMicrovolts,
                                    ltc299x::kSingleEndedWeight);
    }
    const std::uint8_t control = runningSettings_[ltc2991::kControl - ltc2991::kControlV1ToV4];
    return ltc299x::temperatureData(inputs_.temperature, (control & ltc2991::kControlKelvin) != 0);
}

void Ltc2991Monitor::trigger()
{
    runningSettings_ = settings_;
    sequence_.clear();
    for (unsigned pair = 0; pair < kPairs; ++pair) {
        if ((enabled_ & ltc2991::kChannelsPairs & 0x10U << pair) == 0) {
            continue;
        }
        const auto first = static_cast<std::uint8_t>(2 * pair);
        if ((pairControl(pair) & ltc2991::kPairTemperature) != 0) {
            sequence_.add(first, ltc299x::kTemperatureTime);
            continue;
        }
        sequence_.add(first, ltc299x::kVoltageTime);
        sequence_.add(static_cast<std::uint8_t>(first + 1), ltc299x::kVoltageTime);
    }
    if ((enabled_ & ltc2991::kChannelsInternal) != 0) {
        sequence_.add(ltc2991::kInternalTemperature, ltc299x::kTemperatureTime);
        sequence_.add(ltc2991::kSupply, ltc299x::kVoltageTime);
    }
    sequence_.start(clock_.nanoseconds(), (setting(settings_, ltc2991::kControl) & ltc2991::kControlRepeat) != 0);
}

/// A bit for each slot with new data, the first in the lowest.
std::uint8_t Ltc2991Monitor::readyBits(unsigned firstSlot, unsigned count) const
{
    unsigned bits = 0;
    for (unsigned slot = 0; slot < count; ++slot) {
        bits |= (data_[firstSlot + slot] & ltc299x::kDataValid) != 0 ? 1U << slot : 0;
    }
    return static_cast<std::uint8_t>(bits);
}

std::uint8_t Ltc2991Monitor::channels() const
{
    std::uint8_t value = enabled_;
    if (sequence_.running()) {
        value |= ltc2991::kChannelsBusy;
    }
    if (readyBits(ltc2991::kInternalTemperature, 1) != 0) {
        value |= ltc2991::kChannelsTemperatureReady;
    }
    if (readyBits(ltc2991::kSupply, 1) != 0) {
        value |= ltc2991::kChannelsSupplyReady;
    }
    return value;
}

std::uint8_t Ltc2991Monitor::readData(std::uint8_t index)
{
    std::uint16_t& data = data_[(index - ltc2991::kData) / 2U];
    if (index % 2 != 0) {
        return static_cast<std::uint8_t>(data);
    }
    const auto high = static_cast<std::uint8_t>(data >> 8);
    data &= static_cast<std::uint16_t>(~ltc299x::kDataValid);
    return high;
}

std::uint8_t Ltc2991Monitor::readRegister(std::uint8_t index)
{
    if (index == ltc2991::kStatus) {
        return readyBits(ltc2991::kV1, ltc2991::kInputs);
    }
    if (index == ltc2991::kChannels) {
        return channels();
    }
    if (index >= ltc2991::kControlV1ToV4 && index <= ltc2991::kPwmThreshold) {
        return setting(settings_, index);
    }
    return index >= ltc2991::kData && index < kDataEnd ? readData(index) : 0;
}

void Ltc2991Monitor::writeRegister(std::uint8_t index, std::uint8_t value)
{
    if (index == ltc2991::kChannels) {
        enabled_ = value & ltc2991::kChannelsEnables;
        trigger();
    } else if (index >= ltc2991::kControlV1ToV4 && index <= ltc2991::kPwmThreshold) {
        setting(settings_, index) = value;
    }
}

}  // namespace vek
