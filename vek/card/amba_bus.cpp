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

/// Lets the accesses that follow go straight to the memory behind a window.
void AmbaBus::exposeMemoryBehind(const AddressWindow& window)
{
    PlainMemory memory = window.target->plainMemory().between(0, window.length);
    memory.first += window.base;
    setPlainMemory(memory);
}

ReadResult AmbaBus::read(std::uint64_t address, unsigned width)
{
    const AddressWindow* window = windowOf(address, width);
    if (window == nullptr) {
        return kUnanswered;
    }
    const ReadResult read = window->target->read(address - window->base, width);
    exposeMemoryBehind(*window);
    return read;
}

int AmbaBus::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    const AddressWindow* window = windowOf(address, width);
    if (window == nullptr) {
        return VEK_NO_RESPONSE;
    }
    const int result = window->target->write(address - window->base, width, value);
    exposeMemoryBehind(*window);
    return result;
}

}  // namespace vek
