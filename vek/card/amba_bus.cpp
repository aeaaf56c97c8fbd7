#include "card/amba_bus.h"

#include "vek.h"

namespace vek
{

const AmbaWindow* AmbaBus::windowOf(std::uint64_t address, unsigned width) const
{
    for (const AmbaWindow& window : windows_) {
        if (address >= window.base && address - window.base <= window.length - width) {
            return &window;
        }
    }
    return nullptr;
}

ReadResult AmbaBus::read(std::uint64_t address, unsigned width)
{
    const AmbaWindow* window = windowOf(address, width);
    return window == nullptr ? kUnanswered : window->target->read(address - window->base, width);
}

int AmbaBus::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    const AmbaWindow* window = windowOf(address, width);
    return window == nullptr ? VEK_NO_RESPONSE : window->target->write(address - window->base, width, value);
}

}  // namespace vek
