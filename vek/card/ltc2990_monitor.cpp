#include "card/ltc2990_monitor.h"

namespace vek
{
namespace
{

using ltc2990::Slot;

/// What a pair of inputs is for.
enum class PairUse : std::uint8_t { kDiode, kDifference, kVoltages };

struct ModeUse {
    PairUse first;   ///< V1 and V2.
    PairUse second;  ///< V3 and V4.
};

/// By mode [2:0] (table 5).
constexpr std::array<ModeUse, 8> kModes{{
    {PairUse::kVoltages, PairUse::kDiode},
    {PairUse::kDifference, PairUse::kDiode},
    {PairUse::kDifference, PairUse::kVoltages},
    {PairUse::kDiode, PairUse::kVoltages},
    {PairUse::kDiode, PairUse::kDifference},
    {PairUse::kDiode, PairUse::kDiode},
    {PairUse::kDifference, PairUse::kDifference},
    {PairUse::kVoltages, PairUse::kVoltages},
}};

PairUse useOf(std::uint8_t control, bool secondPair)
{
    const ModeUse& mode = kModes[control & ltc2990::kControlMode];
    return secondPair ? mode.second : mode.first;
}

}  // namespace

void Ltc2990Monitor::beginTransfer()
{
    sequence_.advance(clock_.nanoseconds(), [this](std::uint8_t slot) { data_[slot] = convert(slot); });
}

std::uint16_t Ltc2990Monitor::convert(std::uint8_t slot) const
{
    if (slot == ltc2990::kInternalTemperature) {
        return ltc299x::temperatureData(inputs_.temperature, (runningControl_ & ltc2990::kControlKelvin) != 0);
    }
    if (slot == ltc2990::kSupply) {
        return ltc299x::voltageData(inputs_.supplyMicrovolts - ltc299x::kSupplyOffsetMicrovolts,
                                    ltc299x::kSingleEndedWeight);
    }
    const std::size_t input = slot - ltc2990::kV1;
    switch (useOf(runningControl_, slot >= ltc2990::kV3)) {
        case PairUse::kDiode:
            return ltc299x::kDataValid | ltc299x::kSensorOpen;
        case PairUse::kDifference:
            return ltc299x::voltageData(inputs_.microvolts[input] - inputs_.microvolts[input + 1],
                                        ltc2990::kDifferentialWeight);
        default:
            return ltc299x::voltageData(inputs_.microvolts[input], ltc299x::kSingleEndedWeight);
    }
}

/// Adds what a pair of inputs is for to the sequence, if it is wanted at all; the voltage of its second input only when
/// all measurements are.
void Ltc2990Monitor::addPair(Slot first, bool wanted, bool all)
{
    if (!wanted) {
        return;
    }
    const PairUse use = useOf(control_, first == ltc2990::kV3);
    sequence_.add(first, use == PairUse::kDiode ? ltc299x::kTemperatureTime : ltc299x::kVoltageTime);
    if (all && use == PairUse::kVoltages) {
        sequence_.add(static_cast<std::uint8_t>(first + 1), ltc299x::kVoltageTime);
    }
}

void Ltc2990Monitor::trigger()
{
    runningControl_ = control_;
    const std::uint8_t extent = control_ & ltc2990::kControlAll;
    const bool all = extent == ltc2990::kControlAll;
    sequence_.clear();
    if (all || extent == 0) {
        sequence_.add(ltc2990::kInternalTemperature, ltc299x::kTemperatureTime);
    }
    addPair(ltc2990::kV1, (extent & ltc2990::kControlFirst) != 0, all);
    addPair(ltc2990::kV3, (extent & ltc2990::kControlSecond) != 0, all);
    if (all) {
        sequence_.add(ltc2990::kSupply, ltc299x::kVoltageTime);
    }
    sequence_.start(clock_.nanoseconds(), (control_ & ltc2990::kControlSingle) == 0);
}

std::uint8_t Ltc2990Monitor::status() const
{
    std::uint8_t status = sequence_.running() ? ltc2990::kStatusBusy : 0;
    for (unsigned slot = 0; slot < data_.size(); ++slot) {
        if ((data_[slot] & ltc299x::kDataValid) != 0) {
            status |= ltc2990::readyBit(slot);
        }
    }
    return status;
}

std::uint8_t Ltc2990Monitor::readRegister(std::uint8_t index)
{
    switch (index) {
        case ltc2990::kStatus:
            return status();
        case ltc2990::kControl:
            return control_;
        default:
            break;
    }
    if (index < ltc2990::kData) {
        return 0;
    }
    std::uint16_t& data = data_[(index - ltc2990::kData) / 2U];
    if (index % 2 != 0) {
        return static_cast<std::uint8_t>(data);
    }
    const auto high = static_cast<std::uint8_t>(data >> 8);
    data &= static_cast<std::uint16_t>(~ltc299x::kDataValid);
    return high;
}

void Ltc2990Monitor::writeRegister(std::uint8_t index, std::uint8_t value)
{
    if (index == ltc2990::kControl) {
        control_ = value;
    } else if (index == ltc2990::kTrigger) {
        trigger();
    }
}

}  // namespace vek
