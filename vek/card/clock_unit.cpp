#include "card/clock_unit.h"

#include "card/long_registers.h"
#include "vek.h"

namespace vek
{
namespace
{

using namespace clock_unit;

/// Whether an address is that of one of `count` registers from `first` upwards; `index` then tells which.
bool isAmong(std::uint64_t address, std::uint64_t first, std::size_t count, std::size_t& index)
{
    index = static_cast<std::size_t>((address - first) / kRegisterWidth);
    return address >= first && index < count;
}

}  // namespace

/// The register at an address that takes what is written, null when there is none.
std::uint32_t* ClockUnit::writable(std::uint64_t address)
{
    std::size_t index = 0;
    if (isAmong(address, kPlls, kDomains, index) && kClockDomains[index].exists) {
        return &settings_[index];
    }
    if (isAmong(address, kModes, kSources, index) && index != 0) {
        return &modes_[index];
    }
    return nullptr;
}

DomainHertz ClockUnit::hertz() const
{
    constexpr std::uint64_t kHertzPerKhz = 1000;
    DomainHertz all{};
    for (std::size_t domain = 0; domain < all.size(); ++domain) {
        const Rate now = rate(domain);
        all[domain] = now.khz * kHertzPerKhz / now.divisor;
    }
    return all;
}

void ClockUnit::tellRates()
{
    die_.setCoreRates(coreRates());
    if (follower_ != nullptr) {
        follower_->followClocks(hertz());
    }
}

ReadResult ClockUnit::read(std::uint64_t address, unsigned width)
{
    if (!answersLong(address, width, kWindowSize)) {
        return kUnanswered;
    }
    if (address == kThrottle) {
        return {VEK_OK, throttle_};
    }
    const std::uint32_t* found = writable(address);
    return {VEK_OK, found == nullptr ? 0 : *found};
}

int ClockUnit::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answersLong(address, width, kWindowSize)) {
        return VEK_NO_RESPONSE;
    }
    std::uint32_t* found = writable(address);
    if (found == nullptr) {
        return VEK_OK;
    }
    if (address < kModes) {
        *found = static_cast<std::uint32_t>(value);
    } else if ((value & kModeMask) <= VEK_CLOCK_OFF) {
        *found = static_cast<std::uint32_t>(value & kModeMask);
    }
    tellRates();
    return VEK_OK;
}

void ClockUnit::setThrottle(std::uint32_t throttle)
{
    throttle_ = throttle;
    tellRates();
}

}  // namespace vek
