#include <malloc.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "allocation_failure.h"
#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::outputs;
using recording_vek::setResult;
using recording_vek::setResultOnCall;
using recording_vek::SparseMemory;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DisplayPortTest : public ConsoleTest
{
};

TEST_F(DisplayPortTest, NeedsChannelAndSubCommand)
{
    for (const char* text : {"", "dp", "dp ", "dp ,\t", "dp 0", "dp 0 ,\t", "dp mode", "dp INIT", "dp\r\n0"}) {
        EXPECT_EQ(call(doDp, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, OtherSubCommandsAreRefused)
{
    for (const char* text :
         {"dp 0 foo",      "dp 0 foo mode", "dp 0 0",        "dp 0 ini",    "dp 0 inits",    "dp 0 trai",
          "dp 0 trains",   "dp 0 confi",    "dp 0 configs",  "dp 0 s 1",    "dp 0 stt 1",    "dp 0 au r 1",
          "dp 0 auxx r 1", "dp 0 dd",       "dp 0 ddcs",     "dp 0 i2 r 1", "dp 0 i2cc r 1", "dp 0 ph r 1",
          "dp 0 phys r 1", "dp 0 cd r 1",   "dp 0 cdbs r 1", "dp 0 mod",    "dp 0 modes",    "dp 0 r 1",
          "dp 0 edid r",   "dp 0 hpd r",    "dp 0 mode\n",   "dp 0 init\r"}) {
        EXPECT_EQ(call(doDp, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, NeedsAnOperation)
{
    for (const char* text : {"dp 0 aux", "dp 0 i2c", "dp 0 phy", "dp 0 cdb", "dp 0 AUX ,\t", "dp 0 i2c ,"}) {
        EXPECT_EQ(call(doDp, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, NeedsTheNumbersOfAnOperation)
{
    for (const char* space : {"aux", "i2c", "phy", "cdb"}) {
        for (const char* operation : {" r", " R ,\t", " rs", " rs ,", " rs 10", " RS 10 \t"}) {
            EXPECT_EQ(call(doDp, std::string("dp 0 ") + space + operation), Outcome{-2}) << space << operation;
        }
    }
    for (const char* space : {"aux", "phy", "cdb"}) {
        for (const char* operation : {" w", " W ,", " w 10", " w 10 \t"}) {
            EXPECT_EQ(call(doDp, std::string("dp 0 ") + space + operation), Outcome{-2}) << space << operation;
        }
    }
    EXPECT_EQ(call(doDp, "dp 0 st"), Outcome{-2});
    EXPECT_EQ(call(doDp, "dp 0 ST ,\t"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, OtherOperationsAreSilent)
{
    for (const char* space : {"aux", "i2c", "phy", "cdb"}) {
        for (const char* operation : {" rr 0 1", " rx 0 1", " rss 0 1", " sr 0 1", " xs 0 1", " ww 0 1", " ws 0 1",
                                      " x 0 1", " st 1", " 0 0 1", " mode", " init", " r\n", " rx", " x", " ddc"}) {
            EXPECT_EQ(call(doDp, std::string("dp 0 ") + space + operation), Outcome{}) << space << operation;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, I2cCannotWrite)
{
    for (const char* text : {"dp 0 i2c w 10 1", "dp 0 i2c W 10", "dp 0 i2c w"}) {
        EXPECT_EQ(call(doDp, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, KeywordsAndOperationsAreCaseBlind)
{
    for (const char* text :
         {"DP 0 Init",       "dp 0 iNIT",      "dp 0 Train",      "dp 0 tRAIN",      "dp 0 Config",  "dp 0 cONFIG",
          "dp 0 sT 1",       "dp 0 Ddc",       "dp 0 dDC",        "dp 0 MODE",       "dp 0 mOdE",    "dp 0 Aux R 1",
          "dp 0 aUX Rs 1 1", "dp 0 AUX W 1 1", "dp 0 I2c R 1",    "dp 0 I2C rS 1 1", "dp 0 Phy R 1", "dp 0 pHY RS 1 1",
          "dp 0 PHY W 1 1",  "dp 0 Cdb R 1",   "dp 0 cDB Rs 1 1", "dp 0 CDB W 1 1"}) {
        EXPECT_EQ(call(doDp, text).status, 0) << text;
    }
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAre("vekDpInit(0)", "vekDpInit(0)", "vekDpLinkTraining(0)", "vekDpLinkTraining(0)", "vekDpCTLCfg(0)",
                    "vekDpCTLCfg(0)", "vekEdpSelfTestSet(0, 0x1)", "vekDpAuxEdidGet(0)",
                    "edid_print_helper(buffer, 0, 1)", "vekDpAuxEdidGet(0)", "edid_print_helper(buffer, 0, 1)",
                    "vekDpModeRead(0)", "vekDpModeRead(0)", "vekDpAuxRead(0, 0x1)", "vekDpAuxReadBuf(0, 0x1, 1)",
                    "vekDpAuxWrite(0, 0x1, 0x1)", "vekDpI2cRead(0, 0x50, 0x1)", "vekDpI2cReadBuf(0, 0x50, 0x1, 1)",
                    "vekDpPhyRead(0, 0x1)", "vekDpPhyRead(0, 0x1)", "vekDpPhyWrite(0, 0x1, 0x1)",
                    "vekDpCdbRead(0, 0x1)", "vekDpCdbRead(0, 0x1)", "vekDpCdbWrite(0, 0x1, 0x1)"));
}

TEST_F(DisplayPortTest, TurnsKeywordsIntoUpperCaseAndNothingElse)
{
    std::string text = "dp ab phy a`b{z\xe4 cd";
    EXPECT_EQ(doDp(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 2), "dp");
    EXPECT_EQ(text.substr(3, 2), "ab");
    EXPECT_EQ(text.substr(6, 3), "PHY");
    EXPECT_EQ(text.substr(10, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(17), "cd");

    std::string numbers = "dp 0 cdb w ab cd";
    EXPECT_EQ(doDp(numbers.data(), 0), 0);
    EXPECT_EQ(numbers.substr(11, 2), "ab");
    EXPECT_EQ(numbers.substr(14), "cd");
}

TEST_F(DisplayPortTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"dp 1 phy r 10", "dp,1,phy,r,10", "dp\t1\tphy\tr\t10", " ,\t\r\ndp ,\t1 ,\tphy, r ,10 20",
                             "dp\r1 phy r 10", "dp\n1 phy r 10\r\n"}) {
        EXPECT_EQ(call(doDp, text), (Outcome{0, "00000010: 00000000\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpPhyRead(1, 0x10)")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(call(doDp, "dp 1 phy\nr 10"), Outcome{-2});
    EXPECT_EQ(call(doDp, "dp 1 phy r\r10"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DisplayPortTest, ChannelsAreHexadecimalAndOfAnySize)
{
    for (const char* channel : {"a", "0X1f", "ffffffff", "80000000", "100000003", "zz", "phy"}) {
        EXPECT_EQ(call(doDp, std::string("dp ") + channel + " init"), Outcome{}) << channel;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekDpInit(10)", "vekDpInit(31)", "vekDpInit(-1)", "vekDpInit(-2147483648)", "vekDpInit(3)",
                            "vekDpInit(0)", "vekDpInit(0)"));
}

TEST_F(DisplayPortTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doDp, "dp 1 phy r 10", 1), (Outcome{0, "00000010: 00000000\n"}));
    EXPECT_EQ(call(doDp, "dp 1 phy rs 10 1", 1), (Outcome{0, "00000010: 00000000"}));
    EXPECT_EQ(call(doDp, "dp", 1), Outcome{-2});
}

TEST_F(DisplayPortTest, LineRunsOverEveryPathAndIsRepeated)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("dp 1 cdb r 10"), (Outcome{0, "00000010: 0000\n"})) << mode;
        EXPECT_EQ(runLine(""), (Outcome{0, "00000010: 0000\n"})) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpCdbRead(1, 0x10)", "vekDpCdbRead(1, 0x10)")) << mode;
    }
    EXPECT_EQ(runLine("dp 0 foo"), (Outcome{-2, std::string(kBadArgumentLine)}));
    EXPECT_EQ(runLine("dp 0 aux x"), Outcome{});
}

/** A sub-command that hands the channel to the library, which does all the work. */
struct PlainCommand {
    std::string word;
    std::string function;
};

class DisplayPortPlainCommandTest : public DisplayPortTest, public ::testing::WithParamInterface<PlainCommand>
{
};

TEST_P(DisplayPortPlainCommandTest, IsOneSilentCall)
{
    EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word), Outcome{});
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " mode 1"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(27)", GetParam().function + "(0)"));
}

TEST_P(DisplayPortPlainCommandTest, ResultIsNotLookedAt)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(call(doDp, "dp 1 " + GetParam().word), Outcome{}) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(1)")) << code;
    }
}

INSTANTIATE_TEST_SUITE_P(All, DisplayPortPlainCommandTest,
                         ::testing::Values(PlainCommand{"init", "vekDpInit"},
                                           PlainCommand{"train", "vekDpLinkTraining"},
                                           PlainCommand{"config", "vekDpCTLCfg"}),
                         [](const auto& test) { return test.param.function; });

TEST_F(DisplayPortTest, SelfTestShowsTheStateCutToAByte)
{
    EXPECT_EQ(call(doDp, "dp 1b st 1"), (Outcome{0, "eDP set self test mode state 1 ok\n"}));
    EXPECT_EQ(call(doDp, "dp 0 st 0 1"), (Outcome{0, "eDP set self test mode state 0 ok\n"}));
    EXPECT_EQ(call(doDp, "dp 0 st 1ff"), (Outcome{0, "eDP set self test mode state 255 ok\n"}));
    EXPECT_EQ(call(doDp, "dp 0 st 100000110"), (Outcome{0, "eDP set self test mode state 16 ok\n"}));
    EXPECT_EQ(call(doDp, "dp 0 st zz"), (Outcome{0, "eDP set self test mode state 0 ok\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekEdpSelfTestSet(27, 0x1)", "vekEdpSelfTestSet(0, 0x0)", "vekEdpSelfTestSet(0, 0xff)",
                            "vekEdpSelfTestSet(0, 0x10)", "vekEdpSelfTestSet(0, 0x0)"));
}

TEST_F(DisplayPortTest, SelfTestFailureIsReported)
{
    for (const int code : kFailures) {
        setResult("vekEdpSelfTestSet", code);
        EXPECT_EQ(call(doDp, "dp 1 st 1"), (Outcome{0, "eDP set self test mode error\n"})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpSelfTestSet(1, 0x1)")) << code;
    }
}

// ---- EDID

/** Some block, with every byte in it from 256 bytes on. */
std::vector<std::uint8_t> someEdid(std::size_t size)
{
    std::vector<std::uint8_t> edid(size);
    for (std::size_t i = 0; i < size; ++i) {
        edid[i] = static_cast<std::uint8_t>(i * 0x1d + (i >> 8));
    }
    return edid;
}

TEST_F(DisplayPortTest, EdidGoesToTheDecoder)
{
    for (const std::size_t size : {1U, 128U, 256U, 511U, 512U}) {
        outputs().edid = someEdid(size);
        EXPECT_EQ(call(doDp, "dp 1b ddc"), Outcome{}) << size;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekDpAuxEdidGet(27)", "edid_print_helper(buffer, " + std::to_string(size) + ", 1)"));
        EXPECT_EQ(recording_vek::received().printed_edid, outputs().edid) << size;
    }
}

TEST_F(DisplayPortTest, EmptyEdidGoesToTheDecoderToo)
{
    EXPECT_EQ(call(doDp, "dp 0 ddc"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpAuxEdidGet(0)", "edid_print_helper(buffer, 0, 1)"));
}

TEST_F(DisplayPortTest, EdidLengthIsCutToTheBuffer)
{
    outputs().edid = someEdid(512);
    for (const int length : {513, 1024, 0x8000, INT_MAX}) {
        outputs().edid_length = length;
        EXPECT_EQ(call(doDp, "dp 0 ddc"), Outcome{}) << length;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpAuxEdidGet(0)", "edid_print_helper(buffer, 512, 1)"))
            << length;
        EXPECT_EQ(recording_vek::received().printed_edid, outputs().edid) << length;
    }
}

TEST_F(DisplayPortTest, EdidFailureShowsTheResult)
{
    outputs().edid = someEdid(128);
    for (const int code : kFailures) {
        setResult("vekDpAuxEdidGet", code);
        EXPECT_EQ(call(doDp, "dp 1b ddc"),
                  (Outcome{0, "dp 27 get edid failed with err=" + std::to_string(code) + "\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpAuxEdidGet(27)")) << code;
    }
    setResult("vekDpAuxEdidGet", -2);
    EXPECT_EQ(call(doDp, "dp ffffffff ddc"), (Outcome{0, "dp -1 get edid failed with err=-2\n"}));
}

TEST_F(DisplayPortTest, DecoderResultIsNotLookedAt)
{
    outputs().edid = someEdid(128);
    for (const int code : kFailures) {
        setResult("edid_print_helper", code);
        EXPECT_EQ(call(doDp, "dp 0 ddc"), Outcome{}) << code;
    }
}

class DisplayPortFileTest : public FolderTest
{
};

TEST_F(DisplayPortFileTest, EdidIsNeverSaved)
{
    outputs().edid = someEdid(128);
    EXPECT_EQ(call(doDp, "dp 0 ddc file"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpAuxEdidGet(0)", "edid_print_helper(buffer, 128, 1)"));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

// ---- Single items

/** One of the four things that `r` reads an item of. */
struct Space {
    std::string word;
    std::string function;      /**< that reads */
    std::string device;        /**< argument in front of the address */
    std::uint32_t addressMask; /**< of the address that the library gets */
    int digits;                /**< of a value */
    std::string failure;       /**< what a failure's message begins with */
    SparseMemory& (*memory)();

    std::string readCall(int channel, std::uint32_t address) const
    {
        return function + '(' + std::to_string(channel) + ", " + device + "0x" + hexDigits(address & addressMask) + ')';
    }
};

class DisplayPortReadTest : public DisplayPortTest, public ::testing::WithParamInterface<Space>
{
};

TEST_P(DisplayPortReadTest, ShowsAddressAndValue)
{
    GetParam().memory().poke<std::uint32_t>(0x90, 0xfedcba98);
    GetParam().memory().poke<std::uint32_t>(0x12345694 & GetParam().addressMask, 0x5);
    const std::string wide = std::string("fedcba98").substr(8 - static_cast<std::size_t>(GetParam().digits));
    const std::string narrow = hexDigits(5, GetParam().digits);
    EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word + " r 90"), (Outcome{0, "00000090: " + wide + "\n"}));
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " r 0X912345694 7"), (Outcome{0, "12345694: " + narrow + "\n"}));
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " r FFFFFFFF"),
              (Outcome{0, "ffffffff: " + hexDigits(0, GetParam().digits) + "\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(27, 0x90), GetParam().readCall(0, 0x12345694),
                                               GetParam().readCall(0, 0xffffffff)));
}

TEST_P(DisplayPortReadTest, FailureNamesTheAddressAsTyped)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word + " r 0AA0"),
                  (Outcome{0, GetParam().failure + " [aa0] error\n"}))
            << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(27, 0xaa0))) << code;
    }
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " r 1ffffffff"),
              (Outcome{0, GetParam().failure + " [ffffffff] error\n"}));
}

INSTANTIATE_TEST_SUITE_P(
    All, DisplayPortReadTest,
    ::testing::Values(Space{"aux", "vekDpAuxRead", "", 0xffffffff, 2, "aux read", recording_vek::dpcd},
                      Space{"i2c", "vekDpI2cRead", "0x50, ", 0xff, 2, "aux i2c read", recording_vek::dpI2cDevice},
                      Space{"phy", "vekDpPhyRead", "", 0xffffffff, 8, "aux read", recording_vek::dpPhy},
                      Space{"cdb", "vekDpCdbRead", "", 0xffffffff, 4, "aux read", recording_vek::dpCdb}),
    [](const auto& test) { return test.param.word; });

/** One of the three things that can be written. */
struct WritableSpace {
    std::string word;
    std::string function; /**< that writes */
    int digits;           /**< of a value */

    /** A value cut to its width. */
    std::uint32_t cut(std::uint32_t value) const { return value & (0xffffffffU >> (32 - 4 * digits)); }
};

class DisplayPortWriteTest : public DisplayPortTest, public ::testing::WithParamInterface<WritableSpace>
{
};

TEST_P(DisplayPortWriteTest, IsSilentAndCutsTheValue)
{
    EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word + " w 102 34"), Outcome{});
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " w 912345678 9fedcba98 7"), Outcome{});
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " W ffffffff zz"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(GetParam().function + "(27, 0x102, 0x34)",
                            GetParam().function + "(0, 0x12345678, 0x" + hexDigits(GetParam().cut(0xfedcba98)) + ")",
                            GetParam().function + "(0, 0xffffffff, 0x0)"));
}

TEST_P(DisplayPortWriteTest, FailureNamesAddressAndValue)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word + " w 0A0 b"),
                  (Outcome{0, "aux write [a0] with " + hexDigits(0xb, GetParam().digits) + " error\n"}))
            << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().function + "(27, 0xa0, 0xb)")) << code;
    }
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " w ffffffff fedcba98"),
              (Outcome{0, "aux write [ffffffff] with " + hexDigits(GetParam().cut(0xfedcba98), GetParam().digits) +
                              " error\n"}));
}

INSTANTIATE_TEST_SUITE_P(All, DisplayPortWriteTest,
                         ::testing::Values(WritableSpace{"aux", "vekDpAuxWrite", 2},
                                           WritableSpace{"phy", "vekDpPhyWrite", 8},
                                           WritableSpace{"cdb", "vekDpCdbWrite", 4}),
                         [](const auto& test) { return test.param.word; });

// ---- Blocks of bytes

/** What `rs` reads a block of bytes of at once. */
struct ByteSpace {
    std::string word;
    std::string function;      /**< that reads */
    std::string device;        /**< argument in front of the address */
    std::uint32_t addressMask; /**< of the address that the library gets */
    SparseMemory& (*memory)();

    std::string readCall(int channel, std::uint32_t address, int count) const
    {
        return function + '(' + std::to_string(channel) + ", " + device + "0x" + hexDigits(address & addressMask) +
               ", " + std::to_string(count) + ')';
    }
};

class DisplayPortBlockTest : public DisplayPortTest, public ::testing::WithParamInterface<ByteSpace>
{
protected:
    /** Runs `rs` with what is to stand behind it. */
    Outcome readBlock(const std::string& arguments, const std::string& channel = "0") const
    {
        return call(doDp, "dp " + channel + ' ' + GetParam().word + " rs " + arguments);
    }
};

TEST_P(DisplayPortBlockTest, DumpsTheBytes)
{
    GetParam().memory().pokeBytes(0x41, {0x41, 0x42, 0x1f, 0x20, 0x7e, 0x7f, 0xff, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0x43});
    EXPECT_EQ(readBlock("41 11 9", "1b"),
              (Outcome{0, dumpLine("00000041: 41 42 1f 20 7e 7f ff 00 01 02 03 04 05 06 07 08 ", "AB. ~...........") +
                              dumpLine("00000051: 43 ", "C")}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(27, 0x41, 17)));
}

TEST_P(DisplayPortBlockTest, LabelsTheAddressAsTyped)
{
    EXPECT_EQ(readBlock("1ff 1"), (Outcome{0, dumpLine("000001ff: 00 ", ".")}));
    EXPECT_EQ(readBlock("9fffffff0 1"), (Outcome{0, dumpLine("fffffff0: 00 ", ".")}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(GetParam().readCall(0, 0x1ff, 1), GetParam().readCall(0, 0xfffffff0, 1)));
}

TEST_P(DisplayPortBlockTest, CountIsHexadecimalAndCutTo32Bits)
{
    EXPECT_EQ(readBlock("0 100000003"), (Outcome{0, dumpLine("00000000: 00 00 00 ", "...")}));
    EXPECT_EQ(readBlock("0 0X1A").status, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(0, 0, 3), GetParam().readCall(0, 0, 26)));
}

TEST_P(DisplayPortBlockTest, NoBytesArePassedOnAndPrintNothing)
{
    for (const char* count : {"0", "zz", "100000000"}) {
        EXPECT_EQ(readBlock(std::string("200 ") + count), Outcome{}) << count;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(0, 0x200, 0))) << count;
    }
}

TEST_P(DisplayPortBlockTest, NegativeCountIsRefused)
{
    for (const char* count : {"80000000", "ffffffff", "1ffffffff", "80000001"}) {
        EXPECT_EQ(readBlock(std::string("0 ") + count), Outcome{-2}) << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(DisplayPortBlockTest, FailureNamesAddressAndCountAndDumpsNothing)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(readBlock("0AA0 01C", "1b"), (Outcome{0, "aux read buffer [aa0@1c] error\n"})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().readCall(27, 0xaa0, 28))) << code;
    }
    EXPECT_EQ(readBlock("1ffffffff 0"), (Outcome{0, "aux read buffer [ffffffff@0] error\n"}));
}

TEST_P(DisplayPortBlockTest, AsksForExactlyTheCount)
{
    for (const char* count : {"1", "10", "fff"}) {
        takeLargestRequest();
        EXPECT_EQ(readBlock(std::string("0 ") + count).status, 0);
        EXPECT_EQ(takeLargestRequest(), std::stoul(count, nullptr, 16));
    }
}

TEST_P(DisplayPortBlockTest, WithoutMemoryNothingIsRead)
{
    {
        const AllocationFailure failure(1);
        EXPECT_EQ(readBlock("0 1"), (Outcome{-1, "Out of memory\n"}));
        EXPECT_EQ(readBlock("0 7fffffff"), (Outcome{-1, "Out of memory\n"}));
        EXPECT_EQ(runLine("dp 0 " + GetParam().word + " rs 0 10"),
                  (Outcome{-1, "Out of memory\n" + std::string(kBadCommandLine)}));
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
        EXPECT_EQ(readBlock("0 80000000"), Outcome{-2});
    }
    EXPECT_EQ(readBlock("0 1"), (Outcome{0, dumpLine("00000000: 00 ", ".")}));
}

/** The bytes that are allocated. */
std::size_t allocatedBytes()
{
    const struct mallinfo2 usage = mallinfo2();
    return usage.uordblks + usage.hblkhd;
}

TEST_P(DisplayPortBlockTest, GivesTheMemoryBack)
{
    constexpr std::size_t kBlock = 0x8000;
    for (const int code : {0, -5}) {
        setResult(GetParam().function, code);
        EXPECT_EQ(readBlock("0 8000").status, 0);
        const std::size_t before = allocatedBytes();
        EXPECT_EQ(readBlock("0 8000").status, 0);
        EXPECT_LT(allocatedBytes(), before + kBlock) << code;
    }
}

INSTANTIATE_TEST_SUITE_P(All, DisplayPortBlockTest,
                         ::testing::Values(ByteSpace{"aux", "vekDpAuxReadBuf", "", 0xffffffff, recording_vek::dpcd},
                                           ByteSpace{"i2c", "vekDpI2cReadBuf", "0x50, ", 0xff,
                                                     recording_vek::dpI2cDevice}),
                         [](const auto& test) { return test.param.word; });

// ---- Runs of registers

TEST_F(DisplayPortTest, PhyRunHasFourValuesALineAndNoNewlineAtItsEnd)
{
    recording_vek::dpPhy().poke<std::uint32_t>(0x0, 0xfedcba98);
    recording_vek::dpPhy().poke<std::uint32_t>(0x4, 0x1);
    recording_vek::dpPhy().poke<std::uint32_t>(0x10, 0x80000000);
    EXPECT_EQ(call(doDp, "dp 0 phy rs 0 5"),
              (Outcome{0, "00000000: fedcba98 00000001 00000000 00000000\n00000010: 80000000"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpPhyRead(0, 0x0)", "vekDpPhyRead(0, 0x4)", "vekDpPhyRead(0, 0x8)",
                                               "vekDpPhyRead(0, 0xc)", "vekDpPhyRead(0, 0x10)"));
}

TEST_F(DisplayPortTest, PhyRunsOfEveryLength)
{
    const std::string zeros = "00000000 00000000 00000000 00000000";
    EXPECT_EQ(call(doDp, "dp 1b phy rs 3 1 9"), (Outcome{0, "00000003: 00000000"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpPhyRead(27, 0x3)"));
    EXPECT_EQ(call(doDp, "dp 0 phy rs 3 3"), (Outcome{0, "00000003: 00000000 00000000 00000000"}));
    EXPECT_EQ(call(doDp, "dp 0 phy rs 3 100000004"), (Outcome{0, "00000003: " + zeros}));
    EXPECT_EQ(call(doDp, "dp 0 phy rs 3 0C"),
              (Outcome{0, "00000003: " + zeros + "\n00000013: " + zeros + "\n00000023: " + zeros}));
}

TEST_F(DisplayPortTest, PhyRunWrapsAtTheEndOfTheAddresses)
{
    EXPECT_EQ(call(doDp, "dp 0 phy rs fffffff4 5"),
              (Outcome{0, "fffffff4: 00000000 00000000 00000000 00000000\n00000004: 00000000"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekDpPhyRead(0, 0xfffffff4)", "vekDpPhyRead(0, 0xfffffff8)", "vekDpPhyRead(0, 0xfffffffc)",
                            "vekDpPhyRead(0, 0x0)", "vekDpPhyRead(0, 0x4)"));
}

TEST_F(DisplayPortTest, CdbRunHasEightValuesALineAndNoNewlineAtItsEnd)
{
    recording_vek::dpCdb().poke<std::uint16_t>(0x0, 0xfedc);
    recording_vek::dpCdb().poke<std::uint16_t>(0x2, 0x1);
    recording_vek::dpCdb().poke<std::uint16_t>(0xe, 0x1234);
    recording_vek::dpCdb().poke<std::uint16_t>(0x10, 0x8000);
    EXPECT_EQ(call(doDp, "dp 0 cdb rs 0 9"),
              (Outcome{0, "00000000: fedc 0001 0000 0000 0000 0000 0000 1234\n00000010: 8000"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekDpCdbRead(0, 0x0)", "vekDpCdbRead(0, 0x2)", "vekDpCdbRead(0, 0x4)",
                            "vekDpCdbRead(0, 0x6)", "vekDpCdbRead(0, 0x8)", "vekDpCdbRead(0, 0xa)",
                            "vekDpCdbRead(0, 0xc)", "vekDpCdbRead(0, 0xe)", "vekDpCdbRead(0, 0x10)"));
}

TEST_F(DisplayPortTest, CdbRunsOfEveryLength)
{
    const std::string zeros = "0000 0000 0000 0000 0000 0000 0000 0000";
    EXPECT_EQ(call(doDp, "dp 1b cdb rs 3 1 9"), (Outcome{0, "00000003: 0000"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpCdbRead(27, 0x3)"));
    EXPECT_EQ(call(doDp, "dp 0 cdb rs 3 5"), (Outcome{0, "00000003: 0000 0000 0000 0000 0000"}));
    EXPECT_EQ(call(doDp, "dp 0 cdb rs 3 100000008"), (Outcome{0, "00000003: " + zeros}));
    EXPECT_EQ(call(doDp, "dp 0 cdb rs 3 018"),
              (Outcome{0, "00000003: " + zeros + "\n00000013: " + zeros + "\n00000023: " + zeros}));
}

TEST_F(DisplayPortTest, CdbRunWrapsAtTheEndOfTheAddresses)
{
    EXPECT_EQ(call(doDp, "dp 0 cdb rs fffffffc 3"), (Outcome{0, "fffffffc: 0000 0000 0000"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekDpCdbRead(0, 0xfffffffc)", "vekDpCdbRead(0, 0xfffffffe)", "vekDpCdbRead(0, 0x0)"));
}

/** What `rs` reads a run of registers of. */
struct RegisterSpace {
    std::string word;
    std::string function; /**< that reads */
    std::string zero;     /**< a value as it is printed */
    int valuesOnALine;
};

class DisplayPortRunTest : public DisplayPortTest, public ::testing::WithParamInterface<RegisterSpace>
{
};

TEST_P(DisplayPortRunTest, OfNothingIsSilent)
{
    setResult(GetParam().function, -5);
    for (const char* count : {"0", "zz", "100000000", "80000000", "ffffffff", "1ffffffff"}) {
        EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " rs 100 " + count), Outcome{}) << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(DisplayPortRunTest, StopsAtItsFirstFailure)
{
    for (const int code : kFailures) {
        recording_vek::reset();
        setResult(GetParam().function, code);
        EXPECT_EQ(call(doDp, "dp 1b " + GetParam().word + " rs 0A0 6"), (Outcome{0, "DP27: phy read [a0] error\n"}))
            << code;
        EXPECT_THAT(recording_vek::deviceCalls(), ElementsAre(GetParam().function + "(27, 0xa0)")) << code;
    }
}

TEST_P(DisplayPortRunTest, FailureNamesTheStart)
{
    setResultOnCall(GetParam().function, 2, -5);
    EXPECT_EQ(call(doDp, "dp ffffffff " + GetParam().word + " rs 100 7fffffff"),
              (Outcome{0, "00000100: " + GetParam().zero + "DP-1: phy read [100] error\n"}));
    EXPECT_EQ(takeDeviceCalls().size(), 2U);
}

TEST_P(DisplayPortRunTest, FailureComesBeforeTheNextLine)
{
    setResultOnCall(GetParam().function, GetParam().valuesOnALine + 1, INT_MIN);
    std::string line = "00000100:";
    for (int i = 0; i < GetParam().valuesOnALine; ++i) {
        line += ' ' + GetParam().zero;
    }
    EXPECT_EQ(call(doDp, "dp 0 " + GetParam().word + " rs 100 100"),
              (Outcome{0, line + "DP0: phy read [100] error\n"}));
    EXPECT_EQ(takeDeviceCalls().size(), static_cast<std::size_t>(GetParam().valuesOnALine) + 1);
}

INSTANTIATE_TEST_SUITE_P(All, DisplayPortRunTest,
                         ::testing::Values(RegisterSpace{"phy", "vekDpPhyRead", "00000000", 4},
                                           RegisterSpace{"cdb", "vekDpCdbRead", "0000", 8}),
                         [](const auto& test) { return test.param.word; });

// ---- Mode

TEST_F(DisplayPortTest, ModeListsNineFields)
{
    outputs().display_mode = {148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125, 5};
    EXPECT_EQ(call(doDp, "dp 1b mode more"),
              (Outcome{0,
                       "DisplayPort-27:\n clock = 148500kHz \n hdisplay = 1920 \n hsync_start = 2008 \n"
                       " hsync_end = 2052 \n htotal = 2200 \n vdisplay = 1080 \n vsync_start = 1084 \n"
                       " vsync_end = 1089 \n vtotal = 1125 \n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDpModeRead(27)"));
}

TEST_F(DisplayPortTest, ModeListsSignedNumbers)
{
    outputs().display_mode = {INT_MIN, -1, -2, -3, -4, -5, -6, -7, INT_MAX, 0};
    EXPECT_EQ(call(doDp, "dp ffffffff mode"),
              (Outcome{0,
                       "DisplayPort--1:\n clock = -2147483648kHz \n hdisplay = -1 \n hsync_start = -2 \n"
                       " hsync_end = -3 \n htotal = -4 \n vdisplay = -5 \n vsync_start = -6 \n vsync_end = -7 \n"
                       " vtotal = 2147483647 \n"}));
}

TEST_F(DisplayPortTest, ModeIsListedWhateverTheResult)
{
    outputs().display_mode = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const std::string filled =
        "DisplayPort-0:\n clock = 1kHz \n hdisplay = 2 \n hsync_start = 3 \n hsync_end = 4 \n htotal = 5 \n"
        " vdisplay = 6 \n vsync_start = 7 \n vsync_end = 8 \n vtotal = 9 \n";
    const std::string zeroed =
        "DisplayPort-0:\n clock = 0kHz \n hdisplay = 0 \n hsync_start = 0 \n hsync_end = 0 \n htotal = 0 \n"
        " vdisplay = 0 \n vsync_start = 0 \n vsync_end = 0 \n vtotal = 0 \n";
    for (const int code : kFailures) {
        setResult("vekDpModeRead", 0);
        EXPECT_EQ(call(doDp, "dp 0 mode"), (Outcome{0, filled}));
        // The library fills the record unless its result is negative.
        setResult("vekDpModeRead", code);
        EXPECT_EQ(call(doDp, "dp 0 mode"), (Outcome{0, code < 0 ? zeroed : filled})) << code;
    }
}

}  // namespace
}  // namespace console_test
