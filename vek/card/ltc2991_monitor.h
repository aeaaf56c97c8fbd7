#ifndef VEK_CARD_LTC2991_MONITOR_H
#define VEK_CARD_LTC2991_MONITOR_H

#include <array>
#include <cstdint>

#include "card/card_clock.h"
#include "card/conversion_sequence.h"
#include "card/ltc299x_inputs.h"
#include "card/register_pointer_device.h"
#include "drivers/ltc2991.h"

namespace vek
{

/// An LTC2991 (drivers/ltc2991.h) after power-on. A write of the channel register begins anew with the settings of that
/// moment, and stops when no channel is in it. Nowhere is a diode connected: a remote temperature comes with the mark
/// of an open sensor. Nothing is behind the filters and the PWM output; their registers hold what is written.
class Ltc2991Monitor final : public RegisterPointerDevice
{
public:
    using Inputs = Ltc299xInputs<ltc2991::kInputs>;

    /// The clock has to live as long as the monitor.
    constexpr Ltc2991Monitor(const CardClock& clock, const Inputs& inputs)
        : RegisterPointerDevice(0x1f), clock_(clock), inputs_(inputs)
    {
    }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visitPointer(visit);
        visit(sequence_, enabled_, settings_, runningSettings_, data_);
        visit.check(sequence_.storesWithin(0, ltc2991::kSlots));
    }

protected:
    void beginTransfer() override;
    std::uint8_t readRegister(std::uint8_t index) override;
    void writeRegister(std::uint8_t index, std::uint8_t value) override;

private:
    /// The registers of the settings, from kControlV1ToV4 to kPwmThreshold.
    using Settings = std::array<std::uint8_t, 4>;

    static std::uint8_t& setting(Settings& settings, std::uint8_t index)
    {
        return settings[index - ltc2991::kControlV1ToV4];
    }

    void trigger();
    std::uint8_t pairControl(unsigned pair) const;
    std::uint16_t convert(std::uint8_t slot) const;
    std::uint16_t convertInput(unsigned input) const;
    std::uint8_t readyBits(unsigned firstSlot, unsigned count) const;
    std::uint8_t channels() const;
    std::uint8_t readData(std::uint8_t index);

    const CardClock& clock_;
    Inputs inputs_;
    ConversionSequence sequence_;
    std::uint8_t enabled_ = 0;
    Settings settings_{};
    Settings runningSettings_{};  ///< As they were at the trigger.
    std::array<std::uint16_t, ltc2991::kSlots> data_{};
};

}  // namespace vek

#endif
