#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "captured_output.h"
#include "open_card.h"
#include "vek.h"

namespace
{

using testing::HasSubstr;

constexpr uint64_t kFan = 0x30c004;
constexpr uint64_t kFanDuty = 0x30c008;
constexpr char kNothingOpen[] = "func: no function is open\n";

uint32_t readLong(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(address, &value), VEK_OK);
    return value;
}

int powerState()
{
    int state = -7;
    EXPECT_EQ(vekPowerGetState(&state), VEK_OK);
    return state;
}

/** Runs a `func` command. @return what it prints. */
std::string func(std::string text, int repeat = 0)
{
    CapturedOutput output;
    tovira_func(text.data(), repeat);
    return output.take();
}

/** A card in the performance state with the fan regulated and nothing switched on, before the test and after it. */
class Power : public EitherCard
{
protected:
    Power() { reset(); }
    ~Power() override { reset(); }

    void reset()
    {
        EXPECT_GE(vekRwOpen(GetParam()), 0);
        EXPECT_EQ(vekPowerSetState(VEK_POWER_PERFORMANCE), VEK_OK);
        EXPECT_EQ(vekFanSetRate(-1), VEK_OK);
        EXPECT_EQ(vekThermalDebug(-1), VEK_OK);
        func("func close");
    }
};
INSTANTIATE_TEST_SUITE_P(Cards, Power, testing::Values(0, 1));

TEST_P(Power, KeepsItsState)
{
    for (const int state : {VEK_POWER_STANDBY, VEK_POWER_SAVE, VEK_POWER_PERFORMANCE}) {
        EXPECT_EQ(vekPowerSetState(state), VEK_OK);
        EXPECT_EQ(powerState(), state);
    }
}

TEST_P(Power, LowersVoltageAndClocks)
{
    double volts[3] = {};
    int megahertz[3] = {};
    for (const int state : {VEK_POWER_PERFORMANCE, VEK_POWER_SAVE, VEK_POWER_STANDBY}) {
        ASSERT_EQ(vekPowerSetState(state), VEK_OK);
        ASSERT_EQ(vekSensorVolt(0, &volts[state]), VEK_OK);
        megahertz[state] = vek_qz200_get_freq(VEK_CLOCK_3D);
    }
    EXPECT_GT(volts[0], volts[1]);
    EXPECT_GT(volts[1], volts[2]);
    EXPECT_EQ(megahertz[1], megahertz[0] / 2);
    EXPECT_EQ(megahertz[2], 0);
}

TEST_P(Power, KeepsItsStateWhenItIsGivenNone)
{
    ASSERT_EQ(vekPowerSetState(VEK_POWER_SAVE), VEK_OK);
    for (const int state : {-0x7fffffff - 1, -1, 3, 4, 256, 0x7fffffff}) {
        EXPECT_EQ(vekPowerSetState(state), VEK_BAD_ARGUMENT) << state;
    }
    EXPECT_EQ(powerState(), VEK_POWER_SAVE);
    EXPECT_EQ(vekPowerGetState(nullptr), VEK_BAD_ARGUMENT);
}

TEST_P(Power, NamesEveryStateDifferently)
{
    const std::string performance = vekPowerStateName(VEK_POWER_PERFORMANCE);
    const std::string save = vekPowerStateName(VEK_POWER_SAVE);
    const std::string standby = vekPowerStateName(VEK_POWER_STANDBY);
    EXPECT_THAT(performance, HasSubstr("performance"));
    EXPECT_THAT(save, HasSubstr("save"));
    EXPECT_THAT(standby, HasSubstr("standby"));
    for (const int stranger : {-1, 3, 0x7fffffff}) {
        EXPECT_EQ(std::string(vekPowerStateName(stranger)), "unknown");
    }
}

TEST_P(Power, SetsTheFanByHand)
{
    for (const int rate : {0, 1, 50, 99, 100}) {
        EXPECT_EQ(vekFanSetRate(rate), VEK_OK);
        EXPECT_EQ(readLong(kFanDuty), static_cast<uint32_t>(rate));
    }
    for (const int rate : {-0x7fffffff - 1, -2, 101, 150, 0x7fffffff}) {
        EXPECT_EQ(vekFanSetRate(rate), VEK_BAD_ARGUMENT) << rate;
    }
    EXPECT_EQ(readLong(kFanDuty), 100U);
    EXPECT_EQ(vekFanSetRate(-1), VEK_OK);
    EXPECT_EQ(readLong(kFan), 0U);
    EXPECT_LT(readLong(kFanDuty), 100U);
}

TEST_P(Power, RegulatesTheFanForASimulatedTemperature)
{
    const uint32_t before = readLong(kFanDuty);
    EXPECT_EQ(vekThermalDebug(90000), VEK_OK);
    EXPECT_EQ(readLong(kFanDuty), 100U);
    EXPECT_EQ(vekThermalDebug(50000), VEK_OK);
    EXPECT_EQ(readLong(kFanDuty), 36U);
    EXPECT_EQ(vekThermalDebug(-40000), VEK_OK);
    EXPECT_EQ(readLong(kFanDuty), 20U);
    for (const int temperature : {-0x7fffffff - 1, -40001, 150001, 0x7fffffff}) {
        EXPECT_EQ(vekThermalDebug(temperature), VEK_BAD_ARGUMENT) << temperature;
    }
    EXPECT_EQ(readLong(kFanDuty), 20U);
    EXPECT_EQ(vekThermalDebug(150000), VEK_OK);
    EXPECT_EQ(readLong(kFanDuty), 100U);
    EXPECT_EQ(vekThermalDebug(-1), VEK_OK);
    EXPECT_NEAR(readLong(kFanDuty), before, 2);
}

TEST_P(Power, RunsFunctionCommands)
{
    EXPECT_EQ(func("func on"), kNothingOpen);
    EXPECT_EQ(func("func 3D rvt_es_trace"), "func 3D: RVT_ES_TRACE on\n");
    EXPECT_EQ(func("func 3D rvt_es_trace", 1), "func 3D: RVT_ES_TRACE on\n");
    EXPECT_EQ(func("func mgpu balance"), "func Mgpu: Balance\n");
    EXPECT_EQ(func("func mgpu 2 3"), "func Mgpu: Independent for 3\n");
    EXPECT_EQ(func("func on"), "func 3D: RVT_ES_TRACE on\nfunc Mgpu: Independent for 3\n");
    EXPECT_EQ(func("func nonsense"), "func: unknown \"nonsense\"\n");
}

TEST_P(Power, KeepsTheFunctionsByCard)
{
    func("func texture");
    ASSERT_GE(vekRwOpen(1 - GetParam()), 0);
    EXPECT_EQ(func("func on"), kNothingOpen);
    ASSERT_GE(vekRwOpen(GetParam()), 0);
    EXPECT_EQ(func("func on"), "func Texture: on\n");
}

TEST_P(Power, RunsNoFunctionFromNoText)
{
    CapturedOutput output;
    EXPECT_EQ(tovira_func(nullptr, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(tovira_func(nullptr, 1), VEK_BAD_ARGUMENT);
    EXPECT_EQ(output.take(), "");
    char word[] = "func bogus";
    EXPECT_EQ(tovira_func(word, -1), VEK_BAD_ARGUMENT);
    char good[] = "func close";
    EXPECT_EQ(tovira_func(good, 0x7fffffff), VEK_OK);
}

TEST_P(Power, SurvivesAnyFunctionText)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> anyByte(1, 255);
    std::uniform_int_distribution<std::size_t> anyLength(0, 40);
    const std::vector<std::string> words = {"func", "3d", "mgpu", "on", "texture", "2", "independent", " ", ",", "\t"};
    std::uniform_int_distribution<std::size_t> anyWord(0, words.size() - 1);
    for (int n = 0; n < 2000; ++n) {
        std::string text = "func ";
        for (std::size_t length = anyLength(random); length > 0; --length) {
            text += n % 2 == 0 ? std::string(1, static_cast<char>(anyByte(random))) : words[anyWord(random)];
        }
        for (const char character : func(text)) {
            ASSERT_TRUE(character == '\n' || (character >= ' ' && character <= '~'));
        }
    }
    EXPECT_THAT(func("func " + std::string(1'000'000, 'y')), HasSubstr("unknown"));
}

}  // namespace
