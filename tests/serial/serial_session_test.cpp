// The host's end against boards that answer well, late, wrongly, not at all, or without end.

#include "serial/serial_session.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "memory_line.h"
#include "path/driver_path.h"
#include "serial/remote_space.h"

namespace serial_test
{
namespace
{

using vek::SerialSession;
using vek::serial_protocol::Operation;

constexpr std::uint32_t kNonce = 0xcafe'0001;
constexpr std::size_t kStatusAt = 5;

/** A board whose answers a test changes, drops or makes up. */
class Changed
{
public:
    using Change = std::function<std::vector<Bytes>(Bytes reply)>;

    explicit Changed(Change change) : change_(std::move(change)) {}

    MemoryLine::OtherEnd line()
    {
        return [this](std::uint8_t byte) {
            Bytes out;
            for (const Bytes& reply : messagesIn(board_.take({&byte, 1}))) {
                for (const Bytes& changed : change_(reply)) {
                    const Bytes frame = framed(changed);
                    out.insert(out.end(), frame.begin(), frame.end());
                }
            }
            return out;
        };
    }

    Board& board() { return board_; }
    void change(Change change) { change_ = std::move(change); }

private:
    Board board_{*vek::driverPath(0)};
    Change change_;
};

std::vector<Bytes> unchanged(Bytes reply)
{
    return {std::move(reply)};
}

/** A session with a board whose answers can be changed once it is greeted. */
class Session : public testing::Test
{
protected:
    Session() { EXPECT_EQ(session_.begin(line_, 115200, kNonce), VEK_OK); }

    int readAmba(std::uint64_t address, std::uint32_t& value)
    {
        vek::SerialRequest request(Operation::kRead4, 4);
        request.put8(0);
        request.put64(address);
        vek::SerialReply reply;
        const int result = session_.transact(request, reply);
        vek::MessageReader body(reply.body());
        value = body.take32();
        return result;
    }

    int writeAmba(std::uint64_t address, std::uint32_t value)
    {
        vek::SerialRequest request(Operation::kWrite4);
        request.put8(0);
        request.put64(address);
        request.put32(value);
        vek::SerialReply reply;
        return session_.transact(request, reply);
    }

    Changed other_{unchanged};
    MemoryLine line_{other_.line()};
    SerialSession session_;
};

TEST_F(Session, LearnsWhoTheBoardIs)
{
    const vek::BoardServices& board = session_.board();
    EXPECT_EQ(board.deviceId, VEK_DEVICE_QZ201);
    EXPECT_EQ(board.session, 1);
    EXPECT_TRUE(board.sameBoard(vek::servicesOf(*vek::driverPath(0))));
    EXPECT_FALSE(board.sameBoard(vek::servicesOf(*vek::driverPath(1))));
}

TEST_F(Session, CarriesRequestsAndReplies)
{
    std::uint32_t value = 0;
    EXPECT_EQ(writeAmba(0x2000'0010, 0x1234'5678), VEK_OK);
    EXPECT_EQ(readAmba(0x2000'0010, value), VEK_OK);
    EXPECT_EQ(value, 0x1234'5678U);
    EXPECT_EQ(readAmba(0, value), VEK_NO_RESPONSE);
    EXPECT_EQ(session_.repeats(), 0U);
}

// What docs/serial-protocol.md says of the line's load.
TEST_F(Session, TakesTwentyOneAndSeventeenBytesForAReadOfFour)
{
    const std::size_t sent = line_.sentBytes();
    const std::size_t received = line_.receivedBytes();
    std::uint32_t value = 0;
    EXPECT_EQ(readAmba(0x2000'0010, value), VEK_OK);
    EXPECT_EQ(line_.sentBytes() - sent, 21U);
    EXPECT_EQ(line_.receivedBytes() - received, 17U);
}

TEST_F(Session, LeavesTheLineNoPauseBetweenTransactions)
{
    constexpr std::uint64_t kSecond = 1'000 * kMillisecond;
    const std::uint64_t start = line_.now();
    std::uint32_t value = 0;
    unsigned reads = 0;
    while (line_.now() - start < kSecond) {
        ASSERT_EQ(readAmba(0x2000'0010, value), VEK_OK);
        ++reads;
    }
    EXPECT_EQ(reads, 304U) << "the last one of them goes beyond the second";
}

TEST_F(Session, AsksAgainForALostReplyAndTheBoardDoesNothingTwice)
{
    for (const unsigned lost : {1U, 3U, SerialSession::kAttempts - 1}) {
        const std::uint64_t before = other_.board().end().executions();
        unsigned left = lost;
        other_.change([&left](Bytes reply) { return left-- > 0 ? std::vector<Bytes>{} : unchanged(std::move(reply)); });
        EXPECT_EQ(writeAmba(0x2000'0020, lost), VEK_OK);
        EXPECT_EQ(other_.board().end().executions() - before, 1U);
    }
}

TEST_F(Session, ReportsATimeOutAfterABoundedTimeWhenNothingAnswers)
{
    other_.change([](const Bytes&) { return std::vector<Bytes>{}; });
    const std::uint64_t start = line_.now();
    std::uint32_t value = 0;
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_TIMED_OUT);
    EXPECT_LT(line_.now() - start, 3000 * kMillisecond);
    EXPECT_GE(line_.now() - start, SerialSession::kAttempts * SerialSession::kServiceNanoseconds);
    other_.change(unchanged);
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_OK) << "the line serves again when the board does";
}

TEST_F(Session, DoesNotKeepWaitingForABoardThatIsGone)
{
    other_.change([](const Bytes&) { return std::vector<Bytes>{}; });
    const std::uint64_t start = line_.now();
    std::uint32_t value = 0;
    for (int i = 0; i < 5000; ++i) {
        EXPECT_EQ(readAmba(0x2000'0000, value), VEK_TIMED_OUT);
    }
    EXPECT_LT(line_.now() - start, 10'000 * kMillisecond);
    other_.change(unchanged);
    line_.pass(SerialSession::kRestNanoseconds);
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_OK) << "it looks once a second";
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_OK);
}

TEST_F(Session, IgnoresAnswersToOtherRequests)
{
    Bytes stale;
    other_.change([&stale](Bytes reply) {
        std::vector<Bytes> replies;
        if (!stale.empty()) {
            replies = {stale, stale};
        }
        stale = reply;
        replies.push_back(std::move(reply));
        return replies;
    });
    for (std::uint32_t i = 0; i < 100; ++i) {
        std::uint32_t value = 0;
        EXPECT_EQ(writeAmba(0x2000'0000 + 4 * i, i), VEK_OK);
        EXPECT_EQ(readAmba(0x2000'0000 + 4 * i, value), VEK_OK);
        EXPECT_EQ(value, i);
    }
}

TEST_F(Session, ReportsStatusesThatStandForNothing)
{
    const std::set<int> known = {VEK_OK,        VEK_IO_ERROR,     VEK_NO_RESPONSE,   VEK_NO_MEMORY, VEK_BAD_ARGUMENT,
                                 VEK_PROTECTED, VEK_OUT_OF_RANGE, VEK_NOT_AVAILABLE, VEK_BAD_DATA,  VEK_TIMED_OUT};
    for (unsigned status = 0; status < 0x100; ++status) {
        other_.change([status](Bytes reply) {
            // What greets again after a status that ends the session, is left alone.
            if (reply[0] == 0x92) {
                reply[kStatusAt] = static_cast<std::uint8_t>(status);
            }
            return unchanged(std::move(reply));
        });
        std::uint32_t value = 0;
        const int result = readAmba(0x2000'0000, value);
        const int plain = known.contains(-static_cast<int>(status)) ? -static_cast<int>(status) : VEK_BAD_DATA;
        EXPECT_EQ(result, status == 0x80 || status == 0x81 ? VEK_IO_ERROR : plain) << status;
    }
}

TEST_F(Session, FailsOnceAndGoesOnWhenTheBoardHasForgottenTheSession)
{
    Board restarted(*vek::driverPath(0));
    Board* present = &other_.board();
    MemoryLine line([&present](std::uint8_t byte) { return present->take({&byte, 1}); });
    SerialSession session;
    ASSERT_EQ(session.begin(line, 9600, kNonce), VEK_OK);
    session_ = session;
    present = &restarted;
    std::uint32_t value = 0;
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_IO_ERROR);
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_OK);
    Board another(*vek::driverPath(1));
    present = &another;
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_IO_ERROR);
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_IO_ERROR) << "it is not the board that was greeted";
    EXPECT_EQ(another.end().executions(), 0U);
}

TEST_F(Session, FailsAtOnceWhenTheLineIsGone)
{
    line_.cut();
    const std::uint64_t start = line_.now();
    std::uint32_t value = 0;
    EXPECT_EQ(readAmba(0x2000'0000, value), VEK_IO_ERROR);
    EXPECT_EQ(line_.now(), start);
}

TEST(SessionWithoutALine, FailsEveryTransaction)
{
    SerialSession session;
    vek::SerialRequest request(Operation::kRead4, 4);
    vek::SerialReply reply;
    EXPECT_EQ(session.transact(request, reply), VEK_IO_ERROR);
}

// ---- Greetings ----

int greeted(const MemoryLine::OtherEnd& other)
{
    MemoryLine line(other);
    SerialSession session;
    const int result = session.begin(line, 115200, kNonce);
    EXPECT_LT(line.now(), 5000 * kMillisecond);
    return result;
}

TEST(Greeting, TimesOutWithoutABoard)
{
    EXPECT_EQ(greeted([](std::uint8_t) { return Bytes(); }), VEK_TIMED_OUT);
}

TEST(Greeting, DoesNotTakeAnEchoForABoard)
{
    EXPECT_EQ(greeted([](std::uint8_t byte) { return Bytes{byte}; }), VEK_TIMED_OUT);
}

TEST(Greeting, EndsThoughRubbishComesWithoutEnd)
{
    std::uint32_t state = 1;
    EXPECT_EQ(greeted([&state](std::uint8_t) {
                  Bytes rubbish(20'000);
                  for (std::uint8_t& byte : rubbish) {
                      state = state * 1664525 + 1013904223;
                      byte = static_cast<std::uint8_t>(state >> 24);
                  }
                  return rubbish;
              }),
              VEK_TIMED_OUT);
}

/** The result of a greeting whose reply is changed. */
int greetedWith(const std::function<void(Bytes&)>& change)
{
    Changed other([&change](Bytes reply) {
        change(reply);
        return unchanged(std::move(reply));
    });
    return greeted(other.line());
}

TEST(Greeting, RefusesABoardThatCannotBe)
{
    constexpr std::size_t kBody = 6;
    EXPECT_EQ(greetedWith([](Bytes&) {}), VEK_OK);
    const struct {
        std::size_t at;
        std::uint8_t value;
    } changes[] = {
        {kStatusAt, 38},   {kStatusAt, 0xff},  {kBody, 2},         {kBody, 0},         {kBody + 3, 0},
        {kBody + 4, 3},    {kBody + 6, 0},     {kBody + 7, 0x1c},  {kBody + 7, 0x23},  {kBody + 8, 0x02},
        {kBody + 8, 0xdd}, {kBody + 9, 1},     {kBody + 10, 0x0f}, {kBody + 10, 0xfa}, {kBody + 11, 2},
        {kBody + 11, 4},   {kBody + 12, 2},    {kBody + 13, 5},    {kBody + 14, 3},    {kBody + 15, 3},
        {kBody + 16, 4},   {kBody + 16, 0xfe}, {kBody + 17, 0x7f}, {kBody + 17, 0x80},
    };
    for (const auto& [at, value] : changes) {
        EXPECT_EQ(greetedWith([at = at, value = value](Bytes& reply) { reply.at(at) = value; }), VEK_BAD_DATA)
            << "byte " << at << " is " << int{value};
    }
    EXPECT_EQ(greetedWith([](Bytes& reply) { reply[kBody + 1] = reply[kBody + 2] = 0; }), VEK_BAD_DATA) << "session 0";
    EXPECT_EQ(greetedWith([](Bytes& reply) { reply.push_back(0); }), VEK_BAD_DATA);
    for (std::size_t size = kBody; size < kBody + 18; ++size) {
        EXPECT_EQ(greetedWith([size](Bytes& reply) { reply.resize(size); }), VEK_BAD_DATA) << size;
    }
    EXPECT_EQ(greetedWith([](Bytes& reply) { reply.resize(kStatusAt); }), VEK_TIMED_OUT) << "not even a status";
    EXPECT_EQ(greetedWith([](Bytes& reply) { reply[1] ^= 1; }), VEK_TIMED_OUT) << "an answer to another greeting";
}

}  // namespace
}  // namespace serial_test
