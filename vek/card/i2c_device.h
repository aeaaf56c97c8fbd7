#ifndef VEK_CARD_I2C_DEVICE_H
#define VEK_CARD_I2C_DEVICE_H

#include <cstdint>

namespace vek
{

/// A device on a simulated I2C bus, as its pins see the bus. start() and stop() reach every device, the others the
/// addressed one only.
class I2cDevice
{
public:
    /// A start condition, or a repeated one.
    virtual void start() {}

    /// The device's own address with the direction. Returns whether the device acknowledges it.
    virtual bool addressed(bool forReading) = 0;

    /// A byte from the master. Returns whether the device acknowledges it.
    virtual bool receive(std::uint8_t byte) = 0;

    /// The next byte for the master.
    virtual std::uint8_t send() = 0;

    /// A stop condition.
    virtual void stop() {}

protected:
    ~I2cDevice() = default;
};

}  // namespace vek

#endif
