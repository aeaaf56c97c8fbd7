#include "drivers/clocks.h"

#include "drivers/long_read.h"

namespace vek
{
namespace
{

const ClockDomain* findDomain(int domain)
{
    const auto index = static_cast<std::size_t>(domain);
    return domain >= 0 && index < kClockDomains.size() && kClockDomains[index].exists ? &kClockDomains[index] : nullptr;
}

}  // namespace

/// Reads the mode of a source; what there is no source for is on.
int ClockDriver::readMode(std::size_t source, std::uint32_t& mode)
{
    return source == 0 ? VEK_OK : readLong(registers_, clock_unit::modeOf(source), mode);
}

int ClockDriver::readRate(int domain, Rate& rate)
{
    const ClockDomain* found = findDomain(domain);
    if (found == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    ClockRegisters registers;
    int result = readLong(registers_, clock_unit::pllOf(static_cast<std::size_t>(domain)), registers.setting);
    if (result == VEK_OK) {
        result = readMode(found->bank, registers.bankMode);
    }
    if (result == VEK_OK) {
        result = readMode(found->core, registers.coreMode);
    }
    if (result == VEK_OK && found->throttled) {
        result = readLong(registers_, clock_unit::kThrottle, registers.throttle);
    }
    if (result == VEK_OK) {
        rate = domainRate(registers);
    }
    return result;
}

int ClockDriver::setPll(int domain, std::uint32_t setting)
{
    const ClockDomain* found = findDomain(domain);
    if (found == nullptr || !isPllSetting(setting)) {
        return VEK_BAD_ARGUMENT;
    }
    if (!found->settable) {
        return VEK_PROTECTED;
    }
    if (!pllRuns(kCrystalKhz, decodePll(setting))) {
        return VEK_OUT_OF_RANGE;
    }
    return registers_.write(clock_unit::pllOf(static_cast<std::size_t>(domain)), clock_unit::kRegisterWidth, setting);
}

int ClockDriver::setMode(int mode, int source)
{
    if (mode < VEK_CLOCK_ON || mode > VEK_CLOCK_OFF || source < VEK_CLOCK_SOURCE_DEVPLL ||
        source > VEK_CLOCK_SOURCE_2DCORE) {
        return VEK_BAD_ARGUMENT;
    }
    return registers_.write(clock_unit::modeOf(static_cast<std::size_t>(source)), clock_unit::kRegisterWidth,
                            static_cast<std::uint64_t>(mode));
}

}  // namespace vek
