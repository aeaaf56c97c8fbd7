/// A stand-in for the device-access library that answers whatever the input says, within the contract of its buffers:
/// any result, outputs filled or left alone whatever the result is, lengths that are lies, texts without an end inside
/// their buffer, and no text at all. It reads every buffer that it is given from end to end.
#ifndef FUZZ_HOSTILE_VEK_H
#define FUZZ_HOSTILE_VEK_H

#include <cstdint>
#include <span>

namespace fuzz
{

/// Draws the answers of all calls from these bytes from now on: first the access mode and the device id, then for each
/// call a result and its outputs. The bytes have to stay until the last call.
void answerFrom(std::span<const std::uint8_t> answers);

}  // namespace fuzz

#endif
