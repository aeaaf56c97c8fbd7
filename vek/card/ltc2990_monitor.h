#ifndef VEK_CARD_LTC2990_MONITOR_H
#define VEK_CARD_LTC2990_MONITOR_H

#include <array>
#include <cstdint>

#include "card/card_clock.h"
#include "card/conversion_sequence.h"
#include "card/ltc299x_inputs.h"
#include "card/register_pointer_device.h"
#include "drivers/ltc2990.h"

namespace vek
{

/// An LTC2990 (drivers/ltc2990.h) after power-on. A trigger begins anew with the mode in the control register, which
/// has no effect until then. Nowhere is a diode connected: a remote temperature comes with the mark of an open sensor.
class Ltc2990Monitor final : public RegisterPointerDevice
{
public:
    using Inputs = Ltc299xInputs<4>;

    /// The clock has to live as long as the monitor.
    constexpr Ltc2990Monitor(const CardClock& clock, const Inputs& inputs)
        : RegisterPointerDevice(0x0f), clock_(clock), inputs_(inputs)
    {
    }

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visitPointer(visit);
        visit(sequence_, control_, runningControl_, data_);
        visit.check(sequence_.storesWithin(0, ltc2990::kSlots));
    }

protected:
    void beginTransfer() override;
    std::uint8_t readRegister(std::uint8_t index) override;
    void writeRegister(std::uint8_t index, std::uint8_t value) override;

private:
    void trigger();
    void addPair(ltc2990::Slot first, bool wanted, bool all);
    std::uint16_t convert(std::uint8_t slot) const;
    std::uint8_t status() const;

    const CardClock& clock_;
    Inputs inputs_;
    ConversionSequence sequence_;
    std::uint8_t control_ = 0;
    std::uint8_t runningControl_ = 0;  ///< As it was at the trigger.
    std::array<std::uint16_t, ltc2990::kSlots> data_{};
};

}  // namespace vek

#endif
