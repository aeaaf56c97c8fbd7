#include "card/saa7111a.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "card/i2c_simulated_bus.h"
#include "drivers/i2c_transfer.h"
#include "drivers/saa7111a.h"
#include "vek.h"

namespace
{

using ::testing::ElementsAre;
using vek::I2cSeat;
using vek::Saa7111a;
using vek::SimulatedI2cBus;
using vek::VideoSignal;

constexpr std::uint8_t kAddress = 0x24;
constexpr std::uint32_t kInputControl = 0x02;
constexpr std::uint32_t kBrightness = 0x0a;
constexpr std::uint32_t kStatus = 0x1f;

constexpr std::uint8_t kUnlocked = 0x40;
constexpr std::uint8_t k60Hz = 0x20;
constexpr std::uint8_t kColour = 0x01;

// A decoder on a bus of its own.
struct Decoder {
    explicit Decoder(VideoSignal signal, std::uint8_t address = kAddress)
        : chip(signal), seats{{{address, &chip}}}, bus(seats), at(address)
    {
    }

    std::uint8_t read(std::uint32_t subAddress) { return read(subAddress, 1).front(); }

    std::vector<std::uint8_t> read(std::uint32_t subAddress, std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        EXPECT_EQ(vek::readI2c(bus, at, subAddress, bytes), VEK_OK);
        return bytes;
    }

    void write(std::uint32_t subAddress, const std::vector<std::uint8_t>& bytes)
    {
        EXPECT_EQ(vek::writeI2c(bus, at, subAddress, bytes), VEK_OK);
    }

    Saa7111a chip;
    std::array<I2cSeat, 1> seats;
    SimulatedI2cBus bus;
    std::uint32_t at;
};

TEST(Saa7111a, TellsItsVersionInTheHighNibble)
{
    Decoder decoder(VideoSignal::kNone);
    EXPECT_NE(decoder.read(0), 0);
    EXPECT_EQ(decoder.read(0) & 0x0f, 0);
}

TEST(Saa7111a, MovesOnFromRegisterToRegister)
{
    Decoder decoder(VideoSignal::kNone);
    decoder.write(kBrightness, {0x11, 0x22, 0x33});
    EXPECT_THAT(decoder.read(kBrightness - 1, 5), ElementsAre(0, 0x11, 0x22, 0x33, 0));
}

TEST(Saa7111a, KeepsReadOnlyAndReservedRegisters)
{
    Decoder decoder(VideoSignal::kPal);
    const std::vector<std::uint8_t> before = decoder.read(0, 0x20);
    decoder.write(0, std::vector<std::uint8_t>(0x20, 0xf8));
    const std::vector<std::uint8_t> after = decoder.read(0, 0x20);
    for (std::size_t at = 0; at < after.size(); ++at) {
        const bool control = at >= 0x02 && at <= 0x17 && at != 0x0f && at != 0x14;
        EXPECT_EQ(after[at], control ? 0xf8 : before[at]) << at;
    }
}

TEST(Saa7111a, HasThirtyTwoRegisters)
{
    Decoder decoder(VideoSignal::kNone);
    std::uint8_t byte = 0;
    EXPECT_EQ(vek::readI2c(decoder.bus, kAddress, 0x20, {&byte, 1}), VEK_NO_ACK_DATA);
    EXPECT_THAT(decoder.read(kStatus, 3), ElementsAre(kUnlocked, 0xff, 0xff));
    // The sub-address of a refused write must not lead anywhere.
    decoder.write(kStatus, std::vector<std::uint8_t>(300, 0x5a));
    EXPECT_EQ(decoder.read(0) & 0x0f, 0);
}

TEST(Saa7111a, ReportsItsSignal)
{
    EXPECT_EQ(Decoder(VideoSignal::kPal).read(kStatus), kColour);
    EXPECT_EQ(Decoder(VideoSignal::kNtsc).read(kStatus), kColour | k60Hz);
    EXPECT_EQ(Decoder(VideoSignal::kNone).read(kStatus), kUnlocked);
}

TEST(Saa7111a, PutsOutThePictureOfTheSelectedInput)
{
    Decoder decoder(VideoSignal::kPal);
    EXPECT_EQ(decoder.chip.picture().width, 720);
    EXPECT_EQ(decoder.chip.picture().height, 576);
    EXPECT_EQ(decoder.chip.picture().frameNanoseconds, 40'000'000U);
    for (std::uint8_t mode = 0; mode < 8; ++mode) {
        decoder.write(kInputControl, {static_cast<std::uint8_t>(0xc0 | mode)});
        const bool locked = mode == 0 || mode == 4 || mode == 6;
        EXPECT_EQ(decoder.chip.picture().width, locked ? 720 : 0) << int{mode};
        EXPECT_EQ(decoder.chip.picture().height, locked ? 576 : 0) << int{mode};
        EXPECT_EQ(decoder.read(kStatus), !locked ? kUnlocked : mode == 0 ? kColour : 0) << int{mode};
    }
}

TEST(Saa7111a, PutsOutThePictureOfItsStandard)
{
    EXPECT_EQ(Decoder(VideoSignal::kNtsc).chip.picture().height, 480);
    EXPECT_EQ(Decoder(VideoSignal::kNone).chip.picture().height, 0);
}

TEST(Saa7111aDriver, SetsTheDecoderUp)
{
    for (const bool high : {false, true}) {
        Decoder decoder(VideoSignal::kPal, high ? kAddress + 1 : kAddress);
        decoder.write(kInputControl, {0xc3});
        ASSERT_EQ(decoder.chip.picture().width, 0);
        EXPECT_EQ(vek::setUpSaa7111a(decoder.bus, high), VEK_OK);
        EXPECT_EQ(decoder.chip.picture().width, 720);
        EXPECT_EQ(decoder.read(kInputControl) & 0x07, 0);
        EXPECT_EQ(decoder.read(0x08) & 0x80, 0x80) << "no automatic field detection";
        EXPECT_EQ(decoder.read(kBrightness), 0x80);
        EXPECT_EQ(decoder.read(0x11) & 0x0c, 0x0c) << "the outputs are off";
    }
}

TEST(Saa7111aDriver, MissesADecoderAtTheOtherAddress)
{
    for (const bool high : {false, true}) {
        Decoder decoder(VideoSignal::kPal, high ? kAddress : kAddress + 1);
        const std::vector<std::uint8_t> before = decoder.read(0, 0x20);
        EXPECT_EQ(vek::setUpSaa7111a(decoder.bus, high), VEK_NO_RESPONSE);
        EXPECT_EQ(decoder.read(0, 0x20), before);
    }
}

}  // namespace
