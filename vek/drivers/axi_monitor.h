#ifndef VEK_DRIVERS_AXI_MONITOR_H
#define VEK_DRIVERS_AXI_MONITOR_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "address_space.h"
#include "drivers/chip_units.h"

namespace vek
{

/// The AXI monitor counts the transactions of the masters on the AXI interconnect. QZ201 counts from start to final;
/// QZ202 has a timer that cuts the run into spans of so many AXI clock cycles, and counts anew in each. What the
/// counters hold is seen after it has been latched, all of it at one moment. Final latches as well; on QZ202 it first
/// ends the span that runs, however short that is.
///
/// - 0x000, 32 bits, control. Written on QZ201: 1 start, 2 final, 4 clear. Written on QZ202: 0x14 start timer, 0 stop
///   timer, 1 final, 2 clear. Other values are ignored. Read: bit 0 counts, bit 1 final.
/// - 0x004, 32 bits, latch. Written, whatever value: latches the counts, on QZ202 those of the last span that ended.
/// - 0x008, 32 bits, cycle. QZ202: length of a span in AXI clock cycles; 0 stops the timer, and keeps it from starting.
/// - 0x00c, 32 bits, masters, read-only: how many masters there are, up to 8.
/// - 0x010, 64 bits, sequence, latched: how many spans have ended since the last clear; on QZ201 how often was latched.
/// - 0x018, 64 bits, cycles, latched: AXI clock cycles that the counts cover.
///
/// From 0x100 on, in steps of 0x40, the registers of each master, all read-only:
///
/// - 0x00, 64 bits, reads, latched: read transactions.
/// - 0x08, 64 bits, writes, latched: write transactions.
/// - 0x10, 64 bits, bytes, latched: bytes that they moved.
/// - 0x18, 64 bits, latency, latched: AXI clock cycles that they took, one by one, all added up.
/// - 0x20, 32 bits, unit: who the master is (drivers/chip_units.h).
///
/// Longs at multiples of 4 are answered, and reads of quads at multiples of 8. Others are not.
namespace axi_monitor
{

constexpr std::uint64_t kSize = 0x300;
constexpr unsigned kRegisterWidth = 4;
constexpr unsigned kCounterWidth = 8;

constexpr std::uint64_t kControl = 0x000;
constexpr std::uint64_t kLatch = 0x004;
constexpr std::uint64_t kCycle = 0x008;
constexpr std::uint64_t kMasters = 0x00c;
constexpr std::uint64_t kSequence = 0x010;
constexpr std::uint64_t kCycles = 0x018;
constexpr std::uint64_t kFirstMaster = 0x100;
constexpr std::uint64_t kMasterStep = 0x40;

constexpr std::uint64_t kReads = 0x00;
constexpr std::uint64_t kWrites = 0x08;
constexpr std::uint64_t kBytes = 0x10;
constexpr std::uint64_t kLatency = 0x18;
constexpr std::uint64_t kUnit = 0x20;

constexpr std::size_t kMaxMasters = 8;

constexpr std::uint32_t kCounts = 1U << 0;
constexpr std::uint32_t kFinal = 1U << 1;

}  // namespace axi_monitor

/// What a master has done.
struct AxiCounts {
    UnitId unit;
    std::uint64_t reads;
    std::uint64_t writes;
    std::uint64_t bytes;
    std::uint64_t latencyCycles;
};

/// What all masters have done up to one moment.
struct AxiSample {
    bool counting;           ///< Whether more is to come.
    std::uint64_t sequence;  ///< Changes with every new span.
    std::uint64_t cycles;    ///< AXI clock cycles that the counts cover.
    std::size_t masters;
    std::array<AxiCounts, axi_monitor::kMaxMasters> counts;

    std::span<const AxiCounts> byMaster() const { return std::span(counts).first(masters); }
};

/// Latches the counts and reads them. Results are those of enum VekResult; `sample` has a meaning with VEK_OK only.
int takeAxiSample(AddressSpace& registers, AxiSample& sample);

}  // namespace vek

#endif
