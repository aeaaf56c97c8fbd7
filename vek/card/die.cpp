#include "card/die.h"

#include <algorithm>

namespace vek
{
namespace
{

using namespace die_physics;

/// exp(-x) for a small x, by its series. The maths library stays out of the program.
constexpr double decay(double x)
{
    constexpr int kTerms = 12;
    double term = 1;
    double sum = 1;
    for (int n = 1; n <= kTerms; ++n) {
        term *= -x / n;
        sum += term;
    }
    return sum;
}

/// What a step leaves of the distance to the settled temperature.
constexpr double kLeftAfterStep = decay(kStepSeconds / kTimeConstantSeconds);

/// After 20 time constants nothing is left that a sensor could see.
constexpr auto kMostSteps = static_cast<std::uint64_t>(20 * kTimeConstantSeconds / kStepSeconds);

}  // namespace

void Die::advance()
{
    const std::uint64_t now = clock_.nanoseconds();
    if (!started_) {
        started_ = true;
        reached_ = now;
        return;
    }
    const std::uint64_t steps = (now - reached_) / kStepNanoseconds;
    reached_ += steps * kStepNanoseconds;
    for (std::uint64_t step = 0; step < std::min(steps, kMostSteps); ++step) {
        const double settled = settledCelsius();
        celsius_ = settled + (celsius_ - settled) * kLeftAfterStep;
    }
}

void Die::setCoreRates(const CoreRates& rates)
{
    advance();
    rates_ = rates;
}

void Die::setPowerState(VekPowerState state)
{
    advance();
    state_ = state;
}

void Die::setFan(const FanControl& fan)
{
    advance();
    fan_ = fan;
}

double Die::temperature(std::size_t site)
{
    advance();
    return site == 0 ? celsius_ : kAmbient + kSecondSiteShare * (celsius_ - kAmbient);
}

double Die::voltage(std::size_t site)
{
    const DieState& state = kStates[state_];
    return (site == 0 ? state.coreVolts : state.otherVolts) - kVoltsLostPerWatt * power();
}

double Die::fanDuty()
{
    advance();
    return dutyNow();
}

}  // namespace vek
