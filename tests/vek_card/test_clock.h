#ifndef TESTS_VEK_CARD_TEST_CLOCK_H
#define TESTS_VEK_CARD_TEST_CLOCK_H

#include <cstdint>

#include "card/card_clock.h"

/// A clock that a test moves by hand.
class TestClock final : public vek::CardClock
{
public:
    std::uint64_t nanoseconds() const override { return now_; }

    void advanceNanoseconds(std::uint64_t step) { now_ += step; }
    void advanceMilliseconds(std::uint64_t step) { now_ += step * 1'000'000; }

private:
    std::uint64_t now_ = 0;
};

#endif
