#include "card/kernel_memory.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "card/host_pages.h"
#include "card/items.h"
#include "card/sizes.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr std::uint64_t kFirstAddress = 0xffff'8000'0000'0000;
constexpr unsigned kPageShift = 12;
constexpr std::size_t kPageSize = std::size_t{1} << kPageShift;
constexpr std::size_t kMaxPages = kGiB / kPageSize;
// Twice as many slots as pages keep the probe runs short.
constexpr unsigned kSlotBits = 19;
constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;
static_assert(kSlots == 2 * kMaxPages);

bool answers(std::uint64_t address, unsigned width)
{
    return address >= kFirstAddress && address <= kAllOnes - (width - 1);
}

/// How many of the `width` bytes at `address` lie on its own page, not on the next.
std::size_t bytesOnFirstPage(std::uint64_t address, unsigned width)
{
    return std::min<std::size_t>(width, kPageSize - (address & (kPageSize - 1)));
}

}  // namespace

bool KernelMemory::map()
{
    if (pages_ == nullptr) {
        pages_ = mapHostPages(kSlots * kPageSize);
    }
    if (pageNumbers_ == nullptr) {
        // Fresh host pages are zeros of any type.
        pageNumbers_ = reinterpret_cast<std::uint64_t*>(mapHostPages(kSlots * sizeof *pageNumbers_));
    }
    return pages_ != nullptr && pageNumbers_ != nullptr;
}

/// The slot that holds a page, or the free one where it would go.
std::size_t KernelMemory::slotOf(std::uint64_t pageNumber) const
{
    constexpr std::uint64_t kGoldenRatio = 0x9e37'79b9'7f4a'7c15;
    std::size_t slot = (pageNumber * kGoldenRatio) >> (64 - kSlotBits);
    while (pageNumbers_[slot] != pageNumber && pageNumbers_[slot] != 0) {
        slot = (slot + 1) % kSlots;
    }
    return slot;
}

/// Copies `count` bytes of one page to `bytes`, which hold zeros and keep them where the page was never written.
void KernelMemory::copyFromPage(std::uint64_t address, unsigned char* bytes, std::size_t count) const
{
    if (pageNumbers_ == nullptr) {
        return;
    }
    const std::size_t slot = slotOf(address >> kPageShift);
    if (pageNumbers_[slot] != 0) {
        std::memcpy(bytes, pages_ + slot * kPageSize + (address & (kPageSize - 1)), count);
    }
}

unsigned char* KernelMemory::pageToWrite(std::uint64_t pageNumber)
{
    const std::size_t slot = slotOf(pageNumber);
    if (pageNumbers_[slot] == 0) {
        if (pagesInUse_ == kMaxPages) {
            return nullptr;
        }
        pageNumbers_[slot] = pageNumber;
        ++pagesInUse_;
    }
    return pages_ + slot * kPageSize;
}

ReadResult KernelMemory::read(std::uint64_t address, unsigned width)
{
    if (!answers(address, width)) {
        return kUnanswered;
    }
    const std::size_t onFirst = bytesOnFirstPage(address, width);
    std::array<unsigned char, sizeof(std::uint64_t)> bytes{};
    copyFromPage(address, bytes.data(), onFirst);
    if (onFirst < width) {
        copyFromPage(address + onFirst, bytes.data() + onFirst, width - onFirst);
    }
    return {VEK_OK, loadItem(bytes.data(), width)};
}

int KernelMemory::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answers(address, width)) {
        return VEK_NO_RESPONSE;
    }
    if (!map()) {
        return VEK_NO_MEMORY;
    }
    const std::uint64_t pageNumber = address >> kPageShift;
    const std::size_t onFirst = bytesOnFirstPage(address, width);
    unsigned char* first = pageToWrite(pageNumber);
    // Both pages are got before either is changed: a write takes effect as a whole or not at all.
    unsigned char* second = onFirst == width ? first : pageToWrite(pageNumber + 1);
    if (first == nullptr || second == nullptr) {
        return VEK_NO_MEMORY;
    }
    std::array<unsigned char, sizeof value> bytes{};
    storeItem(bytes.data(), width, value);
    std::memcpy(first + (address & (kPageSize - 1)), bytes.data(), onFirst);
    std::memcpy(second, bytes.data() + onFirst, width - onFirst);
    return VEK_OK;
}

}  // namespace vek
