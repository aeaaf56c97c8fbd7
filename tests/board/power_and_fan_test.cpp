// Power state, fan, thermal simulation and feature switches.

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "board_support.h"
#include "tovira_parse/handlers.h"

namespace
{

/** On: vekPowerStateName() answers a null pointer. */
bool namesAreNull = false;

}  // namespace

// The linker's --wrap gives these names: the console's calls of vekPowerStateName() arrive at the one, the other is the
// recording library's.
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c)
extern "C" const char* __real_vekPowerStateName(int state);
extern "C" const char* __wrap_vekPowerStateName(int state);

const char* __wrap_vekPowerStateName(int state)
{
    const char* const name = __real_vekPowerStateName(state);
    return namesAreNull ? nullptr : name;
}
// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c)

namespace console_test
{
namespace
{

using recording_vek::outputs;
using recording_vek::setMode;
using recording_vek::setResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PowerTest : public ConsoleTest
{
protected:
    PowerTest() { namesAreNull = false; }
};

TEST_F(PowerTest, SetsTheStateTyped)
{
    // What is read back is of no account.
    outputs().power_state = 7;
    for (const auto& [typed, state] : std::vector<std::pair<std::string, std::string>>{{"0", "0"},
                                                                                       {"1", "1"},
                                                                                       {"2", "2"},
                                                                                       {"0x2", "2"},
                                                                                       {"0X1", "1"},
                                                                                       {"02", "2"},
                                                                                       {"2z", "2"},
                                                                                       {"1\r\n", "1"},
                                                                                       {"zz", "0"}}) {
        EXPECT_EQ(call(doPower, "power " + typed), (Outcome{0, "current power state: state " + state + "\n"})) << typed;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekPowerSetState(" + state + ")", "vekPowerStateName(" + state + ")"))
            << typed;
    }
}

TEST_F(PowerTest, ReadsTheStateWithoutAnArgumentOrWithAnotherNumber)
{
    outputs().power_state = 1;
    for (const char* text :
         {"power", "power ", "power ,\t", "power\n", "power 3", "power 4", "power 10", "power 20", "power a",
          "power 80000000", "power 80000001", "power ffffffff", "power ffffffffffffffff"}) {
        EXPECT_EQ(call(doPower, text), (Outcome{0, "current power state: state 1\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerGetState()", "vekPowerStateName(1)")) << text;
    }
}

TEST_F(PowerTest, NamesWhateverStateIsRead)
{
    for (const int state : {0, 1, 2, 3, -1, INT_MIN, INT_MAX}) {
        outputs().power_state = state;
        const std::string number = std::to_string(state);
        EXPECT_EQ(call(doPower, "power"), (Outcome{0, "current power state: state " + number + "\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerGetState()", "vekPowerStateName(" + number + ")"));
    }
}

TEST_F(PowerTest, NamesAreNoFormats)
{
    outputs().power_state_names = {{0, "%s%n%d"}, {1, ""}, {2, std::string(5000, 'x')}};
    EXPECT_EQ(call(doPower, "power 0"), (Outcome{0, "current power state: %s%n%d\n"}));
    EXPECT_EQ(call(doPower, "power"), (Outcome{0, "current power state: %s%n%d\n"}));
    EXPECT_EQ(call(doPower, "power 1"), (Outcome{0, "current power state: \n"}));
    EXPECT_EQ(call(doPower, "power 2"), (Outcome{0, "current power state: " + std::string(5000, 'x') + "\n"}));
    setResult("vekPowerSetState", -5);
    EXPECT_EQ(call(doPower, "power 0"), (Outcome{0, "vekPowerSetState: set power state %s%n%d error (-5)\n"}));
}

TEST_F(PowerTest, StatesWithoutANameAreUnknown)
{
    namesAreNull = true;
    EXPECT_EQ(call(doPower, "power"), (Outcome{0, "current power state: unknown\n"}));
    EXPECT_EQ(call(doPower, "power 2"), (Outcome{0, "current power state: unknown\n"}));
    setResult("vekPowerSetState", -22);
    EXPECT_EQ(call(doPower, "power 2"), (Outcome{0, "vekPowerSetState: set power state unknown error (-22)\n"}));
}

TEST_F(PowerTest, FailedSettingNamesTheStateAndTheCode)
{
    for (const int code : kFailures) {
        setResult("vekPowerSetState", code);
        EXPECT_EQ(call(doPower, "power 1"),
                  (Outcome{0, "vekPowerSetState: set power state state 1 error (" + std::to_string(code) + ")\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerSetState(1)", "vekPowerStateName(1)")) << code;
    }
}

TEST_F(PowerTest, FailedReadingNamesTheCode)
{
    for (const int code : kFailures) {
        setResult("vekPowerGetState", code);
        EXPECT_EQ(call(doPower, "power"),
                  (Outcome{0, "vekPowerGetState: get power state error (" + std::to_string(code) + ")\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerGetState()")) << code;
    }
}

TEST_F(PowerTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text :
         {"power,2", "power\t2", " ,\t\r\npower ,\t2", "power\r2", "power\n2", "power 2 1", "power 2,0"}) {
        EXPECT_EQ(call(doPower, text), (Outcome{0, "current power state: state 2\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerSetState(2)", "vekPowerStateName(2)")) << text;
    }
    // Behind the command word a line end is no delimiter any more, and a text that begins with it is no number.
    for (const char* text : {"power \n2", "power\r\n2", "power\r\n"}) {
        EXPECT_EQ(call(doPower, text), (Outcome{0, "current power state: state 0\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerSetState(0)", "vekPowerStateName(0)")) << text;
    }
}

TEST_F(PowerTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doPower, "power 2", 1), (Outcome{0, "current power state: state 2\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekPowerSetState(2)", "vekPowerStateName(2)"));
}

TEST_F(PowerTest, LineRunsOverTheDriverAndIsNotRepeated)
{
    setMode(kDriverMode);
    EXPECT_EQ(runOnce("power 1"), (Outcome{0, "current power state: state 1\n"}));
    EXPECT_EQ(runLine("power 1;power"), (Outcome{0, "current power state: state 1\ncurrent power state: state 0\n"}));
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PowerTest, LineIsRefusedOverOtherPaths)
{
    for (const int mode : {kMappingMode, kSerialMode}) {
        setMode(mode);
        for (const char* line : {"power", "power 1", "POWER 1;fan 1"}) {
            EXPECT_EQ(runOnce(line), (Outcome{-3, std::string(kModeRefusedLine)})) << line << " in mode " << mode;
            EXPECT_EQ(runLine(line), (Outcome{-3, std::string(kModeRefusedLine)})) << line << " in mode " << mode;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(PowerTest, LineGoesOnBehindAFailure)
{
    setResult("vekPowerSetState", -5);
    setResult("vekPowerGetState", -6);
    EXPECT_EQ(runLine("power 1;power"), (Outcome{0,
                                                 "vekPowerSetState: set power state state 1 error (-5)\n"
                                                 "vekPowerGetState: get power state error (-6)\n"}));
}

/** A command that hands one decimal number, or a word for -1, to the library. */
struct DecimalCommand {
    std::string word;
    CmdHandler handler;
    std::string function;             /**< of the library */
    std::vector<std::string> ending;  /**< the words for -1 */
    std::vector<std::string> similar; /**< words that are none */
};

class DecimalCommandTest : public ConsoleTest, public ::testing::WithParamInterface<DecimalCommand>
{
protected:
    static Outcome enter(const std::string& arguments, int repeat = 0)
    {
        return call(GetParam().handler, GetParam().word + arguments, repeat);
    }

    static std::string callOf(const std::string& number) { return GetParam().function + "(" + number + ")"; }
};

TEST_P(DecimalCommandTest, NumberGoesToTheLibraryAsItIs)
{
    for (const char* number :
         {"0", "1", "50", "100", "101", "150", "50000", "-1", "-40000", "2147483647", "-2147483648"}) {
        EXPECT_EQ(enter(std::string(" ") + number), Outcome{}) << number;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(number))) << number;
    }
}

TEST_P(DecimalCommandTest, NumberIsDecimalUpToItsFirstOtherCharacter)
{
    for (const auto& [typed, number] : std::vector<std::pair<std::string, std::string>>{{"010", "10"},
                                                                                        {"0x10", "0"},
                                                                                        {"0b1", "0"},
                                                                                        {"42abc", "42"},
                                                                                        {"a", "0"},
                                                                                        {"+7", "7"},
                                                                                        {"\v\f7", "7"},
                                                                                        {"--7", "0"},
                                                                                        {"-", "0"},
                                                                                        {"7.9", "7"},
                                                                                        {"-08", "-8"},
                                                                                        {"1e3", "1"},
                                                                                        {"5%", "5"}}) {
        EXPECT_EQ(enter(" " + typed), Outcome{}) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(number))) << typed;
    }
}

TEST_P(DecimalCommandTest, NumberIsCutToThirtyTwoBits)
{
    for (const auto& [typed, number] :
         std::vector<std::pair<std::string, std::string>>{{"2147483648", "-2147483648"},
                                                          {"4294967295", "-1"},
                                                          {"4294967296", "0"},
                                                          {"4294967396", "100"},
                                                          {"-4294967297", "-1"},
                                                          {"-2147483649", "2147483647"}}) {
        EXPECT_EQ(enter(" " + typed), Outcome{}) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(number))) << typed;
    }
}

// strtol() stays at the largest or least number of 64 bits.
TEST_P(DecimalCommandTest, NumberBeyondSixtyFourBitsStaysAtTheirLimit)
{
    EXPECT_EQ(enter(" 9223372036854775808"), Outcome{});
    EXPECT_EQ(enter(" " + std::string(400, '9')), Outcome{});
    EXPECT_EQ(enter(" -9223372036854775809"), Outcome{});
    EXPECT_EQ(enter(" -" + std::string(400, '9')), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("-1"), callOf("-1"), callOf("0"), callOf("0")));
}

TEST_P(DecimalCommandTest, WordMeansMinusOne)
{
    for (const std::string& word : GetParam().ending) {
        for (const std::string& arguments : {" " + word, "," + word, "\t" + word + "\r\n", "\r\n" + word + " 50"}) {
            EXPECT_EQ(enter(arguments), Outcome{}) << arguments;
            EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("-1"))) << arguments;
        }
    }
}

TEST_P(DecimalCommandTest, SimilarWordsAreNumbersThatAreNone)
{
    for (const std::string& word : GetParam().similar) {
        EXPECT_EQ(enter(" " + word), Outcome{}) << word;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("0"))) << word;
    }
}

TEST_P(DecimalCommandTest, SplitsAtBlanksCommasTabsAndLineEnds)
{
    for (const char* arguments :
         {" 50", ",50", "\t50", "\r50", "\n50", " ,\t\r\n50\r\n", " 50 60", " 50,auto", " 50\nq"}) {
        EXPECT_EQ(enter(arguments), Outcome{}) << arguments;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("50"))) << arguments;
    }
    EXPECT_EQ(call(GetParam().handler, " ,\t\r\n" + GetParam().word + " 50"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("50")));
}

TEST_P(DecimalCommandTest, ResultIsNotLookedAt)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(enter(" 50"), Outcome{}) << code;
        EXPECT_EQ(enter(" " + GetParam().ending.front()), Outcome{}) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("50"), callOf("-1"))) << code;
    }
}

TEST_P(DecimalCommandTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(enter(" 50", 1), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf("50")));
}

INSTANTIATE_TEST_SUITE_P(
    All, DecimalCommandTest,
    ::testing::Values(
        DecimalCommand{"fan", doFan, "vekFanSetRate", {"auto"}, {"AUTO", "Auto", "autO", "aut", "autos", "q", "quit"}},
        DecimalCommand{"thermal",
                       doThermal,
                       "vekThermalDebug",
                       {"q", "quit"},
                       {"Q", "QUIT", "Quit", "qu", "qui", "quits", "qq", "auto"}}),
    [](const auto& test) { return test.param.word; });

class FanTest : public ConsoleTest
{
};

TEST_F(FanTest, NeedsAnArgument)
{
    for (const char* text : {"fan", "fan ", "fan ,\t\r\n"}) {
        EXPECT_EQ(call(doFan, text), (Outcome{-1, "please input fan <pwm> or fan auto.\n"})) << text;
        EXPECT_EQ(call(doFan, text, 1), (Outcome{-1, "please input fan <pwm> or fan auto.\n"})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(FanTest, LineRunsOverEveryPathAndIsNotRepeated)
{
    expectOnceOnEveryPath("fan 50", {}, {"vekFanSetRate(50)"});
    expectOnceOnEveryPath("FAN auto;fan 150", {}, {"vekFanSetRate(-1)", "vekFanSetRate(150)"});
    expectOnceOnEveryPath("fan AUTO", {}, {"vekFanSetRate(0)"});
    expectOnceOnEveryPath("fan;fan 50", {-1, "please input fan <pwm> or fan auto.\n" + std::string(kBadCommandLine)},
                          {});
}

class ThermalTest : public ConsoleTest
{
};

TEST_F(ThermalTest, NeedsAnArgument)
{
    for (const char* text : {"thermal", "thermal ", "thermal ,\t\r\n"}) {
        EXPECT_EQ(call(doThermal, text), Outcome{-2}) << text;
        EXPECT_EQ(call(doThermal, text, 1), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ThermalTest, LineRunsOverEveryPathAndIsRepeated)
{
    expectRepeatedOnEveryPath("thermal 50000", {}, {"vekThermalDebug(50000)"});
    expectRepeatedOnEveryPath("THERMAL quit", {}, {"vekThermalDebug(-1)"});
    expectOnEveryPath("thermal;thermal 5", {-2, std::string(kBadArgumentLine)}, {}, Outcome{-2}, {});
}

class FunctionTest : public ConsoleTest
{
};

TEST_F(FunctionTest, HandsTextAndRepeatFlagOn)
{
    EXPECT_EQ(call(doFunction, "func 3D 1"), Outcome{});
    EXPECT_EQ(call(doFunction, "FUNC\t3d,, Mgpu \xe4\r\n", 1), Outcome{});
    EXPECT_EQ(call(doFunction, ""), Outcome{});
    EXPECT_EQ(call(doFunction, "func %s%n", -7), Outcome{});
    EXPECT_EQ(call(doFunction, "func " + std::string(300, 'x'), INT_MIN), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("tovira_func(\"func 3D 1\", 0)", "tovira_func(\"FUNC\\t3d,, Mgpu \xe4\\r\\n\", 1)",
                            "tovira_func(\"\", 0)", "tovira_func(\"func %s%n\", -7)",
                            "tovira_func(\"func " + std::string(300, 'x') + "\", -2147483648)"));
}

TEST_F(FunctionTest, LeavesTheTextAsItIs)
{
    std::string text = "func 3D, Close\t";
    EXPECT_EQ(doFunction(text.data(), 0), 0);
    EXPECT_EQ(text, "func 3D, Close\t");
}

TEST_F(FunctionTest, ResultIsNotLookedAt)
{
    for (const int code : kFailures) {
        setResult("tovira_func", code);
        EXPECT_EQ(call(doFunction, "func On"), Outcome{}) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("tovira_func(\"func On\", 0)")) << code;
    }
}

TEST_F(FunctionTest, LineRunsOverEveryPathAndIsRepeated)
{
    expectOnEveryPath("Func 3D 2", {}, {"tovira_func(\"Func 3D 2\", 0)"}, {}, {"tovira_func(\"Func 3D 2\", 1)"});
    expectOnEveryPath("func On ;func", {}, {"tovira_func(\"func On \", 0)", "tovira_func(\"func\", 0)"}, {},
                      {"tovira_func(\"func On \", 1)"});
    setResult("tovira_func", -5);
    EXPECT_EQ(runLine("func a;func b"), Outcome{});
}

}  // namespace
}  // namespace console_test
