#ifndef VEK_DRIVERS_SPI_NOR_H
#define VEK_DRIVERS_SPI_NOR_H

#include <algorithm>
#include <cstdint>

/// What the datasheet of the board's flash says, a Winbond W25Q16BV (revision F, 2010): a serial NOR flash of 16 Mbit.
/// Sections named here are the datasheet's.
namespace vek::spi_nor
{

constexpr std::uint32_t kSize = 0x20'0000;
constexpr std::uint32_t kPageSize = 0x100;        ///< A program command stays in one.
constexpr std::uint32_t kSectorSize = 0x1000;     ///< The smallest part that can be erased.
constexpr std::uint32_t kHalfBlockSize = 0x8000;  ///< 32 KiB.
constexpr std::uint32_t kBlockSize = 0x1'0000;    ///< 64 KiB.

/// Instructions (table 11.2.2). Addresses are 3 bytes, the high one first.
enum class Opcode : std::uint8_t {
    kNone = 0x00,
    kWriteStatus = 0x01,     ///< 1 byte: status register 1.
    kPageProgram = 0x02,     ///< Address, data.
    kRead = 0x03,            ///< Address.
    kWriteDisable = 0x04,    ///< Nothing follows.
    kReadStatus = 0x05,      ///< Status register 1, over and over.
    kWriteEnable = 0x06,     ///< Nothing follows.
    kFastRead = 0x0b,        ///< Address, a dummy byte.
    kEraseSector = 0x20,     ///< Address of any byte inside, as the two below.
    kEraseHalfBlock = 0x52,  //
    kReadSfdp = 0x5a,  ///< Address in the parameters, a dummy byte: JESD216, as later revisions of the part have it.
    kReadId = 0x9f,    ///< Manufacturer, memory type, capacity: the exponent of its size in bytes.
    kEraseBlock = 0xd8,
};

/// Status register 1 (section 11.1).
constexpr std::uint8_t kStatusBusy = 0x01;  ///< A write is going on; all commands but the reads of it are ignored.
constexpr std::uint8_t kStatusWriteEnabled =
    0x02;  ///< WEL: set by a write enable, cleared by every write that was done.
constexpr std::uint8_t kStatusBlockProtect = 0x1c;  ///< BP2 to BP0.
constexpr std::uint8_t kStatusBottom = 0x20;        ///< TB: the protected part is at the bottom, not at the top.
constexpr std::uint8_t kStatusSector = 0x40;        ///< SEC: it is counted in sectors, not in blocks.
constexpr std::uint8_t kStatusLock = 0x80;          ///< SRP0: the register is read-only while the WP pin is low.
constexpr std::uint8_t kStatusWritable = 0xfc;      ///< What a write status register sets; it is kept without power.

/// Addresses from `first` up to, but not including, `end`.
struct Range {
    std::uint32_t first;
    std::uint32_t end;

    /// Whether the two have a byte in common.
    constexpr bool meets(const Range& other) const { return std::max(first, other.first) < std::min(end, other.end); }

    bool operator==(const Range&) const = default;
};

/// The part of the flash that a status register protects from programming and erasing (table 11.1.10).
constexpr Range protectedBy(std::uint8_t status)
{
    constexpr unsigned kWholeFlash = 6;
    const unsigned level = (status & kStatusBlockProtect) >> 2;
    if (level == 0) {
        return {0, 0};
    }
    if (level >= kWholeFlash) {
        return {0, kSize};
    }
    const bool sectors = (status & kStatusSector) != 0;
    const std::uint32_t size =
        sectors ? std::min(kSectorSize << (level - 1), kHalfBlockSize) : kBlockSize << (level - 1);
    return (status & kStatusBottom) != 0 ? Range{0, size} : Range{kSize - size, kSize};
}

}  // namespace vek::spi_nor

#endif
