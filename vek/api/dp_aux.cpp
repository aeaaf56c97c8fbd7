#include "api/dp_aux.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

#include "drivers/aux_i2c.h"
#include "drivers/ddc_edid.h"
#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace vek
{
namespace
{

struct FreeBytes {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};

bool describesBuffer(int count, const std::uint8_t* buffer)
{
    return count == 0 || (count > 0 && buffer != nullptr);
}

/// Fills a caller's buffer by `read`, a function of a span that returns a result. A reading that breaks off leaves the
/// buffer as it was.
template <typename Read>
int readWhole(std::uint8_t* buffer, std::size_t count, Read read)
{
    const std::unique_ptr<std::uint8_t, FreeBytes> staged(static_cast<std::uint8_t*>(std::malloc(count)));
    if (staged == nullptr) {
        return VEK_NO_MEMORY;
    }
    const int result = read(std::span(staged.get(), count));
    if (result == VEK_OK) {
        std::memcpy(buffer, staged.get(), count);
    }
    return result;
}

int readDpcd(AuxTransfer& aux, std::uint32_t address, std::uint8_t* buffer, int count)
{
    const auto size = static_cast<std::size_t>(count);
    if (!describesBuffer(count, buffer) || address >= kAuxAddressEnd || size > kAuxAddressEnd - address) {
        return VEK_BAD_ARGUMENT;
    }
    return size == 0 ? VEK_OK : readWhole(buffer, size, [&](auto bytes) { return aux.readDpcd(address, bytes); });
}

int readI2cBytes(AuxTransfer& aux, std::uint32_t device, std::uint8_t subAddress, std::uint8_t* buffer, int count)
{
    const auto size = static_cast<std::size_t>(count);
    if (!describesBuffer(count, buffer) || device > kMaxI2cDevice || size > kMaxI2cTransfer) {
        return VEK_BAD_ARGUMENT;
    }
    const auto read = [&](auto bytes) { return readAuxI2c(aux, device, subAddress, bytes); };
    return size == 0 ? VEK_OK : readWhole(buffer, size, read);
}

int readSinkEdid(AuxTransfer& aux, std::uint8_t* buffer, int* length)
{
    if (buffer == nullptr || length == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    std::array<std::uint8_t, VEK_EDID_BUFFER_SIZE> edid;
    std::size_t size = 0;
    AuxEdidBlocks display(aux);
    const int result = readEdid(display, edid, size);
    if (result == VEK_OK) {
        std::memcpy(buffer, edid.data(), size);
        *length = static_cast<int>(size);
    }
    return result;
}

}  // namespace
}  // namespace vek

int vekDpAuxRead(int channel, uint32_t address, uint8_t* value)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return vek::readDpcd(aux, address, value, 1); });
}

int vekDpAuxReadBuf(int channel, uint32_t address, uint8_t* buffer, int count)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return vek::readDpcd(aux, address, buffer, count); });
}

int vekDpAuxWrite(int channel, uint32_t address, uint8_t value)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return aux.writeDpcd(address, value); });
}

int vekDpAuxEdidGet(int channel, uint8_t* buffer, int* length)
{
    return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return vek::readSinkEdid(aux, buffer, length); });
}

int vekDpI2cRead(int channel, uint32_t device, uint8_t sub_address, uint8_t* value)
{
    return vekDpI2cReadBuf(channel, device, sub_address, value, 1);
}

int vekDpI2cReadBuf(int channel, uint32_t device, uint8_t sub_address, uint8_t* buffer, int count)
{
    return vek::withDpAux(
        channel, [&](vek::AuxTransfer& aux) { return vek::readI2cBytes(aux, device, sub_address, buffer, count); });
}
