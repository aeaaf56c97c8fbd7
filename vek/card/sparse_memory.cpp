#include "card/sparse_memory.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "card/host_pages.h"
#include "card/items.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kWidestItem = 8;
constexpr unsigned kReadsBeforeMapping = 64;

}  // namespace

bool SparseMemory::map()
{
    unsigned char* pages = mapHostPages(size_);
    if (pages == nullptr) {
        return false;
    }
    adopt(pages);
    return true;
}

void SparseMemory::adopt(unsigned char* pages)
{
    base_ = pages;
    setPlainMemory({.base = base_, .first = 0, .length = size_ - kWidestItem + 1});
}

/// How many of `count` longs from `address` upwards lie wholly inside.
std::size_t SparseMemory::longsInside(std::uint64_t address, std::size_t count) const
{
    if (!inside(address, sizeof(std::uint32_t))) {
        return 0;
    }
    return std::min<std::uint64_t>(count, (size_ - address) / sizeof(std::uint32_t));
}

ReadResult SparseMemory::read(std::uint64_t address, unsigned width)
{
    if (!inside(address, width)) {
        return kUnanswered;
    }
    if (base_ == nullptr) [[unlikely]] {
        return readFirst(address, width);
    }
    return {VEK_OK, loadItem(base_ + address, width)};
}

int SparseMemory::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!inside(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (base_ == nullptr) [[unlikely]] {
        return writeFirst(address, width, value);
    }
    storeItem(base_ + address, width, value);
    return VEK_OK;
}

ReadResult SparseMemory::readFirst(std::uint64_t address, unsigned width)
{
    // What was never written reads 0: a run of one command is over before a mapping has paid.
    if (readsUnmapped_ < kReadsBeforeMapping) {
        ++readsUnmapped_;
        return {VEK_OK, 0};
    }
    return map() ? read(address, width) : ReadResult{VEK_NO_MEMORY, 0};
}

int SparseMemory::writeFirst(std::uint64_t address, unsigned width, std::uint64_t value)
{
    return map() ? write(address, width, value) : VEK_NO_MEMORY;
}

int SparseMemory::readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count)
{
    if (!mapped()) {
        return VEK_NO_MEMORY;
    }
    const std::size_t served = longsInside(address, count);
    if (served > 0) {
        std::memcpy(longs, base_ + address, served * sizeof *longs);
    }
    std::fill(longs + served, longs + count, static_cast<std::uint32_t>(kAllOnes));
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

int SparseMemory::writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count)
{
    if (!mapped()) {
        return VEK_NO_MEMORY;
    }
    const std::size_t served = longsInside(address, count);
    if (served > 0) {
        std::memcpy(base_ + address, longs, served * sizeof *longs);
    }
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

int SparseMemory::fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count)
{
    if (!mapped()) {
        return VEK_NO_MEMORY;
    }
    const std::size_t served = longsInside(address, count);
    if (served == 0) {
        return count == 0 ? VEK_OK : VEK_NO_RESPONSE;
    }
    // Copied from a block that stays in the cache: unlike single stores that is as fast at any alignment.
    std::array<std::uint32_t, 16384> block;
    std::fill_n(block.begin(), std::min(served, block.size()), value);
    unsigned char* to = base_ + address;
    expectWholeWrite(to, served * sizeof value);
    for (std::size_t left = served; left > 0;) {
        const std::size_t step = std::min(left, block.size());
        std::memcpy(to, block.data(), step * sizeof value);
        to += step * sizeof value;
        left -= step;
    }
    return served == count ? VEK_OK : VEK_NO_RESPONSE;
}

}  // namespace vek
