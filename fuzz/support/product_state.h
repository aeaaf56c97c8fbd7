/// The static variables of the product, put back to what they were when the program started.
#ifndef FUZZ_PRODUCT_STATE_H
#define FUZZ_PRODUCT_STATE_H

namespace fuzz
{

/// Puts back every variable with static storage that the product's objects define, so that an input finds the product
/// as a fresh process would, and a reproducer does not depend on the inputs before it. The first call keeps what it
/// finds. The objects are those between product_state_begin.cpp and product_state_end.cpp on the linker's command line.
void resetProductState();

}  // namespace fuzz

#endif
