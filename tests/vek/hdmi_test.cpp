#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "captured_output.h"
#include "open_card.h"
#include "vek.h"

namespace
{

using testing::HasSubstr;

constexpr uint32_t kControl = 0x000;
constexpr uint32_t kStatus0 = 0x004;
constexpr uint32_t kId = 0x008;
constexpr uint32_t kFirstConfiguration = 0x00c;
constexpr uint32_t kLastRegister = 0x3fc;
constexpr uint16_t kOpen = 1 << 0;
constexpr uint16_t kReset = 1 << 1;
constexpr uint16_t kLocked = 1 << 8;

uint16_t phy(int channel, uint32_t address)
{
    uint16_t value = 0;
    EXPECT_EQ(vekHdmiPhyRead(channel, address, &value), VEK_OK) << address;
    return value;
}

std::vector<uint16_t> allPhyRegisters(int channel)
{
    std::vector<uint16_t> values;
    for (uint32_t address = 0; address <= kLastRegister; address += 4) {
        values.push_back(phy(channel, address));
    }
    return values;
}

uint8_t hotPlug(int channel)
{
    uint8_t status = 0xee;
    EXPECT_EQ(vekHdmiHpdSense(channel, &status), VEK_OK);
    return status;
}

using Fields = std::array<int32_t, 10>;

/** The mode of an output as its ten fields. */
Fields mode(int channel)
{
    VekDisplayMode mode{};
    EXPECT_EQ(vekHdmiModeRead(channel, &mode), VEK_OK);
    Fields fields;
    static_assert(sizeof fields == sizeof mode);
    std::memcpy(fields.data(), &mode, sizeof mode);
    return fields;
}

/** An output of a card. */
struct Output {
    int card;
    int channel;
};

std::ostream& operator<<(std::ostream& out, const Output& output)
{
    return out << "card " << output.card << " output " << output.channel;
}

class Hdmi : public testing::TestWithParam<Output>
{
protected:
    Hdmi()
    {
        EXPECT_GE(vekRwOpen(GetParam().card), 0);
        EXPECT_EQ(vekHdmiPhyReset(channel), VEK_OK);
    }
    ~Hdmi() override { vekClose(); }

    int channel = GetParam().channel;
};
INSTANTIATE_TEST_SUITE_P(Outputs, Hdmi, testing::Values(Output{0, 0}, Output{0, 1}, Output{1, 0}));

TEST_P(Hdmi, KeepsItsConfigurationClosedUntilItIsStarted)
{
    const std::vector<uint16_t> before = allPhyRegisters(channel);
    for (uint32_t address = kFirstConfiguration; address <= kLastRegister; address += 4) {
        EXPECT_EQ(vekHdmiPhyWrite(channel, address, 0x1234), VEK_PROTECTED) << address;
    }
    EXPECT_EQ(allPhyRegisters(channel), before);
}

TEST_P(Hdmi, IsConfiguredBetweenStartAndEnd)
{
    EXPECT_EQ(vekHdmiPhyStart(channel), VEK_OK);
    EXPECT_EQ(phy(channel, kControl), kOpen);
    for (uint32_t address = kFirstConfiguration; address <= kLastRegister; address += 4) {
        EXPECT_EQ(vekHdmiPhyWrite(channel, address, static_cast<uint16_t>(0x8000 + address)), VEK_OK) << address;
    }
    EXPECT_EQ(vekHdmiPhyEnd(channel), VEK_OK);
    EXPECT_EQ(phy(channel, kControl), kLocked);
    EXPECT_EQ(vekHdmiPhyWrite(channel, kFirstConfiguration, 0), VEK_PROTECTED);
    for (uint32_t address = kFirstConfiguration; address <= kLastRegister; address += 4) {
        EXPECT_EQ(phy(channel, address), 0x8000 + address);
    }
}

TEST_P(Hdmi, IsNotLockedWhileItsConfigurationIsOpen)
{
    EXPECT_EQ(vekHdmiPhyEnd(channel), VEK_OK);
    EXPECT_EQ(phy(channel, kControl), kLocked);
    EXPECT_EQ(vekHdmiPhyStart(channel), VEK_OK);
    EXPECT_EQ(phy(channel, kControl), kOpen);
}

TEST_P(Hdmi, ReturnsToItsDefaultsWithAReset)
{
    const std::vector<uint16_t> defaults = allPhyRegisters(channel);
    EXPECT_EQ(defaults[kControl], 0);
    EXPECT_NE(phy(channel, 0x010), 0);
    for (const bool byRegister : {false, true}) {
        ASSERT_EQ(vekHdmiPhyStart(channel), VEK_OK);
        for (uint32_t address = kFirstConfiguration; address <= kLastRegister; address += 4) {
            ASSERT_EQ(vekHdmiPhyWrite(channel, address, 0x5555), VEK_OK);
        }
        EXPECT_EQ(byRegister ? vekHdmiPhyWrite(channel, kControl, kReset) : vekHdmiPhyReset(channel), VEK_OK);
        EXPECT_EQ(allPhyRegisters(channel), defaults);
        EXPECT_EQ(vekHdmiPhyWrite(channel, kFirstConfiguration, 1), VEK_PROTECTED);
    }
}

TEST_P(Hdmi, HasReadOnlyRegisters)
{
    const uint16_t status = phy(channel, kStatus0);
    const uint16_t id = phy(channel, kId);
    EXPECT_NE(id, 0);
    ASSERT_EQ(vekHdmiPhyStart(channel), VEK_OK);
    for (const uint32_t address : {kStatus0, kId}) {
        EXPECT_EQ(vekHdmiPhyWrite(channel, address, 0x00ff), VEK_PROTECTED);
    }
    EXPECT_EQ(phy(channel, kStatus0), status);
    EXPECT_EQ(phy(channel, kId), id);
    // The locked bit follows the configuration, whatever is written.
    EXPECT_EQ(vekHdmiPhyWrite(channel, kControl, kLocked | kOpen), VEK_OK);
    EXPECT_EQ(phy(channel, kControl), kOpen);
}

TEST_P(Hdmi, AnswersAtTheAddressesOfItsRegistersOnly)
{
    ASSERT_EQ(vekHdmiPhyStart(channel), VEK_OK);
    for (const uint32_t address : {0x001U, 0x002U, 0x003U, 0x011U, 0x3fdU, 0x3feU, 0x400U, 0x404U, 0xfffffffcU}) {
        uint16_t value = 0;
        EXPECT_EQ(vekHdmiPhyRead(channel, address, &value), VEK_NO_RESPONSE) << address;
        EXPECT_EQ(value, 0xffff);
        EXPECT_EQ(vekHdmiPhyWrite(channel, address, 1), VEK_NO_RESPONSE) << address;
    }
}

TEST_P(Hdmi, SensesItsSink)
{
    EXPECT_EQ(hotPlug(channel), 1);
    EXPECT_EQ(phy(channel, kStatus0) & 1, 1);
}

TEST_P(Hdmi, ReadsBytesOverItsDdc)
{
    for (const bool initialized : {false, true}) {
        if (initialized) {
            EXPECT_EQ(vekHdmiDDCInit(channel), VEK_OK);
        }
        uint8_t value = 0xee;
        EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 0, &value), VEK_OK);
        EXPECT_EQ(value, 0x00);
        EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 1, &value), VEK_OK);
        EXPECT_EQ(value, 0xff);
        // The second block's tag.
        EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 0x80, &value), VEK_OK);
        EXPECT_EQ(value, GetParam().card == 0 && channel == 1 ? 0xf0 : 0x02);
    }
}

TEST_P(Hdmi, FindsTheEdidMemoryWriteProtected)
{
    EXPECT_EQ(vekHdmiDDCWrite(channel, 0x50, 0x08, 0x77), VEK_NO_ACK_DATA);
    uint8_t value = 0;
    EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 0x08, &value), VEK_OK);
    EXPECT_NE(value, 0x77);
}

TEST_P(Hdmi, ReportsWhatItsDdcDoesNot)
{
    uint8_t value = 0xee;
    EXPECT_EQ(vekHdmiDDCRead(channel, 0x51, 0, &value), VEK_NO_RESPONSE);
    EXPECT_EQ(vekHdmiDDCRead(channel, 0x80, 0, &value), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekHdmiDDCRead(channel, 0xff, 0, &value), VEK_BAD_ARGUMENT);
    EXPECT_EQ(value, 0xee);
    EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekHdmiDDCWrite(channel, 0x51, 0, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(vekHdmiDDCWrite(channel, 0x80, 0, 1), VEK_BAD_ARGUMENT);
}

TEST_P(Hdmi, PrintsTheEdidThatDdcReads)
{
    CapturedOutput output;
    EXPECT_EQ(vekHdmiEDIDRead(channel), VEK_OK);
    const std::string text = output.take();
    EXPECT_EQ(do_edid_parse(nullptr), VEK_OK);
    EXPECT_EQ(output.take(), text);
    int length = 0;
    uint8_t* data = nullptr;
    int valid = 0;
    ASSERT_EQ(vekDDCRead(channel, &length, &data, &valid), VEK_OK);
    EXPECT_EQ(edid_print_helper(data, length, 1), VEK_OK);
    EXPECT_EQ(output.take(), text);
    EXPECT_THAT(text, HasSubstr("Errors and oddities: none"));
}

TEST_P(Hdmi, NeedsItsOutputs)
{
    EXPECT_EQ(vekHdmiPhyRead(channel, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekHdmiHpdSense(channel, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekHdmiModeRead(channel, nullptr), VEK_BAD_ARGUMENT);
}

TEST_P(Hdmi, LeavesTheLastEdidAloneWhenTheModeIsRead)
{
    CapturedOutput output;
    ASSERT_EQ(vekHdmiEDIDRead(channel), VEK_OK);
    const std::string text = output.take();
    ASSERT_GE(vekRwOpen(1 - GetParam().card), 0);
    mode(0);
    ASSERT_EQ(do_edid_parse(nullptr), VEK_OK);
    EXPECT_EQ(output.take(), text);
}

TEST(HdmiModes, AreThePreferredOnesOfTheSinks)
{
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(mode(0), (Fields{148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125,
                               VEK_HSYNC_POSITIVE | VEK_VSYNC_POSITIVE}));
    EXPECT_EQ(mode(1), (Fields{594000, 3840, 4016, 4104, 4400, 2160, 2168, 2178, 2250,
                               VEK_HSYNC_POSITIVE | VEK_VSYNC_POSITIVE}));
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_EQ(mode(0), (Fields{154000, 1920, 1968, 2000, 2080, 1200, 1203, 1209, 1235,
                               VEK_HSYNC_POSITIVE | VEK_VSYNC_NEGATIVE}));
    vekClose();
}

TEST(HdmiPhys, AreApart)
{
    ASSERT_GE(vekRwOpen(0), 0);
    ASSERT_EQ(vekHdmiPhyReset(1), VEK_OK);
    const std::vector<uint16_t> other = allPhyRegisters(1);
    ASSERT_EQ(vekHdmiPhyStart(0), VEK_OK);
    ASSERT_EQ(vekHdmiPhyWrite(0, 0x100, 0x4321), VEK_OK);
    EXPECT_EQ(allPhyRegisters(1), other);
    EXPECT_EQ(vekHdmiPhyReset(0), VEK_OK);
    vekClose();
}

class HdmiChannels : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, HdmiChannels, testing::Values(0, 1));

TEST_P(HdmiChannels, AreTwoOnOneChipAndOneOnTheOther)
{
    const int outputs = GetParam() == 0 ? 2 : 1;
    CapturedOutput output;
    for (const int channel : {-0x7fffffff - 1, -1, outputs, outputs + 1, 3, 4, 0x7fffffff}) {
        uint8_t byte = 0xee;
        uint16_t word = 0xeeee;
        VekDisplayMode mode{};
        mode.clock = 7;
        EXPECT_EQ(vekHdmiDDCInit(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiDDCRead(channel, 0x50, 0, &byte), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiDDCWrite(channel, 0x30, 0, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiEDIDRead(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiHpdSense(channel, &byte), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiModeRead(channel, &mode), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiPhyStart(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiPhyEnd(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiPhyReset(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiPhyRead(channel, 0, &word), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekHdmiPhyWrite(channel, 0, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(byte, 0xee);
        EXPECT_EQ(word, 0xeeee);
        EXPECT_EQ(mode.clock, 7);
    }
    EXPECT_EQ(output.take(), "");
}

}  // namespace
