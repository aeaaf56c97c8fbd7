#include "api/items.h"
#include "vek.h"

int vekRegReadByte(uint64_t address, uint8_t* value)
{
    return vek::readItem<&vek::AccessPath::registers>(address, value);
}

int vekRegReadWord(uint64_t address, uint16_t* value)
{
    return vek::readItem<&vek::AccessPath::registers>(address, value);
}

int vekRegReadLong(uint64_t address, uint32_t* value)
{
    return vek::readItem<&vek::AccessPath::registers>(address, value);
}

int vekRegReadQuad(uint64_t address, uint64_t* value)
{
    return vek::readItem<&vek::AccessPath::registers>(address, value);
}

int vekRegWriteByte(uint64_t address, uint8_t value)
{
    return vek::writeItem<&vek::AccessPath::registers>(address, value);
}

int vekRegWriteWord(uint64_t address, uint16_t value)
{
    return vek::writeItem<&vek::AccessPath::registers>(address, value);
}

int vekRegWriteLong(uint64_t address, uint32_t value)
{
    return vek::writeItem<&vek::AccessPath::registers>(address, value);
}

int vekRegWriteQuad(uint64_t address, uint64_t value)
{
    return vek::writeItem<&vek::AccessPath::registers>(address, value);
}
