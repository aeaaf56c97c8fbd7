#ifndef VEK_CARD_EDP_BACKLIGHT_H
#define VEK_CARD_EDP_BACKLIGHT_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "drivers/edp_panel.h"

namespace vek
{

/// The backlight controller of an eDP panel as its registers say (drivers/edp_panel.h). Read-only registers refuse a
/// write with VEK_PROTECTED. It comes up with its PWM off; 1 kHz and full brightness are wanted.
class EdpBacklight final : public AddressSpace
{
public:
    constexpr EdpBacklight()
    {
        at(edp_backlight::kId) = kIdValue;
        at(edp_backlight::kFrequencyWanted) = kFirstFrequency;
        at(edp_backlight::kBrightnessWanted) = EdpBacklightDriver::kMaxPercent;
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(registers_);
    }

private:
    static constexpr std::uint32_t kIdValue = 0xb127'0001;
    static constexpr std::uint32_t kFirstFrequency = 1000;

    constexpr std::uint32_t& at(std::uint64_t address) { return registers_[address / edp_backlight::kRegisterStep]; }
    void writeControl(std::uint32_t value);

    std::array<std::uint32_t, edp_backlight::kRegisterCount> registers_{};
};

}  // namespace vek

#endif
