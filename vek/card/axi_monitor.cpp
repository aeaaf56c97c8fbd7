#include "card/axi_monitor.h"

#include "card/long_registers.h"
#include "card/workload.h"
#include "vek.h"

namespace vek
{
namespace
{

using namespace axi_monitor;

constexpr unsigned kLongBits = 32;
constexpr unsigned kByteBits = 8;

/// Holds a mutex to the end of the scope.
class Lock
{
public:
    explicit Lock(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    ~Lock() { pthread_mutex_unlock(&mutex_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    pthread_mutex_t& mutex_;
};

/// Two longs side by side.
constexpr std::uint64_t pairOf(std::uint32_t low, std::uint32_t high)
{
    return low | std::uint64_t{high} << kLongBits;
}

bool answersRead(std::uint64_t address, unsigned width)
{
    return (width == kRegisterWidth || width == kCounterWidth) && address % width == 0 && address < kSize;
}

}  // namespace

/// Counts up to now.
void AxiMonitor::advance()
{
    if (!counting_) {
        return;
    }
    const std::uint64_t now = clock_.nanoseconds();
    const std::uint64_t cycles = axiTicks_.after(now - reached_, hertz_[VEK_CLOCK_AXI], kNanosecondsPerSecond);
    reached_ = now;
    if (!facts_.timed) {
        count(cycles);
    } else {
        countInSpans(cycles);
    }
}

void AxiMonitor::count(std::uint64_t cycles)
{
    running_.cycles += cycles;
    const std::uint64_t axi = hertz_[VEK_CLOCK_AXI];
    for (std::size_t master = 0; cycles > 0 && master < facts_.masterCount; ++master) {
        const UnitId& unit = facts_.masters[master];
        const UnitWork work = workOf(unit.kind);
        const std::uint64_t busy = busyHertz(unit, hertz_);
        Traffic& traffic = running_.traffic[master];
        traffic.reads += paces_[master].reads.after(cycles, busy / work.cyclesPerRead, axi);
        traffic.writes += paces_[master].writes.after(cycles, busy / work.cyclesPerWrite, axi);
    }
}

/// Counts a number of cycles, however many spans that are: only the last whole one of them can still be seen.
void AxiMonitor::countInSpans(std::uint64_t cycles)
{
    const std::uint64_t left = cycle_ - running_.cycles;
    if (cycles < left) {
        count(cycles);
        return;
    }
    const std::uint64_t furtherSpans = (cycles - left) / cycle_;
    if (furtherSpans == 0) {
        count(left);
    } else {
        count(left + (furtherSpans - 1) * cycle_);
        running_.cycles = 0;
        running_.traffic = {};
        count(cycle_);
        running_.sequence += furtherSpans;
    }
    endSpan();
    count((cycles - left) % cycle_);
}

void AxiMonitor::endSpan()
{
    ++running_.sequence;
    lastSpan_ = running_;
    running_.cycles = 0;
    running_.traffic = {};
}

/// Counts from 0 on, from now on.
void AxiMonitor::restartRun()
{
    running_.cycles = 0;
    running_.traffic = {};
    axiTicks_.restart();
    paces_ = {};
    reached_ = clock_.nanoseconds();
}

void AxiMonitor::latch()
{
    if (!facts_.timed) {
        ++running_.sequence;
    }
    latched_ = facts_.timed ? lastSpan_ : running_;
}

void AxiMonitor::obey(std::uint32_t value)
{
    const AxiCommands& commands = facts_.commands;
    if (value == commands.start) {
        if (!counting_ && (!facts_.timed || cycle_ != 0)) {
            if (facts_.timed) {
                restartRun();
            }
            reached_ = clock_.nanoseconds();
            counting_ = true;
            final_ = false;
        }
    } else if (value == commands.final) {
        if (counting_ && facts_.timed) {
            endSpan();
        }
        counting_ = false;
        final_ = true;
        latch();
    } else if (value == commands.clear) {
        running_ = {};
        lastSpan_ = {};
        latched_ = {};
        final_ = false;
        restartRun();
    } else if (facts_.timed && value == commands.stop) {
        counting_ = false;
    }
}

void AxiMonitor::followClocks(const DomainHertz& hertz)
{
    const Lock lock(mutex_);
    advance();
    hertz_ = hertz;
    // Less than one transaction of each master is lost.
    paces_ = {};
}

std::uint64_t AxiMonitor::masterQuadAt(std::size_t master, std::uint64_t offset) const
{
    if (master >= facts_.masterCount) {
        return 0;
    }
    const UnitId& unit = facts_.masters[master];
    const UnitWork work = workOf(unit.kind);
    const Traffic& traffic = latched_.traffic[master];
    switch (offset) {
        case kReads:
            return traffic.reads;
        case kWrites:
            return traffic.writes;
        case kBytes:
            return traffic.reads * work.bytesPerRead + traffic.writes * work.bytesPerWrite;
        case kLatency:
            return traffic.reads * work.readLatency + traffic.writes * work.writeLatency;
        case kUnit:
            return encodeUnit(unit);
        default:
            return 0;
    }
}

/// What lies at a multiple of 8.
std::uint64_t AxiMonitor::quadAt(std::uint64_t address) const
{
    if (address >= kFirstMaster) {
        const std::uint64_t offset = address - kFirstMaster;
        return masterQuadAt(offset / kMasterStep, offset % kMasterStep);
    }
    switch (address) {
        case kControl:
            return pairOf((counting_ ? kCounts : 0) | (final_ ? kFinal : 0), 0);
        case kCycle:
            return pairOf(cycle_, facts_.masterCount);
        case kSequence:
            return latched_.sequence;
        case kCycles:
            return latched_.cycles;
        default:
            return 0;
    }
}

ReadResult AxiMonitor::read(std::uint64_t address, unsigned width)
{
    if (!answersRead(address, width)) {
        return kUnanswered;
    }
    const Lock lock(mutex_);
    const auto shift = static_cast<unsigned>(address % kCounterWidth) * kByteBits;
    const std::uint64_t value = quadAt(address - address % kCounterWidth) >> shift;
    return {VEK_OK, width == kRegisterWidth ? static_cast<std::uint32_t>(value) : value};
}

int AxiMonitor::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answersLong(address, width, kSize)) {
        return VEK_NO_RESPONSE;
    }
    const Lock lock(mutex_);
    advance();
    if (address == kControl) {
        obey(static_cast<std::uint32_t>(value));
    } else if (address == kLatch) {
        latch();
    } else if (address == kCycle && facts_.timed) {
        cycle_ = static_cast<std::uint32_t>(value);
        counting_ = counting_ && cycle_ != 0;
        restartRun();
    }
    return VEK_OK;
}

}  // namespace vek
