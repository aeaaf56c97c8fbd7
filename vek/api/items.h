#ifndef VEK_API_ITEMS_H
#define VEK_API_ITEMS_H

#include <cstdint>
#include <cstring>

#include "api/connection.h"
#include "vek.h"

namespace vek
{

/// Reads one item from the open path's space `Space` (a member of AccessPath) into a caller's cell.
template <auto Space, typename Item>
int readItem(std::uint64_t address, Item* cell)
{
    if (openPath == nullptr) {
        return VEK_NO_PATH;
    }
    AddressSpace* space = openPath->*Space;
    if (space == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    if (cell == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    // Dumps come by here for every item: without a call for those that plain memory holds.
    const PlainMemory& plain = space->plainMemory();
    if (plain.holds(address)) [[likely]] {
        std::memcpy(cell, plain.at(address), sizeof *cell);
        return VEK_OK;
    }
    const auto [result, value] = space->read(address, sizeof(Item));
    if (result == VEK_OK || result == VEK_NO_RESPONSE) {
        *cell = static_cast<Item>(value);
    }
    return result;
}

/// Writes one item to the open path's space `Space`.
template <auto Space, typename Item>
int writeItem(std::uint64_t address, Item value)
{
    if (openPath == nullptr) {
        return VEK_NO_PATH;
    }
    AddressSpace* space = openPath->*Space;
    if (space == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    const PlainMemory& plain = space->plainMemory();
    if (plain.holds(address)) [[likely]] {
        std::memcpy(plain.at(address), &value, sizeof value);
        return VEK_OK;
    }
    return space->write(address, sizeof(Item), value);
}

}  // namespace vek

#endif
