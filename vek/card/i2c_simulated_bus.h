#ifndef VEK_CARD_I2C_SIMULATED_BUS_H
#define VEK_CARD_I2C_SIMULATED_BUS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "card/i2c_device.h"
#include "i2c_bus.h"

namespace vek
{

/// A device at its 7-bit address.
struct I2cSeat {
    std::uint8_t address;
    I2cDevice* device;
};

/// A bus with devices on it. The first of several at one address answers. Nothing holds the clock, so no step times
/// out.
class SimulatedI2cBus final : public I2cBus
{
public:
    /// The seats have to live as long as the bus.
    constexpr explicit SimulatedI2cBus(std::span<const I2cSeat> seats) : seats_(seats) {}

    I2cStep start() override;
    I2cStep write(std::uint8_t byte) override;
    I2cByte read(bool acknowledge) override;
    void stop() override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        std::uint8_t address = selectedAddress();
        visit(address);
        visit.upTo(phase_, Phase::kReading);
        selected_ = deviceAt(address);
        // A device that has been taken away since, or has died, does not hold the data line.
        if (selected_ == nullptr && phase_ >= Phase::kWriting) {
            phase_ = Phase::kIdle;
        }
    }

private:
    enum class Phase : std::uint8_t {
        kIdle,     ///< Free, or no device is selected: the data line stays high.
        kAddress,  ///< After a start condition.
        kWriting,
        kReading,
    };

    bool select(std::uint8_t addressByte);

    /// The address of the selected device, kNoAddress when there is none.
    std::uint8_t selectedAddress() const
    {
        for (const I2cSeat& seat : seats_) {
            if (seat.device == selected_) {
                return seat.address;
            }
        }
        return kNoAddress;
    }

    /// The device that answers at an address, null when none does.
    I2cDevice* deviceAt(std::uint8_t address) const
    {
        for (const I2cSeat& seat : seats_) {
            if (seat.address == address) {
                return seat.device;
            }
        }
        return nullptr;
    }

    static constexpr std::uint8_t kNoAddress = 0xff;

    std::span<const I2cSeat> seats_;
    I2cDevice* selected_ = nullptr;
    Phase phase_ = Phase::kIdle;
};

}  // namespace vek

#endif
