/**
 * @file allocation_failure.h
 * Lets malloc() and calloc() in a test program fail, as they do on a machine without memory to spare.
 *
 * Calls from inside shared libraries and those of `operator new` are not touched.
 */
#ifndef ALLOCATION_FAILURE_H
#define ALLOCATION_FAILURE_H

#include <cstddef>

namespace console_test
{

/** While it lives, malloc() and calloc() refuse every request of at least a number of bytes. */
class AllocationFailure
{
public:
    explicit AllocationFailure(std::size_t smallestRefused);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
};

/** The largest request, in bytes, that reached malloc() or calloc() since the last look. */
std::size_t takeLargestRequest();

}  // namespace console_test

#endif
