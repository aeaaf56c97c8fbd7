#include "drivers/aux_transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <ostream>
#include <span>
#include <vector>

#include "aux_fakes.h"
#include "drivers/aux_i2c.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::AuxAnswer;
using vek::AuxCommand;
using vek::AuxReply;
using vek::AuxRequest;
using vek::AuxTransfer;

// What matters of a request.
struct Step {
    AuxCommand command;
    std::uint32_t address;
    int length;
    bool middle;
    int firstByte;  // Of what a write sends; -1 where there is none.

    bool operator==(const Step&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Step& step)
{
    return out << "{" << static_cast<int>(step.command) << " at " << step.address << " length " << step.length
               << (step.middle ? " MOT" : "") << " data " << step.firstByte << "}";
}

std::vector<Step> stepsOf(const NotingAux& aux)
{
    std::vector<Step> steps;
    for (const AuxRequest& request : aux.requests) {
        const bool writes = request.command == AuxCommand::kNativeWrite || request.command == AuxCommand::kI2cWrite;
        steps.push_back({request.command, request.address, request.length, request.middleOfTransaction,
                         writes && request.length != 0 ? request.data[0] : -1});
    }
    return steps;
}

std::vector<std::uint8_t> numbered(std::size_t count)
{
    std::vector<std::uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

AuxReply fields(const AuxRequest& request)
{
    return fieldsAt(request.address, request.length);
}

// Answers so many times, then with the fields.
NotingAux::Answer first(int times, AuxReply reply)
{
    return [times, reply](const AuxRequest& request) mutable { return times-- > 0 ? reply : fields(request); };
}

NotingAux::Answer always(AuxReply reply)
{
    return [reply](const AuxRequest&) { return reply; };
}

class AuxDpcd : public testing::Test
{
protected:
    int read(NotingAux& channel, std::uint32_t address, std::span<std::uint8_t> bytes)
    {
        return AuxTransfer(channel, pause).readDpcd(address, bytes);
    }

    int write(NotingAux& channel, std::uint32_t address, std::span<const std::uint8_t> bytes)
    {
        return AuxTransfer(channel, pause).writeDpcd(address, bytes);
    }

    TestClock clock;
    TestPause pause{clock};
};

TEST_F(AuxDpcd, IsReadSixteenBytesAtATime)
{
    NotingAux channel(fields);
    std::vector<std::uint8_t> bytes(35);
    EXPECT_EQ(read(channel, 0, bytes), VEK_OK);
    EXPECT_EQ(bytes, numbered(35));
    EXPECT_THAT(stepsOf(channel), ElementsAre(Step{AuxCommand::kNativeRead, 0, 16, false, -1},
                                              Step{AuxCommand::kNativeRead, 16, 16, false, -1},
                                              Step{AuxCommand::kNativeRead, 32, 3, false, -1}));
    EXPECT_EQ(clock.nanoseconds(), 0U);
}

TEST_F(AuxDpcd, IsWrittenSixteenBytesAtATime)
{
    NotingAux channel(always(replyWith(AuxAnswer::kAck)));
    EXPECT_EQ(write(channel, 0x300, numbered(33)), VEK_OK);
    EXPECT_THAT(stepsOf(channel), ElementsAre(Step{AuxCommand::kNativeWrite, 0x300, 16, false, 0},
                                              Step{AuxCommand::kNativeWrite, 0x310, 16, false, 16},
                                              Step{AuxCommand::kNativeWrite, 0x320, 1, false, 32}));
}

TEST_F(AuxDpcd, NeedsNoTransactionForNoBytes)
{
    NotingAux channel(fields);
    EXPECT_EQ(read(channel, 0, {}), VEK_OK);
    EXPECT_EQ(write(channel, 0, {}), VEK_OK);
    EXPECT_TRUE(channel.requests.empty());
}

TEST_F(AuxDpcd, HasTwentyBitsOfAddress)
{
    NotingAux channel(fields);
    std::vector<std::uint8_t> bytes(16, 0xee);
    for (const std::uint32_t address : {0xffff1U, 0x100000U, 0xfffffff8U, 0xffffffffU}) {
        EXPECT_EQ(read(channel, address, bytes), VEK_BAD_ARGUMENT);
        EXPECT_EQ(write(channel, address, bytes), VEK_BAD_ARGUMENT);
    }
    EXPECT_TRUE(channel.requests.empty());
    EXPECT_THAT(bytes, Each(0xee));
    EXPECT_EQ(read(channel, 0xffff0, bytes), VEK_OK);
}

TEST_F(AuxDpcd, GoesOnAfterAReplyWithLessThanAskedFor)
{
    NotingAux channel([](const AuxRequest& request) { return fieldsAt(request.address, request.length > 5 ? 5 : 1); });
    std::vector<std::uint8_t> bytes(18);
    EXPECT_EQ(read(channel, 0, bytes), VEK_OK);
    EXPECT_EQ(bytes, numbered(18));
}

TEST_F(AuxDpcd, TakesNoMoreThanAskedFor)
{
    NotingAux channel([](const AuxRequest& request) { return fieldsAt(request.address, 200); });
    std::array<std::uint8_t, 8> bytes;
    bytes.fill(0xee);
    EXPECT_EQ(read(channel, 0, std::span(bytes).first(3)), VEK_OK);
    EXPECT_THAT(bytes, ElementsAre(0, 1, 2, 0xee, 0xee, 0xee, 0xee, 0xee));
}

TEST_F(AuxDpcd, WaitsForASinkThatDefers)
{
    for (const AuxAnswer answer : {AuxAnswer::kDefer, AuxAnswer::kI2cDefer}) {
        NotingAux channel(first(vek::kMaxAuxDefers, replyWith(answer)));
        std::array<std::uint8_t, 1> byte{0xee};
        const std::uint64_t before = clock.nanoseconds();
        EXPECT_EQ(read(channel, 0x55, byte), VEK_OK);
        EXPECT_EQ(byte[0], 0x55);
        EXPECT_EQ(clock.nanoseconds() - before, vek::kMaxAuxDefers * std::uint64_t{vek::kAuxRetryMicroseconds} * 1000);
    }
}

TEST_F(AuxDpcd, GivesUpOnASinkThatDefersForEver)
{
    for (const AuxAnswer answer : {AuxAnswer::kDefer, AuxAnswer::kI2cDefer}) {
        NotingAux channel(always(replyWith(answer)));
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(channel, 0, byte), VEK_TIMED_OUT);
        EXPECT_EQ(channel.requests.size(), 1U + vek::kMaxAuxDefers);
        EXPECT_EQ(write(channel, 0, byte), VEK_TIMED_OUT);
        EXPECT_EQ(byte[0], 0xee);
    }
}

TEST_F(AuxDpcd, GivesUpOnASinkThatAcknowledgesButSendsNothing)
{
    NotingAux channel(always(replyWith(AuxAnswer::kAck)));
    std::array<std::uint8_t, 1> byte{0xee};
    EXPECT_EQ(read(channel, 0, byte), VEK_TIMED_OUT);
    EXPECT_EQ(channel.requests.size(), 1U + vek::kMaxAuxDefers);
    EXPECT_EQ(byte[0], 0xee);
}

TEST_F(AuxDpcd, AsksASilentSinkAgain)
{
    NotingAux lateChannel(first(vek::kMaxAuxSilences, replyWith(AuxAnswer::kNone)));
    std::array<std::uint8_t, 1> byte{0xee};
    EXPECT_EQ(read(lateChannel, 0x12, byte), VEK_OK);
    EXPECT_EQ(byte[0], 0x12);
    NotingAux silentChannel(always(replyWith(AuxAnswer::kNone)));
    EXPECT_EQ(read(silentChannel, 0, byte), VEK_NO_RESPONSE);
    EXPECT_EQ(silentChannel.requests.size(), 1U + vek::kMaxAuxSilences);
    EXPECT_EQ(write(silentChannel, 0, byte), VEK_NO_RESPONSE);
    EXPECT_EQ(byte[0], 0x12);
}

TEST_F(AuxDpcd, IsNotAskedAgainAfterARefusal)
{
    for (const AuxAnswer answer : {AuxAnswer::kNack, AuxAnswer::kI2cNack, static_cast<AuxAnswer>(0x77)}) {
        NotingAux channel(always(replyWith(answer)));
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(channel, 0, byte), VEK_IO_ERROR);
        EXPECT_EQ(write(channel, 0, byte), VEK_IO_ERROR);
        EXPECT_EQ(channel.requests.size(), 2U);
    }
}

TEST_F(AuxDpcd, IsWrittenOnWhereASinkStopped)
{
    NotingAux channel([](const AuxRequest& request) {
        return request.length > 5 ? replyWith(AuxAnswer::kNack, {5}) : replyWith(AuxAnswer::kAck);
    });
    EXPECT_EQ(write(channel, 0x100, numbered(12)), VEK_OK);
    EXPECT_THAT(stepsOf(channel), ElementsAre(Step{AuxCommand::kNativeWrite, 0x100, 12, false, 0},
                                              Step{AuxCommand::kNativeWrite, 0x105, 7, false, 5},
                                              Step{AuxCommand::kNativeWrite, 0x10a, 2, false, 10}));
}

TEST_F(AuxDpcd, IsNotWrittenOnWithoutProgress)
{
    for (const int written : {0, 4, 5, 255}) {
        NotingAux channel(always(replyWith(AuxAnswer::kNack, {static_cast<std::uint8_t>(written)})));
        EXPECT_EQ(write(channel, 0x100, numbered(4)), VEK_IO_ERROR) << written;
        EXPECT_EQ(channel.requests.size(), 1U);
    }
}

class AuxI2c : public testing::Test
{
protected:
    static constexpr std::uint8_t kDevice = 0x50;

    // Acknowledges everything; reads deliver 0x40.
    static AuxReply device(const AuxRequest& request)
    {
        return request.command == AuxCommand::kI2cRead ? fieldsAt(0x40, request.length) : replyWith(AuxAnswer::kAck);
    }

    int read(NotingAux& channel, std::span<std::uint8_t> bytes)
    {
        AuxTransfer aux(channel, pause);
        return vek::readAuxI2c(aux, kDevice, 0x07, bytes);
    }

    TestClock clock;
    TestPause pause{clock};
};

TEST_F(AuxI2c, IsOneTransactionFromStartToStop)
{
    NotingAux channel(device);
    std::vector<std::uint8_t> bytes(20);
    EXPECT_EQ(read(channel, bytes), VEK_OK);
    EXPECT_EQ(bytes[0], 0x40);
    EXPECT_EQ(bytes[19], 0x43);
    EXPECT_THAT(stepsOf(channel), ElementsAre(Step{AuxCommand::kI2cWrite, kDevice, 0, true, -1},
                                              Step{AuxCommand::kI2cWrite, kDevice, 1, true, 0x07},
                                              Step{AuxCommand::kI2cRead, kDevice, 0, true, -1},
                                              Step{AuxCommand::kI2cRead, kDevice, 16, true, -1},
                                              Step{AuxCommand::kI2cRead, kDevice, 4, true, -1},
                                              Step{AuxCommand::kI2cRead, kDevice, 0, false, -1}));
}

TEST_F(AuxI2c, SetsTheSegmentPointerInTheSameTransaction)
{
    NotingAux channel(device);
    AuxTransfer aux(channel, pause);
    std::array<std::uint8_t, vek::kEdidBlockSize> block;
    EXPECT_EQ(vek::AuxEdidBlocks(aux).readBlock(3, block), VEK_OK);
    const std::vector<Step> steps = stepsOf(channel);
    ASSERT_EQ(steps.size(), 14U);
    EXPECT_EQ(steps[0], (Step{AuxCommand::kI2cWrite, 0x30, 0, true, -1}));
    EXPECT_EQ(steps[1], (Step{AuxCommand::kI2cWrite, 0x30, 1, true, 1}));
    EXPECT_EQ(steps[2], (Step{AuxCommand::kI2cWrite, kDevice, 0, true, -1}));
    EXPECT_EQ(steps[3], (Step{AuxCommand::kI2cWrite, kDevice, 1, true, 0x80}));
    EXPECT_EQ(steps[4], (Step{AuxCommand::kI2cRead, kDevice, 0, true, -1}));
    EXPECT_EQ(steps[13], (Step{AuxCommand::kI2cRead, kDevice, 0, false, -1}));
}

TEST_F(AuxI2c, TellsAnAddressFromAByteThatIsNotAcknowledged)
{
    for (std::size_t refused = 0; refused < 4; ++refused) {
        NotingAux channel(device);
        NotingAux refusing([&](const AuxRequest& request) {
            return refusing.requests.size() == refused + 1 ? replyWith(AuxAnswer::kI2cNack) : channel.transact(request);
        });
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(refusing, byte), refused % 2 == 0 ? VEK_NO_RESPONSE : VEK_NO_ACK_DATA) << refused;
        // A stop follows whatever happened.
        EXPECT_EQ(refusing.requests.size(), refused + 2);
        EXPECT_FALSE(refusing.requests.back().middleOfTransaction);
        EXPECT_EQ(refusing.requests.back().length, 0);
        EXPECT_EQ(byte[0], 0xee);
    }
}

TEST_F(AuxI2c, AsksAfterAWriteThatIsUnderWay)
{
    const AuxReply replies[] = {replyWith(AuxAnswer::kI2cDefer), replyWith(AuxAnswer::kAck, {0})};
    for (const AuxReply& underWay : replies) {
        int pending = 3;
        NotingAux channel([&](const AuxRequest& request) {
            const bool writes = request.command == AuxCommand::kI2cWriteStatusUpdate ||
                                (request.command == AuxCommand::kI2cWrite && request.length != 0);
            return writes && pending-- > 0 ? underWay : device(request);
        });
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(channel, byte), VEK_OK);
        const std::vector<Step> steps = stepsOf(channel);
        ASSERT_EQ(steps.size(), 8U);
        EXPECT_EQ(steps[1], (Step{AuxCommand::kI2cWrite, kDevice, 1, true, 0x07}));
        for (const std::size_t update : {2U, 3U, 4U}) {
            EXPECT_EQ(steps[update], (Step{AuxCommand::kI2cWriteStatusUpdate, kDevice, 0, true, -1}));
        }
        EXPECT_EQ(steps[5], (Step{AuxCommand::kI2cRead, kDevice, 0, true, -1}));
    }
}

TEST_F(AuxI2c, GivesUpOnADeviceThatDefersForEver)
{
    for (const AuxAnswer answer : {AuxAnswer::kDefer, AuxAnswer::kI2cDefer}) {
        NotingAux channel(always(replyWith(answer)));
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(channel, byte), VEK_TIMED_OUT);
        EXPECT_EQ(channel.requests.size(), 2 * (1U + vek::kMaxAuxDefers));
        EXPECT_EQ(byte[0], 0xee);
    }
}

TEST_F(AuxI2c, GoesOnAfterAReplyWithLessThanAskedFor)
{
    std::uint8_t next = 0;
    NotingAux channel([&](const AuxRequest& request) {
        return request.command == AuxCommand::kI2cRead && request.length != 0 ? replyWith(AuxAnswer::kAck, {next++})
                                                                              : replyWith(AuxAnswer::kAck);
    });
    std::vector<std::uint8_t> bytes(19);
    EXPECT_EQ(read(channel, bytes), VEK_OK);
    EXPECT_EQ(bytes, numbered(19));
}

TEST_F(AuxI2c, ReportsWhatTheChannelReports)
{
    const struct {
        AuxAnswer answer;
        int result;
    } cases[] = {{AuxAnswer::kNone, VEK_NO_RESPONSE}, {AuxAnswer::kNack, VEK_IO_ERROR}};
    for (const auto& [answer, result] : cases) {
        NotingAux channel(always(replyWith(answer)));
        std::array<std::uint8_t, 1> byte{0xee};
        EXPECT_EQ(read(channel, byte), result);
        EXPECT_EQ(byte[0], 0xee);
    }
}

TEST_F(AuxI2c, HasSevenBitsOfAddress)
{
    NotingAux channel(device);
    AuxTransfer aux(channel, pause);
    std::array<std::uint8_t, 1> byte{0xee};
    EXPECT_EQ(vek::readAuxI2c(aux, 0x80, 0, byte), VEK_BAD_ARGUMENT);
    EXPECT_TRUE(channel.requests.empty());
}

}  // namespace
