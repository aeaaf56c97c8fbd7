#ifndef VEK_I2C_BUS_H
#define VEK_I2C_BUS_H

#include <cstddef>
#include <cstdint>
#include <span>

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

    /// Writes bytes up to the first one that is not acknowledged. Returns what became of the last one written.
    virtual I2cStep writeAll(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            const I2cStep step = write(byte);
            if (step != I2cStep::kDone) {
                return step;
            }
        }
        return I2cStep::kDone;
    }

    /// Reads bytes and acknowledges all but the last. Returns the first step that is not done; the bytes from there on
    /// have no meaning then.
    virtual I2cStep readAll(std::span<std::uint8_t> bytes)
    {
        for (std::size_t index = 0; index < bytes.size(); ++index) {
            const auto [step, value] = read(index + 1 < bytes.size());
            if (step != I2cStep::kDone) {
                return step;
            }
            bytes[index] = value;
        }
        return I2cStep::kDone;
    }

protected:
    ~I2cBus() = default;
};

}  // namespace vek

#endif
