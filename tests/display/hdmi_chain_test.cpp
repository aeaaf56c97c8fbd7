// The keywords of `hdmi` are tried one behind the other, each on the last word that has been used up: the operation of
// the keyword before, in upper case, or that operation's last number as it was typed.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

/** What a part of a command does. */
struct Work {
    std::vector<std::string> calls;
    std::string output;
};

/** A keyword in the order in which they are tried, with one way to go on behind it. */
struct Keyword {
    std::string word;
    std::uint32_t number; /**< of the word taken as a hexadecimal number */
    std::string rest;     /**< the operation that it needs, empty if none */
    Work work;
};

const std::vector<Keyword>& keywords()
{
    static const std::vector<Keyword> all = {
        {"PHY", 0, "st", {{"vekHdmiPhyStart(2)"}, ""}},
        {"HPD", 0, "r", {{"vekHdmiHpdSense(2)"}, "hpd status: 0\n"}},
        {"DDC", 0xddc, "i", {{"vekHdmiDDCInit(2)"}, "DDC init successed\n"}},
        {"EDID", 0xed, "r", {{"vekHdmiEDIDRead(2)"}, ""}},
        {"MODE",
         0,
         "",
         {{"vekHdmiModeRead(2)"},
          "HDMI-2:\n clock = 0kHz \n hdisplay = 0 \n hsync_start = 0 \n hsync_end = 0 \n htotal = 0 \n vdisplay = 0 \n"
          " vsync_start = 0 \n vsync_end = 0 \n vtotal = 0 \n"}},
    };
    return all;
}

/** An argument as the calls show it. */
std::string hex(std::uint32_t number)
{
    return "0x" + hexDigits(number);
}

Work noWork(std::uint32_t /*number*/)
{
    return {};
}

/** `phy rs 10 <number>` of registers that hold 0. */
Work phyRun(std::uint32_t number)
{
    Work work;
    for (std::uint32_t i = 0; i < number; ++i) {
        const std::uint32_t address = 0x10 + 4 * i;
        work.calls.push_back("vekHdmiPhyRead(2, " + hex(address) + ")");
        if (i % 4 == 0) {
            work.output.append(i == 0 ? "" : "\n").append(hexDigits(address, 8)).append(":");
        }
        work.output += " 00000000";
    }
    work.output += "\n";
    return work;
}

/** The words of a command up to one that is used up last and may be any. */
struct Beginning {
    std::string words;
    std::size_t keyword;                     /**< which of keywords() it begins with */
    bool endsInOperation;                    /**< the last word is an operation, not a number */
    std::function<Work(std::uint32_t)> work; /**< given the last word as a hexadecimal number */
};

const std::vector<Beginning>& beginnings()
{
    static const std::vector<Beginning> all = {
        {"phy", 0, true, noWork},
        {"phy r", 0, false,
         [](std::uint32_t number) {
             return Work{{"vekHdmiPhyRead(2, " + hex(number) + ")"}, hexDigits(number, 8) + ": 0000\n"};
         }},
        {"phy rs 10", 0, false, phyRun},
        {"phy w 10", 0, false,
         [](std::uint32_t number) {
             return Work{{"vekHdmiPhyWrite(2, 0x10, " + hex(number) + ")"}, ""};
         }},
        {"hpd", 1, true, noWork},
        {"ddc", 2, true, noWork},
        {"ddc r 50", 2, false,
         [](std::uint32_t number) {
             return Work{{"vekHdmiDDCRead(2, 0x50, " + hex(number & 0xff) + ")"}, hexDigits(number, 8) + ": 0000\n"};
         }},
        {"ddc w 50 6", 2, false,
         [](std::uint32_t number) {
             return Work{{"vekHdmiDDCWrite(2, 0x50, 0x6, " + hex(number & 0xff) + ")"}, ""};
         }},
        {"edid", 3, true, noWork},
    };
    return all;
}

/** A word in upper case, in lower case, and with its first letter only, then its last only in upper case. */
std::vector<std::string> spellings(const std::string& word)
{
    std::string lower = word;
    for (char& letter : lower) {
        letter = static_cast<char>(letter - 'A' + 'a');
    }
    return {word, lower, word.front() + lower.substr(1), lower.substr(0, lower.size() - 1) + word.back()};
}

class HdmiChainTest : public ConsoleTest
{
};

void expectWork(const std::string& text, int status, const Work& work)
{
    recording_vek::reset();
    EXPECT_EQ(call(doHdmi, text), (Outcome{status, work.output})) << text;
    EXPECT_THAT(recording_vek::deviceCalls(), ElementsAreArray(work.calls)) << text;
}

/** Every beginning that ends in a keyword, itself and earlier ones included. */
void forEveryPair(const std::function<void(const Beginning&, std::size_t next, const std::string& spelling)>& check)
{
    for (const Beginning& beginning : beginnings()) {
        for (std::size_t next = 0; next < keywords().size(); ++next) {
            for (const std::string& spelling : spellings(keywords()[next].word)) {
                check(beginning, next, spelling);
            }
        }
    }
}

bool goesOn(const Beginning& beginning, std::size_t next, const std::string& spelling)
{
    const bool matches = beginning.endsInOperation || spelling == keywords()[next].word;
    return matches && next > beginning.keyword;
}

TEST_F(HdmiChainTest, LastWordIsComparedWithTheLaterKeywords)
{
    forEveryPair([](const Beginning& beginning, std::size_t next, const std::string& spelling) {
        const Keyword& keyword = keywords()[next];
        Work work = beginning.work(keyword.number);
        if (goesOn(beginning, next, spelling)) {
            work.calls.insert(work.calls.end(), keyword.work.calls.begin(), keyword.work.calls.end());
            work.output += keyword.work.output;
        }
        expectWork("hdmi 2 " + beginning.words + " " + spelling + " " + keyword.rest, 0, work);
    });
}

TEST_F(HdmiChainTest, LaterKeywordNeedsItsOperationAfterWorkIsDone)
{
    forEveryPair([](const Beginning& beginning, std::size_t next, const std::string& spelling) {
        const Keyword& keyword = keywords()[next];
        if (keyword.rest.empty()) {
            return;
        }
        const int status = goesOn(beginning, next, spelling) ? -2 : 0;
        expectWork("hdmi 2 " + beginning.words + " " + spelling, status, beginning.work(keyword.number));
    });
}

TEST_F(HdmiChainTest, NumbersThatAreNotTheLastAreNoKeywords)
{
    for (const std::string word : {"HPD", "MODE", "DDC", "EDID"}) {
        for (const std::string& text :
             {"hdmi 2 phy rs " + word + " 0", "hdmi 2 phy w " + word + " 0", "hdmi 2 ddc r " + word + " 0",
              "hdmi 2 ddc w " + word + " 0 0", "hdmi 2 ddc w 0 " + word + " 0"}) {
            recording_vek::reset();
            EXPECT_EQ(call(doHdmi, text).status, 0) << text;
            for (const std::string& made : recording_vek::deviceCalls()) {
                EXPECT_THAT(made, ::testing::AnyOf(::testing::StartsWith("vekHdmiPhyWrite("),
                                                   ::testing::StartsWith("vekHdmiDDCRead("),
                                                   ::testing::StartsWith("vekHdmiDDCWrite(")))
                    << text;
            }
        }
    }
}

TEST_F(HdmiChainTest, WordsBehindTheLastNumberAreNotLookedAt)
{
    expectWork("hdmi 2 phy r 10 MODE", 0, {{"vekHdmiPhyRead(2, 0x10)"}, "00000010: 0000\n"});
    expectWork("hdmi 2 phy rs 10 0 MODE", 0, {{}, "\n"});
    expectWork("hdmi 2 phy w 10 5 MODE", 0, {{"vekHdmiPhyWrite(2, 0x10, 0x5)"}, ""});
    expectWork("hdmi 2 ddc r 50 5 MODE", 0, {{"vekHdmiDDCRead(2, 0x50, 0x5)"}, "00000005: 0000\n"});
    expectWork("hdmi 2 ddc w 50 5 6 MODE", 0, {{"vekHdmiDDCWrite(2, 0x50, 0x5, 0x6)"}, ""});
    expectWork("hdmi 2 mode hpd r", 0, keywords()[4].work);
    expectWork("hdmi 2 foo mode", 0, {});
    expectWork("hdmi 2 phy foo mode", 0, {});
}

TEST_F(HdmiChainTest, LaterKeywordsDoAllTheyCan)
{
    expectWork("hdmi 2 phy ddc r 50 1ff", 0, {{"vekHdmiDDCRead(2, 0x50, 0xff)"}, "000001ff: 0000\n"});
    expectWork("hdmi 2 phy ddc r 50", -2, {});
    expectWork("hdmi 2 phy ddc w 50 1 2", 0, {{"vekHdmiDDCWrite(2, 0x50, 0x1, 0x2)"}, ""});
    expectWork("hdmi 2 hpd ddc w 50 1", -2, {});
    expectWork("hdmi 2 phy hpd w", 0, {});
    expectWork("hdmi 2 ddc edid rs", 0, {});
}

TEST_F(HdmiChainTest, RunsThroughAllKeywords)
{
    expectWork("hdmi 2 phy hpd ddc edid mode", 0, keywords()[4].work);
    expectWork("hdmi 2 phy hpd ddc edid r", 0, keywords()[3].work);
    expectWork("hdmi 2 phy hpd ddc edid", -2, {});
    expectWork("hdmi 2 phy hpd ddc", -2, {});
    expectWork("hdmi 2 phy r HPD ddc r 1 EDID mode", 0,
               {{"vekHdmiPhyRead(2, 0x0)", "vekHdmiDDCRead(2, 0x1, 0xed)", "vekHdmiModeRead(2)"},
                "00000000: 0000\n000000ed: 0000\n" + keywords()[4].work.output});
    expectWork("hdmi 2 phy w 4 DDC w 1 2 EDID r mode", 0,
               {{"vekHdmiPhyWrite(2, 0x4, 0xddc)", "vekHdmiDDCWrite(2, 0x1, 0x2, 0xed)", "vekHdmiEDIDRead(2)"}, ""});
}

TEST_F(HdmiChainTest, NeverGoesBack)
{
    expectWork("hdmi 2 hpd phy st", 0, {});
    expectWork("hdmi 2 ddc hpd r", 0, {});
    expectWork("hdmi 2 edid ddc i", 0, {});
    expectWork("hdmi 2 ddc r 50 HPD r", 0, {{"vekHdmiDDCRead(2, 0x50, 0x0)"}, "00000000: 0000\n"});
    expectWork("hdmi 2 phy phy st", 0, {});
    expectWork("hdmi 2 edid edid r", 0, {});
}

TEST_F(HdmiChainTest, FailuresDoNotStopIt)
{
    const std::string mode = keywords()[4].work.output;
    recording_vek::setResult("vekHdmiPhyRead", -5);
    recording_vek::setResult("vekHdmiPhyWrite", -5);
    recording_vek::setResult("vekHdmiDDCRead", 1);
    recording_vek::setResult("vekHdmiDDCWrite", 1);
    EXPECT_EQ(call(doHdmi, "hdmi 2 phy r MODE"), (Outcome{0, "hdmi 2: phy read [0] error\n" + mode}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(2, 0x0)", "vekHdmiModeRead(2)"));
    EXPECT_EQ(call(doHdmi, "hdmi 2 phy rs 10 EDID r"), (Outcome{0, "HDMI2: phy read [10] error\n\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(2, 0x10)", "vekHdmiEDIDRead(2)"));
    EXPECT_EQ(call(doHdmi, "hdmi 2 phy w 10 MODE"), (Outcome{0, "hdmi 2: phy write [10] with 0000 error\n" + mode}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyWrite(2, 0x10, 0x0)", "vekHdmiModeRead(2)"));
    EXPECT_EQ(call(doHdmi, "hdmi 2 ddc r 50 MODE"), (Outcome{0, "hdmi 2:ddc read [0] error\n" + mode}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiDDCRead(2, 0x50, 0x0)", "vekHdmiModeRead(2)"));
    EXPECT_EQ(call(doHdmi, "hdmi 2 ddc w 50 1 MODE"), (Outcome{0, "hdmi 2:ddc write [1] with 0000 error\n" + mode}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiDDCWrite(2, 0x50, 0x1, 0x0)", "vekHdmiModeRead(2)"));
}

TEST_F(HdmiChainTest, MissingOperationAfterAFailureIsStillRefused)
{
    recording_vek::setResult("vekHdmiPhyRead", -5);
    EXPECT_EQ(call(doHdmi, "hdmi 2 phy r HPD"), (Outcome{-2, "hdmi 2: phy read [0] error\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 2 phy rs 1 EDID"), (Outcome{-2, "HDMI2: phy read [1] error\n\n"}));
}

TEST_F(HdmiChainTest, ChannelIsNoKeyword)
{
    EXPECT_EQ(call(doHdmi, "hdmi MODE foo"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi PHY foo r 0"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    call(doHdmi, "hdmi DDC mode");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiModeRead(3548)"));
}

}  // namespace
}  // namespace console_test
