#include "card/output_routing.h"

#include "card/items.h"
#include "vek.h"

namespace vek
{

ReadResult OutputRoutingRegisters::read(std::uint64_t address, unsigned width)
{
    return address <= kSize - width ? ReadResult{VEK_OK, loadItem(bytes_.data() + address, width)} : kUnanswered;
}

int OutputRoutingRegisters::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    if (address > kSize - width) {
        return VEK_NO_RESPONSE;
    }
    storeItem(bytes_.data() + address, width, value);
    return VEK_OK;
}

}  // namespace vek
