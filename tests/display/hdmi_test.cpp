#include <climits>
#include <cstdint>
#include <map>
#include <string>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::hdmiDdc;
using recording_vek::hdmiPhy;
using recording_vek::outputs;
using recording_vek::setResult;
using recording_vek::setResultOnCall;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HdmiTest : public ConsoleTest
{
};

TEST_F(HdmiTest, NeedsChannelAndSubCommand)
{
    for (const char* text : {"", "hdmi", "hdmi ", "hdmi ,\t", "hdmi 0", "hdmi 0 ,\t", "hdmi mode", "hdmi MODE"}) {
        EXPECT_EQ(call(doHdmi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, OtherSubCommandsAreSilent)
{
    for (const char* text : {"hdmi 0 foo", "hdmi 0 foo mode", "hdmi 0 0", "hdmi 0 ph r 0", "hdmi 0 phys r 0",
                             "hdmi 0 p", "hdmi 0 hpdd r", "hdmi 0 hp r", "hdmi 0 ddcc i", "hdmi 0 dd i", "hdmi 0 edi r",
                             "hdmi 0 edids r", "hdmi 0 mod", "hdmi 0 modes", "hdmi 0 r 0", "hdmi 0 mode\n"}) {
        EXPECT_EQ(call(doHdmi, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, NeedsAnOperation)
{
    for (const char* text : {"hdmi 0 phy", "hdmi 0 hpd", "hdmi 0 ddc", "hdmi 0 edid", "hdmi 0 PHY ,\t"}) {
        EXPECT_EQ(call(doHdmi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, NeedsTheNumbersOfAnOperation)
{
    for (const char* text :
         {"hdmi 0 phy r", "hdmi 0 phy R ,", "hdmi 0 phy rs", "hdmi 0 phy rs 100", "hdmi 0 phy RS 100 \t",
          "hdmi 0 phy w", "hdmi 0 phy w 100", "hdmi 0 ddc r", "hdmi 0 ddc r 50", "hdmi 0 ddc w", "hdmi 0 ddc w 50",
          "hdmi 0 ddc w 50 1", "hdmi 0 ddc W 50 1 ,"}) {
        EXPECT_EQ(call(doHdmi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, OperationsCountInTheirExactLengthOnly)
{
    for (const char* text :
         {"hdmi 0 phy rr 0 1",   "hdmi 0 phy rx 0 1", "hdmi 0 phy rss 0 1", "hdmi 0 phy ww 0 1", "hdmi 0 phy ws 0 1",
          "hdmi 0 phy s",        "hdmi 0 phy sx",     "hdmi 0 phy xt",      "hdmi 0 phy stt",    "hdmi 0 phy start",
          "hdmi 0 phy e",        "hdmi 0 phy ex",     "hdmi 0 phy xn",      "hdmi 0 phy enn",    "hdmi 0 phy end",
          "hdmi 0 phy res",      "hdmi 0 phy reset",  "hdmi 0 phy xe",      "hdmi 0 phy i",      "hdmi 0 phy x 0 1",
          "hdmi 0 hpd rs",       "hdmi 0 hpd w",      "hdmi 0 hpd re",      "hdmi 0 hpd x",      "hdmi 0 hpd i",
          "hdmi 0 ddc ii",       "hdmi 0 ddc in",     "hdmi 0 ddc rs 50 1", "hdmi 0 ddc re 50",  "hdmi 0 ddc ww 1 2 3",
          "hdmi 0 ddc ws 1 2 3", "hdmi 0 ddc st",     "hdmi 0 ddc x",       "hdmi 0 edid rs",    "hdmi 0 edid re",
          "hdmi 0 edid w",       "hdmi 0 edid i",     "hdmi 0 edid x",      "hdmi 0 phy st\n",   "hdmi 0 edid r\r"}) {
        EXPECT_EQ(call(doHdmi, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, KeywordsAndOperationsAreCaseBlind)
{
    EXPECT_EQ(call(doHdmi, "HDMI 0 Phy rS 4 1").output, "00000004: 00000000\n");
    EXPECT_EQ(call(doHdmi, "hdmi 0 pHY R 4").output, "00000004: 0000\n");
    EXPECT_EQ(call(doHdmi, "hdmi 0 phY W 4 5"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 PHY sT"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 PHY St"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 PHY En"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 PHY EN"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 PHY rE"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 Hpd R").output, "hpd status: 0\n");
    EXPECT_EQ(call(doHdmi, "hdmi 0 dDc I").output, "DDC init successed\n");
    EXPECT_EQ(call(doHdmi, "hdmi 0 DDC R 1 2").output, "00000002: 0000\n");
    EXPECT_EQ(call(doHdmi, "hdmi 0 ddC W 1 2 3"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 eDiD R"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 0 MoDe").status, 0);
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAre("vekHdmiPhyRead(0, 0x4)", "vekHdmiPhyRead(0, 0x4)", "vekHdmiPhyWrite(0, 0x4, 0x5)",
                    "vekHdmiPhyStart(0)", "vekHdmiPhyStart(0)", "vekHdmiPhyEnd(0)", "vekHdmiPhyEnd(0)",
                    "vekHdmiPhyReset(0)", "vekHdmiHpdSense(0)", "vekHdmiDDCInit(0)", "vekHdmiDDCRead(0, 0x1, 0x2)",
                    "vekHdmiDDCWrite(0, 0x1, 0x2, 0x3)", "vekHdmiEDIDRead(0)", "vekHdmiModeRead(0)"));
}

TEST_F(HdmiTest, TurnsKeywordsIntoUpperCaseAndNothingElse)
{
    std::string text = "hdmi ab phy a`b{z\xe4 cd";
    EXPECT_EQ(doHdmi(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 4), "hdmi");
    EXPECT_EQ(text.substr(5, 2), "ab");
    EXPECT_EQ(text.substr(8, 3), "PHY");
    EXPECT_EQ(text.substr(12, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(19), "cd");

    std::string numbers = "hdmi 0 ddc w ab cd ef";
    EXPECT_EQ(doHdmi(numbers.data(), 0), 0);
    EXPECT_EQ(numbers.substr(13, 2), "ab");
    EXPECT_EQ(numbers.substr(16, 2), "cd");
    EXPECT_EQ(numbers.substr(19), "ef");
}

TEST_F(HdmiTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"hdmi 1 phy r 10", "hdmi,1,phy,r,10", "hdmi\t1\tphy\tr\t10",
                             " ,\t\r\nhdmi ,\t1 ,\tphy, r ,10 20", "hdmi\r1 phy r 10", "hdmi\n1 phy r 10\r\n"}) {
        EXPECT_EQ(call(doHdmi, text), (Outcome{0, "00000010: 0000\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(1, 0x10)")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    call(doHdmi, "hdmi \n1 phy st");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyStart(0)"));
}

TEST_F(HdmiTest, ChannelsAreHexadecimalAndOfAnySize)
{
    for (const char* channel : {"a", "0X1f", "ffffffff", "80000000", "100000003", "zz", "phy"}) {
        EXPECT_EQ(call(doHdmi, std::string("hdmi ") + channel + " phy st"), Outcome{}) << channel;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyStart(10)", "vekHdmiPhyStart(31)", "vekHdmiPhyStart(-1)",
                                               "vekHdmiPhyStart(-2147483648)", "vekHdmiPhyStart(3)",
                                               "vekHdmiPhyStart(0)", "vekHdmiPhyStart(0)"));
}

TEST_F(HdmiTest, PhyReadShowsAddressAndValue)
{
    hdmiPhy().poke<std::uint16_t>(0x100, 0xfedc);
    hdmiPhy().poke<std::uint16_t>(0x23456789, 0x0012);
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy r 100"), (Outcome{0, "00000100: fedc\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy r 123456789 7"), (Outcome{0, "23456789: 0012\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy r FFFFFFFF"), (Outcome{0, "ffffffff: 0000\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(1, 0x100)", "vekHdmiPhyRead(1, 0x23456789)",
                                               "vekHdmiPhyRead(1, 0xffffffff)"));
}

TEST_F(HdmiTest, PhyReadFailureNamesTheAddress)
{
    for (const int code : kFailures) {
        setResult("vekHdmiPhyRead", code);
        EXPECT_EQ(call(doHdmi, "hdmi 1b phy r 0A0"), (Outcome{0, "hdmi 27: phy read [a0] error\n"})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(27, 0xa0)")) << code;
    }
    EXPECT_EQ(call(doHdmi, "hdmi ffffffff phy r ffffffff"), (Outcome{0, "hdmi -1: phy read [ffffffff] error\n"}));
}

TEST_F(HdmiTest, PhyRunHasFourValuesALineAndAStrideOfFour)
{
    hdmiPhy().poke<std::uint16_t>(0x100, 0x1234);
    hdmiPhy().poke<std::uint16_t>(0x102, 0xaaaa);
    hdmiPhy().poke<std::uint16_t>(0x104, 0xfedc);
    hdmiPhy().poke<std::uint16_t>(0x10c, 0x0001);
    hdmiPhy().poke<std::uint16_t>(0x110, 0x8000);
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 100 6"),
              (Outcome{0, "00000100: 00001234 0000fedc 00000000 00000001\n00000110: 00008000 00000000\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekHdmiPhyRead(0, 0x100)", "vekHdmiPhyRead(0, 0x104)", "vekHdmiPhyRead(0, 0x108)",
                            "vekHdmiPhyRead(0, 0x10c)", "vekHdmiPhyRead(0, 0x110)", "vekHdmiPhyRead(0, 0x114)"));
}

TEST_F(HdmiTest, PhyRunsOfEveryLengthEndWithOneNewline)
{
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 2 1"), (Outcome{0, "00000002: 00000000\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 2 3"), (Outcome{0, "00000002: 00000000 00000000 00000000\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 2 4"), (Outcome{0, "00000002: 00000000 00000000 00000000 00000000\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 2 5"),
              (Outcome{0, "00000002: 00000000 00000000 00000000 00000000\n00000012: 00000000\n"}));
}

TEST_F(HdmiTest, PhyRunTakesAHexadecimalCount)
{
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 0 10 7").status, 0);
    EXPECT_EQ(takeDeviceCalls().size(), 16U);
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 0 100000002"), (Outcome{0, "00000000: 00000000 00000000\n"}));
}

TEST_F(HdmiTest, PhyRunWrapsAtTheEndOfTheAddresses)
{
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs fffffff4 5"),
              (Outcome{0, "fffffff4: 00000000 00000000 00000000 00000000\n00000004: 00000000\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekHdmiPhyRead(0, 0xfffffff4)", "vekHdmiPhyRead(0, 0xfffffff8)",
                            "vekHdmiPhyRead(0, 0xfffffffc)", "vekHdmiPhyRead(0, 0x0)", "vekHdmiPhyRead(0, 0x4)"));
}

TEST_F(HdmiTest, PhyRunOfNothingIsANewline)
{
    setResult("vekHdmiPhyRead", -5);
    for (const char* count : {"0", "zz", "100000000", "80000000", "ffffffff", "1ffffffff"}) {
        EXPECT_EQ(call(doHdmi, std::string("hdmi 0 phy rs 100 ") + count), (Outcome{0, "\n"})) << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(HdmiTest, PhyRunStopsAtItsFirstFailure)
{
    for (const int code : kFailures) {
        recording_vek::reset();
        setResult("vekHdmiPhyRead", code);
        EXPECT_EQ(call(doHdmi, "hdmi 3 phy rs 0A0 6"), (Outcome{0, "HDMI3: phy read [a0] error\n\n"})) << code;
        EXPECT_THAT(recording_vek::deviceCalls(), ElementsAre("vekHdmiPhyRead(3, 0xa0)")) << code;
    }
}

TEST_F(HdmiTest, PhyRunFailureNamesTheStart)
{
    setResultOnCall("vekHdmiPhyRead", 3, -5);
    EXPECT_EQ(call(doHdmi, "hdmi ffffffff phy rs 100 6"),
              (Outcome{0, "00000100: 00000000 00000000HDMI-1: phy read [100] error\n\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekHdmiPhyRead(-1, 0x100)", "vekHdmiPhyRead(-1, 0x104)", "vekHdmiPhyRead(-1, 0x108)"));
}

TEST_F(HdmiTest, PhyRunFailureComesBeforeTheNextLine)
{
    setResultOnCall("vekHdmiPhyRead", 5, 1);
    EXPECT_EQ(call(doHdmi, "hdmi 0 phy rs 100 6"),
              (Outcome{0, "00000100: 00000000 00000000 00000000 00000000HDMI0: phy read [100] error\n\n"}));
    EXPECT_EQ(takeDeviceCalls().size(), 5U);
}

TEST_F(HdmiTest, PhyWriteIsSilentAndCutsTheValue)
{
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy w 100 1234"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy w 123456789 12345 6"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy w 3 zz"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekHdmiPhyWrite(1, 0x100, 0x1234)", "vekHdmiPhyWrite(1, 0x23456789, 0x2345)",
                            "vekHdmiPhyWrite(1, 0x3, 0x0)"));
}

TEST_F(HdmiTest, PhyWriteFailureNamesAddressAndValue)
{
    for (const int code : kFailures) {
        setResult("vekHdmiPhyWrite", code);
        EXPECT_EQ(call(doHdmi, "hdmi 1 phy w 0A0 1000b"), (Outcome{0, "hdmi 1: phy write [a0] with 000b error\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyWrite(1, 0xa0, 0xb)")) << code;
    }
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy w ffffffff fffff"),
              (Outcome{0, "hdmi 1: phy write [ffffffff] with ffff error\n"}));
}

/** An operation that takes the channel only. */
struct PlainOperation {
    std::string words;    /**< behind the channel */
    std::string function; /**< of the library */
    std::string success;  /**< what is printed then */
    std::string failure;  /**< what is printed then, behind "hdmi <channel>:" */
};

class HdmiPlainOperationTest : public HdmiTest, public ::testing::WithParamInterface<PlainOperation>
{
};

TEST_P(HdmiPlainOperationTest, IsOneCall)
{
    EXPECT_EQ(call(doHdmi, "hdmi 1b " + GetParam().words), (Outcome{0, GetParam().success}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(27)"));
}

TEST_P(HdmiPlainOperationTest, LooksAtNothingBehindIt)
{
    EXPECT_EQ(call(doHdmi, "hdmi 1 " + GetParam().words + " mode HPD r"), (Outcome{0, GetParam().success}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(1)"));
}

TEST_P(HdmiPlainOperationTest, FailureIsReported)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(call(doHdmi, "hdmi 1b " + GetParam().words), (Outcome{0, "hdmi 27:" + GetParam().failure})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(27)")) << code;
    }
    EXPECT_EQ(call(doHdmi, "hdmi ffffffff " + GetParam().words), (Outcome{0, "hdmi -1:" + GetParam().failure}));
}

INSTANTIATE_TEST_SUITE_P(
    All, HdmiPlainOperationTest,
    ::testing::Values(PlainOperation{"phy st", "vekHdmiPhyStart", "", "phy config start failed\n"},
                      PlainOperation{"phy en", "vekHdmiPhyEnd", "", "phy config end failed\n"},
                      PlainOperation{"phy re", "vekHdmiPhyReset", "", "phy reset failed\n"},
                      PlainOperation{"hpd r", "vekHdmiHpdSense", "hpd status: 0\n", "hpd read error\n"},
                      PlainOperation{"ddc i", "vekHdmiDDCInit", "DDC init successed\n", "DDC init failed\n"},
                      PlainOperation{"edid r", "vekHdmiEDIDRead", "", "EDID read failed\n"}),
    [](const auto& test) { return test.param.function; });

TEST_F(HdmiTest, HotPlugStateIsDecimal)
{
    for (const int state : {0, 1, 2, 10, 255}) {
        outputs().hot_plug_status = static_cast<std::uint8_t>(state);
        EXPECT_EQ(call(doHdmi, "hdmi 0 hpd r"), (Outcome{0, "hpd status: " + std::to_string(state) + "\n"}));
    }
}

TEST_F(HdmiTest, DdcReadShowsTheSubAddressAsTyped)
{
    hdmiDdc().pokeBytes(0xfe, {0x05, 0xab});
    EXPECT_EQ(call(doHdmi, "hdmi 0 ddc r 50 1ff"), (Outcome{0, "000001ff: 00ab\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 1 ddc r 1234a 123456fe 9"), (Outcome{0, "123456fe: 0005\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 1 ddc r zz 923456701"), (Outcome{0, "23456701: 0000\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiDDCRead(0, 0x50, 0xff)", "vekHdmiDDCRead(1, 0x4a, 0xfe)",
                                               "vekHdmiDDCRead(1, 0x0, 0x1)"));
}

TEST_F(HdmiTest, DdcReadFailureNamesTheSubAddressAsTyped)
{
    for (const int code : kFailures) {
        setResult("vekHdmiDDCRead", code);
        EXPECT_EQ(call(doHdmi, "hdmi 1b ddc r 50 01FF"), (Outcome{0, "hdmi 27:ddc read [1ff] error\n"})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiDDCRead(27, 0x50, 0xff)")) << code;
    }
    EXPECT_EQ(call(doHdmi, "hdmi 0 ddc r 50 1ffffffff"), (Outcome{0, "hdmi 0:ddc read [ffffffff] error\n"}));
}

TEST_F(HdmiTest, DdcWriteIsSilentAndCutsEveryNumber)
{
    EXPECT_EQ(call(doHdmi, "hdmi 0 ddc w 50 10 34"), Outcome{});
    EXPECT_EQ(call(doHdmi, "hdmi 1 ddc w 151 1ff 1ab 7"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekHdmiDDCWrite(0, 0x50, 0x10, 0x34)", "vekHdmiDDCWrite(1, 0x51, 0xff, 0xab)"));
}

TEST_F(HdmiTest, DdcWriteFailureNamesSubAddressAndValue)
{
    for (const int code : kFailures) {
        setResult("vekHdmiDDCWrite", code);
        EXPECT_EQ(call(doHdmi, "hdmi 1b ddc w 50 1FF 10a"), (Outcome{0, "hdmi 27:ddc write [1ff] with 000a error\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiDDCWrite(27, 0x50, 0xff, 0xa)")) << code;
    }
    EXPECT_EQ(call(doHdmi, "hdmi 0 ddc w 0 ffffffff fff"),
              (Outcome{0, "hdmi 0:ddc write [ffffffff] with 00ff error\n"}));
}

TEST_F(HdmiTest, ModeListsNineFields)
{
    outputs().display_mode = {148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125, 5};
    EXPECT_EQ(call(doHdmi, "hdmi 1b mode"),
              (Outcome{0,
                       "HDMI-27:\n clock = 148500kHz \n hdisplay = 1920 \n hsync_start = 2008 \n hsync_end = 2052 \n"
                       " htotal = 2200 \n vdisplay = 1080 \n vsync_start = 1084 \n vsync_end = 1089 \n"
                       " vtotal = 1125 \n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiModeRead(27)"));
}

TEST_F(HdmiTest, ModeListsSignedNumbers)
{
    outputs().display_mode = {INT_MIN, -1, -2, -3, -4, -5, -6, -7, INT_MAX, 0};
    EXPECT_EQ(call(doHdmi, "hdmi ffffffff mode more"),
              (Outcome{0,
                       "HDMI--1:\n clock = -2147483648kHz \n hdisplay = -1 \n hsync_start = -2 \n hsync_end = -3 \n"
                       " htotal = -4 \n vdisplay = -5 \n vsync_start = -6 \n vsync_end = -7 \n"
                       " vtotal = 2147483647 \n"}));
}

TEST_F(HdmiTest, ModeIsListedWhateverTheResult)
{
    outputs().display_mode = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const std::string filled =
        "HDMI-0:\n clock = 1kHz \n hdisplay = 2 \n hsync_start = 3 \n hsync_end = 4 \n htotal = 5 \n"
        " vdisplay = 6 \n vsync_start = 7 \n vsync_end = 8 \n vtotal = 9 \n";
    const std::string zeroed =
        "HDMI-0:\n clock = 0kHz \n hdisplay = 0 \n hsync_start = 0 \n hsync_end = 0 \n htotal = 0 \n"
        " vdisplay = 0 \n vsync_start = 0 \n vsync_end = 0 \n vtotal = 0 \n";
    for (const int code : kFailures) {
        setResult("vekHdmiModeRead", 0);
        EXPECT_EQ(call(doHdmi, "hdmi 0 mode"), (Outcome{0, filled}));
        // The library fills the record unless its result is negative.
        setResult("vekHdmiModeRead", code);
        EXPECT_EQ(call(doHdmi, "hdmi 0 mode"), (Outcome{0, code < 0 ? zeroed : filled})) << code;
    }
}

TEST_F(HdmiTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy r 10", 1), (Outcome{0, "00000010: 0000\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi 1 phy rs 10 1", 1), (Outcome{0, "00000010: 00000000\n"}));
    EXPECT_EQ(call(doHdmi, "hdmi", 1), Outcome{-2});
}

TEST_F(HdmiTest, LineRunsOverEveryPathAndIsRepeated)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("hdmi 1 phy r 10"), (Outcome{0, "00000010: 0000\n"})) << mode;
        EXPECT_EQ(runLine(""), (Outcome{0, "00000010: 0000\n"})) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekHdmiPhyRead(1, 0x10)", "vekHdmiPhyRead(1, 0x10)")) << mode;
    }
    EXPECT_EQ(runLine("hdmi 0"), (Outcome{-2, std::string(kBadArgumentLine)}));
    EXPECT_EQ(runLine("hdmi 0 foo"), Outcome{});
}

}  // namespace
}  // namespace console_test
