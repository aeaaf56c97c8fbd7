#include "card/host_pages.h"

#include <sys/mman.h>

#include "card/sizes.h"

namespace vek
{
namespace
{

constexpr std::uintptr_t kHugePage = 2 * kMiB;

}  // namespace

unsigned char* mapHostPages(std::uint64_t size)
{
    void* base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED) {
        return nullptr;
    }
    // Where the host hands out huge pages unasked, one byte would cost 2 MiB. A kernel without them refuses the advice.
    static_cast<void>(madvise(base, size, MADV_NOHUGEPAGE));
    return static_cast<unsigned char*>(base);
}

void unmapHostPages(unsigned char* base, std::uint64_t size)
{
    munmap(base, size);
}

void expectWholeWrite(unsigned char* start, std::uint64_t size)
{
    const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(start) & (kHugePage - 1);
    const std::uint64_t lead = past == 0 ? 0 : kHugePage - past;
    if (size < lead + kHugePage) {
        return;
    }
    // Advice only: without it the pages come in one by one.
    static_cast<void>(madvise(start + lead, (size - lead) & ~(kHugePage - 1), MADV_HUGEPAGE));
}

}  // namespace vek
