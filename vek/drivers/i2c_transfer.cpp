#include "drivers/i2c_transfer.h"

#include <algorithm>
#include <array>

#include "vek.h"

namespace vek
{
namespace
{

bool transferable(std::uint32_t device, std::uint32_t subAddress, std::size_t count)
{
    return device <= kMaxI2cDevice && subAddress <= kMaxI2cSubAddress && count <= kMaxI2cTransfer;
}

/// Addresses a device for writing and sends the sub-address.
int select(I2cTransaction& transaction, std::uint32_t device, std::uint32_t subAddress)
{
    const int result = transaction.reach(static_cast<std::uint8_t>(device), I2cDirection::kWrite);
    if (result != VEK_OK) {
        return result;
    }
    const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(subAddress >> 8),
                                            static_cast<std::uint8_t>(subAddress)};
    return transaction.send(std::span(bytes).last(subAddress > 0xff ? 2 : 1));
}

}  // namespace

int I2cTransaction::address(std::uint8_t device, I2cDirection direction)
{
    I2cStep step = bus_.start();
    if (step == I2cStep::kDone) {
        step = bus_.write(static_cast<std::uint8_t>(device << 1 | static_cast<unsigned>(direction)));
    }
    switch (step) {
        case I2cStep::kDone:
            return VEK_OK;
        case I2cStep::kNotAcknowledged:
            return VEK_NO_RESPONSE;
        default:
            return VEK_TIMED_OUT;
    }
}

int I2cTransaction::reach(std::uint8_t device, I2cDirection direction)
{
    int result = address(device, direction);
    for (int tries = 1; result == VEK_NO_RESPONSE && tries < kMaxI2cTries; ++tries) {
        bus_.stop();
        result = address(device, direction);
    }
    return result;
}

int I2cTransaction::send(std::span<const std::uint8_t> bytes)
{
    switch (bus_.writeAll(bytes)) {
        case I2cStep::kDone:
            return VEK_OK;
        case I2cStep::kNotAcknowledged:
            return VEK_NO_ACK_DATA;
        default:
            return VEK_TIMED_OUT;
    }
}

int I2cTransaction::receive(std::span<std::uint8_t> bytes)
{
    return bus_.readAll(bytes) == I2cStep::kDone ? VEK_OK : VEK_TIMED_OUT;
}

int readI2c(I2cBus& bus, std::uint32_t device, std::uint32_t subAddress, std::span<std::uint8_t> data)
{
    if (!transferable(device, subAddress, data.size())) {
        return VEK_BAD_ARGUMENT;
    }
    I2cTransaction transaction(bus);
    int result = select(transaction, device, subAddress);
    if (result != VEK_OK || data.empty()) {
        return result;
    }
    result = transaction.address(static_cast<std::uint8_t>(device), I2cDirection::kRead);
    if (result != VEK_OK) {
        return result;
    }
    // A transfer that breaks off must not leave half of its bytes with the caller.
    std::array<std::uint8_t, kMaxI2cTransfer> received;
    const auto bytes = std::span(received).first(data.size());
    result = transaction.receive(bytes);
    if (result == VEK_OK) {
        std::copy(bytes.begin(), bytes.end(), data.begin());
    }
    return result;
}

int writeI2c(I2cBus& bus, std::uint32_t device, std::uint32_t subAddress, std::span<const std::uint8_t> data)
{
    if (!transferable(device, subAddress, data.size())) {
        return VEK_BAD_ARGUMENT;
    }
    I2cTransaction transaction(bus);
    const int result = select(transaction, device, subAddress);
    return result == VEK_OK ? transaction.send(data) : result;
}

int freeI2cBus(I2cBus& bus)
{
    const I2cStep step = bus.read(false).step;
    bus.stop();
    return step == I2cStep::kDone ? VEK_OK : VEK_TIMED_OUT;
}

}  // namespace vek
