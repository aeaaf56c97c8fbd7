#include "card/nor_array.h"

#include <algorithm>
#include <cstring>

#include "card/host_pages.h"

namespace vek
{
namespace
{

constexpr std::uint8_t kErased = 0xff;

}  // namespace

void NorArray::setBit(SectorBits& bits, std::uint32_t sector, bool value)
{
    const std::uint64_t bit = std::uint64_t{1} << sector % kWordBits;
    std::uint64_t& word = bits[sector / kWordBits];
    word = value ? word | bit : word & ~bit;
}

bool NorArray::makeProgrammable()
{
    if (base_ == nullptr) {
        base_ = mapHostPages(spi_nor::kSize);
    }
    return base_ != nullptr;
}

void NorArray::read(std::uint32_t address, std::span<std::uint8_t> data) const
{
    while (!data.empty()) {
        const std::uint32_t offset = address % spi_nor::kSectorSize;
        const std::size_t count = std::min<std::size_t>(data.size(), spi_nor::kSectorSize - offset);
        if (isProgrammed(address / spi_nor::kSectorSize)) {
            std::memcpy(data.data(), base_ + address, count);
        } else {
            readUnprogrammed(address, data.first(count));
        }
        applyStuckBits(address, data.first(count));
        address += static_cast<std::uint32_t>(count);
        data = data.subspan(count);
    }
}

/// Reads inside a sector of which the host memory has no meaning.
void NorArray::readUnprogrammed(std::uint32_t address, std::span<std::uint8_t> data) const
{
    std::size_t shipped = 0;
    if (!bitOf(changed_, address / spi_nor::kSectorSize) && address < image_.size()) {
        shipped = std::min(data.size(), image_.size() - address);
        std::memcpy(data.data(), image_.data() + address, shipped);
    }
    std::memset(data.data() + shipped, kErased, data.size() - shipped);
}

void NorArray::applyStuckBits(std::uint32_t address, std::span<std::uint8_t> data) const
{
    for (const StuckBit& stuck : stuckBits_) {
        if (stuck.memory == StuckMemory::kFlash && stuck.address >= address && stuck.address - address < data.size()) {
            std::uint8_t& byte = data[stuck.address - address];
            byte = stuck.applied(byte);
        }
    }
}

void NorArray::program(std::uint32_t address, std::span<const std::uint8_t> data)
{
    const std::uint32_t sector = address / spi_nor::kSectorSize;
    if (!isProgrammed(sector)) {
        const std::uint32_t first = sector * spi_nor::kSectorSize;
        readUnprogrammed(first, {base_ + first, spi_nor::kSectorSize});
        setBit(programmed_, sector, true);
        setBit(changed_, sector, true);
    }
    for (std::size_t index = 0; index < data.size(); ++index) {
        base_[address + index] &= data[index];
    }
}

void NorArray::erase(const spi_nor::Range& sectors)
{
    for (std::uint32_t address = sectors.first; address < sectors.end; address += spi_nor::kSectorSize) {
        setBit(programmed_, address / spi_nor::kSectorSize, false);
        setBit(changed_, address / spi_nor::kSectorSize, true);
    }
}

}  // namespace vek
