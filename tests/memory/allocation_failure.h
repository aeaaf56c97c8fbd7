/**
 * @file allocation_failure.h
 * Lets calloc() in this test program fail, as it does on a machine without memory to spare.
 */
#ifndef ALLOCATION_FAILURE_H
#define ALLOCATION_FAILURE_H

#include <cstddef>

namespace memory_test
{

/** While it lives, calloc() refuses every request of at least a number of bytes. */
class AllocationFailure
{
public:
    explicit AllocationFailure(std::size_t smallestRefused);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
};

/** The largest request, in bytes, that reached calloc() since the last look. */
std::size_t takeLargestRequest();

}  // namespace memory_test

#endif
