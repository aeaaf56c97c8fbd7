/// Memory from malloc with an owner.
#ifndef TOVIRA_PARSE_HEAP_H
#define TOVIRA_PARSE_HEAP_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

/// Gives memory back to free().
struct FreeMemory {
    void operator()(void* memory) const { free(memory); }
};

/// Owns what malloc or calloc gave; null when they gave nothing. An allocation that fails is an answer here, never an
/// exception.
template <typename Type>
using HeapPointer = std::unique_ptr<Type, FreeMemory>;

/// Says on standard output that an allocation failed.
void reportOutOfMemory();

/// Allocates bytes of value 0; no bytes, too, are an allocation. Null, and reported, when they cannot be had.
HeapPointer<std::uint8_t> allocateBytes(std::size_t count);

#endif
