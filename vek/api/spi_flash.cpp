#include "drivers/spi_flash.h"

#include <cstddef>
#include <cstdint>
#include <span>

#include "api/connection.h"
#include "pause.h"
#include "vek.h"

namespace
{

static_assert(VEK_SPI_FLASH_SIZE == vek::spi_nor::kSize);

bool insideFlash(int address, int size)
{
    return address >= 0 && address <= VEK_SPI_FLASH_SIZE && size > 0 && size <= VEK_SPI_FLASH_SIZE - address;
}

/// Lets `use` work on the flash of the open path, if the arguments are good.
template <typename Use>
int withFlash(bool argumentsGood, Use use)
{
    if (vek::openPath == nullptr) {
        return VEK_NO_PATH;
    }
    if (vek::openPath->spi == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if (!argumentsGood) {
        return VEK_BAD_ARGUMENT;
    }
    vek::HostPause pause;
    vek::SpiFlash flash(*vek::openPath->spi, pause, vek::openCardLock());
    return use(flash);
}

}  // namespace

int vekSpiReadBuffer(void* buffer, int address, int size)
{
    return withFlash(buffer != nullptr && insideFlash(address, size), [=](vek::SpiFlash& flash) {
        return flash.read(static_cast<std::uint32_t>(address),
                          std::span(static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(size)));
    });
}

int vekSpiErase(int address, int size)
{
    return withFlash(insideFlash(address, size), [=](vek::SpiFlash& flash) {
        return flash.erase(static_cast<std::uint32_t>(address), static_cast<std::uint32_t>(size));
    });
}

int vekSpiProgram(const void* buffer, int address, int size)
{
    constexpr int kWord = 4;
    return withFlash(buffer != nullptr && insideFlash(address, size) && size % kWord == 0, [=](vek::SpiFlash& flash) {
        return flash.program(static_cast<std::uint32_t>(address),
                             std::span(static_cast<const std::uint8_t*>(buffer), static_cast<std::size_t>(size)));
    });
}

int vekSpiProtect()
{
    return withFlash(true, [](vek::SpiFlash& flash) { return flash.protect(); });
}

int vekSpiUnprotect()
{
    return withFlash(true, [](vek::SpiFlash& flash) { return flash.unprotect(); });
}
