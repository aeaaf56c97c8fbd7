#ifndef VEK_ADDRESS_SPACE_H
#define VEK_ADDRESS_SPACE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "vek.h"

namespace vek
{

/// What a read delivers that nothing answers: a PCI Express root complex completes it with every bit set.
constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};

/// What a read comes back with, small enough to travel in registers.
struct ReadResult {
    int result;           ///< Of enum VekResult.
    std::uint64_t value;  ///< The item, zero-extended; all ones with VEK_NO_RESPONSE; else of no meaning.
};

/// The answer to a read that nothing answers.
constexpr ReadResult kUnanswered{VEK_NO_RESPONSE, kAllOnes};

/// Memory of the host that stands behind a stretch of an address space and does nothing but hold what is written.
struct PlainMemory {
    unsigned char* base = nullptr;  ///< What the lowest address of the stretch lies at.
    std::uint64_t first = 0;        ///< That address.
    std::uint64_t length = 0;  ///< An item of any width that begins less than this above `first` lies wholly inside.

    bool holds(std::uint64_t address) const { return address - first < length; }

    /// Where an address that it holds lies.
    unsigned char* at(std::uint64_t address) const { return base + (address - first); }

    /// The part of it in which items lie wholly between two of its addresses, which may be none.
    PlainMemory between(std::uint64_t from, std::uint64_t to) const
    {
        constexpr std::uint64_t kWidestItem = 8;
        const std::uint64_t begin = std::max(from, first);
        const std::uint64_t end = std::min(to, first + length + kWidestItem - 1);
        if (begin >= end || end - begin < kWidestItem) {
            return {};
        }
        return {.base = base + (begin - first), .first = begin, .length = end - begin - kWidestItem + 1};
    }
};

/// Something that answers to addresses: a memory, a register file, a bus. Items are little-endian and may lie at any
/// alignment unless the space says otherwise. Results are those of enum VekResult.
class AddressSpace
{
public:
    /// Reads `width` bytes (1, 2, 4 or 8) at `address`.
    virtual ReadResult read(std::uint64_t address, unsigned width) = 0;

    /// Writes the low `width` bytes (1, 2, 4 or 8) of `value` at `address`. A negative result has written nothing.
    virtual int write(std::uint64_t address, unsigned width, std::uint64_t value) = 0;

    /// Where the space need not be asked: accesses to this memory are answered by loads and stores of their width. It
    /// may be another stretch after every access that the space was asked for.
    const PlainMemory& plainMemory() const { return plainMemory_; }

    /// From now on the space has to be asked, until it sets another stretch.
    void withdrawPlainMemory() { plainMemory_ = {}; }

protected:
    constexpr AddressSpace() = default;
    ~AddressSpace() = default;

    void setPlainMemory(const PlainMemory& memory) { plainMemory_ = memory; }

private:
    PlainMemory plainMemory_;
};

/// An address space that also moves runs of 32-bit items at memory speed. An item that does not lie wholly inside is
/// treated like a single access to it (it reads as all ones, it is not written), the others are served, and the result
/// is VEK_NO_RESPONSE. No run wraps round to address 0.
class BlockSpace : public AddressSpace
{
public:
    /// Reads `count` longs from `address` upwards into `longs`.
    virtual int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) = 0;

    /// Writes `count` longs from `address` upwards.
    virtual int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) = 0;

    /// Writes `value` to `count` longs from `address` upwards.
    virtual int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) = 0;

protected:
    ~BlockSpace() = default;
};

}  // namespace vek

#endif
