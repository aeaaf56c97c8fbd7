#include "card/amba_bus.h"

#include "vek.h"

namespace vek
{

const AddressWindow* AmbaBus::windowOf(std::uint64_t address, unsigned width) const
{
    for (const AddressWindow& window : windows_) {
        if (window.holds(address, width)) {
            return &window;
        }
    }
    return nullptr;
}

ReadResult AmbaBus::read(std::uint64_t address, unsigned width)
{
    const AddressWindow* window = windowOf(address, width);
    return window == nullptr ? kUnanswered : window->target->read(address - window->base, width);
}

int AmbaBus::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    const AddressWindow* window = windowOf(address, width);
    return window == nullptr ? VEK_NO_RESPONSE : window->target->write(address - window->base, width, value);
}

}  // namespace vek
