#include "card/gamma_table.h"

#include "vek.h"

namespace vek
{
namespace
{

bool answered(std::uint64_t address, unsigned width)
{
    return width == gamma_table::kEntryWidth && address % gamma_table::kEntryWidth == 0 && address < gamma_table::kSize;
}

std::uint64_t afterPowerOn(std::uint64_t address)
{
    return gamma_table::identity(address % gamma_table::kColourStep / gamma_table::kEntryWidth);
}

}  // namespace

ReadResult GammaTable::read(std::uint64_t address, unsigned width)
{
    if (!answered(address, width)) {
        return kUnanswered;
    }
    const auto [result, value] = flipped_.read(address, width);
    return {result, value ^ afterPowerOn(address)};
}

int GammaTable::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    return answered(address, width) ? flipped_.write(address, width, value ^ afterPowerOn(address)) : VEK_NO_RESPONSE;
}

}  // namespace vek
