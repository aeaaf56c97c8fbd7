#ifndef TESTS_VEK_CARD_TEST_PAUSE_H
#define TESTS_VEK_CARD_TEST_PAUSE_H

#include <cstdint>

#include "pause.h"
#include "test_clock.h"

/// Lets a test's clock run on instead of waiting.
class TestPause final : public vek::Pause
{
public:
    explicit TestPause(TestClock& clock) : clock_(clock) {}

    void microseconds(std::uint32_t duration) override
    {
        clock_.advanceNanoseconds(std::uint64_t{duration} * 1000);
        total += duration;
    }

    std::uint64_t total = 0;  ///< Microseconds so far.

private:
    TestClock& clock_;
};

#endif
