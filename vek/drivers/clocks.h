#ifndef VEK_DRIVERS_CLOCKS_H
#define VEK_DRIVERS_CLOCKS_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "drivers/pll.h"
#include "vek.h"

namespace vek
{

/// The clock unit: 64 registers of 32 bits. Only longs at multiples of 4 are answered; registers that are not listed
/// read 0 and ignore writes.
///
///     0x000 + 4 * domain  pll       the setting of the domain's own PLL (drivers/pll.h), by enum VekClockDomain;
///                                   not 0x004
///     0x040 + 4 * source  mode      bits 1:0 the mode (enum VekClockMode) of a bank of PLLs or of a core's clock,
///                                   by enum VekClockSource; a write of the mode 3 is ignored
///     0x080               throttle  read-only: what the power state makes of the clocks of the 3D and the 2D core,
///                                   see below
///
/// Every domain has a PLL of its own, so none moves with another one. A PLL name stands for the bank of the PLLs that
/// serve its domains: its mode tells whether these deliver their own output, the crystal (bypass) or nothing (off). The
/// clock of a core goes through the core's own multiplexer behind that, with the same three modes: a core in bypass
/// runs with the crystal whatever its PLL does. No mode touches a setting.
namespace clock_unit
{

constexpr std::uint64_t kWindowBase = 0x30'b000;  ///< Where it lies in the register region.
constexpr std::uint64_t kWindowSize = 0x100;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kPlls = 0x000;
constexpr std::uint64_t kModes = 0x040;
constexpr std::uint64_t kThrottle = 0x080;

constexpr std::size_t kDomains = 9;
constexpr std::size_t kSources = 7;  ///< Source 0 does not exist.
constexpr std::uint32_t kModeMask = 0x3;

constexpr std::uint32_t kThrottleNone = 0;     ///< Full rate.
constexpr std::uint32_t kThrottleHalf = 1;     ///< Every other pulse is swallowed.
constexpr std::uint32_t kThrottleStopped = 2;  ///< The cores are parked.

constexpr std::uint64_t pllOf(std::size_t domain)
{
    return kPlls + kRegisterWidth * domain;
}

constexpr std::uint64_t modeOf(std::size_t source)
{
    return kModes + kRegisterWidth * source;
}

}  // namespace clock_unit

/// How a clock domain is fed.
struct ClockDomain {
    bool exists = false;
    bool settable = false;   ///< The firmware trains the memory and the PCIe link for their clocks; these are kept.
    bool throttled = false;  ///< The power state takes part.
    std::uint8_t bank = 0;   ///< The bank of its PLL, of enum VekClockSource; 0: always on.
    std::uint8_t core = 0;   ///< The multiplexer of its core, of enum VekClockSource; 0: none.
};

/// The domains by enum VekClockDomain.
constexpr std::array<ClockDomain, clock_unit::kDomains> kClockDomains{{
    {.exists = true, .settable = true, .bank = VEK_CLOCK_SOURCE_DEVPLL},
    {},
    {.exists = true, .settable = true, .bank = VEK_CLOCK_SOURCE_DEVPLL},
    {.exists = true, .bank = VEK_CLOCK_SOURCE_DEV2PLL},
    {.exists = true, .settable = true, .bank = VEK_CLOCK_SOURCE_DEV2PLL},
    {.exists = true,
     .settable = true,
     .throttled = true,
     .bank = VEK_CLOCK_SOURCE_GPUPLL,
     .core = VEK_CLOCK_SOURCE_3DCORE},
    {.exists = true, .settable = true, .throttled = true, .bank = VEK_CLOCK_SOURCE_GPU2PLL},
    {.exists = true,
     .settable = true,
     .throttled = true,
     .bank = VEK_CLOCK_SOURCE_GPUPLL,
     .core = VEK_CLOCK_SOURCE_2DCORE},
    {.exists = true},
}};

/// What the registers say about one domain.
struct ClockRegisters {
    std::uint32_t setting = 0;
    std::uint32_t bankMode = VEK_CLOCK_ON;
    std::uint32_t coreMode = VEK_CLOCK_ON;
    std::uint32_t throttle = clock_unit::kThrottleNone;
};

/// What comes out of a switch with a mode when `input` goes in.
constexpr Rate switchedRate(std::uint32_t mode, const Rate& input)
{
    switch (mode & clock_unit::kModeMask) {
        case VEK_CLOCK_ON:
            return input;
        case VEK_CLOCK_BYPASS:
            return {.khz = kCrystalKhz, .divisor = 1};
        default:
            return kNoClock;
    }
}

/// The frequency that a domain runs at.
constexpr Rate domainRate(const ClockRegisters& registers)
{
    const Rate fromBank = switchedRate(registers.bankMode, pllOutput(registers.setting));
    const Rate rate = switchedRate(registers.coreMode, fromBank);
    switch (registers.throttle) {
        case clock_unit::kThrottleNone:
            return rate;
        case clock_unit::kThrottleHalf:
            return {.khz = rate.khz, .divisor = 2 * rate.divisor};
        default:
            return kNoClock;
    }
}

/// Drives the clock unit through its registers. Results are those of enum VekResult.
class ClockDriver
{
public:
    explicit ClockDriver(AddressSpace& registers) : registers_(registers) {}

    /// Reads what a domain runs at; VEK_BAD_ARGUMENT for an unknown domain. `rate` is touched on success only.
    int readRate(int domain, Rate& rate);

    /// Sets the PLL of a domain. VEK_BAD_ARGUMENT: unknown domain, or no setting of a PLL at all; VEK_PROTECTED: a
    /// domain whose clock is kept; VEK_OUT_OF_RANGE: the PLL would leave its limits.
    int setPll(int domain, std::uint32_t setting);

    /// Switches a bank or a core; VEK_BAD_ARGUMENT for an unknown mode or source.
    int setMode(int mode, int source);

private:
    int readMode(std::size_t source, std::uint32_t& mode);

    AddressSpace& registers_;
};

}  // namespace vek

#endif
