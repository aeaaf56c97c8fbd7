#ifndef VEK_DRIVERS_AUX_TRANSFER_H
#define VEK_DRIVERS_AUX_TRANSFER_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "aux_channel.h"
#include "pause.h"

namespace vek
{

/// How often a request is sent again on which nothing came back, and on which the sink deferred. VESA DisplayPort 1.2,
/// section 2.7.1.5, asks for 3 and 7 times at least; an I2C device at 10 kHz takes 16 ms for the bytes of one request.
constexpr int kMaxAuxSilences = 3;
constexpr int kMaxAuxDefers = 32;
constexpr std::uint32_t kAuxRetryMicroseconds = 500;

/// The result of enum VekResult that an answer stands for.
int auxResult(AuxAnswer answer);

/// Moves bytes over an AUX channel in as many transactions as it takes. Results are those of enum VekResult:
/// VEK_NO_RESPONSE when the sink does not reply, VEK_TIMED_OUT when it defers for ever, VEK_IO_ERROR when it refuses a
/// request.
class AuxTransfer
{
public:
    /// Both have to live as long as the transfer.
    AuxTransfer(AuxChannel& channel, Pause& pause) : channel_(channel), pause_(pause) {}

    /// Reads consecutive DPCD fields; VEK_BAD_ARGUMENT when they do not lie within 20 bits of address. A reading that
    /// fails leaves in `bytes` what came before.
    int readDpcd(std::uint32_t address, std::span<std::uint8_t> bytes);

    /// Writes consecutive DPCD fields; VEK_BAD_ARGUMENT when they do not lie within 20 bits of address.
    int writeDpcd(std::uint32_t address, std::span<const std::uint8_t> bytes);

    /// Reads one DPCD field; `value` is touched on success only.
    int readDpcd(std::uint32_t address, std::uint8_t& value) { return readDpcd(address, std::span(&value, 1)); }

    /// Writes one DPCD field.
    int writeDpcd(std::uint32_t address, std::uint8_t value) { return writeDpcd(address, std::span(&value, 1)); }

    /// Sends a request, over and over while the sink is silent or defers; an I2C write that is under way is asked after
    /// instead. Returns the last reply, its length at most kMaxAuxBytes: kDefer or kI2cDefer, too, when an
    /// acknowledgement came time and again but no byte moved.
    AuxReply exchange(AuxRequest request);

    Pause& pause() { return pause_; }

private:
    AuxChannel& channel_;
    Pause& pause_;
};

}  // namespace vek

#endif
