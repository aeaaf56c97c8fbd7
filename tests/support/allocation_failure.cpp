#include "allocation_failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

// The linker's --wrap gives these names: calls of calloc() arrive at __wrap_calloc(), and __real_calloc() is calloc()
// itself; the same with malloc().
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)
extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c)

namespace
{

std::size_t smallestRefusedRequest = SIZE_MAX;
std::size_t largestRequest = 0;

bool refuses(std::size_t request)
{
    largestRequest = std::max(largestRequest, request);
    if (request >= smallestRefusedRequest) {
        errno = ENOMEM;
        return true;
    }
    return false;
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)

void* __wrap_malloc(std::size_t size)
{
    return refuses(size) ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    std::size_t request = 0;
    if (__builtin_mul_overflow(count, size, &request)) {
        request = SIZE_MAX;
    }
    return refuses(request) ? nullptr : __real_calloc(count, size);
}

// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c)

// The tests themselves, which use `new`, go on to get memory when the C++ library is linked statically as well.
void* operator new(std::size_t size)
{
    void* memory = __real_malloc(std::max<std::size_t>(size, 1));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*unused*/) noexcept
{
    std::free(memory);
}

namespace console_test
{

AllocationFailure::AllocationFailure(std::size_t smallestRefused)
{
    smallestRefusedRequest = smallestRefused;
}

AllocationFailure::~AllocationFailure()
{
    smallestRefusedRequest = SIZE_MAX;
}

std::size_t takeLargestRequest()
{
    const std::size_t largest = largestRequest;
    largestRequest = 0;
    return largest;
}

}  // namespace console_test
