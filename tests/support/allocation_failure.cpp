#include "allocation_failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

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
int requestsToRefusal = 0;  // 0 when none is to be refused by its number, below 0 once one has been
std::optional<unsigned char> fill;

bool isRefusedByNumber()
{
    if (requestsToRefusal <= 0 || --requestsToRefusal > 0) {
        return false;
    }
    requestsToRefusal = -1;
    return true;
}

bool refuses(std::size_t request)
{
    largestRequest = std::max(largestRequest, request);
    if (isRefusedByNumber() || request >= smallestRefusedRequest) {
        errno = ENOMEM;
        return true;
    }
    return false;
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)

void* __wrap_malloc(std::size_t size)
{
    if (refuses(size)) {
        return nullptr;
    }
    void* memory = __real_malloc(size);
    if (fill && memory != nullptr) {
        std::memset(memory, *fill, size);
    }
    return memory;
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

RefusedAllocation::RefusedAllocation(int number)
{
    requestsToRefusal = number;
}

RefusedAllocation::~RefusedAllocation()
{
    requestsToRefusal = 0;
}

bool RefusedAllocation::happened()
{
    return requestsToRefusal < 0;
}

AllocationFill::AllocationFill(unsigned char byte)
{
    fill = byte;
}

AllocationFill::~AllocationFill()
{
    fill.reset();
}

std::size_t takeLargestRequest()
{
    const std::size_t largest = largestRequest;
    largestRequest = 0;
    return largest;
}

}  // namespace console_test
