#ifndef VEK_DRIVERS_LONG_READ_H
#define VEK_DRIVERS_LONG_READ_H

#include <cstdint>

#include "address_space.h"
#include "vek.h"

namespace vek
{

/// Reads a register of 32 bits. Returns what the registers answer; `value` is touched on success only.
inline int readLong(AddressSpace& registers, std::uint64_t address, std::uint32_t& value)
{
    constexpr unsigned kLong = 4;
    const auto [result, read] = registers.read(address, kLong);
    if (result == VEK_OK) {
        value = static_cast<std::uint32_t>(read);
    }
    return result;
}

}  // namespace vek

#endif
