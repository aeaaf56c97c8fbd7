// The board's end against hosts that keep to the protocol and others.

#include "serial/board_end.h"

#include <gtest/gtest.h>

#include <random>

#include "memory_line.h"
#include "path/driver_path.h"

namespace serial_test
{
namespace
{

constexpr std::uint8_t kNoSession = 0x80;
constexpr std::uint8_t kStale = 0x81;
constexpr std::size_t kStatusAt = 5;

Bytes greeting(std::uint8_t nonce)
{
    return {0x01, nonce, 0, 0, 0, 1};
}

/** Writes a byte to the board's RAM. */
Bytes writeByte(std::uint16_t session, std::uint16_t sequence, std::uint8_t value)
{
    return {0x14,
            static_cast<std::uint8_t>(session),
            static_cast<std::uint8_t>(session >> 8),
            static_cast<std::uint8_t>(sequence),
            static_cast<std::uint8_t>(sequence >> 8),
            0,
            0,
            0,
            0,
            0x20,
            0,
            0,
            0,
            0,
            value};
}

class BoardEndTest : public testing::Test
{
protected:
    std::uint8_t statusOf(const Bytes& message)
    {
        const std::vector<Bytes> replies = board_.ask(message);
        EXPECT_EQ(replies.size(), 1U);
        return replies.empty() ? 0xff : replies[0].at(kStatusAt);
    }

    Board board_{*vek::driverPath(0)};
};

TEST_F(BoardEndTest, ServesNobodyWhoHasNotGreeted)
{
    EXPECT_EQ(statusOf(writeByte(1, 1, 5)), kNoSession);
    EXPECT_EQ(statusOf(writeByte(0, 0, 5)), kNoSession);
    EXPECT_EQ(board_.end().executions(), 0U);
    EXPECT_EQ(statusOf(greeting(1)), 0);
    EXPECT_EQ(statusOf(writeByte(1, 1, 5)), 0);
    EXPECT_EQ(statusOf(writeByte(2, 2, 5)), kNoSession);
    EXPECT_EQ(board_.end().executions(), 1U);
}

TEST_F(BoardEndTest, AnswersARepeatedRequestFromMemory)
{
    board_.ask(greeting(1));
    const Bytes request = writeByte(1, 1, 5);
    const std::vector<Bytes> reply = board_.ask(request);
    EXPECT_EQ(board_.ask(request), reply);
    EXPECT_EQ(board_.ask(request), reply);
    EXPECT_EQ(board_.end().executions(), 1U);
    EXPECT_EQ(statusOf(writeByte(1, 1, 6)), kStale) << "the same number with other contents";
    EXPECT_EQ(statusOf(writeByte(1, 0, 5)), kStale);
    EXPECT_EQ(statusOf(writeByte(1, 0xffff, 5)), kStale);
    EXPECT_EQ(board_.end().executions(), 1U);
}

TEST_F(BoardEndTest, TakesNumbersThatWereLeftOutForGivenUp)
{
    board_.ask(greeting(1));
    EXPECT_EQ(statusOf(writeByte(1, 0, 5)), kStale) << "the first number is 1";
    EXPECT_EQ(statusOf(writeByte(1, 4, 5)), 0);
    EXPECT_EQ(statusOf(writeByte(1, 3, 5)), kStale);
    EXPECT_EQ(statusOf(writeByte(1, 5, 5)), 0);
    EXPECT_EQ(board_.end().executions(), 2U);
}

TEST_F(BoardEndTest, CountsOnFromZeroBehindTheHighestNumber)
{
    board_.ask(greeting(1));
    for (std::uint32_t sequence = 1; sequence <= 0x1'0002; sequence += 0x3fff) {
        EXPECT_EQ(statusOf(writeByte(1, static_cast<std::uint16_t>(sequence), 5)), 0) << sequence;
    }
    EXPECT_EQ(statusOf(writeByte(1, 0xffff, 5)), 0);
    EXPECT_EQ(statusOf(writeByte(1, 0, 5)), 0);
    EXPECT_EQ(statusOf(writeByte(1, 1, 5)), 0);
    EXPECT_EQ(statusOf(writeByte(1, 0xffff, 5)), kStale);
}

TEST_F(BoardEndTest, BeginsANewSessionWithANewGreetingOnly)
{
    const std::vector<Bytes> first = board_.ask(greeting(1));
    EXPECT_EQ(statusOf(writeByte(1, 9, 5)), 0);
    EXPECT_EQ(board_.ask(greeting(1)), first) << "a greeting that came twice";
    EXPECT_EQ(statusOf(writeByte(1, 9, 5)), 0);
    EXPECT_EQ(board_.end().executions(), 1U) << "it has not forgotten what it did";
    const std::vector<Bytes> second = board_.ask(greeting(2));
    EXPECT_NE(second, first);
    EXPECT_EQ(statusOf(writeByte(1, 10, 5)), kNoSession);
    EXPECT_EQ(statusOf(writeByte(2, 1, 5)), 0);
}

TEST_F(BoardEndTest, TellsAnotherVersionItsOwn)
{
    EXPECT_EQ(board_.ask({0x01, 7, 0, 0, 0, 2}), (std::vector<Bytes>{{0x81, 7, 0, 0, 0, 38, 1}}));
    EXPECT_EQ(board_.ask({0x01, 7, 0, 0, 0, 1, 0})[0][kStatusAt], 38) << "longer than a greeting";
    EXPECT_EQ(statusOf(writeByte(1, 1, 5)), kNoSession);
}

TEST_F(BoardEndTest, IsSilentToWhatIsNoRequest)
{
    board_.ask(greeting(1));
    for (const Bytes& message : {Bytes{0x10}, Bytes{0x10, 1, 0, 1}, Bytes{0x90, 1, 0, 1, 0, 0},
                                 Bytes{0x81, 1, 0, 0, 0, 1}, Bytes{0x01, 1, 0, 0, 0}}) {
        EXPECT_TRUE(board_.ask(message).empty());
    }
    EXPECT_EQ(board_.end().executions(), 0U);
}

/** A request that the board has to refuse. */
struct Refused {
    const char* why;
    std::uint8_t status;
    std::uint8_t operation;
    Bytes body;
};

void PrintTo(const Refused& refused, std::ostream* stream)
{
    *stream << refused.why;
}

Bytes joined(Bytes first, const Bytes& rest)
{
    first.insert(first.end(), rest.begin(), rest.end());
    return first;
}

const Bytes kRam = {0, 0, 0, 0, 0x20, 0, 0, 0, 0};
const Bytes kLastLong = {0, 0xfc, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
const Bytes kNowhere = {63, 0, 0, 0, 0x20, 0, 0, 0, 0};

class RefusedRequest : public testing::TestWithParam<Refused>
{
};

TEST_P(RefusedRequest, IsRefusedWithNothingBehindTheStatus)
{
    Board board(*vek::driverPath(0));
    board.ask(greeting(1));
    const auto& [why, status, operation, body] = GetParam();
    const std::vector<Bytes> replies = board.ask(joined({operation, 1, 0, 1, 0}, body));
    EXPECT_EQ(replies, (std::vector<Bytes>{{static_cast<std::uint8_t>(operation | 0x80), 1, 0, 1, 0, status}}));
}

constexpr std::uint8_t kBad = 22;
constexpr std::uint8_t kAbsent = 38;

INSTANTIATE_TEST_SUITE_P(
    Kinds, RefusedRequest,
    testing::Values(
        Refused{"no such operation", kAbsent, 0x02, {}}, Refused{"nor this", kAbsent, 0x18, kRam},
        Refused{"read without address", kBad, 0x12, {0}}, Refused{"read with too much", kBad, 0x12, joined(kRam, {0})},
        Refused{"read without a body", kBad, 0x10, {}}, Refused{"no such space", kAbsent, 0x12, kNowhere},
        Refused{"nothing there", 6, 0x12, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
        Refused{"write without value", kBad, 0x16, kRam},
        Refused{"write of too much", kBad, 0x14, joined(kRam, {1, 2})},
        Refused{"write to no space", kAbsent, 0x14, joined(kNowhere, {1})},
        Refused{"block without count", kBad, 0x20, kRam}, Refused{"block too long", kBad, 0x20, joined(kRam, {1, 1})},
        Refused{"longest count", kBad, 0x20, joined(kRam, {0xff, 0xff})},
        Refused{"block over the end", kBad, 0x20, joined(kLastLong, {2, 0})},
        Refused{"block of no space", kAbsent, 0x20, joined(kNowhere, {2, 0})},
        Refused{"part of a long", kBad, 0x21, joined(kRam, {1, 2, 3})},
        Refused{"block to write too long", kBad, 0x21, joined(kRam, Bytes(1028, 1))},
        Refused{"written over the end", kBad, 0x21, joined(kLastLong, Bytes(8, 1))},
        Refused{"fill too long", kBad, 0x22, joined(kRam, {1, 0, 0, 0, 1, 0, 1, 0})},
        Refused{"fill over the end", kBad, 0x22, joined(kLastLong, {1, 0, 0, 0, 2, 0, 0, 0})},
        Refused{"fill without count", kBad, 0x22, joined(kRam, {1, 0, 0, 0})},
        Refused{"no such bus", kAbsent, 0x30, {8, 1, 0, 0, 0xa0}}, Refused{"I2C cut short", kBad, 0x30, {0, 1, 0}},
        Refused{"I2C read too long", kBad, 0x30, {0, 1, 1, 4}},
        Refused{"I2C write too long", kBad, 0x30, Bytes(1030, 0)},
        Refused{"no such AUX channel", kAbsent, 0x31, {2, 9, 0, 0, 0, 0, 0, 1}},
        Refused{"no such AUX command", kBad, 0x31, {0, 7, 0, 0, 0, 0, 0, 1}},
        Refused{"AUX address", kBad, 0x31, {0, 9, 0, 0, 0, 0x10, 0, 1}},
        Refused{"AUX length", kBad, 0x31, {0, 9, 0, 0, 0, 0, 0, 17}},
        Refused{"AUX write without its data", kBad, 0x31, {0, 8, 0, 0, 0, 0, 0, 2, 1}},
        Refused{"AUX read with data", kBad, 0x31, {0, 9, 0, 0, 0, 0, 0, 1, 1}},
        Refused{"SPI cut short", kBad, 0x32, {3, 0}}, Refused{"SPI read too long", kBad, 0x32, {3, 1, 4}},
        Refused{"SPI write too long", kBad, 0x32, Bytes(1028, 0)}));

// Requests of any contents, on both cards: the sanitizers look on.
TEST(HostileHost, IsAnsweredWithFramesOnly)
{
    std::mt19937 random(3);
    constexpr std::array<std::uint8_t, 15> kOperations = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17,
                                                          0x20, 0x21, 0x22, 0x30, 0x31, 0x32, 0x33};
    for (const int card : {0, 1}) {
        Board board(*vek::driverPath(card));
        board.ask(greeting(1));
        for (std::uint32_t round = 1; round < 20'000; ++round) {
            Bytes message = {kOperations[random() % kOperations.size()], 1, 0, static_cast<std::uint8_t>(round),
                             static_cast<std::uint8_t>(round >> 8)};
            Bytes body(random() % 40);
            for (std::uint8_t& byte : body) {
                byte = static_cast<std::uint8_t>(random() % 3 == 0 ? random() : random() % 4);
            }
            if (!body.empty()) {
                body[0] = static_cast<std::uint8_t>(body[0] % 26);
            }
            const std::vector<Bytes> replies = board.ask(joined(std::move(message), body));
            ASSERT_EQ(replies.size(), 1U);
            ASSERT_LE(replies[0].size(), vek::kMaxMessage);
        }
    }
}

}  // namespace
}  // namespace serial_test
