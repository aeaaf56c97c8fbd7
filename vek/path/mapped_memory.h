#ifndef VEK_PATH_MAPPED_MEMORY_H
#define VEK_PATH_MAPPED_MEMORY_H

#include <cstdint>

#include "address_space.h"
#include "state/file_guard.h"

namespace vek
{

/// A range of physical memory in the address space of this process. Every item is one load or store of exactly its
/// width where it is aligned, since registers may lie behind it; a run is one access a long, in ascending order. Once a
/// part of it is gone, with a device that is unplugged or a file that is cut short, nothing answers any more.
class MappedMemory final : public BlockSpace
{
public:
    constexpr MappedMemory() = default;
    MappedMemory(const MappedMemory&) = delete;
    MappedMemory& operator=(const MappedMemory&) = delete;

    /// Maps `size` bytes, at least 1, from the offset `start` of an open memory device or file, in the place of what is
    /// mapped. Returns VEK_BAD_ARGUMENT for a range that wraps, VEK_NO_RESPONSE when a file ends before it does,
    /// VEK_IO_ERROR when it cannot be mapped; what was mapped stays mapped then.
    int map(int descriptor, std::uint64_t start, std::uint64_t size);

    /// Takes over what another one has mapped, and watches it from now on: this one has to live as long as the program.
    /// `name` is a literal, for the message that it is gone.
    void takeFrom(MappedMemory& other, const char* name);

    /// Ends the mapping; nothing happens when there is none.
    void unmap();

    bool mapped() const { return pages_ != nullptr; }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;
    int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) override;
    int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) override;
    int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) override;

private:
    std::size_t longsInside(std::uint64_t address, std::size_t count) const;
    bool isLost() const;
    int resultOf(bool complete) const;
    bool inside(std::uint64_t address, unsigned width) const { return width <= size_ && address <= size_ - width; }

    void* pages_ = nullptr;          ///< what mmap gave
    std::uint64_t pagesLength_ = 0;  ///< bytes
    unsigned char* base_ = nullptr;  ///< address 0
    std::uint64_t size_ = 0;
    FileLoss loss_{.consequence = "cannot be reached any more"};
};

}  // namespace vek

#endif
