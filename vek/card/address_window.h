#ifndef VEK_CARD_ADDRESS_WINDOW_H
#define VEK_CARD_ADDRESS_WINDOW_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "address_space.h"

namespace vek
{

/// A range of addresses of one space behind which another one answers.
struct AddressWindow {
    std::uint64_t base;    ///< First address of the range; the target's address 0.
    std::uint64_t length;  ///< Bytes, at least 8.
    AddressSpace* target;

    std::uint64_t end() const { return base + length; }

    /// Whether an item lies wholly in the range.
    bool holds(std::uint64_t address, unsigned width) const
    {
        return address >= base && address - base <= length - width;
    }

    /// Whether any byte of an item lies in the range.
    bool touches(std::uint64_t address, unsigned width) const { return address < end() && address + width > base; }
};

/// Windows by rising address.
template <std::size_t Count>
constexpr std::array<AddressWindow, Count> ascending(std::array<AddressWindow, Count> windows)
{
    std::sort(windows.begin(), windows.end(),
              [](const AddressWindow& left, const AddressWindow& right) { return left.base < right.base; });
    return windows;
}

}  // namespace vek

#endif
