#ifndef VEK_CARD_AXI_MONITOR_H
#define VEK_CARD_AXI_MONITOR_H

#include <pthread.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"
#include "card/card_clock.h"
#include "card/chip_facts.h"
#include "card/clock_follower.h"
#include "drivers/axi_monitor.h"

namespace vek
{

/// How often something of one frequency happens while a clock of another one ticks, with nothing lost over many steps.
class SharedTicks
{
public:
    /// `rate` and `frequency`, which is not 0, in Hz and below 2^32.
    constexpr std::uint64_t after(std::uint64_t ticks, std::uint64_t rate, std::uint64_t frequency)
    {
        const std::uint64_t part = ticks % frequency * rate + carry_;
        carry_ = part % frequency;
        return ticks / frequency * rate + part / frequency;
    }

    /// Begins anew, as has to be when `frequency` becomes another one.
    constexpr void restart() { carry_ = 0; }

    /// Whether what is carried over is less than one tick at this frequency, as it always is.
    constexpr bool carriesLessThan(std::uint64_t frequency) const { return carry_ < frequency; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(carry_);
    }

private:
    std::uint64_t carry_ = 0;
};

/// The AXI monitor of a card as its register file says (drivers/axi_monitor.h). The masters' transactions follow from
/// what the units have to do (card/workload.h), from their clocks and from the time that passes.
///
/// Any thread may access it at any time.
class AxiMonitor final : public AddressSpace, public ClockFollower
{
public:
    /// `clock` has to live as long as the monitor; the clock domains run as the firmware sets them.
    constexpr AxiMonitor(const CardClock& clock, const AxiMonitorFacts& facts, const FirmwareClocks& megahertz)
        : clock_(clock), facts_(facts)
    {
        constexpr std::uint64_t kHertzPerMegahertz = 1'000'000;
        for (std::size_t domain = 0; domain < hertz_.size(); ++domain) {
            hertz_[domain] = megahertz[domain] * kHertzPerMegahertz;
        }
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;
    void followClocks(const DomainHertz& hertz) override;

    /// Where it lies in the register region.
    constexpr std::uint64_t base() const { return facts_.base; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(hertz_, counting_, final_, reached_, cycle_, axiTicks_, paces_, running_, lastSpan_, latched_);
        visit.check(axiTicks_.carriesLessThan(kNanosecondsPerSecond));
        visit.check(!facts_.timed || !counting_ || cycle_ != 0);
    }

private:
    static constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

    /// Transactions of one master.
    struct Traffic {
        std::uint64_t reads = 0;
        std::uint64_t writes = 0;

        template <typename Visitor>
        void visitState(Visitor& visit)
        {
            visit(reads, writes);
        }
    };

    /// What has been counted up to some moment.
    struct Counts {
        std::uint64_t sequence = 0;
        std::uint64_t cycles = 0;
        std::array<Traffic, axi_monitor::kMaxMasters> traffic{};

        template <typename Visitor>
        void visitState(Visitor& visit)
        {
            visit(sequence, cycles, traffic);
        }
    };

    /// How the AXI clock ticks for the transactions of one master.
    struct Pace {
        SharedTicks reads;
        SharedTicks writes;

        template <typename Visitor>
        void visitState(Visitor& visit)
        {
            visit(reads, writes);
        }
    };

    void advance();
    void count(std::uint64_t cycles);
    void countInSpans(std::uint64_t cycles);
    void endSpan();
    void restartRun();
    void obey(std::uint32_t value);
    void latch();
    std::uint64_t quadAt(std::uint64_t address) const;
    std::uint64_t masterQuadAt(std::size_t master, std::uint64_t offset) const;

    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    const CardClock& clock_;
    AxiMonitorFacts facts_;
    DomainHertz hertz_{};
    bool counting_ = false;
    bool final_ = false;
    std::uint64_t reached_ = 0;  ///< Nanoseconds up to which everything has been counted, while it counts.
    std::uint32_t cycle_ = 0;
    SharedTicks axiTicks_;
    std::array<Pace, axi_monitor::kMaxMasters> paces_{};
    Counts running_;   ///< Of the run, or of the present span where the timer cuts it.
    Counts lastSpan_;  ///< Of the last whole span.
    Counts latched_;
};

}  // namespace vek

#endif
