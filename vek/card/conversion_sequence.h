#ifndef VEK_CARD_CONVERSION_SEQUENCE_H
#define VEK_CARD_CONVERSION_SEQUENCE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace vek
{

/// The conversions that a monitor chip with one converter does in turn, once or over and over. Their ends are worked
/// out from the time when somebody looks.
class ConversionSequence
{
public:
    /// Forgets all steps and stops.
    void clear()
    {
        count_ = 0;
        cycle_ = 0;
        running_ = false;
    }

    static constexpr std::uint64_t kLongestStep = 60'000'000'000;

    /// Adds a conversion whose result belongs to `slot`; no more than 10 at a time, each of them longer than nothing
    /// and no longer than kLongestStep.
    void add(std::uint8_t slot, std::uint64_t nanoseconds)
    {
        slots_[count_] = slot;
        durations_[count_] = nanoseconds;
        ++count_;
        cycle_ += nanoseconds;
    }

    /// Starts with the first conversion. A sequence without one does not start.
    void start(std::uint64_t now, bool repeated)
    {
        next_ = 0;
        repeated_ = repeated;
        running_ = count_ > 0;
        due_ = running_ ? now + durations_[0] : now;
    }

    bool running() const { return running_; }

    /// Hands the slots of the conversions that ended up to now to `store`, each once at least if it had several ends.
    /// Returns whether the last one of the sequence was among them.
    template <typename Store>
    bool advance(std::uint64_t now, Store store)
    {
        skipWholeCycles(now);
        bool lastEnded = false;
        while (running_ && now >= due_) {
            store(slots_[next_]);
            if (++next_ == count_) {
                next_ = 0;
                lastEnded = true;
                running_ = repeated_;
            }
            due_ += durations_[next_];
        }
        return lastEnded;
    }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(slots_, durations_, cycle_, due_, running_, repeated_);
        visit.upTo(count_, kMostSteps);
        visit.upTo(next_, kMostSteps - 1);
        visit.check(isWhole());
    }

    /// Whether all results belong to slots of a range, `end` being the first one after it.
    bool storesWithin(unsigned first, unsigned end) const
    {
        return count_ <= kMostSteps && std::all_of(slots_.begin(), slots_.begin() + count_,
                                                   [=](std::uint8_t slot) { return slot >= first && slot < end; });
    }

private:
    /// Whether the steps make up the cycle and one of them is next.
    bool isWhole() const
    {
        if (count_ > kMostSteps || next_ > count_ || (running_ && next_ == count_)) {
            return false;
        }
        std::uint64_t cycle = 0;
        for (std::size_t step = 0; step < count_; ++step) {
            if (durations_[step] == 0 || durations_[step] > kLongestStep) {
                return false;
            }
            cycle += durations_[step];
        }
        return cycle == cycle_;
    }

    /// Leaves one cycle, so that each conversion ends once more, and what was begun.
    void skipWholeCycles(std::uint64_t now)
    {
        if (running_ && repeated_ && now >= due_ + cycle_) {
            due_ += ((now - due_) / cycle_ - 1) * cycle_;
        }
    }

    static constexpr std::size_t kMostSteps = 10;

    std::array<std::uint8_t, kMostSteps> slots_{};
    std::array<std::uint64_t, kMostSteps> durations_{};
    std::size_t count_ = 0;
    std::size_t next_ = 0;
    std::uint64_t cycle_ = 0;  ///< Nanoseconds of all steps together.
    std::uint64_t due_ = 0;
    bool running_ = false;
    bool repeated_ = false;
};

}  // namespace vek

#endif
