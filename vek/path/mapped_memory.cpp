#include "path/mapped_memory.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

void MappedMemory::takeFrom(MappedMemory& other)
{
    unmap();
    pages_ = std::exchange(other.pages_, nullptr);
    pagesLength_ = std::exchange(other.pagesLength_, 0);
    base_ = std::exchange(other.base_, nullptr);
    size_ = std::exchange(other.size_, 0);
}

void MappedMemory::unmap()
{
    if (pages_ != nullptr) {
        munmap(pages_, pagesLength_);
    }
    pages_ = nullptr;
    base_ = nullptr;
    size_ = 0;
}

ReadResult MappedMemory::read(std::uint64_t address, unsigned width)
{
    if (!inside(address, width)) {
        return kUnanswered;
    }
    const unsigned char* const from = base_ + address;
    switch (width) {
        case sizeof(std::uint8_t):
            return {VEK_OK, loadOnce<std::uint8_t>(from)};
        case sizeof(std::uint16_t):
            return {VEK_OK, loadOnce<std::uint16_t>(from)};
        case sizeof(std::uint32_t):
            return {VEK_OK, loadOnce<std::uint32_t>(from)};
        default:
            return {VEK_OK, loadOnce<std::uint64_t>(from)};
    }
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
    return VEK_OK;
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
    std::fill(longs + served, longs + count, static_cast<std::uint32_t>(kAllOnes));
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

int MappedMemory::writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count)
{
    const std::size_t served = longsInside(address, count);
    unsigned char* to = served == 0 ? nullptr : base_ + address;
    for (std::size_t i = 0; i < served; ++i, to += sizeof *longs) {
        storeOnce(to, longs[i]);
    }
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

int MappedMemory::fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count)
{
    const std::size_t served = longsInside(address, count);
    unsigned char* to = served == 0 ? nullptr : base_ + address;
    for (std::size_t i = 0; i < served; ++i, to += sizeof value) {
        storeOnce(to, value);
    }
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

}  // namespace vek
