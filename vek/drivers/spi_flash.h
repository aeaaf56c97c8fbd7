#ifndef VEK_DRIVERS_SPI_FLASH_H
#define VEK_DRIVERS_SPI_FLASH_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "card_lock.h"
#include "drivers/polling.h"
#include "drivers/spi_nor.h"
#include "pause.h"
#include "spi_bus.h"

namespace vek
{

/// The board's flash (drivers/spi_nor.h). Every function identifies it first: by its JEDEC id, and by its parameters
/// (JESD216) when it has some. Ranges have to lie inside the flash. Results are those of enum VekResult, common to all:
/// VEK_NO_RESPONSE when no flash of this size answers, VEK_TIMED_OUT when it stays busy, and what the bus answers.
class SpiFlash
{
public:
    /// `lock`, of the card if it has one, keeps others from the flash while a command or what belongs together goes on;
    /// between the pages and units of a long change they get their turn.
    SpiFlash(SpiBus& bus, Pause& pause, CardLock* lock = nullptr) : bus_(bus), pause_(pause), lock_(lock) {}

    /// Reads bytes, by one command.
    int read(std::uint32_t address, std::span<std::uint8_t> data);

    /// Erases all sectors that the range touches and nothing else: by blocks of 64 KiB where they lie wholly inside
    /// these sectors, one by one elsewhere. Returns VEK_PROTECTED, having changed nothing, when one of them is
    /// protected, VEK_BAD_DATA when one is not empty afterwards, which ends it there.
    int erase(std::uint32_t address, std::uint32_t size);

    /// Programs bytes, page by page; a page that is all 0xff needs no programming. Returns VEK_PROTECTED, having
    /// changed nothing, when one of them is protected, VEK_BAD_DATA when a page does not hold its bytes afterwards (a
    /// bit that is 0 can only be erased), which ends it there.
    int program(std::uint32_t address, std::span<const std::uint8_t> data);

    /// Protects the whole flash. Returns VEK_PROTECTED when the status register does not take it.
    int protect() { return setBlockProtect(spi_nor::kStatusBlockProtect); }

    /// Ends the protection of the whole flash. Returns VEK_PROTECTED when the status register does not take it.
    int unprotect() { return setBlockProtect(0); }

private:
    int identify();
    int readId(bool& answered, std::uint32_t& size);
    int readParameters(std::uint32_t& size);
    int readSfdp(std::uint32_t address, std::span<std::uint8_t> data);
    int readStatus(std::uint8_t& status);
    int readArray(std::uint32_t address, std::span<std::uint8_t> data);
    int awaitReady(const Patience& patience);
    int prepareToChange(const spi_nor::Range& range);
    int send(std::span<const std::uint8_t> header, std::span<const std::uint8_t> data);
    int query(std::span<const std::uint8_t> header, std::span<std::uint8_t> data);
    int writeCommand(std::span<const std::uint8_t> header, std::span<const std::uint8_t> data,
                     const Patience& patience);
    int eraseUnit(std::uint32_t address, std::uint32_t size);
    int programPage(std::uint32_t address, std::span<const std::uint8_t> data);
    int setBlockProtect(std::uint8_t bits);

    SpiBus& bus_;
    Pause& pause_;
    CardLock* lock_;
};

}  // namespace vek

#endif
