#ifndef VEK_CARD_STEPPED_REGISTERS_H
#define VEK_CARD_STEPPED_REGISTERS_H

#include <cstddef>
#include <cstdint>

namespace vek
{

/// A file of registers of one width, at multiples of a step.
struct SteppedRegisters {
    unsigned width;
    std::uint64_t step;
    std::size_t count;

    /// Whether an access is to one of them.
    constexpr bool answer(std::uint64_t address, unsigned accessWidth) const
    {
        return accessWidth == width && address % step == 0 && address / step < count;
    }
};

}  // namespace vek

#endif
