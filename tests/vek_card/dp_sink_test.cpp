#include "card/dp_sink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "aux_fakes.h"
#include "card/dp_phy.h"
#include "card/dp_sinks.h"
#include "drivers/aux_i2c.h"
#include "drivers/ddc_edid.h"
#include "drivers/edid/edid.h"
#include "drivers/edp_panel.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::AuxAnswer;
using vek::AuxCommand;
using vek::AuxManner;
using vek::AuxReply;
using vek::AuxRequest;
using vek::AuxTransfer;
using vek::DpPhy;
using vek::DpSink;
using vek::DpSinkFacts;

/// A sink at a PHY of its own, and a way to it.
class Sink
{
public:
    explicit Sink(const DpSinkFacts& facts) : sink(facts, phy), aux(sink, pause) {}

    AuxReply write(std::uint32_t address, std::initializer_list<std::uint8_t> bytes)
    {
        AuxRequest request{
            .command = AuxCommand::kNativeWrite, .address = address, .length = static_cast<std::uint8_t>(bytes.size())};
        std::copy(bytes.begin(), bytes.end(), request.data.begin());
        return sink.transact(request);
    }

    std::uint8_t field(std::uint32_t address)
    {
        std::uint8_t value = 0xee;
        EXPECT_EQ(aux.readDpcd(address, value), VEK_OK);
        return value;
    }

    DpPhy phy{true};
    DpSink sink;
    TestClock clock;
    TestPause pause{clock};
    AuxTransfer aux;
};

DpSinkFacts monitorWith(std::span<const std::uint8_t> edid)
{
    DpSinkFacts facts = vek::kDpMonitorQhd;
    facts.edid = edid;
    return facts;
}

/// An EDID whose extensions are numbered in their second byte.
std::vector<std::uint8_t> edidWith(std::size_t extensions)
{
    const auto base = std::span(vek::kEdpPanelEdid).first(vek::kEdidBlockSize);
    std::vector<std::uint8_t> edid(base.begin(), base.end());
    edid[126] = static_cast<std::uint8_t>(extensions);
    edid[127] = static_cast<std::uint8_t>(edid[127] - extensions);
    for (std::size_t number = 1; number <= extensions; ++number) {
        std::vector<std::uint8_t> block(vek::kEdidBlockSize);
        block[0] = 0xff;
        block[1] = static_cast<std::uint8_t>(number);
        block.back() = static_cast<std::uint8_t>(1 - number);
        edid.insert(edid.end(), block.begin(), block.end());
    }
    return edid;
}

TEST(DpSinkManner, DecidesHowEveryRequestIsAnswered)
{
    const struct {
        AuxManner manner;
        AuxAnswer answer;
        int result;
    } cases[] = {{AuxManner::kDefers, AuxAnswer::kDefer, VEK_TIMED_OUT},
                 {AuxManner::kSilent, AuxAnswer::kNone, VEK_NO_RESPONSE},
                 {AuxManner::kRefuses, AuxAnswer::kNack, VEK_IO_ERROR}};
    for (const auto& [manner, answer, result] : cases) {
        Sink sink(vek::kDpMonitorQhd);
        sink.sink.setManner(manner);
        EXPECT_EQ(sink.write(0x300, {1}).answer, answer);
        std::array<std::uint8_t, 4> bytes{};
        EXPECT_EQ(sink.aux.readDpcd(0, bytes), result);
        EXPECT_EQ(vek::readAuxI2c(sink.aux, 0x50, 0, bytes), result);
        EXPECT_THAT(bytes, Each(0));
        std::array<std::uint8_t, VEK_EDID_BUFFER_SIZE> edid;
        std::size_t length = 0;
        vek::AuxEdidBlocks display(sink.aux);
        EXPECT_EQ(vek::readEdid(display, edid, length), result);
        sink.sink.setManner(AuxManner::kServes);
        EXPECT_EQ(sink.field(0x300), 0);
    }
}

TEST(DpSinkManner, IsSilenceWhereThereIsNoSink)
{
    Sink sink(vek::kNoDpSink);
    std::uint8_t value = 0xee;
    EXPECT_EQ(sink.aux.readDpcd(0, value), VEK_NO_RESPONSE);
    EXPECT_EQ(value, 0xee);
}

TEST(DpSinkFields, AreThoseOfTheFacts)
{
    Sink sink(vek::kDpMonitorQhd);
    std::array<std::uint8_t, 16> fields;
    ASSERT_EQ(sink.aux.readDpcd(0, fields), VEK_OK);
    EXPECT_THAT(fields, ElementsAre(0x12, 0x14, 0xc4, 0x01, 0, 0, 0x01, 0, 0x02, 0, 0, 0, 0x08, 0, 0, 0));
    std::array<std::uint8_t, 12> identity;
    ASSERT_EQ(sink.aux.readDpcd(0x400, identity), VEK_OK);
    EXPECT_THAT(identity, ElementsAre(0x02, 0x54, 0x56, 'V', 'i', 's', 't', '2', '7', 0x10, 0x01, 0));
}

TEST(DpSinkFields, TakeAWriteAsFarAsTheyCanBeWritten)
{
    Sink sink(vek::kDpMonitorQhd);
    EXPECT_EQ(sink.write(0x300, {1, 2, 3}).answer, AuxAnswer::kAck);
    // The fields of the source end at 0x30b.
    const AuxReply reply = sink.write(0x30a, {4, 5, 6, 7});
    EXPECT_EQ(reply.answer, AuxAnswer::kNack);
    EXPECT_EQ(reply.length, 1);
    EXPECT_EQ(reply.data[0], 2);
    EXPECT_EQ(sink.field(0x30b), 5);
    EXPECT_EQ(sink.field(0x30c), 0);
    EXPECT_EQ(sink.write(0x202, {7}).data[0], 0);
    EXPECT_EQ(sink.write(0x201, {0xff}).answer, AuxAnswer::kAck);
    EXPECT_EQ(sink.field(0x201), 0);
}

TEST(DpSinkFields, OfAPanelAreItsOwn)
{
    Sink panel(vek::kEdpPanel);
    Sink monitor(vek::kDpMonitorQhd);
    EXPECT_EQ(panel.field(0x00d), 0x09);
    EXPECT_EQ(panel.field(0x700), 0x02);
    EXPECT_EQ(monitor.field(0x00d), 0);
    EXPECT_EQ(monitor.field(0x700), 0);
    EXPECT_EQ(panel.write(0x10a, {0x80}).answer, AuxAnswer::kAck);
    EXPECT_TRUE(panel.sink.showsSelfTest());
    EXPECT_EQ(monitor.write(0x10a, {0x80}).answer, AuxAnswer::kNack);
    EXPECT_FALSE(monitor.sink.showsSelfTest());
}

TEST(DpSinkFields, SwitchAPanelsSelfTest)
{
    Sink panel(vek::kEdpPanel);
    EXPECT_EQ(vek::setPanelSelfTest(panel.aux, true), VEK_OK);
    EXPECT_TRUE(panel.sink.showsSelfTest());
    panel.sink.setManner(AuxManner::kDefers);
    EXPECT_EQ(vek::setPanelSelfTest(panel.aux, false), VEK_TIMED_OUT);
    EXPECT_TRUE(panel.sink.showsSelfTest());
    panel.sink.setManner(AuxManner::kServes);
    EXPECT_EQ(vek::setPanelSelfTest(panel.aux, false), VEK_OK);
    EXPECT_FALSE(panel.sink.showsSelfTest());
    Sink monitor(vek::kDpMonitorQhd);
    EXPECT_EQ(vek::setPanelSelfTest(monitor.aux, true), VEK_NOT_AVAILABLE);
}

TEST(DpSinkRequests, HaveToBeWellFormed)
{
    Sink sink(vek::kDpMonitorQhd);
    const AuxRequest malformed[] = {
        {.command = AuxCommand::kNativeRead, .address = 0, .length = 0},
        {.command = AuxCommand::kNativeRead, .address = 0, .length = 17},
        {.command = AuxCommand::kNativeWrite, .address = 0x300, .length = 255},
        {.command = AuxCommand::kNativeRead, .address = 0x100000, .length = 1},
        {.command = AuxCommand::kI2cRead, .address = 0x50, .length = 17},
        {.command = static_cast<AuxCommand>(0x7), .address = 0, .length = 1},
    };
    for (const AuxRequest& request : malformed) {
        EXPECT_EQ(sink.sink.transact(request).answer, AuxAnswer::kNack);
    }
    // At the end of the addresses nothing is written and zeros are read.
    EXPECT_EQ(sink.write(0xfffff, {1, 2}).data[0], 0);
    const AuxReply last = sink.sink.transact({.command = AuxCommand::kNativeRead, .address = 0xfffff, .length = 16});
    EXPECT_EQ(last.length, 16);
    EXPECT_THAT(last.data, Each(0));
}

TEST(DpSinkI2c, AcknowledgesTheDevicesThatThereAre)
{
    Sink large(vek::kDpMonitorQhd);
    Sink small(vek::kDpMonitorWuxga);
    const auto ping = [](Sink& sink, std::uint32_t device) {
        return sink.sink.transact({.command = AuxCommand::kI2cWrite, .address = device}).answer;
    };
    EXPECT_EQ(ping(large, 0x50), AuxAnswer::kAck);
    EXPECT_EQ(ping(large, 0x30), AuxAnswer::kAck);
    EXPECT_EQ(ping(small, 0x50), AuxAnswer::kAck);
    EXPECT_EQ(ping(small, 0x30), AuxAnswer::kI2cNack);
    for (const std::uint32_t device : {0x00U, 0x51U, 0x7fU, 0xd0U, 0xfffffU}) {
        EXPECT_EQ(ping(large, device), AuxAnswer::kI2cNack) << device;
    }
    EXPECT_EQ(large.sink.transact({.command = AuxCommand::kI2cWriteStatusUpdate, .address = 0x50}).answer,
              AuxAnswer::kAck);
}

TEST(DpSinkI2c, GoesOnInTheMiddleOfATransaction)
{
    Sink sink(vek::kDpMonitorQhd);
    AuxRequest offset{.command = AuxCommand::kI2cWrite, .middleOfTransaction = true, .address = 0x50, .length = 1};
    offset.data[0] = 8;
    ASSERT_EQ(sink.sink.transact(offset).answer, AuxAnswer::kAck);
    AuxRequest read{.command = AuxCommand::kI2cRead, .middleOfTransaction = true, .address = 0x50, .length = 3};
    for (const std::size_t at : {8U, 11U, 14U}) {
        const AuxReply reply = sink.sink.transact(read);
        ASSERT_EQ(reply.length, 3);
        for (std::size_t index = 0; index < 3; ++index) {
            EXPECT_EQ(reply.data[index], vek::kDpMonitorQhdEdid[at + index]);
        }
    }
    read.middleOfTransaction = false;
    EXPECT_EQ(sink.sink.transact(read).data[0], vek::kDpMonitorQhdEdid[17]);
}

TEST(DpSinkI2c, FindsTheEdidWriteProtected)
{
    Sink sink(vek::kDpMonitorQhd);
    AuxRequest write{.command = AuxCommand::kI2cWrite, .address = 0x50, .length = 3};
    const AuxReply reply = sink.sink.transact(write);
    EXPECT_EQ(reply.answer, AuxAnswer::kI2cNack);
    EXPECT_EQ(reply.length, 1);
    EXPECT_EQ(reply.data[0], 1);
}

TEST(DpSinkEdid, IsReadWholeWithTheSegmentPointer)
{
    Sink sink(vek::kDpMonitorQhd);
    vek::EdidBuffer buffer;
    std::size_t length = 0;
    vek::AuxEdidBlocks display(sink.aux);
    ASSERT_EQ(vek::readEdid(display, buffer, length), VEK_OK);
    EXPECT_EQ(length, vek::kDpMonitorQhdEdid.size());
    EXPECT_TRUE(std::equal(vek::kDpMonitorQhdEdid.begin(), vek::kDpMonitorQhdEdid.end(), buffer.begin()));
    EXPECT_TRUE(vek::checkEdid(std::span<const std::uint8_t>(buffer).first(length)).valid());
    EXPECT_EQ(sink.clock.nanoseconds(), 0U);
}

TEST(DpSinkEdid, IsCutWhereTheBufferEnds)
{
    const std::vector<std::uint8_t> edid = edidWith(7);
    Sink sink(monitorWith(edid));
    std::array<std::uint8_t, VEK_EDID_BUFFER_SIZE + 1> buffer;
    buffer.fill(0xee);
    std::size_t length = 0;
    vek::AuxEdidBlocks display(sink.aux);
    ASSERT_EQ(vek::readEdid(display, std::span(buffer).first(VEK_EDID_BUFFER_SIZE), length), VEK_OK);
    EXPECT_EQ(length, std::size_t{VEK_EDID_BUFFER_SIZE});
    EXPECT_TRUE(std::equal(edid.begin(), edid.begin() + VEK_EDID_BUFFER_SIZE, buffer.begin()));
    EXPECT_EQ(buffer.back(), 0xee);
    vek::EdidBuffer whole;
    ASSERT_EQ(vek::readEdid(display, whole, length), VEK_OK);
    EXPECT_EQ(length, edid.size());
    EXPECT_TRUE(std::equal(edid.begin(), edid.end(), whole.begin()));
}

TEST(DpSinkEdid, IsDeliveredDamagedAsItIs)
{
    std::vector<std::uint8_t> edid = edidWith(2);
    edid[200] ^= 0x10;
    Sink sink(monitorWith(edid));
    vek::EdidBuffer buffer;
    std::size_t length = 0;
    vek::AuxEdidBlocks display(sink.aux);
    ASSERT_EQ(vek::readEdid(display, buffer, length), VEK_OK);
    EXPECT_EQ(length, edid.size());
    EXPECT_FALSE(vek::checkEdid(std::span<const std::uint8_t>(buffer).first(length)).valid());
    // Without its header a base block says nothing of extensions.
    edid[0] = 0x55;
    ASSERT_EQ(vek::readEdid(display, buffer, length), VEK_OK);
    EXPECT_EQ(length, vek::kEdidBlockSize);
}

}  // namespace
