#include <string>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::setResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EdpTest : public ConsoleTest
{
};

TEST_F(EdpTest, NeedsASubCommandThatItKnows)
{
    for (const char* text : {"", "edp", "edp ", "edp ,\t\r\n", "edp foo", "edp 0 pwm 1", "edp pw 1", "edp pwms 1",
                             "edp ligh 1", "edp lights 1", "edp pwme", "edp pwmens", "edp mode", "edp pwmen\n"}) {
        EXPECT_EQ(call(doEdp, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(EdpTest, NeedsAValue)
{
    for (const char* text : {"edp pwm", "edp light", "edp PWM ,\t", "edp Light ,"}) {
        EXPECT_EQ(call(doEdp, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(EdpTest, FrequencyIsHexadecimalAndOfAnySize)
{
    for (const char* value : {"3e8", "0X7D0 9", "0", "F4240", "ffffffff", "80000000", "100000001", "zz"}) {
        EXPECT_EQ(call(doEdp, std::string("edp pwm ") + value), Outcome{}) << value;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekEdpPwmSet(1000)", "vekEdpPwmSet(2000)", "vekEdpPwmSet(0)", "vekEdpPwmSet(1000000)",
                            "vekEdpPwmSet(-1)", "vekEdpPwmSet(-2147483648)", "vekEdpPwmSet(1)", "vekEdpPwmSet(0)"));
}

TEST_F(EdpTest, BrightnessIsHexadecimalAndOfAnySize)
{
    for (const char* value : {"64", "0x64 9", "0", "65", "ffffffff", "80000000", "100000001", "zz"}) {
        EXPECT_EQ(call(doEdp, std::string("edp light ") + value), Outcome{}) << value;
    }
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAre("vekEdpLightSet(100)", "vekEdpLightSet(100)", "vekEdpLightSet(0)", "vekEdpLightSet(101)",
                    "vekEdpLightSet(-1)", "vekEdpLightSet(-2147483648)", "vekEdpLightSet(1)", "vekEdpLightSet(0)"));
}

TEST_F(EdpTest, NewValuesAreEnabled)
{
    EXPECT_EQ(call(doEdp, "edp pwmen"), Outcome{});
    EXPECT_EQ(call(doEdp, "edp pwmen 5"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpEnablePwm()", "vekEdpEnablePwm()"));
}

TEST_F(EdpTest, ResultsAreNotLookedAt)
{
    for (const int code : kFailures) {
        for (const char* function : {"vekEdpPwmSet", "vekEdpLightSet", "vekEdpEnablePwm"}) {
            setResult(function, code);
        }
        for (const char* text : {"edp pwm 1", "edp light 1", "edp pwmen"}) {
            EXPECT_EQ(call(doEdp, text), Outcome{}) << text << ' ' << code;
        }
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpPwmSet(1)", "vekEdpLightSet(1)", "vekEdpEnablePwm()"));
    }
}

TEST_F(EdpTest, SubCommandsAreCaseBlind)
{
    for (const char* text : {"EDP Pwm 1", "edp pWM 1", "edp Light 1", "edp lIGHT 1", "edp PwmEn", "edp pWMeN"}) {
        EXPECT_EQ(call(doEdp, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpPwmSet(1)", "vekEdpPwmSet(1)", "vekEdpLightSet(1)",
                                               "vekEdpLightSet(1)", "vekEdpEnablePwm()", "vekEdpEnablePwm()"));
}

TEST_F(EdpTest, TurnsTheSubCommandIntoUpperCaseAndNothingElse)
{
    std::string text = "edp light ab";
    EXPECT_EQ(doEdp(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 3), "edp");
    EXPECT_EQ(text.substr(4, 5), "LIGHT");
    EXPECT_EQ(text.substr(10), "ab");

    std::string unknown = "edp a`b{z\xe4";
    EXPECT_EQ(doEdp(unknown.data(), 0), -2);
    EXPECT_EQ(unknown.substr(4), "A`B{Z\xe4");
}

TEST_F(EdpTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"edp pwm 10", "edp,pwm,10", "edp\tpwm\t10", " ,\t\r\nedp ,\tpwm, 10 ,", "edp\rpwm 10",
                             "edp\npwm 10", "edp pwm 10\r\n"}) {
        EXPECT_EQ(call(doEdp, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpPwmSet(16)")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(call(doEdp, "edp pwm\n10"), Outcome{-2});
    EXPECT_EQ(call(doEdp, "edp\r\npwm 10"), Outcome{-2});
    EXPECT_EQ(call(doEdp, "edp pwm \r\n"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpPwmSet(0)"));
}

TEST_F(EdpTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doEdp, "edp light 10", 1), Outcome{});
    EXPECT_EQ(call(doEdp, "edp", 1), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpLightSet(16)"));
}

TEST_F(EdpTest, LineRunsOverEveryPathAndIsRepeated)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("edp light 64"), Outcome{}) << mode;
        EXPECT_EQ(runLine(""), Outcome{}) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekEdpLightSet(100)", "vekEdpLightSet(100)")) << mode;
    }
    EXPECT_EQ(runLine("edp pwm"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

}  // namespace
}  // namespace console_test
