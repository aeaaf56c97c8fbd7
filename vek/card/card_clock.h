#ifndef VEK_CARD_CARD_CLOCK_H
#define VEK_CARD_CARD_CLOCK_H

#include <cstdint>

namespace vek
{

/// The time that passes for a card. What takes a while on a card (a conversion, an erase, warming up) is worked out
/// from it when somebody looks, so that nothing runs in the background and a test decides how long everything takes.
class CardClock
{
public:
    /// Nanoseconds since some moment; never less than before.
    virtual std::uint64_t nanoseconds() const = 0;

protected:
    constexpr CardClock() = default;
    ~CardClock() = default;
};

/// The host's monotonic clock. One that is kept goes on over programs and restarts of the host: it is put forward where
/// the host's would fall behind what it has shown before.
class HostClock final : public CardClock
{
public:
    std::uint64_t nanoseconds() const override;

    /// From now on the clock is kept. It is no longer for several threads at a time then.
    void keep() { kept_ = true; }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit.upTo(offset_, kMost);
        visit.upTo(shown_, kMost);
    }

private:
    static constexpr std::uint64_t kMost = std::uint64_t{1} << 62;  ///< Over a hundred years.

    bool kept_ = false;
    mutable std::uint64_t offset_ = 0;  ///< Nanoseconds ahead of the host's clock.
    mutable std::uint64_t shown_ = 0;   ///< What it has shown last, when it is kept.
};

}  // namespace vek

#endif
