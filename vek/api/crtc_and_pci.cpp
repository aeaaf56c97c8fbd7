#include "api/items.h"
#include "vek.h"

int vekCrtcReadByte(uint32_t index, uint8_t* value)
{
    return vek::readItem<&vek::AccessPath::crtc>(index, value);
}

int vekCrtcWriteByte(uint32_t index, uint8_t value)
{
    return vek::writeItem<&vek::AccessPath::crtc>(index, value);
}

int vekPciRead(int32_t offset, uint32_t* value)
{
    // A negative offset becomes one far past the end.
    const int result = vek::readItem<&vek::AccessPath::pciConfiguration>(static_cast<uint32_t>(offset), value);
    if (result == VEK_BAD_ARGUMENT && value != nullptr) {
        // The bus answers no request at such an offset, and a caller that prints its cell must not show what was there.
        *value = static_cast<uint32_t>(vek::kAllOnes);
    }
    return result;
}

int vekPciWrite(int32_t offset, uint32_t value)
{
    return vek::writeItem<&vek::AccessPath::pciConfiguration>(static_cast<uint32_t>(offset), value);
}
