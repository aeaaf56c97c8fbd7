#ifndef VEK_DRIVERS_AUX_I2C_H
#define VEK_DRIVERS_AUX_I2C_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "drivers/aux_transfer.h"
#include "drivers/ddc_edid.h"
#include "drivers/i2c_transfer.h"

namespace vek
{

/// One I2C transaction over an AUX channel, from its first start condition to the stop condition, which the destructor
/// asks for whatever happened. Results as of AuxTransfer, and: VEK_NO_RESPONSE when an address was not acknowledged,
/// VEK_NO_ACK_DATA when a byte after it was not.
class AuxI2cTransaction
{
public:
    explicit AuxI2cTransaction(AuxTransfer& aux) : aux_(aux) {}
    ~AuxI2cTransaction();
    AuxI2cTransaction(const AuxI2cTransaction&) = delete;
    AuxI2cTransaction& operator=(const AuxI2cTransaction&) = delete;

    /// Addresses a device, up to kMaxI2cDevice, with a start condition, a repeated one within the transaction.
    int address(std::uint8_t device, I2cDirection direction);

    /// Writes a byte to the addressed device.
    int send(std::uint8_t byte);

    /// Reads bytes from the addressed device; a reading that fails leaves in `bytes` what came before.
    int receive(std::span<std::uint8_t> bytes);

private:
    AuxRequest request(std::size_t length, bool middleOfTransaction) const;

    AuxTransfer& aux_;
    std::uint8_t device_ = 0;
    I2cDirection direction_ = I2cDirection::kWrite;
};

/// Reads bytes of an I2C device of the sink from a sub-address of one byte upwards. A reading that fails leaves in
/// `bytes` what came before. Returns VEK_BAD_ARGUMENT for a device above kMaxI2cDevice, else as AuxI2cTransaction does.
int readAuxI2c(AuxTransfer& aux, std::uint32_t device, std::uint8_t subAddress, std::span<std::uint8_t> bytes);

/// The EDID memory of a sink.
class AuxEdidBlocks final : public EdidBlocks
{
public:
    explicit AuxEdidBlocks(AuxTransfer& aux) : aux_(aux) {}

    int readBlock(std::size_t number, std::span<std::uint8_t> block) override;

private:
    AuxTransfer& aux_;
};

}  // namespace vek

#endif
