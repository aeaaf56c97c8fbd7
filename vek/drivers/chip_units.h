#ifndef VEK_DRIVERS_CHIP_UNITS_H
#define VEK_DRIVERS_CHIP_UNITS_H

#include <cstdint>

namespace vek
{

/// The kinds of units that masters of the AXI interconnect belong to, as registers number them.
enum class ChipUnit : std::uint8_t { kNone, kHost, k3d, k2d, kVpu, kDisplay, kDma, kMcu };

/// One unit of a chip.
struct UnitId {
    ChipUnit kind;
    std::uint8_t instance;  ///< Which of the units of its kind, from 0.

    bool operator==(const UnitId&) const = default;
};

/// A unit as registers hold it: the kind in bits 7:0, the instance in bits 15:8. 0 stands for none.
constexpr std::uint32_t encodeUnit(const UnitId& unit)
{
    constexpr unsigned kInstanceShift = 8;
    return static_cast<std::uint32_t>(unit.kind) | static_cast<std::uint32_t>(unit.instance) << kInstanceShift;
}

constexpr UnitId decodeUnit(std::uint32_t encoded)
{
    constexpr unsigned kInstanceShift = 8;
    return {.kind = static_cast<ChipUnit>(encoded & 0xff),
            .instance = static_cast<std::uint8_t>(encoded >> kInstanceShift & 0xff)};
}

/// The name of a kind, for reports and data files: no blank or comma in it.
constexpr const char* unitName(ChipUnit kind)
{
    switch (kind) {
        case ChipUnit::kHost:
            return "host";
        case ChipUnit::k3d:
            return "3d";
        case ChipUnit::k2d:
            return "2d";
        case ChipUnit::kVpu:
            return "vpu";
        case ChipUnit::kDisplay:
            return "display";
        case ChipUnit::kDma:
            return "dma";
        case ChipUnit::kMcu:
            return "mcu";
        case ChipUnit::kNone:
            break;
    }
    return "unknown";
}

}  // namespace vek

#endif
