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

/** While it lives, malloc() and calloc() refuse one request, the first of its life being number 1. */
class RefusedAllocation
{
public:
    explicit RefusedAllocation(int number);
    ~RefusedAllocation();
    RefusedAllocation(const RefusedAllocation&) = delete;
    RefusedAllocation& operator=(const RefusedAllocation&) = delete;

    /** Whether that many requests have come. */
    static bool happened();
};

/** While it lives, the memory that malloc() gives is full of a byte: what reads it uninitialised shows. */
class AllocationFill
{
public:
    explicit AllocationFill(unsigned char byte);
    ~AllocationFill();
    AllocationFill(const AllocationFill&) = delete;
    AllocationFill& operator=(const AllocationFill&) = delete;
};

/** The largest request, in bytes, that reached malloc() or calloc() since the last look. */
std::size_t takeLargestRequest();

}  // namespace console_test

#endif
