#include "path/mapped_memory.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "vek.h"

namespace vek
{
namespace
{

template <typename Item>
struct Unaligned {
    using Type [[gnu::aligned(1), gnu::may_alias]] = volatile Item;
};

template <typename Item>
Item loadOnce(const unsigned char* from)
{
    return *reinterpret_cast<const typename Unaligned<Item>::Type*>(from);
}

template <typename Item>
void storeOnce(unsigned char* to, Item item)
{
    *reinterpret_cast<typename Unaligned<Item>::Type*>(to) = item;
}

std::uint64_t load(const unsigned char* from, unsigned width)
{
    switch (width) {
        case sizeof(std::uint8_t):
            return loadOnce<std::uint8_t>(from);
        case sizeof(std::uint16_t):
            return loadOnce<std::uint16_t>(from);
        case sizeof(std::uint32_t):
            return loadOnce<std::uint32_t>(from);
        default:
            return loadOnce<std::uint64_t>(from);
    }
}

/// A regular file may be too short, and touching what lies behind its end would end the program.
bool reachesTo(int descriptor, std::uint64_t end)
{
    struct stat status = {};
    return fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
           static_cast<std::uint64_t>(status.st_size) >= end;
}

}  // namespace

int MappedMemory::map(int descriptor, std::uint64_t start, std::uint64_t size)
{
    const auto pageSize = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    const std::uint64_t before = start % pageSize;
    if (size == 0 || start > UINT64_MAX - size || size > UINT64_MAX - before) {
        return VEK_BAD_ARGUMENT;
    }
    if (!reachesTo(descriptor, start + size)) {
        return VEK_NO_RESPONSE;
    }
    void* const pages = mmap(nullptr, before + size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor,
                             static_cast<off_t>(start - before));
    if (pages == MAP_FAILED) {
        return VEK_IO_ERROR;
    }
    unmap();
    pages_ = pages;
    pagesLength_ = before + size;
    base_ = static_cast<unsigned char*>(pages) + before;
    size_ = size;
    return VEK_OK;
}

void MappedMemory::takeFrom(MappedMemory& other, const char* name)
{
    unmap();
    loss_.folder = name;
    loss_.lost = false;
    pages_ = std::exchange(other.pages_, nullptr);
    pagesLength_ = std::exchange(other.pagesLength_, 0);
    base_ = std::exchange(other.base_, nullptr);
    size_ = std::exchange(other.size_, 0);
    if (pages_ != nullptr) {
        // Without a place among what is watched, its loss ends the program.
        static_cast<void>(guardMapping(static_cast<unsigned char*>(pages_), pagesLength_, nullptr, loss_));
    }
}

void MappedMemory::unmap()
{
    if (pages_ != nullptr) {
        forgetMappings(loss_);
        munmap(pages_, pagesLength_);
    }
    pages_ = nullptr;
    base_ = nullptr;
    size_ = 0;
}

/// Only an access tells: to be asked behind it.
bool MappedMemory::isLost() const
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
    return loss_.lost;
}

/// What an access answers that has been complete, or has not.
int MappedMemory::resultOf(bool complete) const
{
    return complete && !isLost() ? VEK_OK : VEK_NO_RESPONSE;
}

ReadResult MappedMemory::read(std::uint64_t address, unsigned width)
{
    if (!inside(address, width)) {
        return kUnanswered;
    }
    const std::uint64_t value = load(base_ + address, width);
    return isLost() ? kUnanswered : ReadResult{VEK_OK, value};
}

int MappedMemory::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!inside(address, width)) {
        return VEK_NO_RESPONSE;
    }
    unsigned char* const to = base_ + address;
    switch (width) {
        case sizeof(std::uint8_t):
            storeOnce(to, static_cast<std::uint8_t>(value));
            break;
        case sizeof(std::uint16_t):
            storeOnce(to, static_cast<std::uint16_t>(value));
            break;
        case sizeof(std::uint32_t):
            storeOnce(to, static_cast<std::uint32_t>(value));
            break;
        default:
            storeOnce(to, value);
            break;
    }
    return resultOf(true);
}

/// How many of `count` longs from `address` upwards lie wholly inside.
std::size_t MappedMemory::longsInside(std::uint64_t address, std::size_t count) const
{
    if (!inside(address, sizeof(std::uint32_t))) {
        return 0;
    }
    return std::min<std::uint64_t>(count, (size_ - address) / sizeof(std::uint32_t));
}

int MappedMemory::readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count)
{
    const std::size_t served = longsInside(address, count);
    const unsigned char* from = served == 0 ? nullptr : base_ + address;
    for (std::size_t i = 0; i < served; ++i, from += sizeof *longs) {
        longs[i] = loadOnce<std::uint32_t>(from);
    }
    const std::size_t answered = isLost() ? 0 : served;
    std::fill(longs + answered, longs + count, static_cast<std::uint32_t>(kAllOnes));
    return resultOf(answered == count);
}

int MappedMemory::writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count)
{
    const std::size_t served = longsInside(address, count);
    unsigned char* to = served == 0 ? nullptr : base_ + address;
    for (std::size_t i = 0; i < served; ++i, to += sizeof *longs) {
        storeOnce(to, longs[i]);
    }
    return resultOf(served == count);
}

int MappedMemory::fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count)
{
    const std::size_t served = longsInside(address, count);
    unsigned char* to = served == 0 ? nullptr : base_ + address;
    for (std::size_t i = 0; i < served; ++i, to += sizeof value) {
        storeOnce(to, value);
    }
    return resultOf(served == count);
}

}  // namespace vek
