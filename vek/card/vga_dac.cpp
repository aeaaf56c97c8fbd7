#include "card/vga_dac.h"

#include "vek.h"

namespace vek
{
namespace
{

bool answered(std::uint64_t address, unsigned width)
{
    return width == 1 && address < vga_dac::kRegisterCount;
}

}  // namespace

ReadResult VgaDac::read(std::uint64_t address, unsigned width)
{
    return answered(address, width) ? ReadResult{VEK_OK, gains_[address]} : kUnanswered;
}

int VgaDac::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (!answered(address, width)) {
        return VEK_NO_RESPONSE;
    }
    gains_[address] = static_cast<std::uint8_t>(value);
    return VEK_OK;
}

}  // namespace vek
