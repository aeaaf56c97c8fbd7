// Frequencies of the clock domains, and bypass and off switches.

#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "board_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::outputs;
using recording_vek::setResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/** U+3001 in UTF-8. */
const std::string kIdeographicComma = "\xe3\x80\x81";

const std::string kSources = "DEVPLL -1-  -link to AUX/NOC" + kIdeographicComma + "AHB" + kIdeographicComma +
                             "APB -operate bypass or off be careful\n"
                             "DEV2PPL -2- -link to PCIE" +
                             kIdeographicComma +
                             "VPU -operate bypass or off be careful\n"
                             "GPUPLL -3- -link to 3D" +
                             kIdeographicComma +
                             "2D -support bypass and off\n"
                             "GPU2PLL -4- -link to 3D -support bypass and off\n"
                             "3DCORE -5- -control 3D core -support bypass and off\n"
                             "2DCORE -6- -control 2D core -support bypass and off\n";

const std::vector<std::string> kReadsOfAll = {"vek_qz200_get_freq(0)", "vek_qz200_get_freq(2)", "vek_qz200_get_freq(3)",
                                              "vek_qz200_get_freq(4)", "vek_qz200_get_freq(5)", "vek_qz200_get_freq(7)",
                                              "vek_qz200_get_freq(6)", "vek_qz200_get_freq(8)"};

class ClkTest : public ConsoleTest
{
};

TEST_F(ClkTest, AloneListsAllDomains)
{
    outputs().clock_mhz = {{0, 100}, {1, 101}, {2, 102}, {3, 103}, {4, 104}, {5, 105}, {6, 106}, {7, 107}, {8, 108}};
    for (const char* text : {"clk", "clk ", "clk ,\t\r\n", "\r\nclk\n"}) {
        EXPECT_EQ(call(doClk, text), (Outcome{0,
                                              "axi frequency: 100MHz\n"
                                              "apb frequency: 102MHz\n"
                                              "pcie frequency: 103MHz\n"
                                              "vpu frequency: 104MHz\n"
                                              "3d frequency: 105MHz\n"
                                              "2d frequency: 107MHz\n"
                                              "3dsh frequency: 106MHz\n"
                                              "ddr frequency: 108MHz\n"}))
            << text;
        EXPECT_EQ(takeDeviceCalls(), kReadsOfAll) << text;
    }
}

TEST_F(ClkTest, ListHoldsTheLongestNumbers)
{
    setResult("vek_qz200_get_freq", INT_MIN);
    EXPECT_EQ(call(doClk, "clk"), (Outcome{0,
                                           "axi frequency: -2147483648MHz\n"
                                           "apb frequency: -2147483648MHz\n"
                                           "pcie frequency: -2147483648MHz\n"
                                           "vpu frequency: -2147483648MHz\n"
                                           "3d frequency: -2147483648MHz\n"
                                           "2d frequency: -2147483648MHz\n"
                                           "3dsh frequency: -2147483648MHz\n"
                                           "ddr frequency: -2147483648MHz\n"}));
}

TEST_F(ClkTest, ListsTheSourcesInUtf8)
{
    for (const char* text : {"clk pll", "clk PLL", "clk\tPll 3 on", "clk,pll\r\n"}) {
        EXPECT_EQ(call(doClk, text), (Outcome{0, kSources})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ClkTest, OtherKeywordsAreSilent)
{
    for (const char* text :
         {"clk foo",   "clk foo 100",   "clk axis",    "clk axi0",      "clk ax 100", "clk no",          "clk nocs",
          "clk ap",    "clk apbs 25",   "clk pci",     "clk pcie/vpu",  "clk vp",     "clk vpus",        "clk 3",
          "clk 3d0",   "clk 3dsh0 100", "clk 3ds 100", "clk 2",         "clk 2d0",    "clk d",           "clk pl",
          "clk plls",  "clk bypas 1",   "clk bypass1", "clk bypasss 1", "clk of 1",   "clk offs 1",      "clk o 1",
          "clk onn 1", "clk ddr",       "clk axi/noc", "clk 0",         "clk -1",     "clk \xe3\x80\x81"}) {
        EXPECT_EQ(call(doClk, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ClkTest, TurnsTheKeywordIntoUpperCaseAndNothingElse)
{
    std::string text = "clk az`b{\xe4 cd";
    EXPECT_EQ(doClk(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 3), "clk");
    EXPECT_EQ(text.substr(4, 6), "AZ`B{\xe4");
    EXPECT_EQ(text.substr(11), "cd");

    std::string mode = "clk off abc";
    EXPECT_EQ(doClk(mode.data(), 0), 0);
    EXPECT_EQ(mode.substr(0, 3), "clk");
    EXPECT_EQ(mode.substr(4, 3), "OFF");
    EXPECT_EQ(mode.substr(8), "abc");
}

TEST_F(ClkTest, PcieKeywordIsNotThePcieLine)
{
    outputs().clock_mhz = {{3, 250}, {4, 600}};
    EXPECT_EQ(call(doClk, "clk pcie"), (Outcome{0, "pcie/vpu frequency: 600MHz\n"}));
}

/** A keyword of a clock domain. */
struct DomainKeyword {
    std::string keyword;
    std::string mixed; /**< with letters of both cases */
    int domain;
    std::uint32_t khzPerUnit; /**< of the number typed */
    std::string shown;        /**< in front of the frequency */
    std::string set;          /**< in front of the new frequency */
    std::string refused;      /**< when out of range */
};

class ClkDomainTest : public ClkTest, public ::testing::WithParamInterface<DomainKeyword>
{
protected:
    ClkDomainTest()
    {
        for (int domain = 0; domain <= 8; ++domain) {
            outputs().clock_mhz[domain] = 1000 + domain;
        }
        outputs().pll_setting = 0xfedcba98;
    }

    static std::string frequency() { return std::to_string(1000 + GetParam().domain) + "MHz\n"; }
    static Outcome shown() { return {0, GetParam().shown + frequency()}; }
    static Outcome set() { return {0, GetParam().set + frequency()}; }
    static std::string domain() { return std::to_string(GetParam().domain); }
    static std::string readCall() { return "vek_qz200_get_freq(" + domain() + ")"; }

    static std::string calculation(std::uint32_t khz)
    {
        return "vek_qz200_pllcalc(27000, 1, " + hexadecimal(khz) + ")";
    }

    static std::vector<std::string> setCalls(std::uint32_t khz, std::uint32_t setting)
    {
        return {calculation(khz), "vek_qz200_set_clk_freq(" + domain() + ", " + hexadecimal(setting) + ")", readCall()};
    }

private:
    static std::string hexadecimal(std::uint32_t number)
    {
        char text[16];
        snprintf(text, sizeof text, "0x%x", number);
        return text;
    }
};

TEST_P(ClkDomainTest, AloneShowsTheFrequency)
{
    for (const std::string& text :
         {"clk " + GetParam().keyword, "clk " + GetParam().mixed, "clk," + GetParam().keyword + " ,\t\r\n",
          "CLK\r\n" + GetParam().keyword, " ,\t\r\nclk ,\t\r\n" + GetParam().mixed}) {
        EXPECT_EQ(call(doClk, text), shown()) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(readCall())) << text;
    }
}

TEST_P(ClkDomainTest, NumberSetsTheFrequency)
{
    for (const std::string& text : {"clk " + GetParam().keyword + " 25", "clk " + GetParam().mixed + ",25 7",
                                    "clk\t" + GetParam().keyword + "\r\n025\n"}) {
        EXPECT_EQ(call(doClk, text), set()) << text;
        EXPECT_EQ(takeDeviceCalls(), setCalls(25 * GetParam().khzPerUnit, 0xfedcba98)) << text;
    }
}

TEST_P(ClkDomainTest, SettingGoesBackUnchanged)
{
    for (const std::uint32_t setting : {0U, 1U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        outputs().pll_setting = setting;
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " 3"), set()) << setting;
        EXPECT_EQ(takeDeviceCalls(), setCalls(3 * GetParam().khzPerUnit, setting)) << setting;
    }
}

TEST_P(ClkDomainTest, NumberIsDecimalUpToItsFirstOtherCharacter)
{
    for (const auto& [typed, number] : std::vector<std::pair<std::string, std::uint32_t>>{{"0", 0},
                                                                                          {"x", 0},
                                                                                          {"0x300", 0},
                                                                                          {"-5", 0},
                                                                                          {"+5", 0},
                                                                                          {"300x", 300},
                                                                                          {"1a", 1},
                                                                                          {"010", 10},
                                                                                          {"7.9", 7},
                                                                                          {"auto", 0},
                                                                                          {"ff", 0}}) {
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " " + typed), set()) << typed;
        EXPECT_EQ(takeDeviceCalls(), setCalls(number * GetParam().khzPerUnit, 0xfedcba98)) << typed;
    }
}

TEST_P(ClkDomainTest, KilohertzWrapAtThirtyTwoBits)
{
    const bool apb = GetParam().khzPerUnit == 8000;
    for (const auto& [typed, khz] : std::vector<std::pair<std::string, std::uint32_t>>{
             {"4294967", apb ? 4294964928U : 4294967000U},     // the largest that does not wrap with 1000
             {"4294968", apb ? 5632U : 704U},                  // the first that does
             {"536871", apb ? 704U : 536871000U},              // the first that wraps with 8000
             {"2147484", apb ? 2816U : 2147484000U},           // has the highest bit set
             {"4294967296", 0U},                               // 2^32
             {"4294967297", apb ? 8000U : 1000U},              // 2^32 + 1
             {"4294967295", apb ? 4294959296U : 4294966296U},  // -1
             {"9223372036854775809", apb ? 8000U : 1000U},     // 2^63 + 1
             {"18446744073709551616", 0U},                     // 2^64
             {"18446744073709551621", apb ? 40000U : 5000U}}) {
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " " + typed), set()) << typed;
        EXPECT_EQ(takeDeviceCalls(), setCalls(khz, 0xfedcba98)) << typed;
    }
}

TEST_P(ClkDomainTest, OutOfRangeLeavesTheClockAlone)
{
    for (const int code : kFailures) {
        setResult("vek_qz200_pllcalc", code);
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " 100"), (Outcome{0, GetParam().refused + "\n"})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(calculation(100 * GetParam().khzPerUnit))) << code;
    }
}

TEST_P(ClkDomainTest, FailedSettingIsSeenInWhatIsReadBack)
{
    for (const int code : kFailures) {
        setResult("vek_qz200_set_clk_freq", code);
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " 100"), set()) << code;
        EXPECT_EQ(takeDeviceCalls(), setCalls(100 * GetParam().khzPerUnit, 0xfedcba98)) << code;
    }
}

TEST_P(ClkDomainTest, FrequenciesAreSigned)
{
    for (const int mhz : {INT_MIN, -22, -1, 0, INT_MAX}) {
        setResult("vek_qz200_get_freq", mhz);
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword),
                  (Outcome{0, GetParam().shown + std::to_string(mhz) + "MHz\n"}));
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " 5"),
                  (Outcome{0, GetParam().set + std::to_string(mhz) + "MHz\n"}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, ClkDomainTest,
    ::testing::Values(DomainKeyword{"axi", "aXI", 0, 1000, "axi frequency: ", "new axi frequency: ",
                                    "the input axi frequency out of range, please set again"},
                      DomainKeyword{"noc", "Noc", 0, 1000, "axi frequency: ", "new axi frequency: ",
                                    "the input axi frequency out of range, please set again"},
                      DomainKeyword{"apb", "APb", 2, 8000, "apb frequency: ", "new apb frequency: ",
                                    "the input apb frequency out of range, please set again"},
                      DomainKeyword{"pcie", "PciE", 4, 1000, "pcie/vpu frequency: ", "new pcie/vpu frequency: ",
                                    "the input pcie/vpu frequency out of range, please set again"},
                      DomainKeyword{"vpu", "vPu", 4, 1000, "pcie/vpu frequency: ", "new pcie/vpu frequency: ",
                                    "the input pcie/vpu frequency out of range, please set again"},
                      DomainKeyword{"3d", "3D", 5, 1000, "3d frequency: ", "new 3d core frequency: ",
                                    "the input 3d core frequency out of range, please set again"},
                      DomainKeyword{"3dsh", "3DsH", 6, 1000, "3dsh frequency: ", "new 3d sh frequency: ",
                                    "the input 3dsh frequency out of range, please set again"},
                      DomainKeyword{"2d", "2D", 7, 1000, "2d frequency: ", "new 2d frequency: ",
                                    "the input 2d frequency out of range, please set again"}),
    [](const auto& test) { return test.param.keyword; });

/** A keyword of a mode of a PLL or core. */
struct ModeKeyword {
    std::string keyword;
    std::string mixed; /**< with letters of both cases */
    std::string mode;
};

class ClkModeTest : public ClkTest, public ::testing::WithParamInterface<ModeKeyword>
{
protected:
    static std::string callOf(const std::string& source)
    {
        return "vek_qz200_set_clk_mode(" + GetParam().mode + ", " + source + ")";
    }
};

TEST_P(ClkModeTest, SwitchesTheSourceSilently)
{
    for (const std::string& text : {"clk " + GetParam().keyword + " 3", "clk " + GetParam().mixed + ",3 5",
                                    "clk\n" + GetParam().keyword + "\r3\n"}) {
        EXPECT_EQ(call(doClk, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("3"))) << text;
    }
}

TEST_P(ClkModeTest, NeedsTheSource)
{
    for (const std::string& text : {"clk " + GetParam().keyword, "clk " + GetParam().mixed + " ,\t\r\n"}) {
        EXPECT_EQ(call(doClk, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doClk, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(ClkModeTest, SourceIsDecimalAndNotChecked)
{
    for (const auto& [typed, source] :
         std::vector<std::pair<std::string, std::string>>{{"0", "0"},
                                                          {"1", "1"},
                                                          {"6", "6"},
                                                          {"7", "7"},
                                                          {"10", "10"},
                                                          {"0x10", "0"},
                                                          {"x", "0"},
                                                          {"-1", "0"},
                                                          {"5x", "5"},
                                                          {"a", "0"},
                                                          {"99999", "99999"},
                                                          {"2147483647", "2147483647"},
                                                          {"2147483648", "-2147483648"},
                                                          {"4294967295", "-1"},
                                                          {"4294967298", "2"},
                                                          {"18446744073709551619", "3"}}) {
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " " + typed), Outcome{}) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(source))) << typed;
    }
}

TEST_P(ClkModeTest, ResultIsNotLookedAt)
{
    for (const int code : kFailures) {
        setResult("vek_qz200_set_clk_mode", code);
        EXPECT_EQ(call(doClk, "clk " + GetParam().keyword + " 1"), Outcome{}) << code;
    }
}

TEST_P(ClkModeTest, LineRunsOverEveryPathAndIsRepeated)
{
    expectRepeatedOnEveryPath("clk " + GetParam().keyword + " 2", {}, {callOf("2")});
    expectOnEveryPath("clk " + GetParam().keyword + ";clk", {-2, std::string(kBadArgumentLine)}, {}, Outcome{-2}, {});
}

INSTANTIATE_TEST_SUITE_P(All, ClkModeTest,
                         ::testing::Values(ModeKeyword{"bypass", "ByPaSs", "1"}, ModeKeyword{"off", "oFF", "2"},
                                           ModeKeyword{"on", "On", "0"}),
                         [](const auto& test) { return test.param.keyword; });

TEST_F(ClkTest, LineRunsOverEveryPathAndIsRepeated)
{
    expectRepeatedOnEveryPath("clk pll", {0, kSources}, {});
    expectRepeatedOnEveryPath("clk foo", {}, {});
    expectRepeatedOnEveryPath("CLK noc", {0, "axi frequency: 0MHz\n"}, {"vek_qz200_get_freq(0)"});
    expectRepeatedOnEveryPath("clk",
                              {0,
                               "axi frequency: 0MHz\napb frequency: 0MHz\npcie frequency: 0MHz\nvpu frequency: 0MHz\n"
                               "3d frequency: 0MHz\n2d frequency: 0MHz\n3dsh frequency: 0MHz\nddr frequency: 0MHz\n"},
                              kReadsOfAll);
    expectRepeatedOnEveryPath(
        "clk apb 25", {0, "new apb frequency: 0MHz\n"},
        {"vek_qz200_pllcalc(27000, 1, 0x30d40)", "vek_qz200_set_clk_freq(2, 0x0)", "vek_qz200_get_freq(2)"});
}

TEST_F(ClkTest, LineGoesOnBehindARefusal)
{
    setResult("vek_qz200_pllcalc", -1);
    EXPECT_EQ(runLine("clk 3d 100;clk 3d"),
              (Outcome{0, "the input 3d core frequency out of range, please set again\n3d frequency: 0MHz\n"}));
}

}  // namespace
}  // namespace console_test
