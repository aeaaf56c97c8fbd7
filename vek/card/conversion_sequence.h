#ifndef VEK_CARD_CONVERSION_SEQUENCE_H
#define VEK_CARD_CONVERSION_SEQUENCE_H

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

    /// Adds a conversion whose result belongs to `slot`; no more than 10 at a time.
    void add(std::uint8_t slot, std::uint64_t nanoseconds)
    {
        steps_[count_++] = {slot, nanoseconds};
        cycle_ += nanoseconds;
    }

    /// Starts with the first conversion. A sequence without one does not start.
    void start(std::uint64_t now, bool repeated)
    {
        next_ = 0;
        repeated_ = repeated;
        running_ = count_ > 0;
        due_ = running_ ? now + steps_[0].nanoseconds : now;
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
            store(steps_[next_].slot);
            if (++next_ == count_) {
                next_ = 0;
                lastEnded = true;
                running_ = repeated_;
            }
            due_ += steps_[next_].nanoseconds;
        }
        return lastEnded;
    }

private:
    struct Step {
        std::uint8_t slot;
        std::uint64_t nanoseconds;
    };

    /// Leaves one cycle, so that each conversion ends once more, and what was begun.
    void skipWholeCycles(std::uint64_t now)
    {
        if (running_ && repeated_ && now >= due_ + cycle_) {
            due_ += ((now - due_) / cycle_ - 1) * cycle_;
        }
    }

    std::array<Step, 10> steps_{};
    std::size_t count_ = 0;
    std::size_t next_ = 0;
    std::uint64_t cycle_ = 0;  ///< Nanoseconds of all steps together.
    std::uint64_t due_ = 0;
    bool running_ = false;
    bool repeated_ = false;
};

}  // namespace vek

#endif
