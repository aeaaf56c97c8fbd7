#include "card/i2c_simulated_bus.h"

namespace vek
{

I2cStep SimulatedI2cBus::start()
{
    phase_ = Phase::kAddress;
    for (const I2cSeat& seat : seats_) {
        seat.device->start();
    }
    return I2cStep::kDone;
}

bool SimulatedI2cBus::select(std::uint8_t addressByte)
{
    const bool forReading = (addressByte & 1) != 0;
    phase_ = Phase::kIdle;
    I2cDevice* const device = deviceAt(addressByte >> 1);
    if (device == nullptr || !device->addressed(forReading)) {
        return false;
    }
    selected_ = device;
    phase_ = forReading ? Phase::kReading : Phase::kWriting;
    return true;
}

I2cStep SimulatedI2cBus::write(std::uint8_t byte)
{
    bool acknowledged = false;
    if (phase_ == Phase::kAddress) {
        acknowledged = select(byte);
    } else if (phase_ == Phase::kWriting) {
        acknowledged = selected_->receive(byte);
    }
    return acknowledged ? I2cStep::kDone : I2cStep::kNotAcknowledged;
}

I2cByte SimulatedI2cBus::read(bool acknowledge)
{
    constexpr std::uint8_t kReleasedLine = 0xff;
    if (phase_ != Phase::kReading) {
        return {I2cStep::kDone, kReleasedLine};
    }
    if (!acknowledge) {
        phase_ = Phase::kIdle;
    }
    return {I2cStep::kDone, selected_->send()};
}

void SimulatedI2cBus::stop()
{
    phase_ = Phase::kIdle;
    for (const I2cSeat& seat : seats_) {
        seat.device->stop();
    }
}

}  // namespace vek
