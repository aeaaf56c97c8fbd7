#include <climits>
#include <string>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::outputs;
using recording_vek::setResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// ---- Modes

/** A command that lists the mode of a channel. */
struct ModeCommand {
    CmdHandler handler;
    std::string name;
    std::string heading;
};

class ModeTest : public ConsoleTest, public ::testing::WithParamInterface<ModeCommand>
{
protected:
    Outcome list(const std::string& channel) const
    {
        return call(GetParam().handler, GetParam().name + ' ' + channel + " mode");
    }
};

TEST_P(ModeTest, ListsTenFields)
{
    outputs().display_mode = {148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125, 0x2a};
    EXPECT_EQ(call(GetParam().handler, GetParam().name + " 2 mode more"),
              (Outcome{0, GetParam().heading +
                              "-2:\n clock = 148500kHz \n hdisplay = 1920 \n hsync_start = 2008 \n hsync_end = 2052 \n"
                              " htotal = 2200 \n vdisplay = 1080 \n vsync_start = 1084 \n vsync_end = 1089 \n"
                              " vtotal = 1125 \n flags = 0x2a (just for h/v sync)\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(2)"));
}

TEST_P(ModeTest, ListsSignedNumbersAndUnsignedFlags)
{
    outputs().display_mode = {INT_MIN, -1, -2, -3, -4, -5, -6, -7, INT_MAX, -2};
    EXPECT_EQ(list("0"),
              (Outcome{0, GetParam().heading +
                              "-0:\n clock = -2147483648kHz \n hdisplay = -1 \n hsync_start = -2 \n hsync_end = -3 \n"
                              " htotal = -4 \n vdisplay = -5 \n vsync_start = -6 \n vsync_end = -7 \n"
                              " vtotal = 2147483647 \n flags = 0xfffffffe (just for h/v sync)\n"}));
}

TEST_P(ModeTest, FlagsAreZeroWhenTheLibraryLeavesThemAlone)
{
    outputs().display_mode = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const std::string filled = GetParam().heading +
                               "-1:\n clock = 1kHz \n hdisplay = 2 \n hsync_start = 3 \n hsync_end = 4 \n"
                               " htotal = 5 \n vdisplay = 6 \n vsync_start = 7 \n vsync_end = 8 \n vtotal = 9 \n";
    EXPECT_EQ(list("1"), (Outcome{0, filled + " flags = 0xa (just for h/v sync)\n"}));
    outputs().mode_read_sets_flags = false;
    EXPECT_EQ(list("1"), (Outcome{0, filled + " flags = 0x0 (just for h/v sync)\n"}));
}

TEST_P(ModeTest, IsListedWhateverTheResult)
{
    outputs().display_mode = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const std::string filled =
        GetParam().heading +
        "-0:\n clock = 1kHz \n hdisplay = 2 \n hsync_start = 3 \n hsync_end = 4 \n htotal = 5 \n vdisplay = 6 \n"
        " vsync_start = 7 \n vsync_end = 8 \n vtotal = 9 \n flags = 0xa (just for h/v sync)\n";
    const std::string zeroed =
        GetParam().heading +
        "-0:\n clock = 0kHz \n hdisplay = 0 \n hsync_start = 0 \n hsync_end = 0 \n htotal = 0 \n vdisplay = 0 \n"
        " vsync_start = 0 \n vsync_end = 0 \n vtotal = 0 \n flags = 0x0 (just for h/v sync)\n";
    for (const int code : kFailures) {
        setResult("vekCrtcModeRead", 0);
        EXPECT_EQ(list("0"), (Outcome{0, filled}));
        // The library fills the record unless its result is negative.
        setResult("vekCrtcModeRead", code);
        EXPECT_EQ(list("0"), (Outcome{0, code < 0 ? zeroed : filled})) << code;
    }
}

TEST_P(ModeTest, ChannelsAreHexadecimalFromZeroToThree)
{
    const struct {
        const char* typed;
        char channel;
    } cases[] = {{"0", '0'}, {"1", '1'}, {"2", '2'}, {"3", '3'}, {"0X03", '3'}, {"1G", '1'}, {"zz", '0'}};
    for (const auto& [typed, channel] : cases) {
        const Outcome outcome = list(typed);
        EXPECT_EQ(outcome.status, 0) << typed;
        EXPECT_TRUE(outcome.output.starts_with(GetParam().heading + '-' + channel + ":\n")) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(std::string("vekCrtcModeRead(") + channel + ')')) << typed;
    }
}

TEST_P(ModeTest, NeedsChannelAndSubCommand)
{
    for (const char* rest : {"", " ", " ,\t\r\n", " 0", " 0 ,\t", " mode", " MODE ,"}) {
        EXPECT_EQ(call(GetParam().handler, GetParam().name + rest), Outcome{-2}) << rest;
    }
    EXPECT_EQ(call(GetParam().handler, ""), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(ModeTest, OtherSubCommandsAreRefused)
{
    for (const char* rest :
         {" 0 foo", " 0 foo mode", " 0 0", " 0 mod", " 0 modes", " 0 rr 10", " 0 x 10", " 0 output", " 0 gamma"}) {
        EXPECT_EQ(call(GetParam().handler, GetParam().name + rest), Outcome{-2}) << rest;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(ModeTest, KeywordIsCaseBlind)
{
    for (const char* keyword : {"mode", "MODE", "mOdE", "Mode"}) {
        EXPECT_EQ(call(GetParam().handler, GetParam().name + " 1 " + keyword).status, 0) << keyword;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(1)")) << keyword;
    }
}

TEST_P(ModeTest, TurnsTheKeywordIntoUpperCase)
{
    std::string text = GetParam().name + " 1 a`b{z\xe4 cd";
    EXPECT_EQ(GetParam().handler(text.data(), 0), -2);
    EXPECT_EQ(text.substr(0, GetParam().name.size()), GetParam().name);
    EXPECT_EQ(text.substr(GetParam().name.size() + 3), "A`B{Z\xe4" + std::string(1, '\0') + "cd");
}

TEST_P(ModeTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* rest : {" 1 mode", ",1,mode,", "\t1\tmode\t5", " ,\t1 ,\tmode ,rest", "\r1 mode", "\n1 mode"}) {
        EXPECT_EQ(call(GetParam().handler, " ,\t\r\n" + GetParam().name + rest).status, 0) << rest;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(1)")) << rest;
    }
}

TEST_P(ModeTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(GetParam().handler, GetParam().name + " 1 mode", 1), list("1"));
    EXPECT_EQ(call(GetParam().handler, GetParam().name, 1), Outcome{-2});
}

TEST_P(ModeTest, LineRunsOverEveryPathAndIsRepeated)
{
    const Outcome listing = list("1");
    takeDeviceCalls();
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine(GetParam().name + " 1 mode"), listing) << mode;
        EXPECT_EQ(runLine(""), listing) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(1)", "vekCrtcModeRead(1)")) << mode;
    }
    EXPECT_EQ(runLine(GetParam().name + " 0"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

const ModeCommand kVga{doVga, "vga", "VGA"};
const ModeCommand kDvo{doDvo, "dvo", "DVO"};
const ModeCommand kCrtc{doCrtc, "crtc", "CRTC"};

const auto nameOfCommand = [](const auto& test) { return test.param.name; };

INSTANTIATE_TEST_SUITE_P(All, ModeTest, ::testing::Values(kVga, kDvo, kCrtc), nameOfCommand);

/** Commands that fall back to channel 0. */
class ModeFallbackTest : public ModeTest
{
};

TEST_P(ModeFallbackTest, ChannelsBeyondThreeBecomeZero)
{
    outputs().display_mode.clock = 5;
    const std::string line =
        GetParam().name + " channel set out of range[0-3], current " + GetParam().name + " channel is 0\n";
    const Outcome first = list("0");
    takeDeviceCalls();
    for (const char* channel : {"4", "5", "a", "10", "7fffffff", "80000000", "ffffffff"}) {
        EXPECT_EQ(list(channel), (Outcome{0, line + first.output})) << channel;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(0)")) << channel;
    }
    EXPECT_EQ(list("3").output.find("range"), std::string::npos);
}

TEST_P(ModeFallbackTest, LineEndsAreNoDelimitersBehindTheCommandWord)
{
    EXPECT_EQ(call(GetParam().handler, GetParam().name + " 1 mode\n"), Outcome{-2});
    EXPECT_EQ(call(GetParam().handler, GetParam().name + " 1\rmode"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, ModeFallbackTest, ::testing::Values(kVga, kDvo), nameOfCommand);

// ---- VGA gains

class VgaGainTest : public ConsoleTest
{
};

TEST_F(VgaGainTest, SetsOneColour)
{
    EXPECT_EQ(call(doVga, "vga 0 r 80"), Outcome{});
    EXPECT_EQ(call(doVga, "vga 1 G 0X1f 9"), Outcome{});
    EXPECT_EQ(call(doVga, "vga 2 b FF"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekVgaSetSigleGain(82, 0x80)", "vekVgaSetSigleGain(71, 0x1f)",
                                               "vekVgaSetSigleGain(66, 0xff)"));
}

TEST_F(VgaGainTest, SetsAllColours)
{
    EXPECT_EQ(call(doVga, "vga 0 c 10 0X20 3F 9"), Outcome{});
    EXPECT_EQ(call(doVga, "vga 0 C 0 zz ff"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekVgaSetGain(0x10, 0x20, 0x3f)", "vekVgaSetGain(0x0, 0x0, 0xff)"));
}

TEST_F(VgaGainTest, GainsAreCutToBytes)
{
    for (const char* text : {"vga 0 r 1fe", "vga 0 g 123456789", "vga 0 b 100", "vga 0 c 111 222 333"}) {
        EXPECT_EQ(call(doVga, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekVgaSetSigleGain(82, 0xfe)", "vekVgaSetSigleGain(71, 0x89)",
                                               "vekVgaSetSigleGain(66, 0x0)", "vekVgaSetGain(0x11, 0x22, 0x33)"));
}

TEST_F(VgaGainTest, ChannelDoesNotMatter)
{
    for (const char* channel : {"0", "3", "4", "ffffffff", "zz"}) {
        EXPECT_EQ(call(doVga, std::string("vga ") + channel + " r 5"), Outcome{}) << channel;
        EXPECT_EQ(call(doVga, std::string("vga ") + channel + " c 5 6 7"), Outcome{}) << channel;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekVgaSetSigleGain(82, 0x5)", "vekVgaSetGain(0x5, 0x6, 0x7)"));
    }
}

TEST_F(VgaGainTest, NeedsEveryGain)
{
    for (const char* text :
         {"vga 0 r", "vga 0 g", "vga 0 b", "vga 0 R ,\t", "vga 0 c", "vga 0 c 80", "vga 0 c 80 80", "vga 0 C 1 2 ,"}) {
        EXPECT_EQ(call(doVga, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(VgaGainTest, ColoursAreOneLetter)
{
    for (const char* text : {"vga 0 rr 10", "vga 0 gg 10", "vga 0 bb 10", "vga 0 cc 1 2 3", "vga 0 rg 10",
                             "vga 0 red 10", "vga 0 x 10", "vga 0 a 10", "vga 0 d 10", "vga 0 r\n 10"}) {
        EXPECT_EQ(call(doVga, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(VgaGainTest, ResultsAreNotLookedAt)
{
    for (const int code : kFailures) {
        setResult("vekVgaSetSigleGain", code);
        setResult("vekVgaSetGain", code);
        EXPECT_EQ(call(doVga, "vga 0 r 1"), Outcome{}) << code;
        EXPECT_EQ(call(doVga, "vga 0 c 1 2 3"), Outcome{}) << code;
    }
}

TEST_F(VgaGainTest, DvoAndCrtcHaveNone)
{
    for (const char* operation : {" 0 r 10", " 0 g 10", " 0 b 10", " 0 c 1 2 3"}) {
        EXPECT_EQ(call(doDvo, std::string("dvo") + operation), Outcome{-2}) << operation;
        EXPECT_EQ(call(doCrtc, std::string("crtc") + operation), Outcome{-2}) << operation;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- CRTC

class CrtcTest : public ConsoleTest
{
};

TEST_F(CrtcTest, ChannelsBeyondThreeAreRefused)
{
    for (const char* channel : {"4", "5", "a", "foo", "10", "7fffffff", "80000000", "ffffffff"}) {
        EXPECT_EQ(call(doCrtc, std::string("crtc ") + channel + " mode"), Outcome{-2}) << channel;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(CrtcTest, LineEndsAreDelimiters)
{
    for (const char* text : {"crtc 1 mode\n", "crtc\r\n1\r\nmode\r\n", "crtc 1\nmode rest"}) {
        EXPECT_EQ(call(doCrtc, text).status, 0) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(1)")) << text;
    }
    EXPECT_EQ(call(doCrtc, "crtc\noutput\r"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcOutputPrint()"));
}

TEST_F(CrtcTest, OutputRoutingIsPrintedByTheLibrary)
{
    for (const char* text : {"crtc output", "crtc OUTPUT", "crtc Output 1 mode"}) {
        EXPECT_EQ(call(doCrtc, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcOutputPrint()")) << text;
    }
}

TEST_F(CrtcTest, GammaSettingIsHandedOnUnparsed)
{
    const struct {
        const char* text;
        const char* setting;
    } cases[] = {
        {"crtc gamma 0 ga 1.0:1.0:1.0 br 1.0 ct 6500", "0 ga 1.0:1.0:1.0 br 1.0 ct 6500"},
        {"crtc Gamma 1 br 0.5", "1 br 0.5"},
        {"CRTC GAMMA a Bc,D\te", "a Bc,D\\te"},
        {"crtc gamma\t0", "0"},
        {"crtc,gamma,0,", "0,"},
        {"crtc gamma\r0 ct 1\r\n", "0 ct 1\\r\\n"},
        {"crtc gamma  ,0 br 1", " ,0 br 1"},
        {"crtc gamma output mode", "output mode"},
    };
    for (const auto& [text, setting] : cases) {
        EXPECT_EQ(call(doCrtc, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(std::string("vekCrtcGammaSet(\"") + setting + "\")")) << text;
    }
}

TEST_F(CrtcTest, GammaSettingMayBeEmpty)
{
    for (const char* text : {"crtc gamma", "crtc gamma ", "crtc gamma\n"}) {
        EXPECT_EQ(call(doCrtc, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcGammaSet(\"\")")) << text;
    }
}

TEST_F(CrtcTest, KeywordsCountInTheirExactLengthOnly)
{
    // Any other word is a channel, 0 without a hexadecimal digit at its front.
    for (const char* text : {"crtc outpu", "crtc outputs", "crtc gamm", "crtc gammas 1", "crtc mode"}) {
        EXPECT_EQ(call(doCrtc, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(call(doCrtc, "crtc gammas mode").status, 0);
    EXPECT_EQ(call(doCrtc, "crtc outputs mode").status, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcModeRead(0)", "vekCrtcModeRead(0)"));
}

TEST_F(CrtcTest, TurnsItsFirstWordIntoUpperCase)
{
    std::string text = "crtc gAmma ab";
    EXPECT_EQ(doCrtc(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 4), "crtc");
    EXPECT_EQ(text.substr(5, 5), "GAMMA");
    EXPECT_EQ(text.substr(11), "ab");
}

TEST_F(CrtcTest, ResultsAreNotLookedAt)
{
    for (const int code : kFailures) {
        setResult("vekCrtcOutputPrint", code);
        setResult("vekCrtcGammaSet", code);
        EXPECT_EQ(call(doCrtc, "crtc output"), Outcome{}) << code;
        EXPECT_EQ(call(doCrtc, "crtc gamma 0 br 1.0"), Outcome{}) << code;
    }
}

TEST_F(CrtcTest, SettingOfALineEndsAtTheSemicolon)
{
    EXPECT_EQ(runLine("crtc gamma 1 br 0.5;crtc output"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekCrtcGammaSet(\"1 br 0.5\")", "vekCrtcOutputPrint()"));
}

}  // namespace
}  // namespace console_test
