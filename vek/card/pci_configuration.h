#ifndef VEK_CARD_PCI_CONFIGURATION_H
#define VEK_CARD_PCI_CONFIGURATION_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "card/chip_facts.h"

namespace vek
{

/// One double word of configuration space and what a write does to its bits. Bits in neither mask are read-only.
struct PciRegister {
    std::uint16_t offset;
    std::uint32_t value;            ///< Present value; at first as firmware and driver leave it.
    std::uint32_t writable;         ///< Bits that take what is written.
    std::uint32_t writeOneToClear;  ///< Bits that a written 1 clears and a written 0 leaves.
};

/// Id of the chips' maker.
constexpr std::uint32_t kPciVendorId = 0x6e5a;

/// Class code: display controller, VGA-compatible.
constexpr std::uint32_t kPciClassCode = 0x030000;

/// Errors that the function can report, as Advanced Error Reporting numbers them.
constexpr std::uint32_t kUncorrectableErrors = 0x001f'f010;
constexpr std::uint32_t kCorrectableErrors = 0x0000'31c1;

/// The registers of a chip's configuration space by rising offset; what is not among them reads 0.
constexpr auto pciRegistersOf(const ChipFacts& chip)
{
    constexpr std::uint32_t kAllBits = 0xffff'ffff;
    constexpr auto kRegisterBarMask = static_cast<std::uint32_t>(~(kRegisterRegionSize - 1));
    constexpr std::uint32_t kVideoMemoryBarMask = 0xf000'0000;
    const std::uint32_t linkSpeedAndWidth = chip.linkSpeed | std::uint32_t{chip.linkWidth} << 4;

    return std::to_array<PciRegister>({
        // Type 0 header.
        {0x000, std::uint32_t{chip.deviceId} << 16 | kPciVendorId, 0, 0},
        // Status: capability list. Command: I/O space, memory space, bus master, parity, SERR#, INTx disable.
        {0x004, 0x0010'0007, 0x0000'0547, 0xf900'0000},
        {0x008, kPciClassCode << 8 | chip.revision, 0, 0},
        // Header type 0, one function; only the cache line size can be written.
        {0x00c, 0x0000'0010, 0x0000'00ff, 0},
        // BAR 0: register region, 32-bit, not prefetchable.
        {0x010, 0xf600'0000, kRegisterBarMask, 0},
        // BAR 2 and 3: a 256 MiB aperture onto video memory, 64-bit, prefetchable.
        {0x018, 0xe000'000c, kVideoMemoryBarMask, 0},
        {0x01c, 0x0000'0038, kAllBits, 0},
        {0x02c, std::uint32_t{chip.subsystemId} << 16 | kPciVendorId, 0, 0},
        // Expansion ROM: 128 KiB, switched off.
        {0x030, 0xf700'0000, 0xfffe'0001, 0},
        {0x034, 0x0000'0040, 0, 0},
        // Pin INTA#; the line is a scratch register of the system's.
        {0x03c, 0x0000'010b, 0x0000'00ff, 0},

        // Power management, version 3: PME# from D0 and D3hot, neither D1 nor D2, no reset on the way back to D0.
        {0x040, 0x4803'5001, 0, 0},
        {0x044, 0x0000'0008, 0x0000'0103, 0x0000'8000},

        // MSI: one message, 64-bit address.
        {0x050, 0x0080'7005, 0x0071'0000, 0},
        {0x054, 0, 0xffff'fffc, 0},
        {0x058, 0, kAllBits, 0},
        {0x05c, 0, 0x0000'ffff, 0},

        // PCI Express, version 2: endpoint.
        {0x070, 0x0002'0010, 0, 0},
        // Device: payloads up to 256 bytes, extended tags, role-based error reporting.
        {0x074, 0x0000'8fe1, 0, 0},
        // Status: a correctable error and an unsupported request remain from the enumeration of the bus.
        {0x078, 0x0009'2810, 0x0000'79ff, 0x000f'0000},
        // Link: ASPM L0s and L1.
        {0x07c, 0x0042'dc00 | linkSpeedAndWidth, 0, 0},
        // Status: common slot clock.
        {0x080, (0x1000 | linkSpeedAndWidth) << 16 | 0x0040, 0x0000'00cb, 0},
        // Device 2: every completion time-out range.
        {0x094, 0x0000'001f, 0, 0},
        {0x098, 0, 0x0000'001f, 0},
        // Link 2: all speeds up to the highest; equalisation complete in all phases.
        {0x09c, ((1U << chip.linkSpeed) - 1) << 1, 0, 0},
        {0x0a0, 0x001e'0000U | chip.linkSpeed, 0x0000'ffbf, 0x0020'0000},

        // Advanced Error Reporting, version 2, the only extended capability. The errors of the enumeration again.
        {0x100, 0x0002'0001, 0, 0},
        {0x104, 0x0010'0000, 0, kUncorrectableErrors},
        {0x108, 0, kUncorrectableErrors, 0},
        {0x10c, 0x0006'2010, kUncorrectableErrors, 0},
        {0x110, 0x0000'2000, 0, kCorrectableErrors},
        {0x114, 0x0000'2000, kCorrectableErrors, 0},
        // ECRC generation and checking can be switched on; first error: the unsupported request, bit 20.
        {0x118, 0x0000'00b4, 0x0000'0140, 0},
        // Header log: the configuration read that was not supported.
        {0x11c, 0x0400'0001, 0, 0},
        {0x120, 0x0000'000f, 0, 0},
        {0x124, 0x0101'0000, 0, 0},
        {0x128, 0, 0, 0},
    });
}

/// The 4096 bytes of PCI Express configuration space of the card's one function: a type 0 header (PCI Local Bus 3.0,
/// 6.1), power management (PCI Power Management 1.2), MSI, PCI Express and Advanced Error Reporting capabilities
/// (PCI Express Base 3.0, 7.8 and 7.10). Accesses are aligned longs; others, and those past
/// the end, answer VEK_BAD_ARGUMENT.
class PciConfiguration final : public AddressSpace
{
public:
    constexpr explicit PciConfiguration(const ChipFacts& chip) : registers_(pciRegistersOf(chip)) {}

    ReadResult read(std::uint64_t offset, unsigned width) override;
    int write(std::uint64_t offset, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        for (PciRegister& each : registers_) {
            visit(each.value);
        }
    }

private:
    PciRegister* find(std::uint64_t offset);

    decltype(pciRegistersOf(kQz201)) registers_;
};

}  // namespace vek

#endif
