// The proxies of a board's spaces and buses: what they ask for, and that no answer makes them deliver what is wrong.

#include "serial/remote_buses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "drivers/i2c_transfer.h"
#include "memory_line.h"
#include "serial/remote_space.h"
#include "serial/serial_link.h"

namespace serial_test
{
namespace
{

using ::testing::ElementsAre;

/** Records the steps on it; acknowledges what it is told to. */
class RecordingBus final : public vek::I2cBus
{
public:
    vek::I2cStep start() override { return note("start"); }
    void stop() override { note("stop"); }
    vek::I2cStep write(std::uint8_t byte) override
    {
        note("w" + std::to_string(byte));
        return byte == refused ? vek::I2cStep::kNotAcknowledged : vek::I2cStep::kDone;
    }
    vek::I2cByte read(bool acknowledge) override
    {
        note(acknowledge ? "r+" : "r-");
        return {stuck ? vek::I2cStep::kTimedOut : vek::I2cStep::kDone, next++};
    }

    std::vector<std::string> take() { return std::exchange(steps_, {}); }

    int refused = -1;
    bool stuck = false;
    std::uint8_t next = 10;

private:
    vek::I2cStep note(std::string step)
    {
        steps_.push_back(std::move(step));
        return vek::I2cStep::kDone;
    }

    std::vector<std::string> steps_;
};

class RecordingSpi final : public vek::SpiBus
{
public:
    void select() override { steps.emplace_back("select"); }
    void deselect() override { steps.emplace_back("deselect"); }
    int write(std::span<const std::uint8_t> bytes) override
    {
        steps.push_back("w" + std::to_string(bytes.size()));
        return result;
    }
    int read(std::span<std::uint8_t> bytes) override
    {
        steps.push_back("r" + std::to_string(bytes.size()));
        std::fill(bytes.begin(), bytes.end(), std::uint8_t{0x5a});
        return result;
    }

    std::vector<std::string> steps;
    int result = VEK_OK;
};

class RecordingAux final : public vek::AuxChannel
{
public:
    vek::AuxReply transact(const vek::AuxRequest& asked) override
    {
        request = asked;
        return reply;
    }

    vek::AuxRequest request{};
    vek::AuxReply reply{};
};

/** A memory of 64 bytes that counts the accesses. */
class SmallMemory final : public vek::AddressSpace
{
public:
    vek::ReadResult read(std::uint64_t address, unsigned width) override
    {
        ++accesses;
        if (address > bytes.size() - width) {
            return broken ? vek::ReadResult{VEK_IO_ERROR, 0} : vek::kUnanswered;
        }
        std::uint64_t value = 0;
        for (unsigned i = 0; i < width; ++i) {
            value |= std::uint64_t{bytes[address + i]} << (8 * i);
        }
        return {VEK_OK, value};
    }
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        ++accesses;
        if (address > bytes.size() - width) {
            return VEK_NO_RESPONSE;
        }
        for (unsigned i = 0; i < width; ++i) {
            bytes[address + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
        return VEK_OK;
    }

    std::array<std::uint8_t, 64> bytes{};
    bool broken = false;
    int accesses = 0;
};

class Proxies : public testing::Test
{
protected:
    Proxies()
    {
        card_.amba = &memory_;
        card_.i2c = {&i2c_};
        card_.ddc = {&ddc_};
        card_.spi = &spi_;
        card_.dpAux = {&aux_};
        vek::SerialSession session;
        EXPECT_EQ(session.begin(line_, 115200, 5), VEK_OK);
        link_.use(session);
    }

    std::uint64_t requests() { return board_.end().executions(); }

    vek::AccessPath card_ = emptyPath();
    SmallMemory memory_;
    RecordingBus i2c_;
    RecordingBus ddc_;
    RecordingSpi spi_;
    RecordingAux aux_;
    Board board_{card_};
    /** Changes replies of the board to anything but greetings, when set. */
    std::function<void(Bytes&)> change_;
    MemoryLine line_{[this](std::uint8_t byte) {
        Bytes out;
        for (Bytes reply : messagesIn(board_.take({&byte, 1}))) {
            if (change_ && reply[0] != 0x81) {
                change_(reply);
            }
            const Bytes frame = framed(reply);
            out.insert(out.end(), frame.begin(), frame.end());
        }
        return out;
    }};
    vek::SerialLink link_;
    vek::RemoteSpace space_{link_, 0};
    vek::RemoteI2cBus remoteI2c_{link_, 0};
    vek::RemoteI2cBus remoteDdc_{link_, 4};
    vek::RemoteSpiBus remoteSpi_{link_};
    vek::RemoteAuxChannel remoteAux_{link_, 0};
};

TEST_F(Proxies, ReadAndWriteItemsOfEveryWidth)
{
    for (const unsigned width : {1U, 2U, 4U, 8U}) {
        const std::uint64_t value = 0x8877'6655'4433'2211U & (width == 8 ? ~0ULL : (1ULL << (8 * width)) - 1);
        EXPECT_EQ(space_.write(4 * width, width, 0x8877'6655'4433'2211U), VEK_OK);
        EXPECT_EQ(space_.read(4 * width, width).value, value);
        EXPECT_EQ(memory_.bytes[4 * width + width - 1], value >> (8 * (width - 1)));
        const auto [result, ones] = space_.read(1000, width);
        EXPECT_EQ(result, VEK_NO_RESPONSE);
        EXPECT_EQ(ones, vek::kAllOnes);
        EXPECT_EQ(space_.write(1000, width, 1), VEK_NO_RESPONSE);
    }
}

TEST_F(Proxies, MoveRunsInBlocks)
{
    std::vector<std::uint32_t> longs(1000, 7);
    EXPECT_EQ(space_.fillLongs(0, 0x0403'0201, 16), VEK_OK);
    const std::uint64_t before = requests();
    EXPECT_EQ(space_.readLongs(32, longs.data(), longs.size()), VEK_NO_RESPONSE);
    EXPECT_EQ(requests() - before, 4U) << "256 longs at a time";
    EXPECT_EQ(longs[7], 0x0403'0201U);
    EXPECT_EQ(longs[8], 0xffff'ffffU);
    EXPECT_EQ(longs[999], 0xffff'ffffU);
    longs.assign(10, 0x11);
    EXPECT_EQ(space_.writeLongs(60, longs.data(), longs.size()), VEK_NO_RESPONSE);
    EXPECT_EQ(space_.read(60, 4).value, 0x11U);
    EXPECT_EQ(space_.writeLongs(0, longs.data(), longs.size()), VEK_OK);
    EXPECT_EQ(space_.readLongs(0, longs.data(), 0), VEK_OK);
}

TEST_F(Proxies, FillAnyNumberOfLongsInBoundedRequests)
{
    const std::uint64_t before = requests();
    EXPECT_EQ(space_.fillLongs(0, 1, 0x2'0001), VEK_NO_RESPONSE);
    EXPECT_EQ(requests() - before, 3U);
}

// No run goes round to address 0.
TEST_F(Proxies, EndRunsWhereTheAddressesEnd)
{
    memory_.bytes.fill(0x22);
    std::vector<std::uint32_t> longs(4, 7);
    EXPECT_EQ(space_.readLongs(vek::kAllOnes - 7, longs.data(), longs.size()), VEK_NO_RESPONSE);
    EXPECT_EQ(longs, std::vector<std::uint32_t>(4, 0xffff'ffff));
    EXPECT_EQ(space_.fillLongs(vek::kAllOnes - 2, 9, 100), VEK_NO_RESPONSE);
    EXPECT_EQ(memory_.bytes[0], 0x22);
}

TEST_F(Proxies, EndRunsAtAFailure)
{
    memory_.broken = true;
    std::vector<std::uint32_t> longs(600, 7);
    EXPECT_EQ(space_.readLongs(0, longs.data(), longs.size()), VEK_IO_ERROR);
    EXPECT_EQ(memory_.accesses, 256);
}

TEST_F(Proxies, RefuseAnswersOfTheWrongLength)
{
    for (const int difference : {-1, 1}) {
        change_ = [difference](Bytes& reply) {
            reply.resize(reply.size() + static_cast<std::size_t>(difference) -
                         (reply.size() == 6 && difference < 0 ? -1 : 0));
        };
        std::vector<std::uint32_t> longs(4, 7);
        std::array<std::uint8_t, 4> bytes{1, 2, 3, 4};
        EXPECT_EQ(space_.read(0, 4).result, VEK_BAD_DATA);
        EXPECT_EQ(space_.readLongs(0, longs.data(), longs.size()), VEK_BAD_DATA);
        EXPECT_EQ(longs, std::vector<std::uint32_t>(4, 7));
        EXPECT_EQ(remoteI2c_.readAll(bytes), vek::I2cStep::kTimedOut);
        EXPECT_EQ(remoteSpi_.read(bytes), VEK_BAD_DATA);
        EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4));
    }
}

TEST_F(Proxies, BringEveryStepOfAnI2cTransaction)
{
    EXPECT_EQ(remoteI2c_.start(), vek::I2cStep::kDone);
    EXPECT_EQ(remoteI2c_.write(0xa0), vek::I2cStep::kDone);
    i2c_.refused = 7;
    EXPECT_EQ(remoteI2c_.write(7), vek::I2cStep::kNotAcknowledged);
    EXPECT_EQ(remoteI2c_.read(true).value, 10);
    EXPECT_EQ(remoteI2c_.read(false).value, 11);
    remoteI2c_.stop();
    EXPECT_THAT(i2c_.take(), ElementsAre("start", "w160", "w7", "r+", "r-", "stop"));
    EXPECT_EQ(requests(), 5U) << "the start goes with the address";
    EXPECT_EQ(remoteDdc_.start(), vek::I2cStep::kDone);
    EXPECT_EQ(remoteDdc_.write(0xa1), vek::I2cStep::kDone);
    EXPECT_THAT(ddc_.take(), ElementsAre("start", "w161"));
    i2c_.stuck = true;
    EXPECT_EQ(remoteI2c_.read(true).step, vek::I2cStep::kTimedOut);
}

TEST_F(Proxies, MoveI2cBytesTogether)
{
    std::array<std::uint8_t, 3> bytes{};
    i2c_.refused = 4;
    EXPECT_EQ(remoteI2c_.writeAll(std::array<std::uint8_t, 4>{2, 3, 4, 5}), vek::I2cStep::kNotAcknowledged);
    EXPECT_EQ(remoteI2c_.readAll(bytes), vek::I2cStep::kDone);
    EXPECT_THAT(bytes, ElementsAre(10, 11, 12));
    EXPECT_THAT(i2c_.take(), ElementsAre("w2", "w3", "w4", "r+", "r+", "r-"));
    EXPECT_EQ(requests(), 2U);
    std::vector<std::uint8_t> many(2500);
    EXPECT_EQ(remoteI2c_.readAll(many), vek::I2cStep::kDone);
    EXPECT_EQ(requests(), 5U);
    const std::vector<std::string> steps = i2c_.take();
    ASSERT_EQ(steps.size(), many.size());
    EXPECT_EQ(std::count(steps.begin(), steps.end(), "r-"), 1);
    EXPECT_EQ(steps.back(), "r-");
}

TEST_F(Proxies, CarryATransferOfTheDriverInAFewRequests)
{
    std::vector<std::uint8_t> data(256);
    EXPECT_EQ(vek::readI2c(remoteI2c_, 0x50, 0, data), VEK_OK);
    EXPECT_EQ(data[255], static_cast<std::uint8_t>(10 + 255));
    EXPECT_EQ(requests(), 5U);
}

TEST_F(Proxies, CarryAuxTransactions)
{
    aux_.reply = {.answer = vek::AuxAnswer::kI2cDefer, .length = 2, .data = {9, 8}};
    const vek::AuxRequest request{.command = vek::AuxCommand::kI2cWrite,
                                  .middleOfTransaction = true,
                                  .address = 0xf'1234,
                                  .length = 3,
                                  .data = {1, 2, 3}};
    const vek::AuxReply reply = remoteAux_.transact(request);
    EXPECT_EQ(reply.answer, vek::AuxAnswer::kI2cDefer);
    EXPECT_EQ(reply.length, 2);
    EXPECT_EQ(reply.data[1], 8);
    EXPECT_EQ(aux_.request.command, request.command);
    EXPECT_TRUE(aux_.request.middleOfTransaction);
    EXPECT_EQ(aux_.request.address, request.address);
    EXPECT_EQ(aux_.request.data, request.data);
    change_ = [](Bytes& message) { message[6] = 6; };
    EXPECT_EQ(remoteAux_.transact(request).answer, vek::AuxAnswer::kFailed);
    change_ = [](Bytes& message) { message.resize(6); };
    EXPECT_EQ(remoteAux_.transact(request).answer, vek::AuxAnswer::kFailed);
    change_ = [](Bytes& message) { message.resize(24); };
    EXPECT_EQ(remoteAux_.transact(request).answer, vek::AuxAnswer::kFailed);
    aux_.reply = {.answer = vek::AuxAnswer::kFailed};
    change_ = nullptr;
    EXPECT_EQ(remoteAux_.transact(request).answer, vek::AuxAnswer::kFailed);
}

TEST_F(Proxies, CarrySpiTransactions)
{
    std::vector<std::uint8_t> bytes(1025);
    remoteSpi_.select();
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_OK);
    EXPECT_EQ(remoteSpi_.read(bytes), VEK_OK);
    remoteSpi_.deselect();
    EXPECT_EQ(bytes.back(), 0x5a);
    EXPECT_THAT(spi_.steps, ElementsAre("select", "w1024", "w1", "r1024", "r1", "deselect"));
    spi_.result = VEK_IO_ERROR;
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_IO_ERROR);
    EXPECT_EQ(remoteSpi_.read(bytes), VEK_IO_ERROR);
}

TEST_F(Proxies, TellOfAFailedDeselectAtTheNextTransfer)
{
    std::array<std::uint8_t, 2> bytes{};
    remoteSpi_.select();
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_OK);
    change_ = [](Bytes& reply) { reply[5] = 5; };
    remoteSpi_.deselect();
    change_ = nullptr;
    spi_.steps.clear();
    remoteSpi_.select();
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_IO_ERROR);
    EXPECT_TRUE(spi_.steps.empty());
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_OK);
    EXPECT_THAT(spi_.steps, ElementsAre("select", "w2"));
}

TEST_F(Proxies, ReportALineThatIsGone)
{
    line_.cut();
    std::array<std::uint8_t, 2> bytes{};
    EXPECT_EQ(space_.read(0, 4).result, VEK_IO_ERROR);
    EXPECT_EQ(space_.write(0, 4, 1), VEK_IO_ERROR);
    EXPECT_EQ(remoteI2c_.write(1), vek::I2cStep::kTimedOut);
    EXPECT_EQ(remoteI2c_.read(true).step, vek::I2cStep::kTimedOut);
    EXPECT_EQ(remoteSpi_.write(bytes), VEK_IO_ERROR);
    EXPECT_EQ(remoteAux_.transact({.command = vek::AuxCommand::kNativeRead, .length = 1}).answer,
              vek::AuxAnswer::kFailed);
}

}  // namespace
}  // namespace serial_test
