#include "card/mcu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "aux_fakes.h"
#include "card/dp_phy.h"
#include "card/dp_sink.h"
#include "card/dp_sinks.h"
#include "test_clock.h"
#include "vek.h"

namespace
{

using testing::ElementsAre;
using vek::AuxAnswer;
using vek::AuxCommand;
using vek::AuxManner;
using vek::AuxRequest;
using vek::Mcu;
using vek::McuCondition;
namespace box = vek::mcu_mailbox;

constexpr std::uint8_t kI2cRead = 1;
constexpr std::uint8_t kAuxWrite = 8;
constexpr std::uint8_t kAuxRead = 9;

/// An MCU with a sink behind it, and a host before it.
class Board
{
public:
    explicit Board(vek::AuxChannel& sink, McuCondition condition = McuCondition::kRunning) : mcu(sink, clock, condition)
    {
    }

    std::uint64_t read(std::size_t offset, unsigned width = 1)
    {
        const auto [result, value] = mcu.mailbox()->read(offset, width);
        EXPECT_EQ(result, VEK_OK);
        return value;
    }

    void write(std::size_t offset, std::uint64_t value, unsigned width = 1)
    {
        EXPECT_EQ(mcu.mailbox()->write(offset, width, value), VEK_OK);
    }

    void writeReset(std::uint32_t value) { EXPECT_EQ(mcu.resetControl()->write(0, 4, value), VEK_OK); }

    bool signs() { return read(box::kSignature, 4) == box::kSignatureValue; }
    bool done() { return read(box::kCompletion, 4) == box::kDone; }

    void ring(std::uint8_t command, std::uint32_t address, std::uint8_t length, std::uint8_t count)
    {
        write(box::kCommand, command);
        write(box::kAddress, address, 4);
        write(box::kLength, length);
        write(box::kCount, count);
        write(box::kDoorbell, box::kRing);
    }

    void request(std::uint8_t command, std::uint32_t address, std::uint8_t length, std::uint8_t count)
    {
        ring(command, address, length, count);
        clock.advanceMilliseconds(2);
        EXPECT_TRUE(done());
    }

    void release() { write(box::kCompletion, 0, 4); }

    std::uint64_t data(std::size_t index) { return read((box::kData + index) % box::kSize); }

    TestClock clock;
    Mcu mcu;
};

class McuOfACard : public testing::Test
{
protected:
    vek::DpPhy phy{true};
    vek::DpSink sink{vek::kDpMonitorQhd, phy};
    Board board{sink};
};

TEST_F(McuOfACard, TakesAStatedTimeForATransaction)
{
    const struct {
        std::uint8_t count;
        std::uint64_t parts;
    } cases[] = {{1, 1}, {16, 1}, {17, 2}, {255, 16}, {0, 16}};
    for (const auto& [count, parts] : cases) {
        board.ring(kAuxRead, 0, static_cast<std::uint8_t>(count - 1), count);
        EXPECT_FALSE(board.done());
        board.clock.advanceNanoseconds(Mcu::kTransactionTime * (1 + parts) - 1);
        EXPECT_FALSE(board.done());
        board.clock.advanceNanoseconds(1);
        EXPECT_TRUE(board.done());
        board.release();
        EXPECT_FALSE(board.done());
    }
}

TEST_F(McuOfACard, ForgetsACompletionThatWasNotReleased)
{
    board.request(kAuxRead, 0x100000, 0, 1);
    EXPECT_TRUE(board.done());
    board.ring(kAuxRead, 0x001, 0, 1);
    EXPECT_FALSE(board.done());
    board.clock.advanceMilliseconds(1);
    EXPECT_TRUE(board.done());
    EXPECT_EQ(board.read(box::kStatus), 0U);
    EXPECT_EQ(board.data(0), 0x14U);
}

TEST_F(McuOfACard, DoesNotHearADoorbellWhileItWorks)
{
    board.ring(kAuxRead, 0x001, 0, 1);
    board.ring(kAuxRead, 0x200, 0, 1);
    board.clock.advanceMilliseconds(2);
    EXPECT_TRUE(board.done());
    EXPECT_EQ(board.data(0), 0x14U);
    board.release();
    board.clock.advanceMilliseconds(2);
    EXPECT_FALSE(board.done());
}

TEST_F(McuOfACard, HearsOneWordOnly)
{
    for (const unsigned word : {0x00U, 0x55U, 0xabU, 0xffU}) {
        board.write(box::kDoorbell, word);
        board.clock.advanceMilliseconds(2);
        EXPECT_FALSE(board.done());
    }
    // A longer item may ring as well.
    board.write(box::kCount, 1);
    board.write(box::kLength, 0xaa'00'09'00, 4);
    board.clock.advanceMilliseconds(2);
    EXPECT_TRUE(board.done());
    EXPECT_EQ(board.data(0), 0x12U);
}

TEST_F(McuOfACard, SaysHowManyBytesItCaught)
{
    // 256 bytes, a number that a byte cannot hold.
    board.request(kAuxRead, 0x000, 0xff, 0);
    EXPECT_EQ(board.read(box::kCaught), 255U);
    EXPECT_EQ(board.read(box::kStatus), 0U);
    EXPECT_EQ(board.data(1), 0x14U);
    board.release();
    EXPECT_TRUE(board.signs());
}

TEST_F(McuOfACard, CatchesWhatComesBeforeAFailure)
{
    NotingAux channel([&](const AuxRequest& request) {
        return request.address < 0x20 ? fieldsAt(request.address, request.length) : replyWith(AuxAnswer::kNack);
    });
    Board failing(channel);
    failing.request(kAuxRead, 0, 99, 100);
    EXPECT_EQ(failing.read(box::kCaught), 0x20U);
    EXPECT_EQ(failing.read(box::kStatus), 0U);
    EXPECT_EQ(failing.data(0x1f), 0x1fU);
    EXPECT_EQ(failing.data(0x20), 0U);
}

TEST_F(McuOfACard, SendsAsManyBytesAsTheLengthSays)
{
    NotingAux channel([](const AuxRequest&) { return replyWith(AuxAnswer::kAck); });
    Board writing(channel);
    for (std::size_t index = 0; index < 0x80; ++index) {
        writing.write(box::kData + index, index);
    }
    // The count, left by the request before, does not matter.
    writing.request(kAuxWrite, 0x300, 0, 77);
    ASSERT_EQ(channel.requests.size(), 1U);
    EXPECT_EQ(channel.requests[0].length, 1);
    writing.request(kAuxWrite, 0x300, 0x7f, 0);
    ASSERT_EQ(channel.requests.size(), 9U);
    EXPECT_EQ(channel.requests[8].address, 0x370U);
    EXPECT_EQ(channel.requests[8].data[15], 0x7f);
    EXPECT_EQ(writing.read(box::kStatus), 0U);
}

TEST_F(McuOfACard, SendsLongDataFromTheWholePage)
{
    NotingAux channel([](const AuxRequest&) { return replyWith(AuxAnswer::kAck); });
    Board writing(channel);
    writing.write(0x40, 0x99);
    writing.request(kAuxWrite, 0, 0xff, 0);
    ASSERT_EQ(channel.requests.size(), 16U);
    EXPECT_EQ(channel.requests[12].data[0], 0x99);
    EXPECT_EQ(channel.requests[8].data[0], 0xef);
    EXPECT_TRUE(writing.signs());
}

TEST_F(McuOfACard, ReportsASinkThatGivesNothing)
{
    for (const AuxManner manner : {AuxManner::kDefers, AuxManner::kSilent, AuxManner::kRefuses}) {
        sink.setManner(manner);
        board.request(kAuxRead, 0, 0, 1);
        EXPECT_EQ(board.read(box::kStatus), box::kNothingOverAux);
        board.request(kAuxWrite, 0x300, 0, 1);
        EXPECT_EQ(board.read(box::kStatus), box::kNothingOverAux);
        board.request(kI2cRead, 0x50, 0, 0x80);
        EXPECT_EQ(board.read(box::kStatus), box::kNothingOverI2c);
        EXPECT_EQ(board.read(box::kVerdict), 0U);
        EXPECT_EQ(board.read(box::kCaught), 0U);
    }
    sink.setManner(AuxManner::kServes);
    board.request(kAuxRead, 1, 0, 1);
    EXPECT_EQ(board.read(box::kStatus), 0U);
}

TEST_F(McuOfACard, FindsBlocksThatAreDamaged)
{
    std::vector<std::uint8_t> edid(vek::kDpMonitorQhdEdid.begin(), vek::kDpMonitorQhdEdid.end());
    edid[200] ^= 1;
    vek::DpSinkFacts facts = vek::kDpMonitorQhd;
    facts.edid = edid;
    vek::DpSink damaged(facts, phy);
    Board reading(damaged);
    const struct {
        std::uint8_t subAddress;
        std::uint8_t count;
        std::uint8_t verdict;
    } cases[] = {{0, 0x80, 1}, {0, 0x81, 1}, {0, 0xff, 1}, {0, 0, 0}, {0x80, 0x80, 0}, {0, 0x7f, 0}};
    for (const auto& [subAddress, count, verdict] : cases) {
        reading.write(box::kSubAddress, subAddress);
        reading.request(kI2cRead, 0x50, 0, count);
        EXPECT_EQ(reading.read(box::kStatus), 0U);
        EXPECT_EQ(reading.read(box::kVerdict), verdict) << int{subAddress} << " " << int{count};
        reading.release();
    }
}

TEST_F(McuOfACard, StopsATransactionWithItsReset)
{
    board.ring(kAuxRead, 1, 0, 1);
    board.writeReset(0xffffff00);
    board.clock.advanceMilliseconds(5);
    EXPECT_FALSE(board.done());
    EXPECT_FALSE(board.signs());
    board.writeReset(0xffffff08);
    board.clock.advanceNanoseconds(Mcu::kBootTime - 1);
    EXPECT_FALSE(board.signs());
    board.ring(kAuxRead, 1, 0, 1);
    board.clock.advanceNanoseconds(1);
    EXPECT_TRUE(board.signs());
    board.clock.advanceMilliseconds(5);
    // It did not hear the doorbell while it booted.
    EXPECT_FALSE(board.done());
    board.request(kAuxRead, 1, 0, 1);
    EXPECT_EQ(board.data(0), 0x14U);
}

TEST_F(McuOfACard, IsResetByItsBitAlone)
{
    vek::AddressSpace& control = *board.mcu.resetControl();
    EXPECT_EQ(control.read(0, 4).value, 0xffffff08U);
    EXPECT_EQ(control.write(0, 4, 0x08), VEK_OK);
    EXPECT_EQ(control.write(4, 4, 0), VEK_OK);
    EXPECT_EQ(control.write(1, 1, 0x55), VEK_OK);
    EXPECT_TRUE(board.signs());
    EXPECT_EQ(control.read(0, 8).value, 0x5508U);
    EXPECT_EQ(control.write(0, 1, 0xf7), VEK_OK);
    EXPECT_FALSE(board.signs());
    EXPECT_EQ(control.read(0, 2).value, 0x55f7U);
    EXPECT_EQ(control.write(0, 8, ~std::uint64_t{0}), VEK_OK);
    board.clock.advanceNanoseconds(Mcu::kBootTime);
    EXPECT_TRUE(board.signs());
    EXPECT_EQ(control.read(4, 4).value, 0xffffffffU);
}

TEST_F(McuOfACard, MayComeUpHeldInReset)
{
    Board held(sink, McuCondition::kHeldInReset);
    held.clock.advanceMilliseconds(1000);
    EXPECT_FALSE(held.signs());
    held.ring(kAuxRead, 1, 0, 1);
    held.clock.advanceMilliseconds(5);
    EXPECT_FALSE(held.done());
    EXPECT_EQ(held.mcu.resetControl()->read(0, 4).value, 0xffffff00U);
    held.writeReset(0xffffff00);
    held.writeReset(0xffffff08);
    held.clock.advanceMilliseconds(1000);
    EXPECT_TRUE(held.signs());
    held.request(kAuxRead, 1, 0, 1);
    EXPECT_EQ(held.data(0), 0x14U);
}

TEST_F(McuOfACard, MayHaveNoFirmware)
{
    Board empty(sink, McuCondition::kNoFirmware);
    EXPECT_FALSE(empty.signs());
    empty.writeReset(0xffffff00);
    empty.writeReset(0xffffff08);
    empty.clock.advanceMilliseconds(1000);
    EXPECT_FALSE(empty.signs());
    empty.ring(kAuxRead, 1, 0, 1);
    empty.clock.advanceMilliseconds(1000);
    EXPECT_FALSE(empty.done());
    EXPECT_EQ(empty.read(box::kDoorbell), box::kRing);
}

TEST_F(McuOfACard, AnswersInItsWindowsOnly)
{
    for (vek::AddressSpace* space : {board.mcu.mailbox(), board.mcu.resetControl()}) {
        const std::uint64_t size = space == board.mcu.mailbox() ? box::kSize : Mcu::kResetControlSize;
        for (const std::uint64_t address : {size - 3, size, ~std::uint64_t{0}}) {
            EXPECT_EQ(space->read(address, 4).result, VEK_NO_RESPONSE);
            EXPECT_EQ(space->write(address, 4, 1), VEK_NO_RESPONSE);
        }
        EXPECT_EQ(space->write(size - 4, 4, 0x01020304), VEK_OK);
        EXPECT_EQ(space->read(size - 4, 4).value, 0x01020304U);
    }
    EXPECT_TRUE(board.signs());
}

}  // namespace
