#include "drivers/i2c_transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "fake_i2c_bus.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;

using Steps = std::vector<std::string>;

constexpr std::array<std::uint8_t, 3> kBytes{0x01, 0x02, 0x03};

/** Three bytes to read into, of a value that the bus never sends. */
struct Received {
    std::array<std::uint8_t, 3> bytes{0xee, 0xee, 0xee};

    bool untouched() const { return bytes == std::array<std::uint8_t, 3>{0xee, 0xee, 0xee}; }
};

long startsOf(const FakeI2cBus& bus)
{
    return std::count(bus.steps.begin(), bus.steps.end(), "S");
}

TEST(I2cTransfer, ReadsAfterARepeatedStart)
{
    FakeI2cBus bus;
    Received received;
    EXPECT_EQ(vek::readI2c(bus, 0x50, 0x10, received.bytes), VEK_OK);
    EXPECT_THAT(received.bytes, ElementsAre(0x40, 0x41, 0x42));
    EXPECT_EQ(bus.steps, (Steps{"S", "wa0", "w10", "S", "wa1", "r+", "r+", "r-", "P"}));
}

TEST(I2cTransfer, WritesInOneTransaction)
{
    FakeI2cBus bus;
    EXPECT_EQ(vek::writeI2c(bus, 0x7f, 0xff, kBytes), VEK_OK);
    EXPECT_EQ(bus.steps, (Steps{"S", "wfe", "wff", "w01", "w02", "w03", "P"}));
}

TEST(I2cTransfer, SendsLargerSubAddressesAsTwoBytes)
{
    for (const auto& [subAddress, high, low] :
         {std::tuple{0x100U, "w01", "w00"}, std::tuple{0x1234U, "w12", "w34"}, std::tuple{0xffffU, "wff", "wff"}}) {
        FakeI2cBus writing;
        EXPECT_EQ(vek::writeI2c(writing, 0, subAddress, std::span(kBytes).first(1)), VEK_OK);
        EXPECT_EQ(writing.steps, (Steps{"S", "w00", high, low, "w01", "P"}));
        FakeI2cBus reading;
        std::uint8_t byte = 0;
        EXPECT_EQ(vek::readI2c(reading, 0, subAddress, {&byte, 1}), VEK_OK);
        EXPECT_EQ(reading.steps, (Steps{"S", "w00", high, low, "S", "w01", "r-", "P"}));
    }
}

TEST(I2cTransfer, SendsTheSubAddressAloneWhenThereAreNoBytes)
{
    FakeI2cBus reading;
    EXPECT_EQ(vek::readI2c(reading, 0x50, 0x10, {}), VEK_OK);
    EXPECT_EQ(reading.steps, (Steps{"S", "wa0", "w10", "P"}));
    FakeI2cBus writing;
    EXPECT_EQ(vek::writeI2c(writing, 0x50, 0x10, {}), VEK_OK);
    EXPECT_EQ(writing.steps, reading.steps);
}

TEST(I2cTransfer, TriesABusyDeviceAgain)
{
    FakeI2cBus bus;
    bus.busyAddresses = 2;
    EXPECT_EQ(vek::writeI2c(bus, 0x50, 0x10, std::span(kBytes).first(1)), VEK_OK);
    EXPECT_EQ(bus.steps, (Steps{"S", "wa0", "P", "S", "wa0", "P", "S", "wa0", "w10", "w01", "P"}));
}

TEST(I2cTransfer, TriesABusyDeviceABoundedNumberOfTimes)
{
    FakeI2cBus ready;
    ready.busyAddresses = vek::kMaxI2cTries - 1;
    EXPECT_EQ(vek::writeI2c(ready, 0x50, 0, {}), VEK_OK);
    FakeI2cBus bus;
    bus.busyAddresses = vek::kMaxI2cTries;
    Received received;
    EXPECT_EQ(vek::readI2c(bus, 0x50, 0, received.bytes), VEK_NO_RESPONSE);
    EXPECT_TRUE(received.untouched());
    EXPECT_EQ(startsOf(bus), vek::kMaxI2cTries);
    EXPECT_EQ(bus.steps.back(), "P");
}

TEST(I2cTransfer, DoesNotTryTheSecondAddressAgain)
{
    FakeI2cBus bus;
    bus.refusedAddress = 1;
    Received received;
    EXPECT_EQ(vek::readI2c(bus, 0x50, 0x10, received.bytes), VEK_NO_RESPONSE);
    EXPECT_TRUE(received.untouched());
    EXPECT_EQ(bus.steps, (Steps{"S", "wa0", "w10", "S", "wa1", "P"}));
}

TEST(I2cTransfer, EndsAtAByteThatIsNotAcknowledged)
{
    FakeI2cBus reading;
    reading.refusedData = 0;
    Received received;
    EXPECT_EQ(vek::readI2c(reading, 0x50, 0x10, received.bytes), VEK_NO_ACK_DATA);
    EXPECT_TRUE(received.untouched());
    EXPECT_EQ(reading.steps, (Steps{"S", "wa0", "w10", "P"}));
    FakeI2cBus writing;
    writing.refusedData = 2;
    EXPECT_EQ(vek::writeI2c(writing, 0x50, 0x10, kBytes), VEK_NO_ACK_DATA);
    EXPECT_EQ(writing.steps, (Steps{"S", "wa0", "w10", "w01", "w02", "P"}));
}

TEST(I2cTransfer, EndsWhereverTheBusHangs)
{
    for (std::size_t step = 0; step < 8; ++step) {
        FakeI2cBus bus;
        bus.hangsAt = step;
        Received received;
        EXPECT_EQ(vek::readI2c(bus, 0x50, 0x10, received.bytes), VEK_TIMED_OUT) << step;
        EXPECT_TRUE(received.untouched()) << step;
        EXPECT_EQ(bus.steps.size(), step + 2) << step;
        EXPECT_EQ(bus.steps.back(), "P") << step;
    }
    for (std::size_t step = 0; step < 6; ++step) {
        FakeI2cBus bus;
        bus.hangsAt = step;
        EXPECT_EQ(vek::writeI2c(bus, 0x50, 0x10, kBytes), VEK_TIMED_OUT) << step;
        EXPECT_EQ(bus.steps.size(), step + 2) << step;
        EXPECT_EQ(bus.steps.back(), "P") << step;
    }
}

TEST(I2cTransfer, LeavesTheBusAloneWithABadArgument)
{
    FakeI2cBus bus;
    std::vector<std::uint8_t> bytes(vek::kMaxI2cTransfer + 1, 0xee);
    const std::span<std::uint8_t> one = std::span(bytes).first(1);
    for (const std::uint32_t device : {0x80U, 0x150U, 0xffffffffU}) {
        EXPECT_EQ(vek::readI2c(bus, device, 0, one), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vek::writeI2c(bus, device, 0, one), VEK_BAD_ARGUMENT);
    }
    for (const std::uint32_t subAddress : {0x10000U, 0xffffffffU}) {
        EXPECT_EQ(vek::readI2c(bus, 0x50, subAddress, one), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vek::writeI2c(bus, 0x50, subAddress, one), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(vek::readI2c(bus, 0x50, 0, bytes), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vek::writeI2c(bus, 0x50, 0, bytes), VEK_BAD_ARGUMENT);
    EXPECT_THAT(bytes, Each(0xee));
    EXPECT_EQ(bus.steps, Steps{});
}

TEST(I2cTransfer, MovesAsManyBytesAsTheLimitAllows)
{
    FakeI2cBus bus;
    std::vector<std::uint8_t> bytes(vek::kMaxI2cTransfer);
    EXPECT_EQ(vek::readI2c(bus, 0x50, 0, bytes), VEK_OK);
    EXPECT_EQ(bytes.front(), 0x40);
    EXPECT_EQ(bytes.back(), 0x3f);
}

TEST(I2cTransfer, FreesABusByReadingAByteAway)
{
    FakeI2cBus bus;
    EXPECT_EQ(vek::freeI2cBus(bus), VEK_OK);
    EXPECT_EQ(bus.steps, (Steps{"r-", "P"}));
    FakeI2cBus held;
    held.hangsAt = 0;
    EXPECT_EQ(vek::freeI2cBus(held), VEK_TIMED_OUT);
    EXPECT_EQ(held.steps.back(), "P");
}

}  // namespace
