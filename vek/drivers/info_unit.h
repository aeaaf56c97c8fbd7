#ifndef VEK_DRIVERS_INFO_UNIT_H
#define VEK_DRIVERS_INFO_UNIT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "address_space.h"
#include "drivers/chip_units.h"

namespace vek
{

/// The information unit: 64 registers of 32 bits, which tell what the chip has and how busy it is. Only longs at
/// multiples of 4 are answered; registers that are not listed read 0. Only the two marks of the firmware take what is
/// written.
///
/// - 0x000 memory_bus: width of the bus to video memory, in bits.
/// - 0x004 memory_size: video memory, in MiB.
/// - 0x008 gop_version, the mark of the UEFI driver: bit 31 set by it, major version in bits 15:8, minor in bits 7:0.
/// - 0x00c gop_mode, the mode that it has set: width in bits 15:0, height in bits 31:16, in pixels.
/// - 0x080 + 8 * n: core n (drivers/chip_units.h), 0 behind the last one.
/// - 0x084 + 8 * n: its load in tenths of a per cent: busy cycles over all cycles of its clock, 0 when that is off.
namespace info_unit
{

constexpr std::uint64_t kWindowBase = 0x30'e000;  ///< Where it lies in the register region.
constexpr std::uint64_t kWindowSize = 0x100;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kMemoryBus = 0x000;
constexpr std::uint64_t kMemorySize = 0x004;
constexpr std::uint64_t kGopVersion = 0x008;
constexpr std::uint64_t kGopMode = 0x00c;
constexpr std::uint64_t kCores = 0x080;
constexpr std::uint64_t kCoreStep = 8;
constexpr std::uint64_t kLoad = 4;

constexpr std::uint32_t kGopStarted = 1U << 31;
constexpr unsigned kGopMajorShift = 8;
constexpr unsigned kGopHeightShift = 16;

constexpr std::size_t kMaxCores = 8;

}  // namespace info_unit

/// A core and how busy it is.
struct CoreLoad {
    UnitId core;
    std::uint32_t permille;
};

/// What the UEFI driver has left behind.
struct GopMarks {
    bool started;
    unsigned major;
    unsigned minor;
    unsigned width;
    unsigned height;
};

/// What the information unit tells.
struct ChipInformation {
    std::uint32_t memoryBusBits;
    std::uint32_t memoryMebibytes;
    GopMarks gop;
    std::size_t coreCount;
    std::array<CoreLoad, info_unit::kMaxCores> cores;

    std::span<const CoreLoad> byCore() const { return std::span(cores).first(coreCount); }
};

/// Reads the whole unit. Results are those of enum VekResult; `information` has a meaning with VEK_OK only.
int readChipInformation(AddressSpace& registers, ChipInformation& information);

}  // namespace vek

#endif
