#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::outputs;
using recording_vek::registers;
using recording_vek::setResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kUnknownLine = "Invalid zoom video command. Use help or ? [zc] for command info\n";

class ZoomVideoTest : public ConsoleTest
{
protected:
    /** Starts with port 7 remembered. */
    ZoomVideoTest()
    {
        call(doZV, "zv stop 7");
        takeDeviceCalls();
    }
};

TEST_F(ZoomVideoTest, OtherSubCommandsAreNamedInvalid)
{
    for (const char* text : {"zv foo", "zv foo 0", "zv 0", "zv ini 0", "zv inits 0", "zv star 0 1 1", "zv starts 0 1 1",
                             "zv sto 0", "zv stops 0", "zv restar 0", "zv restarts 0", "zv inf 0", "zv infos 0",
                             "zv xstart 0 1 1", "zv xstop 0", "zv xinit 0", "zv stop\n", "zv info\r"}) {
        EXPECT_EQ(call(doZV, text), (Outcome{-2, kUnknownLine})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ZoomVideoTest, MissingSubCommandIsNamedInvalid)
{
    for (const char* text : {"zv", "zv ", "zv ,\t\r\n", "zv ,\t", ""}) {
        EXPECT_EQ(call(doZV, text), (Outcome{-2, kUnknownLine})) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(ZoomVideoTest, DispatcherMessageFollowsTheInvalidLine)
{
    EXPECT_EQ(runLine("zv foo"), (Outcome{-2, kUnknownLine + std::string(kBadArgumentLine)}));
    EXPECT_EQ(runLine("zv"), (Outcome{-2, kUnknownLine + std::string(kBadArgumentLine)}));
    EXPECT_EQ(runLine("zv stop -1"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

TEST_F(ZoomVideoTest, SubCommandsAreCaseBlind)
{
    for (const char* text : {"ZV Init 0", "zv iNIT 0", "zv Start 0 1 2", "zv sTART 0 1 2", "zv Stop 0", "zv sTOP 0",
                             "zv Restart 0", "zv rESTART 0", "zv Info 0", "zv iNFO 0"}) {
        EXPECT_EQ(call(doZV, text).status, 0) << text;
    }
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAre("vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoInit(0, 0, 0, 0)",
                    "vekZoomVideoStart(0, 0, 0, 1, 2, 0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 1, 2, 0, 0, 0, 0)",
                    "vekZoomVideoStop(0)", "vekZoomVideoStop(0)", "vekZoomVideoRestart(0)", "vekZoomVideoRestart(0)",
                    "vekZoomVideoGetParm(0)", "vekZoomVideoGetParm(0)"));
}

TEST_F(ZoomVideoTest, TurnsTheSubCommandIntoUpperCase)
{
    std::string text = "zv stop 0 ab";
    EXPECT_EQ(doZV(text.data(), 0), 0);
    EXPECT_EQ(text.substr(0, 2), "zv");
    EXPECT_EQ(text.substr(3, 4), "STOP");
    EXPECT_EQ(text.substr(10), "ab");
}

TEST_F(ZoomVideoTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"zv init 1 2 3", "zv,init,1,2,3", "zv\tinit\t1\t2\t3", " ,\t\r\nzv ,\tinit ,\t1, 2 ,3,",
                             "zv\rinit 1 2 3", "zv\ninit 1 2 3\r\n"}) {
        EXPECT_EQ(call(doZV, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoInit(1, 2, 3, 0)")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(call(doZV, "zv init\n1"), (Outcome{-2, kUnknownLine}));
    EXPECT_EQ(call(doZV, "zv init 1\n2 3"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoInit(1, 3, 0, 0)"));
}

TEST_F(ZoomVideoTest, NumbersAreDecimal)
{
    const struct {
        const char* typed;
        const char* id;
    } cases[] = {{"010", "10"},  {"10", "10"},   {"0x10", "0"},
                 {"12ab", "12"}, {"abc", "0"},   {"zz", "0"},
                 {"+5", "5"},    {"00000", "0"}, {"2147483647", "2147483647"}};
    for (const auto& [typed, id] : cases) {
        EXPECT_EQ(call(doZV, std::string("zv stop ") + typed), Outcome{}) << typed;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(std::string("vekZoomVideoStop(") + id + ')')) << typed;
    }
    EXPECT_EQ(call(doZV, "zv start 1 010 0099 -3 -04 5x 1a -2147483648 2147483647"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStart(1, -3, -4, 10, 99, 5, 1, -2147483648, 2147483647)"));
}

// ---- Init

TEST_F(ZoomVideoTest, InitTakesItsParametersAsFarAsTheyLast)
{
    for (const char* text :
         {"zv init 1 2 3 4 5", "zv init 1 2 3 4", "zv init 1 2 3", "zv init 1 2", "zv init 1", "zv init"}) {
        EXPECT_EQ(call(doZV, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoInit(1, 2, 3, 4)", "vekZoomVideoInit(1, 2, 3, 4)",
                                               "vekZoomVideoInit(1, 2, 3, 0)", "vekZoomVideoInit(1, 2, 0, 0)",
                                               "vekZoomVideoInit(1, 0, 0, 0)", "vekZoomVideoInit(1, 0, 0, 0)"));
}

// ---- Start with a size

TEST_F(ZoomVideoTest, StartWithASizeTouchesNoRegister)
{
    registers().poke<std::uint32_t>(0x100cc, 0x01000200);
    registers().poke<std::uint32_t>(0x100dc, 0x01000200);
    EXPECT_EQ(call(doZV, "zv start 1 720 576 0 0"), Outcome{});
    EXPECT_EQ(call(doZV, "zv start 0 2 3 4 5 6 7 8 9 10"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStart(1, 0, 0, 720, 576, 0, 0, 0, 0)",
                                               "vekZoomVideoStart(0, 4, 5, 2, 3, 6, 7, 8, 9)"));
}

TEST_F(ZoomVideoTest, StartTakesItsParametersAsFarAsTheyLast)
{
    const std::string all[] = {"3", "4", "5", "6", "7", "8"};
    const char* expected[] = {
        "vekZoomVideoStart(0, 0, 0, 1, 2, 0, 0, 0, 0)", "vekZoomVideoStart(0, 3, 0, 1, 2, 0, 0, 0, 0)",
        "vekZoomVideoStart(0, 3, 4, 1, 2, 0, 0, 0, 0)", "vekZoomVideoStart(0, 3, 4, 1, 2, 5, 0, 0, 0)",
        "vekZoomVideoStart(0, 3, 4, 1, 2, 5, 6, 0, 0)", "vekZoomVideoStart(0, 3, 4, 1, 2, 5, 6, 7, 0)",
        "vekZoomVideoStart(0, 3, 4, 1, 2, 5, 6, 7, 8)"};
    std::string text = "zv start 0 1 2";
    for (std::size_t given = 0; given < std::size(expected); ++given) {
        EXPECT_EQ(call(doZV, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(expected[given])) << text;
        if (given < std::size(all)) {
            text += ' ' + all[given];
        }
    }
}

TEST_F(ZoomVideoTest, NegativeSizesAreSizes)
{
    EXPECT_EQ(call(doZV, "zv start 0 -1 -2"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStart(0, 0, 0, -1, -2, 0, 0, 0, 0)"));
}

// ---- Start with a detected size

/** A port with its registers. */
struct Port {
    int id;
    std::uint32_t control;
    std::uint32_t width;
    std::uint32_t height;
};

class ZoomVideoDetectionTest : public ZoomVideoTest, public ::testing::WithParamInterface<Port>
{
protected:
    std::string id() const { return std::to_string(GetParam().id); }
    std::string controlRead() const { return "vekRegReadLong(0x" + hexDigits(GetParam().control) + ')'; }
    std::string controlWrite(const std::string& value) const
    {
        return "vekRegWriteLong(0x" + hexDigits(GetParam().control) + ", " + value + ')';
    }
    std::string widthRead() const { return "vekRegReadWord(0x" + hexDigits(GetParam().width) + ')'; }
    std::string heightRead() const { return "vekRegReadWord(0x" + hexDigits(GetParam().height) + ')'; }

    static void setPicture(std::uint16_t width, std::uint16_t height)
    {
        registers().poke<std::uint16_t>(GetParam().width, width);
        registers().poke<std::uint16_t>(GetParam().height, height);
    }
};

TEST_P(ZoomVideoDetectionTest, SwitchesTheCaptureLogicOnAndReadsTheSize)
{
    registers().poke<std::uint32_t>(GetParam().control, 0xa0000010);
    setPicture(720, 65535);
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(controlRead(), controlWrite("0xa0000011"), "wait(100000)", widthRead(), heightRead(),
                            "vekZoomVideoStart(" + id() + ", 0, 0, 720, 65535, 0, 0, 0, 0)"));
}

TEST_P(ZoomVideoDetectionTest, WritesTheControlRegisterEvenIfTheLogicIsOn)
{
    registers().poke<std::uint32_t>(GetParam().control, 0xffffffff);
    setPicture(32768, 1);
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(controlRead(), controlWrite("0xffffffff"), "wait(100000)", widthRead(), heightRead(),
                            "vekZoomVideoStart(" + id() + ", 0, 0, 32768, 1, 0, 0, 0, 0)"));
}

TEST_P(ZoomVideoDetectionTest, KeepsAGivenWidth)
{
    setPicture(720, 576);
    EXPECT_EQ(call(doZV, "zv start " + id() + " 640"), Outcome{});
    EXPECT_EQ(call(doZV, "zv start " + id() + " 640 0 1 2 3 4 5 6"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(controlRead(), controlWrite("0x1"), "wait(100000)", heightRead(),
                                               "vekZoomVideoStart(" + id() + ", 0, 0, 640, 576, 0, 0, 0, 0)",
                                               controlRead(), controlWrite("0x1"), "wait(100000)", heightRead(),
                                               "vekZoomVideoStart(" + id() + ", 1, 2, 640, 576, 3, 4, 5, 6)"));
}

TEST_P(ZoomVideoDetectionTest, KeepsAGivenHeight)
{
    setPicture(720, 576);
    EXPECT_EQ(call(doZV, "zv start " + id() + " 0 480 1 2 3 4 5 6"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(controlRead(), controlWrite("0x1"), "wait(100000)", widthRead(),
                                               "vekZoomVideoStart(" + id() + ", 1, 2, 720, 480, 3, 4, 5, 6)"));
}

TEST_P(ZoomVideoDetectionTest, WithoutAPictureNothingIsStarted)
{
    const std::pair<std::uint16_t, std::uint16_t> sizes[] = {{720, 0}, {0, 576}, {0, 0}};
    for (const auto& [width, height] : sizes) {
        setPicture(width, height);
        EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{-2}) << width << 'x' << height;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre(controlRead(), ::testing::_, "wait(100000)", widthRead(), heightRead()));
    }
    setPicture(0, 0);
    EXPECT_EQ(call(doZV, "zv start " + id() + " 640"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(controlRead(), ::testing::_, "wait(100000)", heightRead()));
    EXPECT_EQ(call(doZV, "zv start " + id() + " 0 480"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(controlRead(), ::testing::_, "wait(100000)", widthRead()));
}

TEST_P(ZoomVideoDetectionTest, PortIsRememberedEvenIfNothingIsStarted)
{
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{-2});
    takeDeviceCalls();
    EXPECT_EQ(call(doZV, "zv stop"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStop(" + id() + ')'));
}

TEST_P(ZoomVideoDetectionTest, WorksOnTheRememberedPort)
{
    setPicture(720, 576);
    call(doZV, "zv init " + id());
    takeDeviceCalls();
    EXPECT_EQ(call(doZV, "zv start"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(controlRead(), controlWrite("0x1"), "wait(100000)", widthRead(), heightRead(),
                            "vekZoomVideoStart(" + id() + ", 0, 0, 720, 576, 0, 0, 0, 0)"));
}

TEST_P(ZoomVideoDetectionTest, RegisterFailuresAreNotLookedAt)
{
    setPicture(720, 576);
    for (const int code : kFailures) {
        setResult("vekRegReadLong", code);
        setResult("vekRegWriteLong", code);
        EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{}) << code;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre(controlRead(), ::testing::_, "wait(100000)", widthRead(), heightRead(),
                                "vekZoomVideoStart(" + id() + ", 0, 0, 720, 576, 0, 0, 0, 0)"))
            << code;
    }
    // The library delivers a value unless its result is negative.
    setResult("vekRegReadWord", 1);
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{});
    takeDeviceCalls();
    setResult("vekRegReadWord", -5);
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(controlRead(), ::testing::_, "wait(100000)", widthRead(), heightRead()));
}

TEST_P(ZoomVideoDetectionTest, UnreadControlRegisterCountsAsZero)
{
    registers().poke<std::uint32_t>(GetParam().control, 0xa0000010);
    setResult("vekRegReadLong", INT_MIN);
    EXPECT_EQ(call(doZV, "zv start " + id()), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(controlRead(), controlWrite("0x1"), "wait(100000)", widthRead(), heightRead()));
}

INSTANTIATE_TEST_SUITE_P(All, ZoomVideoDetectionTest,
                         ::testing::Values(Port{0, 0x100c0, 0x100cc, 0x100ce}, Port{1, 0x100d0, 0x100dc, 0x100de},
                                           Port{2, 0x100d0, 0x100dc, 0x100de},
                                           Port{INT_MAX, 0x100d0, 0x100dc, 0x100de}),
                         [](const auto& test) { return "Port" + std::to_string(test.param.id); });

// ---- Stop, restart and info

TEST_F(ZoomVideoTest, StopsAndRestarts)
{
    EXPECT_EQ(call(doZV, "zv stop 1 2"), Outcome{});
    EXPECT_EQ(call(doZV, "zv restart 0 2"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStop(1)", "vekZoomVideoRestart(0)"));
}

TEST_F(ZoomVideoTest, InfoShowsTenValues)
{
    outputs().zoom_video = {10, 20, 720, 576, 4, 1, 2, 3, 768, 600};
    EXPECT_EQ(call(doZV, "zv info 1 2"),
              (Outcome{0,
                       "Zoom video [1]: X=10 Y=20 W=720 H=576 CutLeft=4 ZoomW=1 ZoomH=2 Connector=3 CameraW=768 "
                       "CameraH=600\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoGetParm(1)"));
}

TEST_F(ZoomVideoTest, InfoShowsSignedNumbers)
{
    outputs().zoom_video = {INT_MIN, -1, -2, -3, -4, -5, -6, -7, -8, INT_MAX};
    EXPECT_EQ(call(doZV, "zv info 2147483647"),
              (Outcome{0,
                       "Zoom video [2147483647]: X=-2147483648 Y=-1 W=-2 H=-3 CutLeft=-4 ZoomW=-5 ZoomH=-6 "
                       "Connector=-7 CameraW=-8 CameraH=2147483647\n"}));
}

TEST_F(ZoomVideoTest, InfoIsShownWhateverTheResult)
{
    outputs().zoom_video = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const std::string filled =
        "Zoom video [0]: X=1 Y=2 W=3 H=4 CutLeft=5 ZoomW=6 ZoomH=7 Connector=8 CameraW=9 CameraH=10\n";
    const std::string zeroed =
        "Zoom video [0]: X=0 Y=0 W=0 H=0 CutLeft=0 ZoomW=0 ZoomH=0 Connector=0 CameraW=0 CameraH=0\n";
    for (const int code : kFailures) {
        setResult("vekZoomVideoGetParm", 0);
        EXPECT_EQ(call(doZV, "zv info 0"), (Outcome{0, filled}));
        // The library delivers the values unless its result is negative.
        setResult("vekZoomVideoGetParm", code);
        EXPECT_EQ(call(doZV, "zv info 0"), (Outcome{0, code < 0 ? zeroed : filled})) << code;
    }
}

TEST_F(ZoomVideoTest, ResultsAreNotLookedAt)
{
    for (const int code : kFailures) {
        for (const char* function :
             {"vekZoomVideoInit", "vekZoomVideoStart", "vekZoomVideoStop", "vekZoomVideoRestart"}) {
            setResult(function, code);
        }
        for (const char* text : {"zv init 0", "zv start 0 1 1", "zv stop 0", "zv restart 0"}) {
            EXPECT_EQ(call(doZV, text), Outcome{}) << text << ' ' << code;
        }
    }
}

// ---- The remembered port

/** A sub-command with what stands behind its id, and the call that it makes for a port. */
struct SubCommand {
    std::string word;
    std::string rest;
    std::string function;
    std::string arguments; /**< behind the id */

    std::string callFor(const std::string& id) const { return function + '(' + id + arguments + ')'; }
};

const SubCommand kSubCommands[] = {
    {"init", " 1 0 1", "vekZoomVideoInit", ", 1, 0, 1"},
    {"start", " 3 4", "vekZoomVideoStart", ", 0, 0, 3, 4, 0, 0, 0, 0"},
    {"stop", "", "vekZoomVideoStop", ""},
    {"restart", "", "vekZoomVideoRestart", ""},
    {"info", "", "vekZoomVideoGetParm", ""},
};

class ZoomVideoIdTest : public ZoomVideoTest, public ::testing::WithParamInterface<SubCommand>
{
protected:
    Outcome run(const std::string& id) const
    {
        return call(doZV, "zv " + GetParam().word + ' ' + id + GetParam().rest);
    }
};

TEST_P(ZoomVideoIdTest, IsRememberedForEverySubCommandWithoutOne)
{
    EXPECT_EQ(run("5").status, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().callFor("5")));
    EXPECT_EQ(call(doZV, "zv init"), Outcome{});
    EXPECT_EQ(call(doZV, "zv stop ,\t"), Outcome{});
    EXPECT_EQ(call(doZV, "zv restart"), Outcome{});
    EXPECT_EQ(call(doZV, "zv info"),
              (Outcome{0,
                       "Zoom video [5]: X=0 Y=0 W=0 H=0 CutLeft=0 ZoomW=0 ZoomH=0 Connector=0 CameraW=0 "
                       "CameraH=0\n"}));
    EXPECT_EQ(call(doZV, "zv start"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekZoomVideoInit(5, 0, 0, 0)", "vekZoomVideoStop(5)", "vekZoomVideoRestart(5)",
                            "vekZoomVideoGetParm(5)", "vekRegReadLong(0x100d0)", "vekRegWriteLong(0x100d0, 0x1)",
                            "wait(100000)", "vekRegReadWord(0x100dc)", "vekRegReadWord(0x100de)"));
}

TEST_P(ZoomVideoIdTest, NegativeOneIsRememberedAndRefused)
{
    for (const char* id : {"-1", "-01", "-2147483648"}) {
        call(doZV, "zv stop 1");
        takeDeviceCalls();
        EXPECT_EQ(run(id), Outcome{-2}) << id;
        for (const SubCommand& other : kSubCommands) {
            EXPECT_EQ(call(doZV, "zv " + other.word), Outcome{-2}) << id << ' ' << other.word;
        }
        EXPECT_THAT(takeDeviceCalls(), IsEmpty()) << id;
    }
    EXPECT_EQ(run("0").status, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(GetParam().callFor("0")));
}

INSTANTIATE_TEST_SUITE_P(All, ZoomVideoIdTest, ::testing::ValuesIn(kSubCommands),
                         [](const auto& test) { return test.param.word; });

TEST_F(ZoomVideoTest, UnknownSubCommandsLeaveTheRememberedPort)
{
    call(doZV, "zv foo 3");
    call(doZV, "zv init 4");
    call(doZV, "zv foo -1");
    call(doZV, "zv");
    takeDeviceCalls();
    EXPECT_EQ(call(doZV, "zv stop"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStop(4)"));
}

TEST_F(ZoomVideoTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doZV, "zv stop 1", 1), Outcome{});
    EXPECT_EQ(call(doZV, "zv", 1), (Outcome{-2, kUnknownLine}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStop(1)"));
}

TEST_F(ZoomVideoTest, LineRunsOverEveryPathAndIsNotRepeated)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("zv restart 1"), Outcome{}) << mode;
        EXPECT_EQ(runLine(""), Outcome{}) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoRestart(1)")) << mode;
    }
}

}  // namespace
}  // namespace console_test
