// Preloaded into the finished program, refuses one of the allocations that are made from its main() on, whoever makes
// them: the program, the device-access library, or the C library for either.
//
// REFUSED_ALLOCATION is the number of that one, the first being number 1; the file that REFUSED_ALLOCATION_MARK names
// is created when it has been refused.

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>

// The C library's own allocator, by the names that it keeps for those who replace it.
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c)

namespace
{

/** How many allocations there are still to come up to the refused one, that one included. */
std::atomic<int> left = 0;

void beginToCount()
{
    const char* const number = getenv("REFUSED_ALLOCATION");
    left = number == nullptr ? 0 : std::atoi(number);
}

void leaveMark()
{
    const char* const mark = getenv("REFUSED_ALLOCATION_MARK");
    const int descriptor = mark == nullptr ? -1 : open(mark, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor >= 0) {
        close(descriptor);
    }
}

bool isRefused()
{
    if (left <= 0 || --left != 0) {
        return false;
    }
    leaveMark();
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" void* malloc(std::size_t size)
{
    return isRefused() ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size)
{
    return isRefused() ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size)
{
    return isRefused() ? nullptr : __libc_realloc(memory, size);
}

extern "C" void* memalign(std::size_t alignment, std::size_t size)
{
    return isRefused() ? nullptr : __libc_memalign(alignment, size);
}

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

extern "C" int posix_memalign(void** memory, std::size_t alignment, std::size_t size)
{
    *memory = memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

/** The first thing that main() does about signals tells that it runs. */
extern "C" sighandler_t signal(int number, sighandler_t handler) noexcept
{
    if (number == SIGXFSZ) {
        beginToCount();
    }
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    return sigaction(number, &action, &before) == 0 ? before.sa_handler : SIG_ERR;
}
