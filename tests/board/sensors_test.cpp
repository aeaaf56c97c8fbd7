// Die temperatures, supply voltages and process monitors.

#include <array>
#include <cfloat>
#include <climits>
#include <cstddef>
#include <limits>
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
using recording_vek::setDeviceId;
using recording_vek::setResult;
using recording_vek::setResultOnCall;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/** A command that reads the two sensors. */
struct SensorCommand {
    std::string word;
    CmdHandler handler;
    std::string function;                                  /**< of the library */
    std::array<double, 2> recording_vek::Outputs::*values; /**< that the library answers with */
    std::string quantity;                                  /**< between the sensor's number and the value */
    int decimals;
    std::string unit;
    std::string failure; /**< behind the sensor's number */
};

class SensorsTest : public ConsoleTest, public ::testing::WithParamInterface<SensorCommand>
{
protected:
    static Outcome enter(const std::string& arguments, int repeat = 0)
    {
        return call(GetParam().handler, GetParam().word + arguments, repeat);
    }

    static std::string lineOf(int sensor, const std::string& value)
    {
        return "Sensor " + std::to_string(sensor) + " " + GetParam().quantity + ": " + value + GetParam().unit + "\n";
    }

    static std::string failureOf(int sensor) { return "Sensor " + std::to_string(sensor) + GetParam().failure + "\n"; }

    static std::string callOf(int sensor) { return GetParam().function + "(" + std::to_string(sensor) + ")"; }

    static void answerWith(double first, double second = 0) { outputs().*GetParam().values = {first, second}; }

    /** Zero with the decimals of the quantity. */
    static std::string zero() { return "0." + std::string(static_cast<std::size_t>(GetParam().decimals), '0'); }
};

TEST_P(SensorsTest, AloneReadsBothInOrder)
{
    answerWith(36.5, 41.25);
    const std::string expected =
        GetParam().decimals == 2 ? lineOf(0, "36.50") + lineOf(1, "41.25") : lineOf(0, "36.500") + lineOf(1, "41.250");
    for (const char* arguments : {"", " ", " ,\t\r\n", "\r\n"}) {
        EXPECT_EQ(enter(arguments), (Outcome{0, expected})) << arguments;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(0), callOf(1))) << arguments;
    }
}

TEST_P(SensorsTest, ReadsTheSensorAskedFor)
{
    answerWith(1, 2);
    const std::string decimals = zero().substr(1);
    EXPECT_EQ(enter(" 0"), (Outcome{0, lineOf(0, "1" + decimals)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(0)));
    EXPECT_EQ(enter(" 1"), (Outcome{0, lineOf(1, "2" + decimals)}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(1)));
}

TEST_P(SensorsTest, NumberIsHexadecimalUpToItsFirstOtherCharacter)
{
    for (const char* first : {" 0x0", " 00", " zz", " x1", " +1", " 0g", " 0,1", " 0x"}) {
        EXPECT_EQ(enter(first), (Outcome{0, lineOf(0, zero())})) << first;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(0))) << first;
    }
    for (const char* second : {" 0x1", " 0X1", " 01", " 1z", " 1-", " 1.9"}) {
        EXPECT_EQ(enter(second), (Outcome{0, lineOf(1, zero())})) << second;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(1))) << second;
    }
    EXPECT_EQ(enter(" " + std::string(5000, '0') + "1"), (Outcome{0, lineOf(1, zero())}));
}

TEST_P(SensorsTest, OtherNumbersAreRefusedWithoutACall)
{
    for (const char* number : {" 2", " 3", " 10", " 11", " a", " F", " 0x2", " ff", " 80000000", " 80000001",
                               " ffffffff", " 100000000", " 100000001", " fffffffffffffffe", " ffffffffffffffff"}) {
        EXPECT_EQ(enter(number), Outcome{-2}) << number;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(SensorsTest, SignedNumbersAreRefusedWithoutACall)
{
    for (const char* number : {" -1", " -0", " -", " -2", " --", " -x", ",-1 0"}) {
        EXPECT_EQ(enter(number), Outcome{-2}) << number;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(SensorsTest, SplitsAtBlanksCommasTabsAndLineEnds)
{
    for (const char* arguments : {" 1", ",1", "\t1", "\r1", "\n1", " ,\t\r\n1\r\n", " 1 0", " 1,7 -1", "\n1\n0"}) {
        EXPECT_EQ(enter(arguments), (Outcome{0, lineOf(1, zero())})) << arguments;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(1))) << arguments;
    }
    EXPECT_EQ(call(GetParam().handler, " ,\t\r\n" + GetParam().word + " 1"), (Outcome{0, lineOf(1, zero())}));
}

TEST_P(SensorsTest, NeedsTheCommandWord)
{
    for (const char* text : {"", " ", " ,\t\r\n"}) {
        EXPECT_EQ(call(GetParam().handler, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(SensorsTest, ValuesAreRounded)
{
    const bool two = GetParam().decimals == 2;
    const std::vector<std::pair<double, std::string>> cases = {
        {36.126, two ? "36.13" : "36.126"},        {1.2346, two ? "1.23" : "1.235"},
        {0.99951, two ? "1.00" : "1.000"},         {-40, two ? "-40.00" : "-40.000"},
        {-0.0001, two ? "-0.00" : "-0.000"},       {1e22, "10000000000000000000000." + std::string(two ? 2 : 3, '0')},
        {-273.15049, two ? "-273.15" : "-273.150"}};
    for (const auto& [value, text] : cases) {
        answerWith(value);
        EXPECT_EQ(enter(" 0"), (Outcome{0, lineOf(0, text)}));
    }
}

TEST_P(SensorsTest, ValuesThatAreNoMeasurementsAreShownAll)
{
    const std::vector<std::pair<double, std::string>> cases = {
        {kNaN, "nan"}, {-kNaN, "-nan"}, {kInfinity, "inf"}, {-kInfinity, "-inf"}, {DBL_MIN, zero()}};
    for (const auto& [value, text] : cases) {
        answerWith(value, value);
        EXPECT_EQ(enter(""), (Outcome{0, lineOf(0, text) + lineOf(1, text)}));
    }
    // to_string() has six decimals.
    const std::string largest = std::to_string(-DBL_MAX);
    answerWith(0, -DBL_MAX);
    EXPECT_EQ(
        enter(" 1"),
        (Outcome{0, lineOf(1, largest.substr(0, largest.size() - 6 + static_cast<std::size_t>(GetParam().decimals)))}));
}

TEST_P(SensorsTest, FailureOfTheSensorAskedForIsReported)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(enter(" 0"), (Outcome{-2, failureOf(0)})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(0))) << code;
        EXPECT_EQ(enter(" 1"), (Outcome{-2, failureOf(1)})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(1))) << code;
    }
}

TEST_P(SensorsTest, FailureOfTheFirstEndsTheReading)
{
    for (const int code : kFailures) {
        setResult(GetParam().function, code);
        EXPECT_EQ(enter(""), (Outcome{-2, failureOf(0)})) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(0))) << code;
    }
}

TEST_P(SensorsTest, FailureOfTheSecondLeavesTheFirstPrinted)
{
    for (const int code : kFailures) {
        recording_vek::reset();
        setResultOnCall(GetParam().function, 2, code);
        EXPECT_EQ(enter(""), (Outcome{-2, lineOf(0, zero()) + failureOf(1)})) << code;
        EXPECT_THAT(recording_vek::deviceCalls(), ElementsAre(callOf(0), callOf(1))) << code;
    }
}

TEST_P(SensorsTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(enter(" 1", 1), (Outcome{0, lineOf(1, zero())}));
    EXPECT_EQ(enter("", 1), (Outcome{0, lineOf(0, zero()) + lineOf(1, zero())}));
    EXPECT_EQ(enter(" 2", 1), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(callOf(1), callOf(0), callOf(1)));
}

TEST_P(SensorsTest, LineRunsOverEveryPathAndIsNotRepeated)
{
    expectOnceOnEveryPath(GetParam().word + " 1", {0, lineOf(1, zero())}, {callOf(1)});
    expectOnceOnEveryPath(GetParam().word, {0, lineOf(0, zero()) + lineOf(1, zero())}, {callOf(0), callOf(1)});
    expectOnceOnEveryPath(GetParam().word + " 2", {-2, std::string(kBadArgumentLine)}, {});
    expectOnceOnEveryPath(GetParam().word + " -1", {-2, std::string(kBadArgumentLine)}, {});
}

TEST_P(SensorsTest, FailureEndsTheLineWithTheDispatchersMessage)
{
    setResult(GetParam().function, -5);
    expectOnceOnEveryPath(GetParam().word + ";" + GetParam().word + " 1",
                          {-2, failureOf(0) + std::string(kBadArgumentLine)}, {callOf(0)});
}

INSTANTIATE_TEST_SUITE_P(
    All, SensorsTest,
    ::testing::Values(SensorCommand{"temp", doTemp, "vekSensorTemp", &recording_vek::Outputs::temperatures,
                                    "temprature", 2, "C", ": get temprature failed"},
                      SensorCommand{"volt", doVolt, "vekSensorVolt", &recording_vek::Outputs::voltages, "voltage", 3,
                                    "V", " get voltage failed"},
                      SensorCommand{"vlot", doVolt, "vekSensorVolt", &recording_vek::Outputs::voltages, "voltage", 3,
                                    "V", " get voltage failed"}),
    [](const auto& test) { return test.param.word; });

constexpr unsigned kQz201 = 0x201;
constexpr unsigned kQz202 = 0x202;

class ProcessTest : public ConsoleTest
{
};

TEST_F(ProcessTest, ListsTwoSensorsOfQz201ByKind)
{
    outputs().process = {{{2, 0}, 20}, {{2, 1}, 21}, {{3, 0}, 30}, {{3, 1}, 31}, {{4, 0}, 40}, {{4, 1}, 41}};
    setDeviceId(kQz201);
    for (const char* text : {"process", "process ,\t\r\n", " \r\nprocess"}) {
        EXPECT_EQ(call(doProcess, text), (Outcome{0,
                                                  "Sensor0 SVT Process data: 20\n"
                                                  "Sensor1 SVT Process data: 21\n"
                                                  "Sensor0 LVT Process data: 30\n"
                                                  "Sensor1 LVT Process data: 31\n"
                                                  "Sensor0 ULVT Process data: 40\n"
                                                  "Sensor1 ULVT Process data: 41\n"}))
            << text;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekSensorProcess(2, 0)", "vekSensorProcess(2, 1)", "vekSensorProcess(3, 0)",
                                "vekSensorProcess(3, 1)", "vekSensorProcess(4, 0)", "vekSensorProcess(4, 1)"))
            << text;
    }
}

TEST_F(ProcessTest, ListsTheFirstSensorOfQz202WithoutItsNumber)
{
    outputs().process = {{{2, 0}, 20}, {{2, 1}, 21}, {{3, 0}, 30}, {{3, 1}, 31}, {{4, 0}, 40}, {{4, 1}, 41}};
    setDeviceId(kQz202);
    EXPECT_EQ(call(doProcess, "process"),
              (Outcome{0, "SVT Process data: 20\nLVT Process data: 30\nULVT Process data: 40\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekSensorProcess(2, 0)", "vekSensorProcess(3, 0)", "vekSensorProcess(4, 0)"));
}

TEST_F(ProcessTest, OtherChipsHaveNothingToList)
{
    for (const unsigned id : {0U, 0x200U, 0x203U, 0x1U, 0x2U, 0x120U, 0x301U, 0x1201U, 0x8202U, 0xffffU}) {
        setDeviceId(id);
        EXPECT_EQ(call(doProcess, "process"), Outcome{}) << id;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ProcessTest, TakesNoArgumentWhateverTheChip)
{
    for (const unsigned id : {kQz201, kQz202, 0x203U}) {
        for (const char* text : {"process 1", "process 0", "process,x", "process\r\n-", "process 1 2"}) {
            recording_vek::reset();
            setDeviceId(id);
            EXPECT_EQ(call(doProcess, text), Outcome{-2}) << id << ' ' << text;
            EXPECT_THAT(recording_vek::calls(), ElementsAre("get_device_id()")) << id << ' ' << text;
        }
    }
}

TEST_F(ProcessTest, NeedsTheCommandWord)
{
    for (const unsigned id : {kQz201, kQz202, 0x203U}) {
        setDeviceId(id);
        for (const char* text : {"", " ", " ,\t\r\n"}) {
            EXPECT_EQ(call(doProcess, text), Outcome{-2}) << id << ' ' << text;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ProcessTest, ReadingsAreSigned)
{
    outputs().process = {{{2, 0}, INT_MIN}, {{3, 0}, -1}, {{4, 0}, INT_MAX}};
    setDeviceId(kQz202);
    EXPECT_EQ(call(doProcess, "process"),
              (Outcome{0, "SVT Process data: -2147483648\nLVT Process data: -1\nULVT Process data: 2147483647\n"}));
}

/** The reading that fails. */
struct FailedProcess {
    std::string name;
    unsigned deviceId;
    int number;          /**< of the reading, the first being 1 */
    std::string printed; /**< in all */
};

class FailedProcessTest : public ProcessTest, public ::testing::WithParamInterface<FailedProcess>
{
};

TEST_P(FailedProcessTest, EndsTheListing)
{
    for (const int code : kFailures) {
        recording_vek::reset();
        setDeviceId(GetParam().deviceId);
        setResultOnCall("vekSensorProcess", GetParam().number, code);
        EXPECT_EQ(call(doProcess, "process"), (Outcome{-2, GetParam().printed})) << code;
        EXPECT_EQ(recording_vek::deviceCalls().size(), static_cast<std::size_t>(GetParam().number)) << code;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, FailedProcessTest,
    ::testing::Values(
        FailedProcess{"Qz201FirstSvt", kQz201, 1, "Sensor 0 get svt process failed\n"},
        FailedProcess{"Qz201SecondSvt", kQz201, 2, "Sensor0 SVT Process data: 0\nSensor 0 get svt process failed\n"},
        FailedProcess{"Qz201FirstLvt", kQz201, 3,
                      "Sensor0 SVT Process data: 0\nSensor1 SVT Process data: 0\nSensor 0 get lvt process failed\n"},
        FailedProcess{"Qz201SecondLvt", kQz201, 4,
                      "Sensor0 SVT Process data: 0\nSensor1 SVT Process data: 0\nSensor0 LVT Process data: 0\n"
                      "Sensor 0 get lvt process failed\n"},
        FailedProcess{"Qz201FirstUlvt", kQz201, 5,
                      "Sensor0 SVT Process data: 0\nSensor1 SVT Process data: 0\nSensor0 LVT Process data: 0\n"
                      "Sensor1 LVT Process data: 0\nSensor 0 get ulvt process failed\n"},
        FailedProcess{"Qz201SecondUlvt", kQz201, 6,
                      "Sensor0 SVT Process data: 0\nSensor1 SVT Process data: 0\nSensor0 LVT Process data: 0\n"
                      "Sensor1 LVT Process data: 0\nSensor0 ULVT Process data: 0\nSensor 0 get ulvt process failed\n"},
        FailedProcess{"Qz202Svt", kQz202, 1, "Sensor 0 get svt process failed\n"},
        FailedProcess{"Qz202Lvt", kQz202, 2, "SVT Process data: 0\nSensor 0 get lvt process failed\n"},
        FailedProcess{"Qz202Ulvt", kQz202, 3,
                      "SVT Process data: 0\nLVT Process data: 0\nSensor 0 get ulvt process failed\n"}),
    [](const auto& test) { return test.param.name; });

TEST_F(ProcessTest, IgnoresTheRepeatFlag)
{
    setDeviceId(kQz202);
    EXPECT_EQ(call(doProcess, "process", 1),
              (Outcome{0, "SVT Process data: 0\nLVT Process data: 0\nULVT Process data: 0\n"}));
    EXPECT_EQ(call(doProcess, "process 1", 1), Outcome{-2});
}

TEST_F(ProcessTest, LineRunsOverEveryPathAndIsNotRepeated)
{
    setDeviceId(kQz202);
    expectOnceOnEveryPath("process", {0, "SVT Process data: 0\nLVT Process data: 0\nULVT Process data: 0\n"},
                          {"vekSensorProcess(2, 0)", "vekSensorProcess(3, 0)", "vekSensorProcess(4, 0)"});
    expectOnceOnEveryPath("process 0;process", {-2, std::string(kBadArgumentLine)}, {});
    setResult("vekSensorProcess", -5);
    expectOnceOnEveryPath("process;process", {-2, "Sensor 0 get svt process failed\n" + std::string(kBadArgumentLine)},
                          {"vekSensorProcess(2, 0)"});
}

}  // namespace
}  // namespace console_test
