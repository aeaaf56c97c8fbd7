#ifndef VEK_CARD_NOR_ARRAY_H
#define VEK_CARD_NOR_ARRAY_H

#include <array>
#include <cstdint>
#include <span>

#include "drivers/spi_nor.h"

namespace vek
{

/// The memory cells of a serial NOR flash: an erase sets bits, programming clears them. Sectors that were never
/// programmed since their erase cost nothing. Ranges have to lie inside.
class NorArray
{
public:
    /// Makes sure that there is host memory to program into; false when the host refuses it.
    bool makeProgrammable();

    /// Reads at memory speed.
    void read(std::uint32_t address, std::span<std::uint8_t> data) const;

    /// Clears the bits that are 0 in `data`, which lies in one sector. Needs makeProgrammable().
    void program(std::uint32_t address, std::span<const std::uint8_t> data);

    /// Sets all bits of a range of whole sectors.
    void erase(const spi_nor::Range& sectors);

private:
    static constexpr std::uint32_t kSectors = spi_nor::kSize / spi_nor::kSectorSize;

    unsigned char* base_ = nullptr;
    std::array<bool, kSectors> programmed_{};  ///< The host memory of any other sector has no meaning.
};

}  // namespace vek

#endif
