#ifndef VEK_AUX_CHANNEL_H
#define VEK_AUX_CHANNEL_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace vek
{

/// Most bytes that one AUX transaction carries.
constexpr std::size_t kMaxAuxBytes = 16;

/// First address beyond those of an AUX transaction, which have 20 bits.
constexpr std::uint32_t kAuxAddressEnd = 0x10'0000;

/// The request codes of VESA DisplayPort 1.2, section 2.7.1; those of I2C without the MOT bit.
enum class AuxCommand : std::uint8_t {
    kI2cWrite = 0x0,
    kI2cRead = 0x1,
    kI2cWriteStatusUpdate = 0x2,  ///< Asks how far a write has come that was deferred or acknowledged in part.
    kNativeWrite = 0x8,
    kNativeRead = 0x9,
};

/// One request of a DisplayPort source.
struct AuxRequest {
    AuxCommand command;
    /// I2C commands only: the MOT bit. The I2C transaction goes on after this request, so no stop condition follows it.
    bool middleOfTransaction = false;
    std::uint32_t address = 0;  ///< 20 bits: a DPCD address, or the 7-bit address of an I2C device.
    std::uint8_t length = 0;  ///< Bytes to move, up to kMaxAuxBytes; 0 in an address-only request (I2C commands only).
    std::array<std::uint8_t, kMaxAuxBytes> data{};  ///< What a write sends.
};

/// What came back on a request: the reply codes of VESA DisplayPort 1.2, section 2.7.1, nothing, or not even that.
enum class AuxAnswer : std::uint8_t {
    kAck,
    kNack,
    kDefer,
    kI2cNack,   ///< The AUX transaction went well, but the I2C device did not acknowledge.
    kI2cDefer,  ///< The AUX transaction went well, but the I2C transfer is not done.
    kNone,      ///< The reply time-out passed.
    kFailed,    ///< The way to the channel failed: the request may have been sent or not.
};

/// The reply of a DisplayPort sink.
struct AuxReply {
    AuxAnswer answer = AuxAnswer::kNone;
    /// Bytes in `data`. With an acknowledged read: those that were read, perhaps fewer than asked for. With a write
    /// that was not acknowledged, or acknowledged in part: 1, the number of bytes that were written.
    std::uint8_t length = 0;
    std::array<std::uint8_t, kMaxAuxBytes> data{};
};

/// The AUX channel of a DisplayPort output, which carries one transaction at a time: a request and its reply.
class AuxChannel
{
public:
    virtual AuxReply transact(const AuxRequest& request) = 0;

protected:
    constexpr AuxChannel() = default;
    ~AuxChannel() = default;
};

}  // namespace vek

#endif
