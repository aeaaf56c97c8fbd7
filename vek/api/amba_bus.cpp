#include "api/items.h"
#include "vek.h"

int vekAmbaReadByte(uint64_t address, uint8_t* value)
{
    return vek::readItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaReadWord(uint64_t address, uint16_t* value)
{
    return vek::readItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaReadLong(uint64_t address, uint32_t* value)
{
    return vek::readItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaReadQuad(uint64_t address, uint64_t* value)
{
    return vek::readItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaWriteByte(uint64_t address, uint8_t value)
{
    return vek::writeItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaWriteWord(uint64_t address, uint16_t value)
{
    return vek::writeItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaWriteLong(uint64_t address, uint32_t value)
{
    return vek::writeItem<&vek::AccessPath::amba>(address, value);
}

int vekAmbaWriteQuad(uint64_t address, uint64_t value)
{
    return vek::writeItem<&vek::AccessPath::amba>(address, value);
}
