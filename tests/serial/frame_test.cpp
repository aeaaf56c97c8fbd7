#include <gtest/gtest.h>

#include <random>
#include <string_view>

#include "crc32.h"
#include "memory_line.h"
#include "serial/frame.h"

namespace serial_test
{
namespace
{

Bytes bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

TEST(Crc32, GivesThePublishedCheckValues)
{
    EXPECT_EQ(vek::crc32(bytesOf("123456789")), 0xcbf43926U);
    EXPECT_EQ(vek::crc32(bytesOf("")), 0U);
    EXPECT_EQ(vek::crc32(bytesOf("a")), 0xe8b7be43U);
    EXPECT_EQ(vek::crc32(bytesOf("abc")), 0x352441c2U);
    EXPECT_EQ(vek::crc32(Bytes(32, 0)), 0x190a55adU);
    EXPECT_EQ(vek::crc32(Bytes(32, 0xff)), 0xff6cab0bU);
}

// The check sum of the four bytes stands behind them, low byte first.
TEST(Frame, IsStuffedBetweenTwoZeros)
{
    EXPECT_EQ(framed(bytesOf("abc")), (Bytes{0, 8, 'a', 'b', 'c', 0xc2, 0x41, 0x24, 0x35, 0}));
    EXPECT_EQ(framed(Bytes(32, 0)), (Bytes{0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,    1,    1,    1,    1, 1,
                                           1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 5, 0xad, 0x55, 0x0a, 0x19, 0}));
}

TEST(Frame, BringsEveryLengthAndFillingBack)
{
    std::mt19937 random(7);
    for (const std::size_t size : {1, 2, 5, 248, 249, 250, 251, 252, 253, 254, 255, 256, 507, 508, 509, 1024, 1056}) {
        for (const int filling : {0, 1, 255, -1}) {
            Bytes message(size);
            for (std::uint8_t& byte : message) {
                byte = static_cast<std::uint8_t>(filling < 0 ? random() % 3 : static_cast<unsigned>(filling));
            }
            const Bytes frame = framed(message);
            EXPECT_EQ(std::count(frame.begin(), frame.end(), 0), 2) << size << " of " << filling;
            EXPECT_LE(frame.size(), vek::kMaxFrame);
            EXPECT_EQ(messagesIn(frame), std::vector<Bytes>{message}) << size << " of " << filling;
        }
    }
}

TEST(Frame, IsFoundBehindAnyNoise)
{
    std::mt19937 random(11);
    const Bytes message = bytesOf("message");
    const Bytes frame = framed(message);
    for (int round = 0; round < 2000; ++round) {
        Bytes line(random() % 3000);
        for (std::uint8_t& byte : line) {
            byte = static_cast<std::uint8_t>(random());
        }
        line.insert(line.end(), frame.begin(), frame.end());
        EXPECT_EQ(messagesIn(line), std::vector<Bytes>{message});
    }
}

// One delimiter may serve two frames, and any number may stand between them.
TEST(Frame, NeedsOneDelimiterOnly)
{
    const Bytes message = bytesOf("message");
    Bytes line = framed(message);
    const Bytes next = framed(message);
    line.insert(line.end(), next.begin() + 1, next.end());
    line.insert(line.end(), 5, 0);
    line.insert(line.end(), next.begin(), next.end());
    EXPECT_EQ(messagesIn(line), (std::vector<Bytes>{message, message, message}));
}

TEST(Frame, IsRefusedWhateverBitOrByteIsWrong)
{
    const Bytes frame = framed(bytesOf("\x10\x01\x00\x02\x00 some data"));
    for (std::size_t at = 1; at + 1 < frame.size(); ++at) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            Bytes damaged = frame;
            damaged[at] ^= static_cast<std::uint8_t>(1U << bit);
            EXPECT_TRUE(messagesIn(damaged).empty()) << at << ", bit " << bit;
        }
        Bytes shorter = frame;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_TRUE(messagesIn(shorter).empty()) << at;
        Bytes longer = frame;
        longer.insert(longer.begin() + static_cast<std::ptrdiff_t>(at), frame[at]);
        EXPECT_TRUE(messagesIn(longer).empty()) << at;
    }
}

TEST(Frame, IsRefusedWhenItIsTooLongOrHasNoMessage)
{
    // A check sum with nothing before it is right, but there is nothing to answer.
    EXPECT_TRUE(messagesIn({0, 1, 1, 1, 1, 0}).empty());
    EXPECT_TRUE(messagesIn({0, 0, 0}).empty());
    Bytes endless(100'000, 1);
    endless.push_back(0);
    EXPECT_TRUE(messagesIn(endless).empty());
    const Bytes frame = framed(bytesOf("message"));
    endless.insert(endless.end(), frame.begin(), frame.end());
    EXPECT_EQ(messagesIn(endless), std::vector<Bytes>{bytesOf("message")});
}

}  // namespace
}  // namespace serial_test
