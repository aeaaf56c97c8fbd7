#ifndef VEK_CARD_NOR_ARRAY_H
#define VEK_CARD_NOR_ARRAY_H

#include <array>
#include <cstdint>
#include <span>

#include "card/stuck_bit.h"
#include "drivers/spi_nor.h"

namespace vek
{

/// The memory cells of a serial NOR flash: an erase sets bits, programming clears them. Sectors that were never
/// programmed since their erase cost nothing. Ranges have to lie inside.
class NorArray
{
public:
    /// Begins with these bytes from address 0 on rather than erased, and with these bits stuck. Both have to live as
    /// long as the array.
    void ship(std::span<const std::uint8_t> image, StuckBits stuckBits)
    {
        image_ = image;
        stuckBits_ = stuckBits;
    }

    /// Makes sure that there is host memory to program into; false when the host refuses it.
    bool makeProgrammable();

    /// Reads at memory speed.
    void read(std::uint32_t address, std::span<std::uint8_t> data) const;

    /// Clears the bits that are 0 in `data`, which lies in one sector. Needs makeProgrammable().
    void program(std::uint32_t address, std::span<const std::uint8_t> data);

    /// Sets all bits of a range of whole sectors.
    void erase(const spi_nor::Range& sectors);

    /// Bytes, all told.
    static constexpr std::uint64_t size() { return spi_nor::kSize; }

    /// Goes over to host memory of size() bytes which is there for good. What it holds counts for the sectors that are
    /// programmed.
    void adopt(unsigned char* pages) { base_ = pages; }

    /// Hands over what changes, as state/state_visitor.h says. What is programmed has meaning together with the host
    /// memory only, but may lag behind it: a sector whose bit is not set yet is erased, whatever became of its memory,
    /// and the memory of one whose bit is still set holds at any moment what a flash without power would hold.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(programmed_, changed_);
    }

private:
    static constexpr std::uint32_t kSectors = spi_nor::kSize / spi_nor::kSectorSize;
    static constexpr std::uint32_t kWordBits = 64;

    using SectorBits = std::array<std::uint64_t, kSectors / kWordBits>;

    bool isProgrammed(std::uint32_t sector) const { return bitOf(programmed_, sector); }
    static bool bitOf(const SectorBits& bits, std::uint32_t sector)
    {
        return (bits[sector / kWordBits] >> sector % kWordBits & 1) != 0;
    }
    static void setBit(SectorBits& bits, std::uint32_t sector, bool value);
    void readUnprogrammed(std::uint32_t address, std::span<std::uint8_t> data) const;
    void applyStuckBits(std::uint32_t address, std::span<std::uint8_t> data) const;

    std::span<const std::uint8_t> image_;
    StuckBits stuckBits_;

    unsigned char* base_ = nullptr;
    /// A bit for each sector. The host memory of those that are not programmed has no meaning.
    SectorBits programmed_{};
    /// Sectors that were ever programmed or erased. The others hold what was shipped.
    SectorBits changed_{};
};

}  // namespace vek

#endif
