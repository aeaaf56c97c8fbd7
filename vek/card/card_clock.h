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

/// The host's monotonic clock.
class HostClock final : public CardClock
{
public:
    std::uint64_t nanoseconds() const override;
};

}  // namespace vek

#endif
