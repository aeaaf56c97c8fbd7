/// What must hold for any input.
#ifndef FUZZ_REQUIRE_H
#define FUZZ_REQUIRE_H

namespace fuzz
{

/// Ends the fuzzer with a finding unless the condition holds.
inline void require(bool holds)
{
    if (!holds) {
        __builtin_trap();
    }
}

}  // namespace fuzz

#endif
