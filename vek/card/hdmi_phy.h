#ifndef VEK_CARD_HDMI_PHY_H
#define VEK_CARD_HDMI_PHY_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/hdmi_phy.h"

namespace vek
{

/// A register of the PHY that does not come up as 0.
struct HdmiPhyReset {
    std::uint64_t address;
    std::uint16_t value;
};

/// What a reset leaves in the configuration registers; all others hold 0: the PHY is set for 148.5 MHz.
constexpr auto kHdmiPhyResets = std::to_array<HdmiPhyReset>({
    {0x00c, 0x0003},  // clock input: buffer and divider on
    {0x010, 0x0154},  // PLL: feedback divider
    {0x014, 0x0002},  // PLL: output divider
    {0x018, 0x000a},  // PLL: charge pump
    {0x020, 0x3b4d},  // drive current of the data lanes
    {0x024, 0x0021},  // drive current of the clock lane
    {0x028, 0x0007},  // pre-emphasis and slew rate
    {0x02c, 0x0004},  // source termination
});

/// An HDMI PHY as its register file says (drivers/hdmi_phy.h). Configuration registers refuse a write while the
/// configuration is closed, read-only ones always, with VEK_PROTECTED. The PLL locks at once.
class HdmiPhy final : public AddressSpace
{
public:
    /// A PHY after its reset. `attached`: a sink is plugged in.
    constexpr explicit HdmiPhy(bool attached) : attached_(attached) { reset(); }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(registers_);
    }

private:
    static constexpr std::uint16_t kIdValue = 0x2812;

    constexpr void reset()
    {
        registers_.fill(0);
        for (const auto& [address, value] : kHdmiPhyResets) {
            at(address) = value;
        }
        at(hdmi_phy::kStatus0) = attached_ ? hdmi_phy::kStatus0HotPlug : 0;
        at(hdmi_phy::kId) = kIdValue;
    }

    constexpr std::uint16_t& at(std::uint64_t address) { return registers_[address / hdmi_phy::kRegisterStep]; }

    void writeControl(std::uint64_t value);

    bool attached_;
    std::array<std::uint16_t, hdmi_phy::kRegisterCount> registers_{};
};

}  // namespace vek

#endif
