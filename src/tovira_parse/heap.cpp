#include "tovira_parse/heap.h"

#include <cstdio>

void reportOutOfMemory()
{
    puts("Out of memory");
}

HeapPointer<std::uint8_t> allocateBytes(std::size_t count)
{
    HeapPointer<std::uint8_t> bytes(static_cast<std::uint8_t*>(calloc(count, 1)));
    if (bytes == nullptr) {
        reportOutOfMemory();
    }
    return bytes;
}
