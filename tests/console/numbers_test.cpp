#include "tovira_parse/numbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace
{

TEST(Htoi, ReadsDigitsOfEitherCase)
{
    EXPECT_EQ(htoi("1f"), 0x1f);
    EXPECT_EQ(htoi("1F"), 0x1f);
    EXPECT_EQ(htoi("abcdef"), 0xabcdef);
    EXPECT_EQ(htoi("ABCDEF"), 0xabcdef);
    EXPECT_EQ(htoi("0123456789"), 0x123456789);
    EXPECT_EQ(htoi("0"), 0);
}

TEST(Htoi, SkipsOnePrefixAtTheBeginning)
{
    EXPECT_EQ(htoi("0x1F"), 31);
    EXPECT_EQ(htoi("0X1f"), 31);
    EXPECT_EQ(htoi("x10"), 0);
    EXPECT_EQ(htoi("X10"), 0);
    EXPECT_EQ(htoi("00x10"), 0);
    EXPECT_EQ(htoi("0x0x10"), 0);
    EXPECT_EQ(htoi(" 0x10"), 0);
}

TEST(Htoi, StopsAtTheFirstOtherCharacter)
{
    EXPECT_EQ(htoi("10 "), 16);
    EXPECT_EQ(htoi("12G4"), 0x12);
    EXPECT_EQ(htoi("12g4"), 0x12);
    EXPECT_EQ(htoi("12,34"), 0x12);
    EXPECT_EQ(htoi("12\n"), 0x12);
    EXPECT_EQ(htoi("12/"), 0x12);
    EXPECT_EQ(htoi("12:"), 0x12);
    EXPECT_EQ(htoi("12@"), 0x12);
    EXPECT_EQ(htoi("12`"), 0x12);
    EXPECT_EQ(htoi("12\xb9"), 0x12);
}

TEST(Htoi, GivesZeroForBadInput)
{
    EXPECT_EQ(htoi(""), 0);
    EXPECT_EQ(htoi("0x"), 0);
    EXPECT_EQ(htoi("0X"), 0);
    EXPECT_EQ(htoi("-5"), 0);
    EXPECT_EQ(htoi("+5"), 0);
    EXPECT_EQ(htoi("G12"), 0);
    EXPECT_EQ(htoi(" 5"), 0);
}

TEST(Htoi, KeepsTheLowSixtyFourBits)
{
    EXPECT_EQ(htoi("ffffffffffffffff"), -1);
    EXPECT_EQ(htoi("8000000000000000"), INT64_MIN);
    EXPECT_EQ(htoi("11223344556677889"), 0x1223344556677889);
    EXPECT_EQ(htoi("0x11223344556677889"), 0x1223344556677889);
    EXPECT_EQ(htoi((std::string(100, 'f') + "0000000000000001").c_str()), 1);
}

TEST(Htoi32, KeepsTheLowThirtyTwoBitsAsASignedNumber)
{
    EXPECT_EQ(htoi32("7fffffff"), INT32_MAX);
    EXPECT_EQ(htoi32("80000000"), INT32_MIN);
    EXPECT_EQ(htoi32("ffffffff"), -1);
    EXPECT_EQ(htoi32("100000002"), 2);
    EXPECT_EQ(htoi32(""), 0);
}

TEST(Itoi, ReadsDecimalDigits)
{
    EXPECT_EQ(itoi("0"), 0);
    EXPECT_EQ(itoi("9"), 9);
    EXPECT_EQ(itoi("1234567890"), 1234567890);
    EXPECT_EQ(itoi("007"), 7);
}

TEST(Itoi, StopsAtTheFirstNonDigit)
{
    EXPECT_EQ(itoi("42abc"), 42);
    EXPECT_EQ(itoi("42 17"), 42);
    EXPECT_EQ(itoi("0x10"), 0);
    EXPECT_EQ(itoi("4/"), 4);
    EXPECT_EQ(itoi("4:"), 4);
}

TEST(Itoi, GivesZeroUnlessADigitComesFirst)
{
    EXPECT_EQ(itoi(""), 0);
    EXPECT_EQ(itoi("+1"), 0);
    EXPECT_EQ(itoi("-1"), 0);
    EXPECT_EQ(itoi(" 1"), 0);
    EXPECT_EQ(itoi("a1"), 0);
}

TEST(Itoi, WrapsAtTwoToTheSixtyFour)
{
    EXPECT_EQ(itoi("18446744073709551615"), -1);
    EXPECT_EQ(itoi("18446744073709551616"), 0);
    EXPECT_EQ(itoi("18446744073709551659"), 43);
    EXPECT_EQ(itoi("9223372036854775808"), INT64_MIN);
}

TEST(StringIsNumber, AcceptsHexadecimalDigitsAndLowerCaseX)
{
    EXPECT_EQ(string_is_number(""), 1);
    EXPECT_EQ(string_is_number("0x1000"), 1);
    EXPECT_EQ(string_is_number("bad"), 1);
    EXPECT_EQ(string_is_number("0123456789abcdefABCDEF"), 1);
    EXPECT_EQ(string_is_number("xx"), 1);
}

TEST(StringIsNumber, RefusesEveryOtherByte)
{
    const std::string accepted = "0123456789ABCDEFabcdefx";
    for (int byte = 1; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        const int expected = accepted.find(character) == std::string::npos ? 0 : 1;
        EXPECT_EQ(string_is_number(std::string(1, character).c_str()), expected) << "byte " << byte;
        EXPECT_EQ(string_is_number((std::string("1") + character + "2").c_str()), expected) << "byte " << byte;
    }
}

TEST(StringIsNumber, TellsFileNamesFromNumbers)
{
    EXPECT_EQ(string_is_number("0X1000"), 0);
    EXPECT_EQ(string_is_number("data.bin"), 0);
    EXPECT_EQ(string_is_number("-1"), 0);
    EXPECT_EQ(string_is_number("a/b"), 0);
}

}  // namespace
