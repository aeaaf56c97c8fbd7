#ifndef VEK_CARD_KERNEL_MEMORY_H
#define VEK_CARD_KERNEL_MEMORY_H

#include <cstddef>
#include <cstdint>

#include "address_space.h"

namespace vek
{

/// Kernel virtual memory of a simulated host: the upper half of x86-64's canonical addresses, all of it there and
/// reading 0. Nothing answers below. Pages are made when they are written; when 1 GiB of them is in use, a write that
/// needs another answers VEK_NO_MEMORY.
class KernelMemory final : public AddressSpace
{
public:
    constexpr KernelMemory() = default;

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    bool map();
    std::size_t slotOf(std::uint64_t pageNumber) const;
    void copyFromPage(std::uint64_t address, unsigned char* bytes, std::size_t count) const;
    unsigned char* pageToWrite(std::uint64_t pageNumber);

    /// Open-addressing hash table: page number by slot, 0 where the slot is free.
    std::uint64_t* pageNumbers_ = nullptr;
    /// One page for each slot, in the same order.
    unsigned char* pages_ = nullptr;
    std::size_t pagesInUse_ = 0;
};

}  // namespace vek

#endif
