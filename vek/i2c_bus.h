#ifndef VEK_I2C_BUS_H
#define VEK_I2C_BUS_H

#include <cstdint>

namespace vek
{

/// What became of one step on a bus.
enum class I2cStep {
    kDone,             ///< Done; a byte that was written was acknowledged.
    kNotAcknowledged,  ///< Nobody pulled the data line low at the ninth clock of a byte that was written.
    kTimedOut,         ///< Some device held the clock low for longer than the master waits, or the data line is stuck.
};

/// A byte read from a bus. The value has a meaning with I2cStep::kDone only.
struct I2cByte {
    I2cStep step;
    std::uint8_t value;
};

/// An I2C bus as its only master drives it (NXP UM10204, section 3.1).
class I2cBus
{
public:
    /// Sends a start condition, a repeated one when the bus is not free. An address byte has to follow.
    virtual I2cStep start() = 0;

    /// Writes a byte: after a start the address, 7 bits and the direction, else data.
    virtual I2cStep write(std::uint8_t byte) = 0;

    /// Reads a byte and acknowledges it, which asks for another one, or not, which makes the sender let go of the bus.
    virtual I2cByte read(bool acknowledge) = 0;

    /// Sends a stop condition: the bus is free afterwards.
    virtual void stop() = 0;

protected:
    ~I2cBus() = default;
};

}  // namespace vek

#endif
