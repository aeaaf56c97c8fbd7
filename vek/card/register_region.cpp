#include "card/register_region.h"

#include "vek.h"

namespace vek
{
namespace
{

constexpr unsigned kByteBits = 8;
constexpr std::uint64_t kByteMask = 0xff;

}  // namespace

const AddressWindow* RegisterRegion::deviceTouchedBy(std::uint64_t address, unsigned width) const
{
    for (const AddressWindow& device : devices_) {
        if (device.touches(address, width)) {
            return &device;
        }
    }
    return nullptr;
}

/// Lets the accesses that follow go straight to the storage between the devices on both sides of an address.
void RegisterRegion::exposeStorageAround(std::uint64_t address)
{
    std::uint64_t first = 0;
    std::uint64_t end = kRegisterRegionSize;
    for (const AddressWindow& device : devices_) {
        if (device.base > address) {
            end = device.base;
            break;
        }
        first = device.end();
    }
    setPlainMemory(storage_.plainMemory().between(first, end));
}

ReadResult RegisterRegion::readBytes(std::uint64_t address, unsigned width)
{
    ReadResult whole{VEK_OK, 0};
    for (unsigned i = 0; i < width; ++i) {
        const auto [result, byte] = read(address + i, 1);
        if (result != VEK_OK) {
            whole.result = result;
        }
        whole.value |= (byte & kByteMask) << (kByteBits * i);
    }
    return whole;
}

int RegisterRegion::writeBytes(std::uint64_t address, unsigned width, std::uint64_t value)
{
    int whole = VEK_OK;
    for (unsigned i = 0; i < width; ++i) {
        const int result = write(address + i, 1, (value >> (kByteBits * i)) & kByteMask);
        if (result != VEK_OK) {
            whole = result;
        }
    }
    return whole;
}

ReadResult RegisterRegion::read(std::uint64_t address, unsigned width)
{
    // Beyond the end an address plus its width may wrap.
    const AddressWindow* device = address < kRegisterRegionSize ? deviceTouchedBy(address, width) : nullptr;
    if (device == nullptr) {
        const ReadResult stored = storage_.read(address, width);
        exposeStorageAround(address);
        return stored;
    }
    return device->holds(address, width) ? device->target->read(address - device->base, width)
                                         : readBytes(address, width);
}

int RegisterRegion::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    const AddressWindow* device = address < kRegisterRegionSize ? deviceTouchedBy(address, width) : nullptr;
    if (device == nullptr) {
        const int result = storage_.write(address, width, value);
        exposeStorageAround(address);
        return result;
    }
    return device->holds(address, width) ? device->target->write(address - device->base, width, value)
                                         : writeBytes(address, width, value);
}

}  // namespace vek
