/// Memory from malloc with an owner.
#ifndef TOVIRA_PARSE_HEAP_H
#define TOVIRA_PARSE_HEAP_H

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

#endif
