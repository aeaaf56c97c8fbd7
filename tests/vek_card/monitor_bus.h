#ifndef TESTS_VEK_CARD_MONITOR_BUS_H
#define TESTS_VEK_CARD_MONITOR_BUS_H

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "card/i2c_device.h"
#include "card/i2c_simulated_bus.h"
#include "drivers/i2c_transfer.h"
#include "vek.h"

/// A bus with one device, as tests of the power monitors talk to it.
class MonitorBus
{
public:
    MonitorBus(std::uint8_t address, vek::I2cDevice& device) : seats{{{address, &device}}} {}

    std::vector<std::uint8_t> read(std::uint8_t index, std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count, 0xee);
        EXPECT_EQ(vek::readI2c(bus, seats[0].address, index, bytes), VEK_OK);
        return bytes;
    }

    std::uint8_t byte(std::uint8_t index) { return read(index, 1).front(); }

    std::uint16_t word(std::uint8_t index)
    {
        const std::vector<std::uint8_t> bytes = read(index, 2);
        return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    }

    void write(std::uint8_t index, const std::vector<std::uint8_t>& bytes)
    {
        EXPECT_EQ(vek::writeI2c(bus, seats[0].address, index, bytes), VEK_OK);
    }

    std::array<vek::I2cSeat, 1> seats;
    vek::SimulatedI2cBus bus{seats};
};

/// A chip with 256 byte registers that hold whatever a test puts there.
class FixedRegisters final : public vek::I2cDevice
{
public:
    std::array<std::uint8_t, 256> registers{};
    bool refusesData = false;  ///< Acknowledges the pointer only.
    int starts = 0;            ///< Start conditions on the bus so far.

    void start() override { ++starts; }

    bool addressed(bool forReading) override
    {
        awaitsPointer_ = !forReading;
        return true;
    }

    bool receive(std::uint8_t byte) override
    {
        if (awaitsPointer_) {
            pointer_ = byte;
            awaitsPointer_ = false;
            return true;
        }
        return !refusesData;
    }

    std::uint8_t send() override { return registers[pointer_++]; }

private:
    std::uint8_t pointer_ = 0;
    bool awaitsPointer_ = false;
};

#endif
