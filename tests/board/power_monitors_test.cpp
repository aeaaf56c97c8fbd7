// LTC2990, LTC2991 and INA3221.

#include <cfloat>
#include <cstddef>
#include <limits>
#include <string>
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

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/** One measurement of one of the LTC chips. */
struct LtcMeasurement {
    std::string name;
    CmdHandler handler;
    std::string word;
    std::string mode;
    std::string function; /**< of the library */
    int resistors;        /**< that it takes */
    std::string zeros;    /**< printed when everything measured is 0 */
    std::string failure;  /**< printed in front of the channel */
    std::string quantity; /**< that the failure names */
};

class LtcTest : public ConsoleTest, public ::testing::WithParamInterface<LtcMeasurement>
{
protected:
    /** The line with everything in front of the sense resistors, and then more. */
    static std::string line(const std::string& target, const std::string& more = "")
    {
        return GetParam().word + " " + target + " " + GetParam().mode + more;
    }

    static Outcome enter(const std::string& text, int repeat = 0) { return call(GetParam().handler, text, repeat); }

    /** The library's call with so many of the sense resistors, the others 0. */
    static std::string callOf(const std::string& target, std::vector<std::string> resistors = {})
    {
        resistors.resize(static_cast<std::size_t>(GetParam().resistors), "0x0");
        std::string text = GetParam().function + "(" + target;
        for (const std::string& resistor : resistors) {
            text += ", " + resistor;
        }
        return text + ", 0, 1)";
    }

    static Outcome zeros() { return {0, GetParam().zeros}; }
};

TEST_P(LtcTest, AsksForChannelAndAddress)
{
    EXPECT_EQ(enter(line("1 2")), zeros());
    EXPECT_EQ(enter(line("0 0")), zeros());
    EXPECT_EQ(enter(line("7 3")), zeros());
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 2"), callOf("0, 0"), callOf("7, 3")));
}

TEST_P(LtcTest, NumbersAreHexadecimalAndOfAnySize)
{
    for (const char* target : {"a 0x1F", "0XFF 10", "zz -5", "ffffffff 80000000", "100000003 7fffffff",
                               "123456789abcdef0 ffffffffffffffff"}) {
        EXPECT_EQ(enter(line(target)), zeros()) << target;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(callOf("10, 31"), callOf("255, 16"), callOf("0, 0"), callOf("-1, -2147483648"),
                            callOf("3, 2147483647"), callOf("-1698898192, -1")));
}

TEST_P(LtcTest, ModeIsHexadecimal)
{
    const std::string mode = GetParam().mode;
    for (const std::string& typed : {"0" + mode, "0x" + mode, "0X0" + mode, mode + "z", mode + "-", mode + "\r\n"}) {
        EXPECT_EQ(enter(GetParam().word + " 1 2 " + typed), zeros()) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 2"))) << typed;
    }
}

TEST_P(LtcTest, NeedsChannelAddressAndMode)
{
    for (const std::string& text : {std::string(), std::string(" ,\t\r\n"), GetParam().word, GetParam().word + " ,\t",
                                    GetParam().word + " 1", GetParam().word + " 1 0", GetParam().word + " 1 0 ,\t ",
                                    GetParam().word + "\r\n", GetParam().word + " " + GetParam().mode}) {
        EXPECT_EQ(enter(text), Outcome{-2}) << text;
        EXPECT_EQ(enter(text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(LtcTest, SplitsAtBlanksCommasAndTabs)
{
    const std::string& word = GetParam().word;
    const std::string& mode = GetParam().mode;
    for (const std::string& text :
         {word + ",1,2," + mode, word + "\t1\t2\t" + mode, " ,\t\r\n" + word + " ,1\t\t2, " + mode,
          word + "\r1 2 " + mode, word + "\n1 2 " + mode}) {
        EXPECT_EQ(enter(text), zeros()) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 2"))) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(enter(word + " \n1 2\r " + mode), zeros());
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("0, 2")));
    EXPECT_EQ(enter(word + " 1 2\n" + mode), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(LtcTest, TakesItsResistorsInOrder)
{
    const std::vector<std::string> typed = {"3", "10", "0xFF", "7"};
    const std::vector<std::string> taken = {"0x3", "0x10", "0xff", "0x7"};
    std::string more;
    for (std::size_t count = 0; count <= typed.size(); ++count) {
        if (count > 0) {
            more += " " + typed[count - 1];
        }
        EXPECT_EQ(enter(line("1 0", more)), zeros()) << more;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre(callOf("1, 0", {taken.begin(), taken.begin() + static_cast<std::ptrdiff_t>(count)})))
            << more;
    }
    EXPECT_EQ(enter(line("1 0", more + " 5 6")), zeros());
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 0", taken)));
}

TEST_P(LtcTest, ResistorsAreThirtyTwoBitsWideAndHaveNoSign)
{
    EXPECT_EQ(enter(line("1 0", ",ffffffff\t80000000 123456789 zz")), zeros());
    EXPECT_EQ(enter(line("1 0", " -3 1000000005")), zeros());
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 0", {"0xffffffff", "0x80000000", "0x23456789", "0x0"}),
                                               callOf("1, 0", {"0x0", "0x5"})));
}

TEST_P(LtcTest, FailureNamesChannelAddressAndCode)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        const std::string ending = " get " + GetParam().quantity + " error (" + std::to_string(code) + ")\n";
        EXPECT_EQ(enter(line("1a 2")), (Outcome{0, GetParam().failure + ": 26:2" + ending}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("26, 2")));
        EXPECT_EQ(enter(line("ffffffff 80000000")), (Outcome{0, GetParam().failure + ": -1:-2147483648" + ending}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("-1, -2147483648")));
    }
}

TEST_P(LtcTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(enter(line("1 0", " 3"), 1), zeros());
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("1, 0", {"0x3"})));
}

TEST_P(LtcTest, LineRunsOverEveryPathAndIsRepeated)
{
    expectRepeatedOnEveryPath(line("1 0", " 3"), zeros(), {callOf("1, 0", {"0x3"})});
    expectOnEveryPath(GetParam().word + " 1 0;" + line("1 0"), {-2, std::string(kBadArgumentLine)}, {}, Outcome{-2},
                      {});
}

TEST_P(LtcTest, LineGoesOnBehindAFailure)
{
    setResult(GetParam().function, -5);
    const std::string report = GetParam().failure + ": 1:0 get " + GetParam().quantity + " error (-5)\n";
    EXPECT_EQ(runLine(line("1 0") + ";" + line("1 0")), (Outcome{0, report + report}));
}

INSTANTIATE_TEST_SUITE_P(
    All, LtcTest,
    ::testing::Values(LtcMeasurement{"Ltc2990Currents", doLtc2990, "ltc2990", "6", "vekLTC2990GetCurrent2", 2,
                                     "current1=0.000000\tcurent2=0.000000\n", "LTC2990", "current"},
                      LtcMeasurement{"Ltc2990Voltages", doLtc2990, "ltc2990", "7", "vekLTC2990GetVolt4", 0,
                                     "v1=0.000000\tv2=0.000000\tv3=0.000000\tv4=0.000000\n", "LTC2990", "voltage"},
                      LtcMeasurement{"Ltc2991Currents", doLtc2991, "ltc2991", "1", "vekLTC2991GetCurrent4", 4,
                                     "v1v2_current=0.000000A\tv3v4_current=0.000000A\tv5v6_current=0.000000A\t"
                                     "v7v8_current=0.000000A\n",
                                     "LTC2991", "current"},
                      LtcMeasurement{
                          "Ltc2991Voltages", doLtc2991, "ltc2991", "0", "vekLTC2991GetVolt8", 0,
                          "v1=0.000000V\tv2=0.000000V\tv3=0.000000V\tv4=0.000000V\tv5=0.000000V\tv6=0.000000V\t"
                          "v7=0.000000V\tv8=0.000000V\n",
                          "LTC2991", "voltage"}),
    [](const auto& test) { return test.param.name; });

class PowerMonitorsTest : public ConsoleTest
{
};

TEST_F(PowerMonitorsTest, OtherModesAreSilent)
{
    for (const char* mode : {"0", "1", "2", "5", "8", "16", "66", "67", "60", "70", "-6", "zz", "ffffffff"}) {
        EXPECT_EQ(call(doLtc2990, std::string("ltc2990 1 0 ") + mode + " 3 3"), Outcome{}) << mode;
    }
    for (const char* mode : {"2", "3", "6", "7", "10", "11", "20", "80", "ffffffff", "ffffffffffffffff"}) {
        EXPECT_EQ(call(doLtc2991, std::string("ltc2991 1 0 ") + mode + " 3 3"), Outcome{}) << mode;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PowerMonitorsTest, ValuesStandInTheirPlaces)
{
    outputs().ltc2990_currents = {1.5F, -2.25F};
    EXPECT_EQ(call(doLtc2990, "ltc2990 0 0 6").output, "current1=1.500000\tcurent2=-2.250000\n");
    outputs().ltc2990_volts = {1.0F, 2.5F, -3.75F, 0.1F};
    EXPECT_EQ(call(doLtc2990, "ltc2990 0 0 7").output, "v1=1.000000\tv2=2.500000\tv3=-3.750000\tv4=0.100000\n");
    outputs().ltc2991_currents = {1.0F, -2.5F, 3.0000007F, 4.125F};
    EXPECT_EQ(call(doLtc2991, "ltc2991 0 0 1").output,
              "v1v2_current=1.000000A\tv3v4_current=-2.500000A\tv5v6_current=3.000001A\tv7v8_current=4.125000A\n");
    outputs().ltc2991_volts = {1, 2, 3, 4, 5, 6, 7, 8.5F};
    EXPECT_EQ(call(doLtc2991, "ltc2991 0 0 0").output,
              "v1=1.000000V\tv2=2.000000V\tv3=3.000000V\tv4=4.000000V\tv5=5.000000V\tv6=6.000000V\tv7=7.000000V\t"
              "v8=8.500000V\n");
    outputs().ina3221_millivolts = {12000.5F, -0.0004F};
    outputs().ina3221_currents = {1.23456F, -7.0F};
    EXPECT_EQ(call(doIna3221, "ina3221 0").output, "v1=12000.500mv\tv2=-0.000mv\ncurrent1=1.235A\tcurrent2=-7.000A\n");
}

TEST_F(PowerMonitorsTest, ValuesThatAreNoMeasurementsAreShownAll)
{
    const std::string largest = "340282346638528859811704183484516925440";
    outputs().ltc2990_currents = {kNaN, -kInfinity};
    EXPECT_EQ(call(doLtc2990, "ltc2990 0 0 6"), (Outcome{0, "current1=nan\tcurent2=-inf\n"}));
    outputs().ltc2990_volts = {-kNaN, kInfinity, FLT_MAX, FLT_MIN};
    EXPECT_EQ(call(doLtc2990, "ltc2990 0 0 7"),
              (Outcome{0, "v1=-nan\tv2=inf\tv3=" + largest + ".000000\tv4=0.000000\n"}));
    outputs().ltc2991_currents = {-FLT_MAX, -FLT_MAX, kNaN, kInfinity};
    EXPECT_EQ(call(doLtc2991, "ltc2991 0 0 1"),
              (Outcome{0, "v1v2_current=-" + largest + ".000000A\tv3v4_current=-" + largest +
                              ".000000A\tv5v6_current=nanA\tv7v8_current=infA\n"}));
    outputs().ltc2991_volts.fill(-FLT_MAX);
    std::string expected;
    for (int number = 1; number <= 8; ++number) {
        expected += "v" + std::to_string(number) + "=-" + largest + ".000000V" + (number < 8 ? "\t" : "\n");
    }
    EXPECT_EQ(call(doLtc2991, "ltc2991 0 0 0"), (Outcome{0, expected}));
    outputs().ina3221_millivolts = {kNaN, -FLT_MAX};
    outputs().ina3221_currents = {kInfinity, -kNaN};
    EXPECT_EQ(call(doIna3221, "ina3221 0"),
              (Outcome{0, "v1=nanmv\tv2=-" + largest + ".000mv\ncurrent1=infA\tcurrent2=-nanA\n"}));
}

const std::string kInaZeros = "v1=0.000mv\tv2=0.000mv\ncurrent1=0.000A\tcurrent2=0.000A\n";

std::vector<std::string> inaCalls(const std::string& channel, const std::string& resistors)
{
    return {"vekINA3221GetVolt2(" + channel + ")", "vekINA3221GetCurrent2(" + channel + ", " + resistors + ")"};
}

class Ina3221Test : public ConsoleTest
{
};

TEST_F(Ina3221Test, NeedsTheChannel)
{
    for (const char* text : {"", " ,\t\r\n", "ina3221", "ina3221 ,\t ", "ina3221\r", "ina3221\n"}) {
        EXPECT_EQ(call(doIna3221, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doIna3221, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(Ina3221Test, ReadsVoltagesAndThenCurrents)
{
    EXPECT_EQ(call(doIna3221, "ina3221 2"), (Outcome{0, kInaZeros}));
    EXPECT_EQ(takeDeviceCalls(), inaCalls("2", "0x0, 0x0"));
    EXPECT_EQ(call(doIna3221, "ina3221 2 3"), (Outcome{0, kInaZeros}));
    EXPECT_EQ(takeDeviceCalls(), inaCalls("2", "0x3, 0x0"));
    EXPECT_EQ(call(doIna3221, "ina3221 2 3 10"), (Outcome{0, kInaZeros}));
    EXPECT_EQ(takeDeviceCalls(), inaCalls("2", "0x3, 0x10"));
    EXPECT_EQ(call(doIna3221, "ina3221 2 3 10 5"), (Outcome{0, kInaZeros}));
    EXPECT_EQ(takeDeviceCalls(), inaCalls("2", "0x3, 0x10"));
}

TEST_F(Ina3221Test, NumbersAreHexadecimalAndOfAnySize)
{
    call(doIna3221, "ina3221 a 0XfF 0x1");
    EXPECT_EQ(takeDeviceCalls(), inaCalls("10", "0xff, 0x1"));
    call(doIna3221, "ina3221 ffffffff ffffffff 80000000");
    EXPECT_EQ(takeDeviceCalls(), inaCalls("-1", "0xffffffff, 0x80000000"));
    call(doIna3221, "ina3221 180000000 123456789 1000000007");
    EXPECT_EQ(takeDeviceCalls(), inaCalls("-2147483648", "0x23456789, 0x7"));
    call(doIna3221, "ina3221 zz -3 7z");
    EXPECT_EQ(takeDeviceCalls(), inaCalls("0", "0x0, 0x7"));
}

TEST_F(Ina3221Test, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text :
         {"ina3221,2,3,4", "ina3221\t2\t3\t4", " ,\t\r\nina3221 , 2\t\t3 ,4", "ina3221\r2 3 4", "ina3221\n2 3 4\r\n"}) {
        call(doIna3221, text);
        EXPECT_EQ(takeDeviceCalls(), inaCalls("2", "0x3, 0x4")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    for (const char* text : {"ina3221 \n2 3\n4", "ina3221\r\n2 3"}) {
        call(doIna3221, text);
        EXPECT_EQ(takeDeviceCalls(), inaCalls("0", "0x3, 0x0")) << text;
    }
}

TEST_F(Ina3221Test, VoltageFailureDoesNotKeepTheCurrentsBack)
{
    outputs().ina3221_currents = {1, 2};
    for (const int code : kFailures) {
        setResult("vekINA3221GetVolt2", code);
        EXPECT_EQ(call(doIna3221, "ina3221 1a 3 4"),
                  (Outcome{0, "INA3221: 26: get voltage error (" + std::to_string(code) +
                                  ")\ncurrent1=1.000A\tcurrent2=2.000A\n"}));
        EXPECT_EQ(takeDeviceCalls(), inaCalls("26", "0x3, 0x4"));
    }
}

TEST_F(Ina3221Test, CurrentFailureIsReportedBehindTheVoltages)
{
    outputs().ina3221_millivolts = {1, 2};
    for (const int code : kFailures) {
        setResult("vekINA3221GetCurrent2", code);
        EXPECT_EQ(
            call(doIna3221, "ina3221 1a"),
            (Outcome{0, "v1=1.000mv\tv2=2.000mv\nINA3221: 26: get current error (" + std::to_string(code) + ")\n"}));
        EXPECT_EQ(takeDeviceCalls(), inaCalls("26", "0x0, 0x0"));
    }
}

TEST_F(Ina3221Test, BothFailuresAreReported)
{
    setResult("vekINA3221GetVolt2", -5);
    setResult("vekINA3221GetCurrent2", -6);
    EXPECT_EQ(call(doIna3221, "ina3221 ffffffff"),
              (Outcome{0, "INA3221: -1: get voltage error (-5)\nINA3221: -1: get current error (-6)\n"}));
}

TEST_F(Ina3221Test, LineRunsOverEveryPathAndIsRepeated)
{
    expectRepeatedOnEveryPath("ina3221 2 3", {0, kInaZeros}, inaCalls("2", "0x3, 0x0"));
    expectOnEveryPath("ina3221;ina3221 2", {-2, std::string(kBadArgumentLine)}, {}, Outcome{-2}, {});
}

}  // namespace
}  // namespace console_test
