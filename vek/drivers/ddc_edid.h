#ifndef VEK_DRIVERS_DDC_EDID_H
#define VEK_DRIVERS_DDC_EDID_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "i2c_bus.h"

namespace vek
{

constexpr std::size_t kEdidBlockSize = 128;

/// A base block and 255 extensions.
constexpr std::size_t kMaxEdidSize = 256 * kEdidBlockSize;

/// Room for the longest EDID.
using EdidBuffer = std::array<std::uint8_t, kMaxEdidSize>;

/// Where a display answers on its DDC (VESA E-DDC 1.3, sections 2.2.5 and 2.2.6): 7-bit addresses.
constexpr std::uint8_t kEdidMemoryAddress = 0x50;
constexpr std::uint8_t kSegmentPointerAddress = 0x30;

/// Where a block lies: a segment has two.
struct EdidBlockPlace {
    std::uint8_t segment;
    std::uint8_t offset;
};

constexpr EdidBlockPlace placeOfEdidBlock(std::size_t number)
{
    constexpr std::size_t kBlocksPerSegment = 2;
    return {.segment = static_cast<std::uint8_t>(number / kBlocksPerSegment),
            .offset = static_cast<std::uint8_t>(number % kBlocksPerSegment * kEdidBlockSize)};
}

/// A way to a display's EDID.
class EdidBlocks
{
public:
    /// Reads block `number`, up to 255, into `block`, which has kEdidBlockSize bytes. Results are those of enum
    /// VekResult.
    virtual int readBlock(std::size_t number, std::span<std::uint8_t> block) = 0;

protected:
    constexpr EdidBlocks() = default;
    ~EdidBlocks() = default;
};

/// Reads a display's EDID as readEdid() below does, whatever way leads there, and no more blocks of it than `buffer`
/// holds whole, which is one at least. Returns VEK_OK, or what the block answered that could not be read.
int readEdid(EdidBlocks& display, std::span<std::uint8_t> buffer, std::size_t& length);

/// Reads a display's EDID over its DDC: the base block and as many extensions as it declares, those from the third
/// block on with the segment pointer, for which older displays have no ear. A base block without the EDID header is
/// read alone. Nothing is checked beyond that, so the bytes may be damaged.
/// `buffer` receives the bytes and `length` their number; both have a meaning on success only.
/// Returns VEK_OK, or as I2cTransaction does: VEK_NO_RESPONSE when no display answers.
int readEdid(I2cBus& bus, EdidBuffer& buffer, std::size_t& length);

}  // namespace vek

#endif
