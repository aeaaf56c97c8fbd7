#ifndef VEK_DRIVERS_I2C_TRANSFER_H
#define VEK_DRIVERS_I2C_TRANSFER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "i2c_bus.h"

namespace vek
{

/// The direction of the bytes that follow an address: the lowest bit of the address byte.
enum class I2cDirection : std::uint8_t { kWrite = 0, kRead = 1 };

/// Highest 7-bit address.
constexpr std::uint32_t kMaxI2cDevice = 0x7f;

/// Highest sub-address: two bytes.
constexpr std::uint32_t kMaxI2cSubAddress = 0xffff;

/// Most bytes in one transfer: as many as two bytes of sub-address reach.
constexpr std::size_t kMaxI2cTransfer = 0x10000;

/// How often an address is tried that nobody acknowledges. A serial EEPROM does not during its write cycle, of 10 ms at
/// most; at 100 kHz one try takes 0.11 ms.
constexpr int kMaxI2cTries = 100;

/// One transaction on a bus, from its first start condition to the stop condition, which the destructor sends whatever
/// happened. Results are those of enum VekResult: VEK_NO_RESPONSE when an address was not acknowledged, VEK_NO_ACK_DATA
/// when a byte after it was not, VEK_TIMED_OUT.
class I2cTransaction
{
public:
    explicit I2cTransaction(I2cBus& bus) : bus_(bus) {}
    ~I2cTransaction() { bus_.stop(); }
    I2cTransaction(const I2cTransaction&) = delete;
    I2cTransaction& operator=(const I2cTransaction&) = delete;

    /// Addresses a device with a start condition, a repeated one within the transaction.
    int address(std::uint8_t device, I2cDirection direction);

    /// Addresses a device at the beginning of the transaction, over and over while it is busy.
    int reach(std::uint8_t device, I2cDirection direction);

    /// Writes bytes to the addressed device.
    int send(std::span<const std::uint8_t> bytes);

    /// Reads bytes, at least one, from the addressed device; all but the last are acknowledged.
    int receive(std::span<std::uint8_t> bytes);

private:
    I2cBus& bus_;
};

/// Reads consecutive bytes from a sub-address of a device: the sub-address is written, as one byte up to 0xff and as
/// two, the high byte first, above; then the bytes are read after a repeated start. With no bytes asked for the
/// sub-address is written all the same. `data` is touched on success only.
/// Returns VEK_BAD_ARGUMENT for a number above its limit, else what I2cTransaction does.
int readI2c(I2cBus& bus, std::uint32_t device, std::uint32_t subAddress, std::span<std::uint8_t> data);

/// Writes bytes to a sub-address of a device in one transaction. Arguments and results as in readI2c().
int writeI2c(I2cBus& bus, std::uint32_t device, std::uint32_t subAddress, std::span<const std::uint8_t> data);

/// Frees a bus on which a transfer was broken off: nine clocks, during which a device that still sends finds its byte
/// not acknowledged and lets go, then a stop condition (UM10204, section 3.1.16).
int freeI2cBus(I2cBus& bus);

}  // namespace vek

#endif
