// monitor: registers by chip and access mode, the collectors, the cycle that is typed in, and the user's keys.

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "allocation_failure.h"
#include "console_support.h"
#include "info_support.h"
#include "pty_console.h"
#include "tovira_parse/handlers.h"

namespace info_test
{
namespace
{

using console_test::AllocationFailure;
using console_test::call;
using console_test::ConsoleTest;
using console_test::kBadArgumentLine;
using console_test::kBadCommandLine;
using console_test::Outcome;
using console_test::runLine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr unsigned int kQz201 = 0x201;
constexpr unsigned int kQz202 = 0x202;

/** The calls that every command begins with, and those of its own. */
Lines asked(const Lines& calls)
{
    Lines all = {"get_s_type()", "get_device_id()"};
    all.insert(all.end(), calls.begin(), calls.end());
    return all;
}

class MonitorTest : public ConsoleTest
{
protected:
    static void connect(int mode, unsigned int deviceId)
    {
        recording_vek::reset();
        recording_vek::setMode(mode);
        recording_vek::setDeviceId(deviceId);
    }
};

TEST_F(MonitorTest, RefusesAMissingSubCommand)
{
    for (const char* text : {"monitor", "monitor ,\t\r\n", ""}) {
        EXPECT_EQ(call(doMonitor, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(recording_vek::calls(), ElementsAre("get_s_type()", "get_s_type()", "get_s_type()"));
    EXPECT_EQ(runLine("monitor"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

TEST_F(MonitorTest, RefusesUnknownSubCommands)
{
    for (const unsigned int chip : {kQz201, kQz202}) {
        connect(0, chip);
        for (const char* word : {"st", "starts", "star", "fi", "finals", "cl", "cleared", "cy", "cycles", "x", "d", "0",
                                 "start/s", "s/", "sf"}) {
            EXPECT_EQ(call(doMonitor, "monitor " + std::string(word)), Outcome{-2}) << word;
        }
        EXPECT_THAT(recording_vek::deviceCalls(), IsEmpty());
    }
}

struct Register {
    int mode;
    unsigned int chip;
    const char* finalCall;
    const char* clearCall;
};

class MonitorRegisterTest : public MonitorTest, public testing::WithParamInterface<Register>
{
protected:
    MonitorRegisterTest() { connect(GetParam().mode, GetParam().chip); }

    static Lines written(const char* line)
    {
        return asked(*line == '\0' ? Lines{} : Lines{"vekRegWriteLong(" + std::string(line) + ")"});
    }
};

TEST_P(MonitorRegisterTest, Final)
{
    for (const char* text : {"monitor final", "monitor f", "MONITOR FINAL", "monitor,F\r\n", "monitor fInAl x"}) {
        connect(GetParam().mode, GetParam().chip);
        EXPECT_EQ(call(doMonitor, text), (Outcome{0, "Monitor the axi trans final!\n"})) << text;
        EXPECT_THAT(recording_vek::calls(), ElementsAreArray(written(GetParam().finalCall))) << text;
    }
}

TEST_P(MonitorRegisterTest, Clear)
{
    for (const char* text : {"monitor clear", "monitor c", "Monitor CLEAR", "monitor\tC\n"}) {
        connect(GetParam().mode, GetParam().chip);
        EXPECT_EQ(call(doMonitor, text), (Outcome{0, "Monitor the axi trans is cleaned!\n"})) << text;
        EXPECT_THAT(recording_vek::calls(), ElementsAreArray(written(GetParam().clearCall))) << text;
    }
}

TEST_P(MonitorRegisterTest, ResultsAreNotLookedAt)
{
    recording_vek::setResult("vekRegWriteLong", -5);
    EXPECT_EQ(call(doMonitor, "monitor f"), (Outcome{0, "Monitor the axi trans final!\n"}));
    EXPECT_EQ(call(doMonitor, "monitor c"), (Outcome{0, "Monitor the axi trans is cleaned!\n"}));
}

INSTANTIATE_TEST_SUITE_P(Chips, MonitorRegisterTest,
                         testing::Values(Register{0, kQz201, "0x309000, 0x2", "0x309000, 0x4"},
                                         Register{1, kQz201, "0x309000, 0x2", "0x309000, 0x4"},
                                         Register{2, kQz201, "0x1309000, 0x2", "0x1309000, 0x4"},
                                         Register{0, kQz202, "0x288800, 0x1", "0x288800, 0x2"},
                                         Register{1, kQz202, "0x288800, 0x1", "0x288800, 0x2"},
                                         Register{2, kQz202, "0x1288800, 0x1", "0x1288800, 0x2"},
                                         Register{0, 0x203, "", ""}, Register{2, 0, "", ""},
                                         Register{1, 0x10201, "", ""}));

class MonitorStartQz201Test : public MonitorTest, public testing::WithParamInterface<int>
{
};

TEST_P(MonitorStartQz201Test, StartsAndCollects)
{
    const std::string control = GetParam() == 2 ? "0x1309000" : "0x309000";
    for (const char* text : {"monitor start", "monitor s", "monitor START", "MONITOR S\r\n", "monitor start 5"}) {
        connect(GetParam(), kQz201);
        EXPECT_EQ(call(doMonitor, text),
                  (Outcome{0, "0x201 Monitor the axi trans start, please check the axiMonitorData file\n"}))
            << text;
        EXPECT_THAT(recording_vek::calls(),
                    ElementsAreArray(asked({"vekRegWriteLong(" + control + ", 0x1)", "vekMonitorAxiTrans_QZ201()"})))
            << text;
    }
}

TEST_P(MonitorStartQz201Test, DoesNotLookAtTheResults)
{
    connect(GetParam(), kQz201);
    recording_vek::setResult("vekRegWriteLong", -5);
    recording_vek::setResult("vekMonitorAxiTrans_QZ201", -6);
    EXPECT_EQ(call(doMonitor, "monitor s"),
              (Outcome{0, "0x201 Monitor the axi trans start, please check the axiMonitorData file\n"}));
    EXPECT_EQ(recording_vek::calls().size(), 4U);
}

INSTANTIATE_TEST_SUITE_P(Modes, MonitorStartQz201Test, testing::Values(0, 1, 2));

TEST_F(MonitorTest, StartDoesNothingOnAnotherChip)
{
    for (const unsigned int chip : {0U, 0x200U, 0x203U, 0x10202U}) {
        connect(0, chip);
        EXPECT_EQ(call(doMonitor, "monitor start"), Outcome{}) << chip;
        EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked({}))) << chip;
    }
}

const std::string kCollectedLine = "0x202 Monitor the axi trans is collected, please check the axiMonitorData file\n";
const std::string kOtherKeyLine = "please input 'd' to done the thread\n";

constexpr std::time_t kMidnight = 1'700'006'400;  // 2023-11-15 00:00:00 UTC

std::time_t timeOfDay(int hour, int minute, int second)
{
    return kMidnight + hour * 3600 + minute * 60 + second;
}

class CollectionTest : public MonitorTest
{
protected:
    CollectionTest() { connect(0, kQz202); }

    static Outcome collected(const std::string& name, int otherKeys = 0)
    {
        Outcome outcome{0, "time_foldername: " + name + "\n"};
        while (otherKeys-- > 0) {
            outcome.output += kOtherKeyLine;
        }
        outcome.output += kCollectedLine;
        return outcome;
    }

    /** Starts a collection, whose keys have been typed, and waits for the end of its collector. */
    static Outcome collect(const std::string& text = "monitor start")
    {
        const Outcome outcome = call(doMonitor, text);
        EXPECT_TRUE(recording_vek::waitForCancelledCollector(kPatience)) << "the collector goes on";
        return outcome;
    }

    StoppedClock clock_{timeOfDay(9, 5, 7), "UTC0"};
};

TEST_F(CollectionTest, EndsAtTheKey)
{
    for (const char* text : {"monitor start", "monitor s", "monitor START", "MONITOR,S"}) {
        connect(0, kQz202);
        Keyboard keyboard(Delivery::kByKey);
        keyboard.type("d");
        EXPECT_EQ(collect(text), collected("957")) << text;
        EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked({"vek_thread_qz202monitor(\"957\")"}))) << text;
        EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
    }
}

TEST_F(CollectionTest, GoesOnAtOtherKeys)
{
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("Dq \x03\rd");
    EXPECT_EQ(collect(), collected("957", 5));
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(CollectionTest, LeavesTheKeysBehindTheLastOne)
{
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("xdxd");
    EXPECT_EQ(collect(), collected("957", 1));
    EXPECT_EQ(getc(stdin), 'x');
    EXPECT_EQ(getc(stdin), 'd');
}

TEST_F(CollectionTest, WritesNoRegisterOverASerialLineEither)
{
    connect(2, kQz202);
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("d");
    EXPECT_EQ(collect(), collected("957"));
    EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked({"vek_thread_qz202monitor(\"957\")"})));
}

TEST_F(CollectionTest, CanBeRunTwice)
{
    Keyboard keyboard(Delivery::kByKey);
    for (int round = 0; round < 2; ++round) {
        connect(0, kQz202);
        keyboard.type("d");
        EXPECT_EQ(collect(), collected("957"));
    }
}

struct Moment {
    int hour;
    int minute;
    int second;
    const char* zone;
    const char* name;
};

class FolderNameTest : public CollectionTest, public testing::WithParamInterface<Moment>
{
};

TEST_P(FolderNameTest, IsTheLocalTime)
{
    const Moment& moment = GetParam();
    const StoppedClock clock(timeOfDay(moment.hour, moment.minute, moment.second), moment.zone);
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("d");
    EXPECT_EQ(collect(), collected(moment.name));
}

INSTANTIATE_TEST_SUITE_P(Moments, FolderNameTest,
                         testing::Values(Moment{9, 5, 7, "UTC0", "957"}, Moment{21, 30, 15, "UTC0", "213015"},
                                         Moment{0, 0, 0, "UTC0", "000"}, Moment{23, 59, 59, "UTC0", "235959"},
                                         Moment{10, 0, 5, "UTC0", "1005"}, Moment{12, 34, 56, "XXX-2", "143456"},
                                         Moment{2, 0, 1, "XXX5:30", "20301"}));

TEST_F(CollectionTest, EndsAtOnceWhenNoKeyCanCome)
{
    {
        const InputFile input("");
        EXPECT_EQ(collect(), collected("957"));
    }
    connect(0, kQz202);
    {
        const InputFile input("xxd");
        EXPECT_EQ(collect(), collected("957"));
        EXPECT_EQ(StandardInput::rest(), "xxd");
    }
    connect(0, kQz202);
    {
        Keyboard keyboard(Delivery::kByKey);
        keyboard.hangUp();
        EXPECT_EQ(collect(), collected("957"));
    }
}

TEST_F(CollectionTest, EndsWithACollectorThatHasEndedByItself)
{
    recording_vek::outputs().collector_waits = false;
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("xd");
    EXPECT_EQ(call(doMonitor, "monitor s"), collected("957", 1));
    EXPECT_TRUE(recording_vek::waitForCall("vek_thread_qz202monitor", kPatience));
}

TEST_F(CollectionTest, FailsWithoutAThread)
{
    const ThreadFailure failure;
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("d");
    EXPECT_EQ(call(doMonitor, "monitor start"), (Outcome{-1, "time_foldername: 957\nthread creation failed\n"}));
    EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked({})));
    EXPECT_EQ(runLine("monitor start"),
              (Outcome{-1, "time_foldername: 957\nthread creation failed\n" + std::string(kBadCommandLine)}));
    EXPECT_EQ(getc(stdin), 'd') << "no key is waited for";
    EXPECT_EQ(keyboard.settings(), keyboard.settingsBefore());
}

TEST_F(CollectionTest, FailsWithoutMemoryForTheName)
{
    const AllocationFailure failure(4);
    const Outcome outcome = call(doMonitor, "monitor start");
    EXPECT_EQ(outcome.status, -1);
    EXPECT_THAT(outcome.output, testing::EndsWith("thread creation failed\n"));
    EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked({})));
}

/** A collector that is still at work when it has been cancelled. */
namespace late_collector
{

std::binary_semaphore started(0);
std::binary_semaphore released(0);
std::binary_semaphore ended(0);
std::string nameAtStart;
std::string nameAtEnd;

void* collect(void* folderName)
{
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    const char* const name = static_cast<const char*>(folderName);
    nameAtStart = name;
    started.release();
    released.acquire();
    nameAtEnd = name;
    ended.release();
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    pthread_testcancel();
    return nullptr;
}

}  // namespace late_collector

TEST_F(CollectionTest, NeitherWaitsForALateCollectorNorTakesItsNameAway)
{
    const OtherCollector other(late_collector::collect);
    Keyboard keyboard(Delivery::kByKey);
    keyboard.type("d");
    EXPECT_EQ(call(doMonitor, "monitor start"), collected("957"));
    ASSERT_TRUE(late_collector::started.try_acquire_for(kPatience));
    // Other uses of the heap and the stack may take the place of a name that is gone.
    EXPECT_EQ(call(doMonitor, "monitor f"), (Outcome{0, "Monitor the axi trans final!\n"}));
    const std::string others(31, 'x');
    late_collector::released.release();
    ASSERT_TRUE(late_collector::ended.try_acquire_for(kPatience));
    EXPECT_EQ(late_collector::nameAtStart, "957");
    EXPECT_EQ(late_collector::nameAtEnd, "957");
}

/** A collector that works on until it is cancelled, and says so only then. */
namespace busy_collector
{

std::atomic<int> rounds{0};
std::binary_semaphore cancelled(0);

void sayCancelled(void* /*unused*/)
{
    cancelled.release();
}

void* collect(void* /*folderName*/)
{
    pthread_cleanup_push(sayCancelled, nullptr);
    for (;;) {
        ++rounds;
        usleep(1000);
    }
    pthread_cleanup_pop(0);
}

}  // namespace busy_collector

TEST_F(CollectionTest, WorksUntilTheKeyIsPressed)
{
    const OtherCollector other(busy_collector::collect);
    Keyboard keyboard(Delivery::kByKey);
    // The key comes when the collector has begun and the console waits for it.
    int changes = 0;
    const SettingsWatch watch([&](int /*descriptor*/, int /*when*/, const termios& settings) {
        if ((settings.c_oflag & OPOST) == 0 && ++changes == 1) {
            while (busy_collector::rounds < 3) {
                std::this_thread::yield();
            }
            EXPECT_FALSE(busy_collector::cancelled.try_acquire());
            keyboard.type("d");
        }
    });
    EXPECT_EQ(call(doMonitor, "monitor start"), collected("957"));
    EXPECT_TRUE(busy_collector::cancelled.try_acquire_for(kPatience)) << "the collector goes on";
    EXPECT_EQ(changes, 1);
}

struct Cycle {
    const char* input;
    const char* written;
    const char* shown;
};

class CycleTest : public MonitorTest, public testing::WithParamInterface<Cycle>
{
};

TEST_P(CycleTest, IsTypedInHexadecimal)
{
    for (const int mode : {0, 1, 2}) {
        for (const unsigned int chip : {kQz201, kQz202, 0x203U}) {
            connect(mode, chip);
            const InputFile input(GetParam().input);
            EXPECT_EQ(call(doMonitor, "monitor cycle"),
                      (Outcome{0, "Please input AXI clock cycle\ntime: " + std::string(GetParam().shown) + "\n"}));
            const std::string offset = mode == 2 ? "0x1" : "0x";
            const std::string cycle = "vekRegWriteLong(" + offset + "288808, " + std::string(GetParam().written) + ")";
            const std::string control = "vekRegWriteLong(" + offset + "288800, ";
            const bool stops = std::string(GetParam().written) == "0x0";
            EXPECT_THAT(recording_vek::calls(), ElementsAreArray(asked(stops ? Lines{control + "0x0)", cycle}
                                                                             : Lines{cycle, control + "0x14)"})))
                << "mode " << mode << ", chip " << chip;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, CycleTest,
    testing::Values(Cycle{"10\n", "0x10", "16"}, Cycle{"10", "0x10", "16"}, Cycle{"0x1F\n", "0x1f", "31"},
                    Cycle{"0Xff\n", "0xff", "255"}, Cycle{"AbC\n", "0xabc", "2748"}, Cycle{" \t\n\r\n 9\n", "0x9", "9"},
                    Cycle{"7fffffff\n", "0x7fffffff", "2147483647"}, Cycle{"80000000\n", "0x80000000", "-2147483648"},
                    Cycle{"ffffffff\n", "0xffffffff", "-1"}, Cycle{"10 rrb 0\n", "0x10", "16"},
                    Cycle{"5;quit\n", "0x5", "5"}, Cycle{"1g\n", "0x1", "1"}, Cycle{"0\n", "0x0", "0"},
                    Cycle{"0000\n", "0x0", "0"}, Cycle{"", "0x0", "0"}, Cycle{"\n", "0x0", "0"},
                    Cycle{"garbage\n", "0x0", "0"}, Cycle{"zz 10\n", "0x0", "0"}, Cycle{";10\n", "0x0", "0"}));

TEST_F(MonitorTest, CycleGoesByItsLetter)
{
    for (const char* text : {"monitor t", "monitor T", "MONITOR Cycle\r\n", "monitor t 5"}) {
        connect(0, kQz202);
        const InputFile input("20\n");
        EXPECT_EQ(call(doMonitor, text), (Outcome{0, "Please input AXI clock cycle\ntime: 32\n"})) << text;
    }
}

TEST_F(MonitorTest, CycleDoesNotLookAtTheResults)
{
    connect(0, kQz202);
    recording_vek::setResult("vekRegWriteLong", -5);
    const InputFile input("20\n");
    EXPECT_EQ(call(doMonitor, "monitor t"), (Outcome{0, "Please input AXI clock cycle\ntime: 32\n"}));
    EXPECT_EQ(recording_vek::deviceCalls().size(), 2U);
}

TEST_F(MonitorTest, CycleIsAskedForAgainAfterTheEndOfATerminalsInput)
{
    connect(0, kQz202);
    Keyboard keyboard;
    keyboard.type("\x04\n20\n");
    EXPECT_EQ(call(doMonitor, "monitor t"), (Outcome{0, "Please input AXI clock cycle\ntime: 0\n"}));
    EXPECT_EQ(call(doMonitor, "monitor t"), (Outcome{0, "Please input AXI clock cycle\ntime: 32\n"}));
}

TEST_F(MonitorTest, CycleDropsTheRestOfALineThatWasTyped)
{
    for (const std::string line : {"10 rrb 0\nx\n", "garbage 10\nx\n", "10\nx\n"}) {
        connect(0, kQz202);
        Keyboard keyboard;
        keyboard.type(line);
        const std::string shown = line.front() == '1' ? "16" : "0";
        EXPECT_EQ(call(doMonitor, "monitor t"), (Outcome{0, "Please input AXI clock cycle\ntime: " + shown + "\n"}));
        EXPECT_EQ(getc(stdin), 'x') << line;
    }
}

TEST_F(MonitorTest, CycleLeavesTheRestOfAnInputThatIsNoTerminal)
{
    connect(0, kQz202);
    const InputFile input("10 rrb 0\nquit\n");
    EXPECT_EQ(call(doMonitor, "monitor t"), (Outcome{0, "Please input AXI clock cycle\ntime: 16\n"}));
    EXPECT_EQ(StandardInput::rest(), " rrb 0\nquit\n");
}

TEST_F(MonitorTest, IsNotRepeatedAtAnEmptyLine)
{
    connect(0, kQz201);
    EXPECT_EQ(runLine("monitor f"), (Outcome{0, "Monitor the axi trans final!\n"}));
    EXPECT_EQ(runLine(""), Outcome{});
}

// The finished program at a terminal, where the console's prompt comes next.

class MonitorTerminalTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string start = "enter command line with /dev/vekrw for QZ201!\r\n>";
        ASSERT_EQ(console_.read(start.size()), start);
    }

    void expectOutput(const std::string& expected) { EXPECT_EQ(console_.read(expected.size()), expected); }

    PtyConsole console_{{.arguments = {TOVIRA_UTIL_TOOL}}};
};

TEST_F(MonitorTerminalTest, CycleTypedAheadTakesItsWholeLine)
{
    ASSERT_TRUE(console_.send("monitor cycle\r10 rrb 0\rrrl 288808\r"));
    expectOutput("monitor cycle\r\r\nPlease input AXI clock cycle\r\ntime: 16\r\n>rrl 288808\r\r\n");
    EXPECT_THAT(console_.readThrough(">"), testing::StartsWith("00288808: "));
}

TEST_F(MonitorTerminalTest, CycleTypedAtItsPromptTakesItsWholeLine)
{
    ASSERT_TRUE(console_.send("monitor t\r"));
    expectOutput("monitor t\r\r\nPlease input AXI clock cycle\r\n");
    ASSERT_TRUE(console_.sendToCommand("10 rrb 0\n"));
    expectOutput("10 rrb 0\r\ntime: 16\r\n>");
    ASSERT_TRUE(console_.send("quit\r"));
    expectOutput("quit\r\r\n");
    const std::optional<ProcessEvent> event = console_.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
}

// Another library's collector may be written with exceptions, through which a cancelled thread unwinds.
TEST(MonitorOnAnotherLibrary, CancelsTheCollector)
{
    PtyConsole console({.arguments = {"/usr/bin/env", "LD_LIBRARY_PATH=" TOVIRA_FOREIGN_LIBRARY_FOLDER,
                                      "RECORDING_VEK_DEVICE_ID=202", TOVIRA_UTIL_TOOL}});
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(console.send("monitor s\r"));
        EXPECT_THAT(console.readThrough("time_foldername: "), testing::HasSubstr("\r\n"));
        EXPECT_THAT(console.readThrough("\n"), testing::MatchesRegex("[0-9]+\r\n"));
        ASSERT_TRUE(console.send("x"));
        EXPECT_EQ(console.readThrough("\n"), "please input 'd' to done the thread\r\n");
        ASSERT_TRUE(console.send("d"));
        EXPECT_EQ(console.readThrough("\n>"), kCollectedLine.substr(0, kCollectedLine.size() - 1) + "\r\n>");
    }
    ASSERT_TRUE(console.send("quit\r"));
    const std::optional<ProcessEvent> event = console.waitForEvent();
    ASSERT_TRUE(event.has_value());
    EXPECT_TRUE(event->exitedWith(0)) << testing::PrintToString(*event);
    EXPECT_EQ(describe(console.settings()), describe(console.settingsBefore()));
}

}  // namespace
}  // namespace info_test
