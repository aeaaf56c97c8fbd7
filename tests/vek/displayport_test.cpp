#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint32_t kLinkRateSet = 0x100;
constexpr uint32_t kTrainingPatternSet = 0x102;
constexpr uint32_t kLaneStatus = 0x202;
constexpr uint32_t kSetPower = 0x600;

constexpr uint32_t kPhyId = 0x00;
constexpr uint32_t kPhyControl = 0x04;
constexpr uint32_t kPhyStatus = 0x08;
constexpr uint32_t kPhyRate = 0x0c;
constexpr uint32_t kPhyPattern = 0x10;
constexpr uint32_t kPhyLast = 0xfc;
constexpr uint32_t kPhyFree = 0x80;

constexpr uint32_t kCtlId = 0x000;
constexpr uint32_t kCtlControl = 0x002;
constexpr uint32_t kCtlStatus = 0x004;
constexpr uint32_t kCtlRate = 0x006;
constexpr uint32_t kCtlLanes = 0x008;
constexpr uint32_t kCtlAttributes = 0x010;
constexpr uint32_t kCtlLast = 0x1fe;
constexpr uint32_t kCtlFree = 0x100;

/** An output of a card, and what its sink is like. */
struct Output {
    int card;
    int channel;
    uint8_t rate;
    uint8_t lanes;
    int edidSize;
};

std::ostream& operator<<(std::ostream& out, const Output& output)
{
    return out << "card " << output.card << " output " << output.channel;
}

uint8_t dpcd(int channel, uint32_t address)
{
    uint8_t value = 0xee;
    EXPECT_EQ(vekDpAuxRead(channel, address, &value), VEK_OK) << address;
    return value;
}

uint32_t phy(int channel, uint32_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekDpPhyRead(channel, address, &value), VEK_OK) << address;
    return value;
}

uint16_t ctl(int channel, uint32_t address)
{
    uint16_t value = 0;
    EXPECT_EQ(vekDpCdbRead(channel, address, &value), VEK_OK) << address;
    return value;
}

using Fields = std::array<int32_t, 10>;

/** The mode of an output as its ten fields. */
Fields mode(int channel)
{
    VekDisplayMode mode{};
    EXPECT_EQ(vekDpModeRead(channel, &mode), VEK_OK);
    Fields fields;
    static_assert(sizeof fields == sizeof mode);
    std::memcpy(fields.data(), &mode, sizeof mode);
    return fields;
}

class DisplayPort : public testing::TestWithParam<Output>
{
protected:
    DisplayPort()
    {
        EXPECT_GE(vekRwOpen(GetParam().card), 0);
        EXPECT_EQ(vekDpInit(channel), VEK_OK);
    }
    ~DisplayPort() override { vekClose(); }

    std::vector<uint8_t> laneStatus() const
    {
        std::vector<uint8_t> status(3);
        EXPECT_EQ(vekDpAuxReadBuf(channel, kLaneStatus, status.data(), 3), VEK_OK);
        return status;
    }

    std::vector<uint8_t> trainedStatus() const
    {
        const uint8_t second = GetParam().lanes == 4 ? 0x77 : 0x00;
        return {0x77, second, 0x01};
    }

    int channel = GetParam().channel;
};
INSTANTIATE_TEST_SUITE_P(Outputs, DisplayPort,
                         testing::Values(Output{0, 0, 0x14, 4, 512}, Output{0, 1, 0x0a, 2, 128},
                                         Output{1, 0, 0x0a, 2, 256}));

TEST_P(DisplayPort, ReportsItsSinksCapabilities)
{
    EXPECT_THAT(dpcd(channel, 0x000), testing::AnyOf(0x11, 0x12));
    EXPECT_EQ(dpcd(channel, 0x001), GetParam().rate);
    EXPECT_EQ(dpcd(channel, 0x002) & 0x1f, GetParam().lanes);
    EXPECT_EQ(dpcd(channel, 0x200), 1);
    EXPECT_EQ(dpcd(channel, kSetPower), 1);
    // A field that the sink does not have.
    EXPECT_EQ(dpcd(channel, 0xfffff), 0);
}

TEST_P(DisplayPort, ReadsRunsOfFieldsAsItReadsFields)
{
    for (const int count : {1, 15, 16, 17, 256, 700}) {
        std::vector<uint8_t> bytes(static_cast<size_t>(count), 0xee);
        ASSERT_EQ(vekDpAuxReadBuf(channel, 0x000, bytes.data(), count), VEK_OK);
        for (uint32_t address = 0; address < bytes.size(); ++address) {
            ASSERT_EQ(bytes[address], dpcd(channel, address)) << address;
        }
    }
    std::vector<uint8_t> all(0x100000, 0xee);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, all.data(), 0x100000), VEK_OK);
    EXPECT_EQ(all[kSetPower], 1);
    EXPECT_EQ(all.back(), 0);
}

TEST_P(DisplayPort, WritesWhatCanBeWritten)
{
    EXPECT_EQ(vekDpAuxWrite(channel, 0x300, 0x5a), VEK_OK);
    EXPECT_EQ(dpcd(channel, 0x300), 0x5a);
    EXPECT_EQ(vekDpAuxWrite(channel, kSetPower, 2), VEK_OK);
    EXPECT_EQ(dpcd(channel, kSetPower), 2);
    EXPECT_EQ(vekDpAuxWrite(channel, kSetPower, 1), VEK_OK);
    for (const uint32_t address : {0x000U, 0x001U, 0x00eU, 0x200U, 0x202U, 0x205U, 0x400U, 0x701U, 0xfffffU}) {
        const uint8_t before = dpcd(channel, address);
        EXPECT_EQ(vekDpAuxWrite(channel, address, 0x77), VEK_IO_ERROR) << address;
        EXPECT_EQ(dpcd(channel, address), before);
    }
}

TEST_P(DisplayPort, RefusesWhatIsNoAddress)
{
    std::vector<uint8_t> bytes(32, 0xee);
    for (const uint32_t address : {0x100000U, 0x80000000U, 0xffffffffU}) {
        EXPECT_EQ(vekDpAuxRead(channel, address, bytes.data()), VEK_BAD_ARGUMENT) << address;
        EXPECT_EQ(vekDpAuxReadBuf(channel, address, bytes.data(), 1), VEK_BAD_ARGUMENT) << address;
        EXPECT_EQ(vekDpAuxWrite(channel, address, 1), VEK_BAD_ARGUMENT) << address;
    }
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0xfffff, bytes.data(), 2), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, bytes.data(), 0x100001), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, bytes.data(), -1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, bytes.data(), -0x7fffffff - 1), VEK_BAD_ARGUMENT);
    EXPECT_THAT(bytes, Each(0xee));
}

TEST_P(DisplayPort, DoesNothingForACountOfZero)
{
    uint8_t byte = 0xee;
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, &byte, 0), VEK_OK);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, nullptr, 0), VEK_OK);
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, &byte, 0), VEK_OK);
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, nullptr, 0), VEK_OK);
    EXPECT_EQ(byte, 0xee);
}

TEST_P(DisplayPort, NeedsItsOutputs)
{
    uint8_t bytes[VEK_EDID_BUFFER_SIZE] = {};
    int length = 7;
    EXPECT_EQ(vekDpAuxRead(channel, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxReadBuf(channel, 0, nullptr, 1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxEdidGet(channel, nullptr, &length), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpAuxEdidGet(channel, bytes, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpI2cRead(channel, 0x50, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, nullptr, 1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpModeRead(channel, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpPhyRead(channel, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpCdbRead(channel, 0, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(length, 7);
}

TEST_P(DisplayPort, FetchesItsSinksEdid)
{
    uint8_t edid[VEK_EDID_BUFFER_SIZE + 1];
    std::fill(std::begin(edid), std::end(edid), uint8_t{0xee});
    int length = 0;
    ASSERT_EQ(vekDpAuxEdidGet(channel, edid, &length), VEK_OK);
    EXPECT_EQ(length, GetParam().edidSize);
    EXPECT_EQ(edid[length], 0xee);
    CapturedOutput output;
    EXPECT_EQ(edid_print_helper(edid, length, 1), VEK_OK);
    EXPECT_THAT(output.take(), HasSubstr("Errors and oddities: none"));
    // The same bytes one by one, as far as a sub-address reaches.
    for (int offset = 0; offset < std::min(length, 256); ++offset) {
        uint8_t byte = 0;
        ASSERT_EQ(vekDpI2cRead(channel, 0x50, static_cast<uint8_t>(offset), &byte), VEK_OK);
        ASSERT_EQ(byte, edid[offset]) << offset;
    }
}

TEST_P(DisplayPort, ReadsRunsOfI2cBytes)
{
    uint8_t edid[VEK_EDID_BUFFER_SIZE];
    int length = 0;
    ASSERT_EQ(vekDpAuxEdidGet(channel, edid, &length), VEK_OK);
    for (const int count : {1, 15, 16, 17, 33, 100}) {
        std::vector<uint8_t> bytes(static_cast<size_t>(count), 0xee);
        ASSERT_EQ(vekDpI2cReadBuf(channel, 0x50, 3, bytes.data(), count), VEK_OK);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), edid + 3)) << count;
    }
    // The sub-address wraps round after its highest value.
    std::vector<uint8_t> twice(512, 0xee);
    ASSERT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, twice.data(), 512), VEK_OK);
    EXPECT_TRUE(std::equal(twice.begin(), twice.begin() + 256, twice.begin() + 256));
}

TEST_P(DisplayPort, ReportsWhatItsI2cDoesNot)
{
    std::vector<uint8_t> bytes(4, 0xee);
    EXPECT_EQ(vekDpI2cRead(channel, 0x51, 0, bytes.data()), VEK_NO_RESPONSE);
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x00, 0, bytes.data(), 4), VEK_NO_RESPONSE);
    for (const uint32_t device : {0x80U, 0xa0U, 0x100050U, 0xffffffffU}) {
        EXPECT_EQ(vekDpI2cRead(channel, device, 0, bytes.data()), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpI2cReadBuf(channel, device, 0, bytes.data(), 4), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpI2cReadBuf(channel, device, 0, bytes.data(), 0), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, bytes.data(), -1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, bytes.data(), 0x10001), VEK_BAD_ARGUMENT);
    EXPECT_THAT(bytes, Each(0xee));
    // The bus is free again.
    EXPECT_EQ(vekDpI2cRead(channel, 0x50, 1, bytes.data()), VEK_OK);
    EXPECT_EQ(bytes[0], 0xff);
}

TEST_P(DisplayPort, HasNoLinkAfterItsInitialisation)
{
    EXPECT_THAT(laneStatus(), Each(0));
    EXPECT_EQ(phy(channel, kPhyControl), 1U);
    EXPECT_EQ(phy(channel, kPhyStatus), 2U);
    EXPECT_EQ(ctl(channel, kCtlControl), 1);
    EXPECT_EQ(ctl(channel, kCtlStatus), 0);
    EXPECT_EQ(vekDpCTLCfg(channel), VEK_IO_ERROR);
    EXPECT_EQ(ctl(channel, kCtlControl), 1);
    EXPECT_EQ(ctl(channel, kCtlAttributes), 0);
}

TEST_P(DisplayPort, TrainsItsLink)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    EXPECT_EQ(laneStatus(), trainedStatus());
    EXPECT_EQ(dpcd(channel, 0x205), 1);
    EXPECT_EQ(dpcd(channel, kLinkRateSet), GetParam().rate);
    EXPECT_EQ(dpcd(channel, kLinkRateSet + 1), 0x80 | GetParam().lanes);
    EXPECT_EQ(dpcd(channel, kTrainingPatternSet), 0);
    EXPECT_EQ(phy(channel, kPhyRate), GetParam().rate);
    EXPECT_EQ(phy(channel, kPhyPattern), 0U);
    EXPECT_EQ(phy(channel, kPhyStatus), 3U);
    EXPECT_EQ(ctl(channel, kCtlRate), GetParam().rate);
    EXPECT_EQ(ctl(channel, kCtlLanes), 0x80 | GetParam().lanes);
    EXPECT_EQ(ctl(channel, kCtlStatus), 1);
}

TEST_P(DisplayPort, LosesItsLinkWithTheNextInitialisation)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    ASSERT_EQ(vekDpCTLCfg(channel), VEK_OK);
    ASSERT_EQ(vekDpInit(channel), VEK_OK);
    EXPECT_THAT(laneStatus(), Each(0));
    EXPECT_EQ(ctl(channel, kCtlStatus), 0);
    EXPECT_EQ(ctl(channel, kCtlAttributes), 0);
    EXPECT_EQ(vekDpCTLCfg(channel), VEK_IO_ERROR);
}

TEST_P(DisplayPort, CannotTrainWithoutThePhysPower)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    ASSERT_EQ(vekDpPhyWrite(channel, kPhyControl, 0), VEK_OK);
    EXPECT_THAT(laneStatus(), Each(0));
    EXPECT_EQ(vekDpLinkTraining(channel), VEK_TIMED_OUT);
    EXPECT_EQ(ctl(channel, kCtlStatus), 0);
}

TEST_P(DisplayPort, StopsItsStreamToTrainAgain)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    ASSERT_EQ(vekDpCTLCfg(channel), VEK_OK);
    EXPECT_EQ(ctl(channel, kCtlStatus), 3);
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    EXPECT_EQ(ctl(channel, kCtlStatus), 1);
    EXPECT_EQ(laneStatus(), trainedStatus());
}

TEST_P(DisplayPort, SendsTheTimingOfItsSink)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    ASSERT_EQ(vekDpCTLCfg(channel), VEK_OK);
    const Fields timing = mode(channel);
    const auto field = [&](uint32_t address) { return static_cast<int32_t>(ctl(channel, address)); };
    const auto wide = [&](uint32_t low) { return field(low) | field(low + 2) << 16; };
    EXPECT_EQ(wide(0x014), 0x8000);
    EXPECT_EQ(wide(0x010), int64_t{timing[0]} * 0x8000 / (27000 * GetParam().rate));
    EXPECT_EQ(field(0x018), timing[4]);
    EXPECT_EQ(field(0x01a), timing[8]);
    EXPECT_EQ(field(0x01c), timing[4] - timing[2]);
    EXPECT_EQ(field(0x01e), timing[8] - timing[6]);
    EXPECT_EQ(field(0x020), timing[3] - timing[2]);
    // All sinks but none have a positive horizontal and a negative vertical sync.
    EXPECT_EQ(field(0x022), 0x8000 | (timing[7] - timing[6]));
    EXPECT_EQ(field(0x024), timing[1]);
    EXPECT_EQ(field(0x026), timing[5]);
    EXPECT_EQ(field(0x028), 0x20);
    EXPECT_EQ(field(0x02a), 0);
    EXPECT_EQ(ctl(channel, kCtlStatus), 3);
}

TEST_P(DisplayPort, RefusesATimingThatItsLinkDoesNotCarry)
{
    ASSERT_EQ(vekDpLinkTraining(channel), VEK_OK);
    ASSERT_EQ(vekDpCdbWrite(channel, kCtlRate, 0x06), VEK_OK);
    ASSERT_EQ(vekDpCdbWrite(channel, kCtlLanes, 1), VEK_OK);
    EXPECT_EQ(vekDpCTLCfg(channel), VEK_OUT_OF_RANGE);
    EXPECT_EQ(ctl(channel, kCtlStatus), 1);
    EXPECT_EQ(ctl(channel, kCtlAttributes), 0);
}

TEST_P(DisplayPort, KeepsItsPhysRegisters)
{
    ASSERT_EQ(vekDpInit(channel), VEK_OK);
    const uint32_t id = phy(channel, kPhyId);
    EXPECT_NE(id, 0U);
    for (const uint32_t address : {kPhyId, kPhyStatus}) {
        EXPECT_EQ(vekDpPhyWrite(channel, address, 0x1234), VEK_PROTECTED);
    }
    EXPECT_EQ(phy(channel, kPhyId), id);
    for (uint32_t address = kPhyFree; address <= kPhyLast; address += 4) {
        EXPECT_EQ(vekDpPhyWrite(channel, address, 0x80000000U | address), VEK_OK);
    }
    for (uint32_t address = kPhyFree; address <= kPhyLast; address += 4) {
        EXPECT_EQ(phy(channel, address), 0x80000000U | address);
    }
    EXPECT_EQ(vekDpPhyWrite(channel, kPhyControl, 2), VEK_OK);
    EXPECT_EQ(phy(channel, kPhyFree), 0U);
    EXPECT_EQ(phy(channel, kPhyControl), 0U);
    for (const uint32_t address : {0x01U, 0x02U, 0x06U, 0xfdU, 0x100U, 0xfffffffcU}) {
        uint32_t value = 0;
        EXPECT_EQ(vekDpPhyRead(channel, address, &value), VEK_NO_RESPONSE) << address;
        EXPECT_EQ(value, 0xffffffffU);
        EXPECT_EQ(vekDpPhyWrite(channel, address, 1), VEK_NO_RESPONSE) << address;
    }
}

TEST_P(DisplayPort, KeepsItsControllersRegisters)
{
    const uint16_t id = ctl(channel, kCtlId);
    EXPECT_NE(id, 0);
    for (const uint32_t address : {kCtlId, kCtlStatus}) {
        EXPECT_EQ(vekDpCdbWrite(channel, address, 0x1234), VEK_PROTECTED);
    }
    EXPECT_EQ(ctl(channel, kCtlId), id);
    for (uint32_t address = kCtlFree; address <= kCtlLast; address += 2) {
        EXPECT_EQ(vekDpCdbWrite(channel, address, static_cast<uint16_t>(0x8000 | address)), VEK_OK);
    }
    for (uint32_t address = kCtlFree; address <= kCtlLast; address += 2) {
        EXPECT_EQ(ctl(channel, address), 0x8000 | address);
    }
    EXPECT_EQ(vekDpCdbWrite(channel, kCtlControl, 2), VEK_OK);
    EXPECT_EQ(ctl(channel, kCtlFree), 0);
    EXPECT_EQ(ctl(channel, kCtlControl), 0);
    for (const uint32_t address : {0x001U, 0x003U, 0x1ffU, 0x200U, 0xfffffffeU}) {
        uint16_t value = 0;
        EXPECT_EQ(vekDpCdbRead(channel, address, &value), VEK_NO_RESPONSE) << address;
        EXPECT_EQ(value, 0xffff);
        EXPECT_EQ(vekDpCdbWrite(channel, address, 1), VEK_NO_RESPONSE) << address;
    }
}

TEST(DisplayPortModes, AreThePreferredOnesOfTheSinks)
{
    constexpr int kPolarities = VEK_HSYNC_POSITIVE | VEK_VSYNC_NEGATIVE;
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(mode(0), (Fields{241500, 2560, 2608, 2640, 2720, 1440, 1443, 1448, 1481, kPolarities}));
    EXPECT_EQ(mode(1), (Fields{138500, 1920, 1968, 2000, 2080, 1080, 1083, 1088, 1111, kPolarities}));
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_EQ(mode(0), (Fields{154000, 1920, 1968, 2000, 2080, 1200, 1203, 1209, 1235, kPolarities}));
    vekClose();
}

TEST(DisplayPortOutputs, AreApart)
{
    ASSERT_GE(vekRwOpen(0), 0);
    for (const int channel : {0, 1}) {
        ASSERT_EQ(vekDpInit(channel), VEK_OK);
    }
    ASSERT_EQ(vekDpLinkTraining(0), VEK_OK);
    ASSERT_EQ(vekDpPhyWrite(0, kPhyFree, 0x4321), VEK_OK);
    ASSERT_EQ(vekDpAuxWrite(0, 0x301, 0x11), VEK_OK);
    ASSERT_EQ(vekDpAuxWrite(1, 0x301, 0x22), VEK_OK);
    EXPECT_EQ(phy(1, kPhyRate), 0U);
    EXPECT_EQ(phy(1, kPhyFree), 0U);
    EXPECT_EQ(ctl(1, kCtlRate), 0);
    EXPECT_EQ(dpcd(1, kLaneStatus), 0);
    EXPECT_EQ(dpcd(0, 0x301), 0x11);
    vekClose();
}

class DisplayPortChannels : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, DisplayPortChannels, testing::Values(0, 1));

TEST_P(DisplayPortChannels, AreTwoOnOneChipAndOneOnTheOther)
{
    const int outputs = GetParam() == 0 ? 2 : 1;
    for (const int channel : {-0x7fffffff - 1, -1, outputs, outputs + 1, 4, 0x7fffffff}) {
        std::vector<uint8_t> bytes(VEK_EDID_BUFFER_SIZE, 0xee);
        int length = 7;
        uint16_t word = 0xeeee;
        uint32_t value = 0xeeeeeeee;
        VekDisplayMode mode{};
        mode.clock = 7;
        EXPECT_EQ(vekDpInit(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpLinkTraining(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpCTLCfg(channel), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpModeRead(channel, &mode), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpAuxRead(channel, 0, bytes.data()), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpAuxReadBuf(channel, 0, bytes.data(), 4), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpAuxWrite(channel, 0x300, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpAuxEdidGet(channel, bytes.data(), &length), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpI2cRead(channel, 0x50, 0, bytes.data()), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpI2cReadBuf(channel, 0x50, 0, bytes.data(), 4), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpCdbRead(channel, 0, &word), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpCdbWrite(channel, kCtlFree, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpPhyRead(channel, 0, &value), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekDpPhyWrite(channel, kPhyFree, 0), VEK_BAD_ARGUMENT);
        EXPECT_THAT(bytes, Each(0xee));
        EXPECT_EQ(length, 7);
        EXPECT_EQ(word, 0xeeee);
        EXPECT_EQ(value, 0xeeeeeeee);
        EXPECT_EQ(mode.clock, 7);
    }
}

}  // namespace
