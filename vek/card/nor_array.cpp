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

void NorArray::setProgrammed(std::uint32_t sector, bool programmed)
{
    const std::uint64_t bit = std::uint64_t{1} << sector % kWordBits;
    std::uint64_t& word = programmed_[sector / kWordBits];
    word = programmed ? word | bit : word & ~bit;
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
            std::memset(data.data(), kErased, count);
        }
        address += static_cast<std::uint32_t>(count);
        data = data.subspan(count);
    }
}

void NorArray::program(std::uint32_t address, std::span<const std::uint8_t> data)
{
    const std::uint32_t sector = address / spi_nor::kSectorSize;
    if (!isProgrammed(sector)) {
        const std::uint32_t first = sector * spi_nor::kSectorSize;
        std::memset(base_ + first, kErased, spi_nor::kSectorSize);
        setProgrammed(sector, true);
    }
    for (std::size_t index = 0; index < data.size(); ++index) {
        base_[address + index] &= data[index];
    }
}

void NorArray::erase(const spi_nor::Range& sectors)
{
    for (std::uint32_t address = sectors.first; address < sectors.end; address += spi_nor::kSectorSize) {
        setProgrammed(address / spi_nor::kSectorSize, false);
    }
}

}  // namespace vek
