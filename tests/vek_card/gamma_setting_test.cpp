#include "drivers/gamma_setting.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <string_view>

namespace
{

using vek::GammaSetting;
using vek::parseGammaSetting;

constexpr unsigned kControllers = 4;

GammaSetting parsed(std::string_view text)
{
    GammaSetting setting;
    const char* fault = parseGammaSetting(text, kControllers, setting);
    EXPECT_EQ(fault, nullptr) << '"' << text << "\": " << (fault == nullptr ? "" : fault);
    return setting;
}

class RefusedGammaSetting : public ::testing::TestWithParam<std::string_view>
{
};

TEST_P(RefusedGammaSetting, ChangesNothing)
{
    GammaSetting setting{.controller = 77, .gamma = {2, 3, 4}, .brightness = 5, .kelvin = 6};
    const char* fault = parseGammaSetting(GetParam(), kControllers, setting);
    ASSERT_NE(fault, nullptr);
    EXPECT_NE(std::string_view(fault), "");
    EXPECT_EQ(std::string_view(fault).find('\n'), std::string_view::npos);
    EXPECT_EQ(setting.controller, 77U);
    EXPECT_EQ(setting.gamma, (std::array<double, 3>{2, 3, 4}));
    EXPECT_EQ(setting.brightness, 5);
    EXPECT_EQ(setting.kelvin, 6);
}

INSTANTIATE_TEST_SUITE_P(Empty, RefusedGammaSetting, ::testing::Values("", " ", "\t\r\n"));

INSTANTIATE_TEST_SUITE_P(Id, RefusedGammaSetting,
                         ::testing::Values("4", "5 br 0.5", "-1", "+1", "0x0", "0.0", "x", "1x", "ga 1:1:1", "br 0.5",
                                           "4294967296", "18446744073709551616", "99999999999999999999999999", "1,br"));

INSTANTIATE_TEST_SUITE_P(Words, RefusedGammaSetting,
                         ::testing::Values("0 1", "0 gamma 1:1:1", "0 g 1:1:1", "0 gaa 1:1:1", "0 ga1:1:1", "0 br=0.5",
                                           "0 br 0.5 6500", "0 br 0.5 x", "0 br 0.5,ct 6500", "0 \x01", "0 br 0.5 \xff",
                                           "0\v", "0 br\f0.5"));

INSTANTIATE_TEST_SUITE_P(MissingValues, RefusedGammaSetting,
                         ::testing::Values("0 ga", "0 br", "0 ct", "0 ga ", "0 br ct 6500", "0 ga br 0.5",
                                           "0 br 0.5 ct", "0 ct br 0.5", "0 ct\n"));

INSTANTIATE_TEST_SUITE_P(Gamma, RefusedGammaSetting,
                         ::testing::Values("0 ga 1", "0 ga 1:1", "0 ga 1:1:", "0 ga :1:1", "0 ga 1::1",
                                           "0 ga ::", "0 ga 1:1:1:", "0 ga 1:1:1:1", "0 ga 1:1:1.1", "0 ga 1.1:1:1",
                                           "0 ga 1:1.000000000000000001:1", "0 ga 1 : 1 : 1", "0 ga 1: 1:1",
                                           "0 ga -1:1:1", "0 ga -0:1:1", "0 ga 1;1;1", "0 ga 0,5:1:1",
                                           "0 ga 1:1:0.5x"));

INSTANTIATE_TEST_SUITE_P(Brightness, RefusedGammaSetting,
                         ::testing::Values("0 br 1.1", "0 br 2", "0 br 1.0000000000000000000001", "0 br -0.5",
                                           "0 br +0.5", "0 br 0.5x", "0 br 0.5.", "0 br 0.5.5", "0 br .5", "0 br 1.",
                                           "0 br .", "0 br 0,5", "0 br nan", "0 br NaN", "0 br inf", "0 br -inf",
                                           "0 br infinity", "0 br 1e-1", "0 br 5E-1", "0 br 1e0", "0 br 0x1",
                                           "0 br 0x0.8p0", "0 br 0x1p-1", "0 br 0.5f", "0 br 50%", "0 br \"0.5\"",
                                           "0 br 18446744073709551616.5", "0 br 36893488147419103232"));

INSTANTIATE_TEST_SUITE_P(Temperature, RefusedGammaSetting,
                         ::testing::Values("0 ct 999", "0 ct 0", "0 ct 999.9999999999999", "0 ct 25100.1",
                                           "0 ct 25100.0000000000000001", "0 ct 25101", "0 ct 6500K", "0 ct -6500",
                                           "0 ct 6.5e3", "0 ct 0x1964", "0 ct nan", "0 ct 18446744073709558116"));

// A fault after good words must not let those through.
INSTANTIATE_TEST_SUITE_P(LateFaults, RefusedGammaSetting,
                         ::testing::Values("0 ga 0.5:0.5:0.5 br 0.5 ct 999", "0 br 0.5 br 2", "3 ct 6500 ga 1:1",
                                           "0 br 2 br 0.5"));

TEST(GammaSetting, HasDefaults)
{
    const GammaSetting setting = parsed("2");
    EXPECT_EQ(setting.controller, 2U);
    EXPECT_EQ(setting.gamma, (std::array<double, 3>{1, 1, 1}));
    EXPECT_EQ(setting.brightness, 1);
    EXPECT_EQ(setting.kelvin, 6500);
}

TEST(GammaSetting, TakesTheExamplesOfTheHelp)
{
    const GammaSetting first = parsed("0 ga 1.0:1.0:1.0 br 1.0 ct 6500");
    EXPECT_EQ(first.controller, 0U);
    EXPECT_EQ(first.gamma, (std::array<double, 3>{1, 1, 1}));
    EXPECT_EQ(first.brightness, 1);
    EXPECT_EQ(first.kelvin, 6500);
    const GammaSetting second = parsed("1 br 0.5 ct 7000");
    EXPECT_EQ(second.controller, 1U);
    EXPECT_EQ(second.brightness, 0.5);
    EXPECT_EQ(second.kelvin, 7000);
}

TEST(GammaSetting, TakesItsPartsInAnyOrderAndTheLastOfAKind)
{
    for (const char* text : {"3 ga 0.25:0.5:0.75 br 0.125 ct 2500", "3 ct 2500 br 0.125 ga 0.25:0.5:0.75",
                             "3 br 1 ct 9000 ga 0:0:0 ga 0.25:0.5:0.75 ct 2500 br 0.125"}) {
        const GammaSetting setting = parsed(text);
        EXPECT_EQ(setting.controller, 3U);
        EXPECT_EQ(setting.gamma, (std::array<double, 3>{0.25, 0.5, 0.75}));
        EXPECT_EQ(setting.brightness, 0.125);
        EXPECT_EQ(setting.kelvin, 2500);
    }
}

TEST(GammaSetting, IsSeparatedByBlanksOfAnyKind)
{
    const GammaSetting setting = parsed("\t 1\r\nbr\t \t0.5\n\nct  1000\r\n");
    EXPECT_EQ(setting.controller, 1U);
    EXPECT_EQ(setting.brightness, 0.5);
    EXPECT_EQ(setting.kelvin, 1000);
}

TEST(GammaSetting, TakesKeywordsInCapitals)
{
    const GammaSetting setting = parsed("0 GA 0.5:0.5:0.5 Br 0.25 cT 3000");
    EXPECT_EQ(setting.gamma[0], 0.5);
    EXPECT_EQ(setting.brightness, 0.25);
    EXPECT_EQ(setting.kelvin, 3000);
}

TEST(GammaSetting, TakesBothEndsOfEachRange)
{
    EXPECT_EQ(parsed("0 ga 0:0.0:00.000").gamma, (std::array<double, 3>{0, 0, 0}));
    EXPECT_EQ(parsed("0 ga 1:1.0:01.00000000000000000000").gamma, (std::array<double, 3>{1, 1, 1}));
    EXPECT_EQ(parsed("0 br 0").brightness, 0);
    EXPECT_EQ(parsed("0 br 1").brightness, 1);
    EXPECT_EQ(parsed("0 ct 1000").kelvin, 1000);
    EXPECT_EQ(parsed("0 ct 25100.0").kelvin, 25100);
}

TEST(GammaSetting, ReadsDecimalPlaces)
{
    EXPECT_EQ(parsed("0 br 0.1").brightness, 0.1);
    EXPECT_EQ(parsed("0 br 0.123456789").brightness, 0.123456789);
    EXPECT_EQ(parsed("0 br 0.000000001").brightness, 1e-9);
    EXPECT_NEAR(parsed("0 br 0.99999999999999999999").brightness, 1, 1e-8);
    EXPECT_NEAR(parsed("0 br 0.3333333333333333333333333333333333").brightness, 1.0 / 3, 1e-8);
    EXPECT_EQ(parsed("0 ct 6500.25").kelvin, 6500.25);
    EXPECT_EQ(parsed("0 br 0000000000000000000000000000000000000.5").brightness, 0.5);
}

TEST(GammaSetting, TakesTheChipsControllersOnly)
{
    GammaSetting setting;
    EXPECT_EQ(parseGammaSetting("1", 2, setting), nullptr);
    EXPECT_NE(parseGammaSetting("2", 2, setting), nullptr);
    EXPECT_EQ(setting.controller, 1U);
    EXPECT_EQ(parsed("003").controller, 3U);
}

TEST(GammaSetting, IsTheSameInEveryLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            EXPECT_EQ(parsed("0 br 0.5").brightness, 0.5) << name;
            GammaSetting setting;
            EXPECT_NE(parseGammaSetting("0 br 0,5", kControllers, setting), nullptr) << name;
        }
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(GammaSetting, MayBeOfAnyLength)
{
    std::string text = "0";
    for (int i = 0; i < 100000; ++i) {
        text += " br 0.5";
    }
    EXPECT_EQ(parsed(text).brightness, 0.5);
    GammaSetting setting;
    EXPECT_NE(parseGammaSetting("0 br " + std::string(1'000'000, '9'), kControllers, setting), nullptr);
    EXPECT_NE(parseGammaSetting(std::string(1'000'000, '9'), kControllers, setting), nullptr);
    EXPECT_NE(parseGammaSetting("0 ga " + std::string(1'000'000, ':'), kControllers, setting), nullptr);
}

}  // namespace
