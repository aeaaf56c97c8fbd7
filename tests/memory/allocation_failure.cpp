#include "allocation_failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

// The linker's --wrap gives these names: calls of calloc() arrive at the one, the other is calloc() itself.
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c)

namespace
{

std::size_t smallestRefusedRequest = SIZE_MAX;
std::size_t largestRequest = 0;

}  // namespace

void* __wrap_calloc(std::size_t count, std::size_t size)  // NOLINT(bugprone-reserved-identifier, cert-dcl37-c)
{
    std::size_t request = 0;
    if (__builtin_mul_overflow(count, size, &request)) {
        request = SIZE_MAX;
    }
    largestRequest = std::max(largestRequest, request);
    if (request >= smallestRefusedRequest) {
        errno = ENOMEM;
        return nullptr;
    }
    return __real_calloc(count, size);
}

namespace memory_test
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

}  // namespace memory_test
