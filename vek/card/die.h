#ifndef VEK_CARD_DIE_H
#define VEK_CARD_DIE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "card/card_clock.h"
#include "vek.h"

namespace vek
{

/// What the clocks of the graphics cores run at, in GHz.
struct CoreRates {
    double core3d = 0;
    double shader = 0;
    double core2d = 0;
};

/// What drives the fan.
struct FanControl {
    bool manual = false;          ///< By hand, or by the temperature regulation.
    double manualDuty = 0;        ///< PWM duty in per cent.
    bool simulated = false;       ///< The regulation works from the simulated temperature, not from the die's.
    double simulatedCelsius = 0;  ///< Degrees Celsius.
};

/// What a power state does to the die.
struct DieState {
    double coreVolts;   ///< Set voltage of the graphics cores' rail; their power goes with its square.
    double otherVolts;  ///< Set voltage of the rail of all else.
    double otherWatts;  ///< What all else on the chip and leakage take.
};

/// The physics of a card, in degrees Celsius, watts and volts.
namespace die_physics
{

constexpr double kAmbient = 25;
constexpr double kNominalVolts = 0.90;
constexpr double kWattsPerGhz3d = 9;  ///< At the nominal voltage, as the next two.
constexpr double kWattsPerGhzShader = 7;
constexpr double kWattsPerGhz2d = 3;
constexpr double kVoltsLostPerWatt = 0.0004;  ///< On the way from the regulator to the die.

/// By enum VekPowerState.
constexpr std::array<DieState, 3> kStates{{
    {.coreVolts = 0.90, .otherVolts = 0.85, .otherWatts = 8},
    {.coreVolts = 0.80, .otherVolts = 0.85, .otherWatts = 6},
    {.coreVolts = 0.65, .otherVolts = 0.80, .otherWatts = 3},
}};

/// From die to air, in kelvins per watt, with the fan at a standstill and at full duty; in between it falls evenly.
constexpr double kResistanceFanOff = 2.0;
constexpr double kResistanceFanFull = 0.8;

/// The second site lies apart from the graphics cores and warms up by this part of what the first one does.
constexpr double kSecondSiteShare = 0.92;

constexpr double kTimeConstantSeconds = 10;
constexpr std::uint64_t kStepNanoseconds = 100'000'000;
constexpr double kStepSeconds = 0.1;

/// The regulation's curve: the least duty up to the cool temperature, full duty from the hot one, even in between.
constexpr double kLeastDuty = 20;
constexpr double kFullDuty = 100;
constexpr double kCoolCelsius = 40;
constexpr double kHotCelsius = 90;

/// The duty that the regulation sets for a temperature, in per cent.
constexpr double regulatedDuty(double celsius)
{
    if (celsius <= kCoolCelsius) {
        return kLeastDuty;
    }
    if (celsius >= kHotCelsius) {
        return kFullDuty;
    }
    return kLeastDuty + (kFullDuty - kLeastDuty) * (celsius - kCoolCelsius) / (kHotCelsius - kCoolCelsius);
}

/// The power that the chip takes.
constexpr double watts(const DieState& state, const CoreRates& rates)
{
    const double voltageFactor = (state.coreVolts / kNominalVolts) * (state.coreVolts / kNominalVolts);
    return state.otherWatts + voltageFactor * (kWattsPerGhz3d * rates.core3d + kWattsPerGhzShader * rates.shader +
                                               kWattsPerGhz2d * rates.core2d);
}

/// Where the temperature goes to with a power and a fan duty.
constexpr double settledCelsius(double power, double duty)
{
    const double resistance = kResistanceFanOff - (kResistanceFanOff - kResistanceFanFull) * duty / kFullDuty;
    return kAmbient + power * resistance;
}

}  // namespace die_physics

/// The die with its cooling: how warm it gets, what voltages are on its rails, and the fan with its regulation. The
/// temperature approaches the settled one exponentially; the regulation, which samples every 0.1 s, moves the latter.
/// All is worked out in these steps when somebody looks or changes something. Time begins with the first of that.
class Die
{
public:
    /// A fan that does not turn cools no more than one at a standstill, whatever its duty.
    constexpr explicit Die(const CardClock& clock, bool fanTurns = true) : clock_(clock), fanTurns_(fanTurns) {}

    static constexpr std::size_t kSites = 2;

    /// The die after it has run with these clocks for long, in the performance state with the fan regulated.
    constexpr void settle(const CoreRates& rates)
    {
        rates_ = rates;
        celsius_ = die_physics::kAmbient;
        // Every round halves the distance at least: one kelvin more makes the regulated fan cool by less than one.
        constexpr int kRounds = 60;
        for (int round = 0; round < kRounds; ++round) {
            celsius_ = (celsius_ + settledCelsius()) / 2;
        }
    }

    void setCoreRates(const CoreRates& rates);
    void setPowerState(VekPowerState state);
    void setFan(const FanControl& fan);

    /// Degrees Celsius at a site.
    double temperature(std::size_t site);
    /// Volts at a site; the first one is on the rail of the graphics cores.
    double voltage(std::size_t site);
    /// The fan's PWM duty in per cent.
    double fanDuty();

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.finite(rates_.core3d, rates_.shader, rates_.core2d, fan_.manualDuty, fan_.simulatedCelsius, celsius_);
        visit.upTo(state_, die_physics::kStates.size() - 1);
        visit(fan_.manual, fan_.simulated, reached_, started_);
    }

private:
    constexpr double power() const { return die_physics::watts(die_physics::kStates[state_], rates_); }

    constexpr double dutyNow() const
    {
        if (fan_.manual) {
            return fan_.manualDuty;
        }
        return die_physics::regulatedDuty(fan_.simulated ? fan_.simulatedCelsius : celsius_);
    }

    constexpr double settledCelsius() const { return die_physics::settledCelsius(power(), fanTurns_ ? dutyNow() : 0); }

    void advance();

    const CardClock& clock_;
    bool fanTurns_;
    CoreRates rates_;
    FanControl fan_;
    std::size_t state_ = VEK_POWER_PERFORMANCE;
    double celsius_ = die_physics::kAmbient;
    std::uint64_t reached_ = 0;
    bool started_ = false;
};

}  // namespace vek

#endif
