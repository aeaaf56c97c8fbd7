#ifndef VEK_CARD_STUCK_BIT_H
#define VEK_CARD_STUCK_BIT_H

#include <cstdint>
#include <span>

namespace vek
{

/// A memory of the card in which a bit may be stuck.
enum class StuckMemory : std::uint8_t { kRegisters, kVideoMemory, kFlash };

/// A bit that reads as the same value whatever is written.
struct StuckBit {
    StuckMemory memory = StuckMemory::kRegisters;
    std::uint64_t address = 0;  ///< Of its byte.
    std::uint8_t bit = 0;       ///< 0 to 7.
    bool value = false;

    constexpr std::uint8_t mask() const { return static_cast<std::uint8_t>(1U << bit); }

    /// What the byte reads as that holds `byte`.
    constexpr std::uint8_t applied(std::uint8_t byte) const
    {
        return static_cast<std::uint8_t>(value ? byte | mask() : byte & ~mask());
    }

    constexpr bool operator==(const StuckBit&) const = default;
};

using StuckBits = std::span<const StuckBit>;

}  // namespace vek

#endif
