#include "card/ina3221_monitor.h"

#include <algorithm>

namespace vek
{
namespace
{

using ina3221::kVoltageShift;

/// Conversion times in nanoseconds, and how many conversions are averaged, by their codes in the configuration
/// (SBOS576B, section 8.6.2.1).
constexpr std::array<std::uint64_t, 8> kTimes{140'000,   204'000,   332'000,   588'000,
                                              1'100'000, 2'116'000, 4'156'000, 8'244'000};
constexpr std::array<std::uint64_t, 8> kAverages{1, 4, 16, 64, 128, 256, 512, 1024};

constexpr unsigned kAverageShift = 9;
constexpr unsigned kBusTimeShift = 6;
constexpr unsigned kShuntTimeShift = 3;
constexpr unsigned kCode = 7;

// Bits of the mode.
constexpr unsigned kModeShunt = 1;
constexpr unsigned kModeBus = 2;
constexpr unsigned kModeContinuous = 4;

/// A voltage register: 13 bits in two's complement, cut to them.
std::uint16_t voltageRegister(std::int32_t microvolts, int weight)
{
    constexpr std::int32_t kLowest = -0x1000;
    constexpr std::int32_t kHighest = 0x0fff;
    const std::int32_t half = microvolts < 0 ? -weight / 2 : weight / 2;
    const std::int32_t steps = std::clamp((microvolts + half) / weight, kLowest, kHighest);
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(steps) << kVoltageShift);
}

}  // namespace

void Ina3221Monitor::startConversions(std::uint64_t now)
{
    const unsigned configuration = registers_[ina3221::kConfiguration];
    const std::uint64_t averaged = kAverages[configuration >> kAverageShift & kCode];
    sequence_.clear();
    for (std::uint8_t channel = 0; channel < ina3221::kChannels; ++channel) {
        if ((configuration & 0x4000U >> channel) == 0) {
            continue;
        }
        const auto shunt = static_cast<std::uint8_t>(kFirstResult + 2 * channel);
        if ((configuration & kModeShunt) != 0) {
            sequence_.add(shunt, averaged * kTimes[configuration >> kShuntTimeShift & kCode]);
        }
        if ((configuration & kModeBus) != 0) {
            sequence_.add(static_cast<std::uint8_t>(shunt + 1),
                          averaged * kTimes[configuration >> kBusTimeShift & kCode]);
        }
    }
    sequence_.start(now, (configuration & kModeContinuous) != 0);
}

std::uint16_t Ina3221Monitor::convert(std::uint8_t result) const
{
    const unsigned at = result - kFirstResult;
    const MonitoredRail& rail = rails_[at / 2];
    return at % 2 == 0 ? voltageRegister(rail.drop(), ina3221::kShuntWeight)
                       : voltageRegister(rail.loadMicrovolts(), ina3221::kBusWeight);
}

void Ina3221Monitor::catchUp()
{
    if (!poweredOn_) {
        poweredOn_ = true;
        startConversions(0);
    }
    const bool allConverted =
        sequence_.advance(clock_.nanoseconds(), [this](std::uint8_t result) { registers_[result] = convert(result); });
    if (allConverted) {
        registers_[ina3221::kMaskEnable] |= ina3221::kConversionReady;
    }
}

bool Ina3221Monitor::addressed(bool forReading)
{
    catchUp();
    received_ = 0;
    lowNext_ = false;
    if (forReading) {
        sending_ = readRegister();
    }
    return true;
}

std::uint16_t Ina3221Monitor::readRegister()
{
    switch (pointer_) {
        case ina3221::kManufacturerId:
            return ina3221::kManufacturer;
        case ina3221::kDieId:
            return ina3221::kDie;
        default:
            break;
    }
    if (pointer_ >= kRegisters) {
        return 0;
    }
    const std::uint16_t value = registers_[pointer_];
    if (pointer_ == ina3221::kMaskEnable) {
        registers_[pointer_] &= static_cast<std::uint16_t>(~ina3221::kConversionReady);
    }
    return value;
}

bool Ina3221Monitor::receive(std::uint8_t byte)
{
    switch (received_++) {
        case 0:
            pointer_ = byte;
            break;
        case 1:
            high_ = byte;
            break;
        default:
            writeRegister(static_cast<std::uint16_t>(high_ << 8 | byte));
            received_ = 1;
            break;
    }
    return true;
}

void Ina3221Monitor::writeRegister(std::uint16_t value)
{
    if (pointer_ >= kRegisters || isResult(pointer_) || pointer_ == ina3221::kShuntSum) {
        return;
    }
    if (pointer_ == ina3221::kMaskEnable) {
        constexpr std::uint16_t kFlags = 0x03ff;
        registers_[pointer_] = static_cast<std::uint16_t>((value & ~kFlags) | (registers_[pointer_] & kFlags));
        return;
    }
    registers_[pointer_] = value;
    if (pointer_ != ina3221::kConfiguration) {
        return;
    }
    if ((value & ina3221::kConfigurationReset) != 0) {
        registers_ = kPowerOn;
    }
    registers_[ina3221::kMaskEnable] &= static_cast<std::uint16_t>(~ina3221::kConversionReady);
    startConversions(clock_.nanoseconds());
}

std::uint8_t Ina3221Monitor::send()
{
    const bool low = lowNext_;
    lowNext_ = !lowNext_;
    return static_cast<std::uint8_t>(low ? sending_ : sending_ >> 8);
}

}  // namespace vek
