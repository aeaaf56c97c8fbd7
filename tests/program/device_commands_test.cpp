// The commands of the card's devices with the simulated card behind them: handlers, drivers and models together.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "program_support.h"

namespace program_test
{
namespace
{

using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const std::string kStartLine = "enter command line with /dev/vekrw for QZ201!\n";
const std::string kBadArgumentLine = "Invalid argument. Use help or ? for command info\n";

class DeviceCommands : public ::testing::Test
{
protected:
    /** What a command line prints behind the start-up line. */
    std::string outputOf(const std::string& commands) const
    {
        const child_process::Result result = runOnCard({"--cmd", commands}, folder.path());
        EXPECT_EQ(result.exitStatus, 0) << commands;
        EXPECT_EQ(result.error, "") << commands;
        EXPECT_THAT(result.output, StartsWith(kStartLine)) << commands;
        return result.output.substr(std::min(result.output.size(), kStartLine.size()));
    }

    TemporaryFolder folder;
};

/** The bytes that the lines led by "L: " or "data: " hold. */
std::vector<int> bytesOfMcu(const std::string& output)
{
    std::vector<int> bytes;
    std::istringstream words(output);
    for (std::string word; words >> word;) {
        if (word.starts_with("0x")) {
            bytes.push_back(std::stoi(word, nullptr, 16));
        }
    }
    return bytes;
}

/** The bytes that a dump shows between its labels and its characters. */
std::vector<int> bytesOfDump(const std::string& output)
{
    std::vector<int> bytes;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream digits(line.substr(10, 48));
        for (std::string byte; digits >> byte;) {
            bytes.push_back(std::stoi(byte, nullptr, 16));
        }
    }
    return bytes;
}

TEST_F(DeviceCommands, TheMcuSeesTheSameEdidAsTheAuxChannel)
{
    const std::string throughMcu = outputOf("mcu i2c rs");
    const std::vector<int> edid = bytesOfDump(outputOf("dp 0 i2c rs 0 80"));
    ASSERT_EQ(edid.size(), 128U);
    EXPECT_EQ(bytesOfMcu(throughMcu), edid);
    EXPECT_THAT(throughMcu, EndsWith("checksum correct\n"));
    EXPECT_THAT(outputOf("dp 0 ddc"), HasSubstr("Manufacturer: TVA"));
}

TEST_F(DeviceCommands, TheMcuSeesTheSameDpcdAsTheAuxChannel)
{
    const std::vector<int> capabilities = bytesOfDump(outputOf("dp 0 aux rs 0 10"));
    ASSERT_EQ(capabilities.size(), 16U);
    const std::string throughMcu = outputOf("mcu aux rs 0 f");
    EXPECT_THAT(throughMcu, StartsWith("Catch data num: 16\n\ndata: 0x"));
    EXPECT_EQ(bytesOfMcu(throughMcu), capabilities);
    EXPECT_EQ(outputOf("mcu aux w 600 2;dp 0 aux r 600"), "aux write [600] with 02 done\n00000600: 02\n");
}

TEST_F(DeviceCommands, AMcuInResetStartsAgainWithTheRequest)
{
    EXPECT_EQ(outputOf("rwl 308068 ffffff00;rrl 3ff00;mcu aux r 0;rrl 3ff00"),
              "0003ff00: 00000000\n00000000: 12\n0003ff00: deadbeef\n");
}

TEST_F(DeviceCommands, ATrainedLinkShowsInTheLaneStatus)
{
    EXPECT_THAT(outputOf("dp 0 aux rs 202 3"), HasSubstr("00000202: 00 00 00"));
    EXPECT_THAT(outputOf("dp 0 init;dp 0 train;dp 0 aux rs 202 3"), HasSubstr("00000202: 77 77 01"));
}

TEST_F(DeviceCommands, ReadOnlyFieldsOfTheSinkAreRefused)
{
    EXPECT_EQ(outputOf("dp 0 aux w 0 1;dp 0 aux r 0"), "aux write [0] with 01 error\n00000000: 12\n");
}

TEST_F(DeviceCommands, RoutingFollowsItsRegister)
{
    EXPECT_THAT(outputOf("crtc output"), HasSubstr("CRTC-0 -> HDMI-0\n"));
    const std::string swapped = outputOf("rwl 24 9;crtc output;crtc 1 mode;crtc 0 mode");
    EXPECT_THAT(swapped, HasSubstr("CRTC-1 -> HDMI-0\n"));
    EXPECT_THAT(swapped, HasSubstr("CRTC-1:\n clock = 148500kHz \n hdisplay = 1920 \n"));
    EXPECT_THAT(swapped, HasSubstr("CRTC-0:\n clock = 0kHz \n hdisplay = 0 \n"));
}

TEST_F(DeviceCommands, ARefusedGammaSettingIsOneLineOnStandardError)
{
    EXPECT_EQ(outputOf("crtc gamma 0 ga 1.0:0.9:0.8 ct 5000"), "");
    const child_process::Result result = runOnCard({"--cmd", "crtc gamma 0 br 1.5"}, folder.path());
    EXPECT_EQ(result.output, kStartLine);
    EXPECT_THAT(result.error, MatchesRegex("[^\n]+\n"));
}

TEST_F(DeviceCommands, ZoomVideoMeasuresTheIncomingPicture)
{
    EXPECT_EQ(outputOf("zv init 0;zv start 0;zv info"),
              "Zoom video [0]: X=0 Y=0 W=720 H=576 CutLeft=0 ZoomW=0 ZoomH=0 Connector=0 CameraW=720 CameraH=576\n");
    EXPECT_EQ(outputOf("zv start 1"), kBadArgumentLine);
}

TEST_F(DeviceCommands, AnImageComesBackFromTheFlashAsItWentIn)
{
    std::string image(0x21000, '\0');
    for (std::size_t i = 0; i < image.size(); ++i) {
        image[i] = static_cast<char>(i * 2654435761U >> 24);
    }
    folder.writeFile("image", image);
    const std::string output = outputOf("spi program ff80 image;spi read ff80 21000 back;spi read ff70 10");
    EXPECT_EQ(folder.readFile("back"), image);
    EXPECT_THAT(output, HasSubstr("...\n0000ff70: ff ff ff ff"));
}

TEST_F(DeviceCommands, AProtectedFlashKeepsItsContents)
{
    folder.writeFile("image", "1234");
    EXPECT_EQ(bytesOfDump(outputOf("spi prot;spi program 0 image;spi read 0 4")), std::vector<int>(4, 0xff));
    EXPECT_EQ(bytesOfDump(outputOf("spi prot;spi unprot;spi program 0 image;spi read 0 4")),
              (std::vector<int>{0x31, 0x32, 0x33, 0x34}));
    EXPECT_EQ(bytesOfDump(outputOf("spi program 0 image;spi erase 1 1;spi read 0 4")), std::vector<int>(4, 0xff));
}

TEST_F(DeviceCommands, SensorsReadWhatADieCanHave)
{
    EXPECT_THAT(outputOf("temp"), MatchesRegex("Sensor 0 temprature: [2-9][0-9]\\.[0-9]{2}C\n"
                                               "Sensor 1 temprature: [2-9][0-9]\\.[0-9]{2}C\n"));
    EXPECT_THAT(outputOf("volt"), MatchesRegex("Sensor 0 voltage: 0\\.[0-9]{3}V\nSensor 1 voltage: 0\\.[0-9]{3}V\n"));
    EXPECT_THAT(outputOf("process"), ContainsRegex("Sensor1 ULVT Process data: [0-9]+\n"));
}

TEST_F(DeviceCommands, PowerMonitorsMeasureTheBoard)
{
    EXPECT_THAT(outputOf("ltc2991 1 0 0"), StartsWith("v1=3.3"));
    EXPECT_THAT(outputOf("ltc2990 1 0 7"), StartsWith("v1=0.9"));
    EXPECT_THAT(outputOf("ina3221 2 3 5"), MatchesRegex("v1=1[0-9]{4}\\.000mv\tv2=1[0-9]{4}\\.000mv\n"
                                                        "current1=[0-9.]+A\tcurrent2=[0-9.]+A\n"));
    EXPECT_EQ(outputOf("ltc2990 1 0 6"), "LTC2990: 1:0 get current error (-22)\n");
    EXPECT_EQ(outputOf("ltc2990 1 1 7"), "LTC2990: 1:1 get voltage error (-6)\n");
}

TEST_F(DeviceCommands, PowerStatesMoveTheClocks)
{
    EXPECT_EQ(outputOf("power;clk 3d;power 2;clk 3d;power;power 0;clk 3d"),
              "current power state: performance\n3d frequency: 1000MHz\ncurrent power state: standby\n"
              "3d frequency: 0MHz\ncurrent power state: standby\ncurrent power state: performance\n"
              "3d frequency: 1000MHz\n");
}

TEST_F(DeviceCommands, ClocksAreSetAndSwitched)
{
    EXPECT_EQ(outputOf("clk 3d 500;clk off 5;clk 3d;clk bypass 5;clk 3d;clk on 5;clk 3d"),
              "new 3d core frequency: 500MHz\n3d frequency: 0MHz\n3d frequency: 27MHz\n3d frequency: 500MHz\n");
    EXPECT_EQ(outputOf("clk 2d 9999;clk 2d"),
              "the input 2d frequency out of range, please set again\n2d frequency: 600MHz\n");
}

TEST_F(DeviceCommands, FeatureSwitchesAreListedUntilTheyAreClosed)
{
    EXPECT_THAT(outputOf("func 3d rvt_gl_trace;func texture;func on"),
                ContainsRegex("RVT_GL_TRACE on\n(.*\n)*.*RVT_GL_TRACE on\n"));
    EXPECT_THAT(outputOf("func texture;func close;func on"), EndsWith("func: no function is open\n"));
}

TEST_F(DeviceCommands, EachCardKeepsItsOwnState)
{
    EXPECT_EQ(outputOf("rwl 2000 11;card 1;rrl 2000;rwl 2000 22;clk 3d 400;card 0;rrl 2000;clk 3d;card 1;rrl 2000"),
              "set card index: 1\n00002000: 00000000\nnew 3d core frequency: 400MHz\nset card index: 0\n"
              "00002000: 00000011\n3d frequency: 1000MHz\nset card index: 1\n00002000: 00000022\n");
    EXPECT_EQ(outputOf("card;card 2"),
              "current card index: 0\ncard index 2 is out of range [0, 2). current card index: 0\n" + kBadArgumentLine);
}

TEST_F(DeviceCommands, QueriesFollowTheCard)
{
    EXPECT_EQ(outputOf("clk 2d 300;query 2d"), "new 2d frequency: 300MHz\n2d: 300 MHz\n");
    EXPECT_EQ(outputOf("query nothing"), kBadArgumentLine);
    EXPECT_NE(outputOf("query vram"), outputOf("zv init 0;zv start 0;query vram"));
    EXPECT_THAT(outputOf("version"), MatchesRegex("[1-9][0-9]*\\.[0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_THAT(outputOf("dump vramfree"), HasSubstr("KB free\n"));
}

TEST_F(DeviceCommands, TheMonitorsCountsAreCompleteLinesOfACsvFile)
{
    outputOf("monitor start;monitor final");
    std::istringstream lines(folder.readFile("axiMonitorData"));
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(line, "time,master,reads,writes,bytes,latency");
    int rows = 0;
    while (std::getline(lines, line)) {
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 5) << line;
        ++rows;
    }
    EXPECT_GT(rows, 10);
    EXPECT_EQ(folder.readFile("axiMonitorData").back(), '\n');
}

// What a wait without an end shows is there although the program is ended.
TEST_F(DeviceCommands, OutputToAFileIsCompleteWhenTheWaitForTheMcuIsBrokenOff)
{
    // The request resets the microcontroller and waits a second, more than enough to end the program.
    const child_process::Result result = child_process::run(
        {.arguments = {"/bin/sh", "-c",
                       R"("$0" --cmd "rrl 2000;rwl 308068 ffffff00;mcu aux r 0" > log & )"
                       R"(while ! grep -q 00002000 log; do kill -0 $! || exit 1; done; kill -TERM $!; wait; cat log)",
                       programPath()},
         .folder = folder.path().string()});
    EXPECT_EQ(result.output, kStartLine + "00002000: 00000000\n");
}

}  // namespace
}  // namespace program_test
