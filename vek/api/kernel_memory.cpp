#include "api/items.h"
#include "vek.h"

int vekKmemReadByte(uint64_t address, uint8_t* value)
{
    return vek::readItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemReadWord(uint64_t address, uint16_t* value)
{
    return vek::readItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemReadLong(uint64_t address, uint32_t* value)
{
    return vek::readItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemReadQuad(uint64_t address, uint64_t* value)
{
    return vek::readItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemWriteByte(uint64_t address, uint8_t value)
{
    return vek::writeItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemWriteWord(uint64_t address, uint16_t value)
{
    return vek::writeItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemWriteLong(uint64_t address, uint32_t value)
{
    return vek::writeItem<&vek::AccessPath::kernelMemory>(address, value);
}

int vekKmemWriteQuad(uint64_t address, uint64_t value)
{
    return vek::writeItem<&vek::AccessPath::kernelMemory>(address, value);
}
