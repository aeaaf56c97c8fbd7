#ifndef VEK_CARD_INA3221_MONITOR_H
#define VEK_CARD_INA3221_MONITOR_H

#include <array>
#include <cstdint>

#include "card/board_rails.h"
#include "card/card_clock.h"
#include "card/conversion_sequence.h"
#include "card/i2c_device.h"
#include "drivers/ina3221.h"

namespace vek
{

/// An INA3221 (drivers/ina3221.h) that was powered on when its clock was 0. Its alert pins lead nowhere: the registers
/// of the limits hold what is written, and no alert flag is ever set. A read goes on with the same register.
class Ina3221Monitor final : public I2cDevice
{
public:
    using Rails = std::array<MonitoredRail, ina3221::kChannels>;

    /// The clock has to live as long as the monitor.
    constexpr Ina3221Monitor(const CardClock& clock, const Rails& rails) : clock_(clock), rails_(rails) {}

    bool addressed(bool forReading) override;
    bool receive(std::uint8_t byte) override;
    std::uint8_t send() override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        visit(sequence_, registers_, poweredOn_, pointer_, received_, high_, lowNext_, sending_);
        visit.check(sequence_.storesWithin(kFirstResult, kFirstResult + kResults));
    }

private:
    static constexpr std::uint8_t kRegisters = ina3221::kPowerValidLower + 1;
    static constexpr std::uint8_t kFirstResult = ina3221::kShunt1;
    static constexpr std::uint8_t kResults = 2 * ina3221::kChannels;

    /// What the registers hold after power-on (SBOS576B, table 3), by their index.
    static constexpr std::array<std::uint16_t, kRegisters> kPowerOn{ina3221::kConfigurationDefault,
                                                                    0,
                                                                    0,
                                                                    0,
                                                                    0,
                                                                    0,
                                                                    0,  // no results yet
                                                                    0x7ff8,
                                                                    0x7ff8,
                                                                    0x7ff8,
                                                                    0x7ff8,
                                                                    0x7ff8,
                                                                    0x7ff8,  // limits of the shunt voltages
                                                                    0,
                                                                    0x7ffe,
                                                                    0x0002,  // sum, its limit, mask and enable
                                                                    0x2710,
                                                                    0x2328};  // power valid: 10 V and 9 V

    static bool isResult(std::uint8_t index) { return index >= kFirstResult && index < kFirstResult + kResults; }
    void startConversions(std::uint64_t now);
    std::uint16_t convert(std::uint8_t result) const;
    void catchUp();
    std::uint16_t readRegister();
    void writeRegister(std::uint16_t value);

    const CardClock& clock_;
    Rails rails_;
    ConversionSequence sequence_;
    std::array<std::uint16_t, kRegisters> registers_{kPowerOn};
    bool poweredOn_ = false;

    // The transfer that is under way.
    std::uint8_t pointer_ = 0;
    std::uint8_t received_ = 0;  ///< Bytes of a write: the pointer, the high byte.
    std::uint8_t high_ = 0;
    bool lowNext_ = false;
    std::uint16_t sending_ = 0;
};

}  // namespace vek

#endif
