#ifndef VEK_CARD_SPARSE_MEMORY_H
#define VEK_CARD_SPARSE_MEMORY_H

#include <cstdint>

#include "address_space.h"

namespace vek
{

/// A memory of which only the pages that are written cost host memory. It reads 0 until written. Its host mapping is
/// made when it is first written or read more than a little, and kept until the program ends, so a memory that nobody
/// touches costs nothing at all.
class SparseMemory final : public BlockSpace
{
public:
    /// A memory of `size` bytes, at least 8.
    constexpr explicit SparseMemory(std::uint64_t size) : size_(size) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;
    int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) override;
    int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) override;
    int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) override;

    /// Bytes, all told.
    constexpr std::uint64_t size() const { return size_; }

    /// Goes over to host memory of size() bytes which is there for good and already holds the contents.
    void adopt(unsigned char* pages);

private:
    bool map();
    bool mapped() { return base_ != nullptr || map(); }
    // The accesses that make the mapping stay out of the way of all later ones.
    [[gnu::cold, gnu::noinline]] ReadResult readFirst(std::uint64_t address, unsigned width);
    [[gnu::cold, gnu::noinline]] int writeFirst(std::uint64_t address, unsigned width, std::uint64_t value);
    bool inside(std::uint64_t address, unsigned width) const { return address <= size_ - width; }
    std::size_t longsInside(std::uint64_t address, std::size_t count) const;

    std::uint64_t size_;
    unsigned char* base_ = nullptr;
    unsigned readsUnmapped_ = 0;
};

}  // namespace vek

#endif
