#ifndef VEK_CARD_INFO_UNIT_H
#define VEK_CARD_INFO_UNIT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "address_space.h"
#include "card/chip_facts.h"
#include "card/clock_unit.h"
#include "drivers/info_unit.h"

namespace vek
{

/// The information unit of a card as its register file says (drivers/info_unit.h).
class InfoUnit final : public AddressSpace
{
public:
    /// `clocks` has to live as long as the unit. The firmware has started the display whose EDID this is, empty when
    /// there is none, in the mode that it prefers.
    constexpr InfoUnit(const ChipFacts& chip, const ClockUnit& clocks, std::span<const std::uint8_t> firstEdid)
        : clocks_(clocks),
          memoryBusBits_(chip.memoryBusBits),
          memoryMebibytes_(static_cast<std::uint32_t>(chip.videoMemorySize / kMiB)),
          gopVersion_(info_unit::kGopStarted | std::uint32_t{chip.gop.major} << info_unit::kGopMajorShift |
                      chip.gop.minor),
          gopMode_(preferredMode(firstEdid))
    {
        const std::span<const UnitId> masters = std::span(chip.axiMonitor.masters).first(chip.axiMonitor.masterCount);
        for (const UnitId& master : masters) {
            if (master.kind == ChipUnit::k3d || master.kind == ChipUnit::k2d || master.kind == ChipUnit::kVpu) {
                cores_[coreCount_++] = master;
            }
        }
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(gopVersion_, gopMode_);
    }

private:
    /// Active pixels and lines of the first detailed timing (VESA E-EDID 1.4, section 3.10.2), as the mode register
    /// holds them; those that every display knows when there is no such timing.
    static constexpr std::uint32_t preferredMode(std::span<const std::uint8_t> edid)
    {
        constexpr std::size_t kFirstTiming = 54;
        constexpr std::size_t kBaseBlock = 128;
        constexpr std::uint32_t kWidth = 640;
        constexpr std::uint32_t kHeight = 480;
        if (edid.size() < kBaseBlock) {
            return kWidth | kHeight << info_unit::kGopHeightShift;
        }
        const auto timing = edid.subspan(kFirstTiming);
        const std::uint32_t width = timing[2] | (timing[4] & 0xf0U) << 4;
        const std::uint32_t height = timing[5] | (timing[7] & 0xf0U) << 4;
        return width | height << info_unit::kGopHeightShift;
    }

    std::uint32_t loadOf(const UnitId& core) const;
    std::uint32_t coreRegister(std::uint64_t offset) const;

    const ClockUnit& clocks_;
    std::uint32_t memoryBusBits_;
    std::uint32_t memoryMebibytes_;
    std::uint32_t gopVersion_;
    std::uint32_t gopMode_;
    std::size_t coreCount_ = 0;
    std::array<UnitId, info_unit::kMaxCores> cores_{};
};

}  // namespace vek

#endif
