// The cards that come of a description, as the console shows them.

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "board_process.h"
#include "child_process.h"
#include "gmock/gmock.h"
#include "program_support.h"

namespace
{

using child_process::Result;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kStart = "enter command line with /dev/vekrw for QZ201!\n";
const std::string kCard = "[[card]]\nchip = \"QZ201\"\n";

class DescribedCardTest : public ::testing::Test
{
protected:
    Result run(const std::string& description, const std::string& commands, std::vector<std::string> options = {},
               std::chrono::milliseconds timeout = child_process::kTimeout)
    {
        folder.writeFile("cards.toml", description);
        std::vector<std::string> arguments{program_test::programPath()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), {"--cmd", commands});
        return child_process::run(
            {.arguments = arguments, .environment = variables, .folder = folder.path(), .timeout = timeout});
    }

    /// What the commands print on card 0.
    std::string outputOf(const std::string& description, const std::string& commands)
    {
        const Result result = run(description, commands);
        EXPECT_EQ(result.exitStatus, 0) << commands;
        EXPECT_EQ(result.error, "") << commands;
        EXPECT_THAT(result.output, StartsWith(kStart)) << commands;
        return result.output.substr(std::min(kStart.size(), result.output.size()));
    }

    program_test::TemporaryFolder folder;
    program_test::Variables variables{{"VEK_CARD_DESCRIPTION", "cards.toml"}};
};

TEST_F(DescribedCardTest, BuiltInDescriptionBehavesAsTheBuiltInCards)
{
    const std::string description = child_process::run({.arguments = {VEK_DESCRIBE}}).output;
    for (const std::string commands : {"query;ddc 0;ddc 1;ddc 3;dp 0 ddc;dp 1 ddc", "ltc2990 1 0 7;ltc2991 1 0 0;temp",
                                       "ina3221 2 3 5;spi read 0 40", "card 1;query;ddc 0;dp 0 ddc;temp"}) {
        const Result described = run(description, commands);
        const Result builtIn = child_process::run(
            {.arguments = {program_test::programPath(), "--cmd", commands}, .folder = folder.path()});
        EXPECT_EQ(described.output, builtIn.output);
        EXPECT_EQ(described.error, builtIn.error);
    }
}

TEST_F(DescribedCardTest, ThereAreAsManyCardsAsAreDescribed)
{
    const std::string cards = kCard + kCard + "[[card]]\nchip = \"QZ202\"\nvideo_memory_mib = 256\n";
    EXPECT_EQ(outputOf(cards, "query card;card 2;card;card 3"),
              "cards: 3\nset card index: 2\ncurrent card index: 2\n"
              "card index 3 is out of range [0, 3). current card index: 2\n"
              "Invalid argument. Use help or ? for command info\n");
    EXPECT_THAT(run(cards, "vram", {"--card", "2"}).output,
                StartsWith("enter command line with /dev/vekrw for QZ202!\n"));
    EXPECT_THAT(run(cards, "", {"--card", "3"}).output, StartsWith("Open /dev/tovira device error\n"));
    EXPECT_THAT(run(kCard, "", {"--card", "1"}).output, StartsWith("Open /dev/tovira device error\n"));
}

TEST_F(DescribedCardTest, VideoMemoryHasTheSizeDescribed)
{
    EXPECT_EQ(outputOf(kCard + "video_memory_mib = 64\n", "vwl 3fffffc 12345678;vrl 3fffffc;vrl 4000000"),
              "03fffffc: 12345678\n04000000: ffffffff\n");
}

TEST_F(DescribedCardTest, DeadSensorsFail)
{
    const std::string card = kCard + "[card.sensors]\ndead_temperatures = [1]\ndead_voltages = [0]\n";
    EXPECT_THAT(outputOf(card, "temp"),
                AllOf(StartsWith("Sensor 0 temprature: "), HasSubstr("\nSensor 1: get temprature failed\n")));
    EXPECT_THAT(outputOf(card, "volt 0"), StartsWith("Sensor 0 get voltage failed\n"));
    EXPECT_THAT(outputOf(card, "volt 1"), StartsWith("Sensor 1 voltage: "));
}

TEST_F(DescribedCardTest, AFanThatStandsStillLetsTheDieGetHotter)
{
    const auto celsius = [this](const std::string& card) {
        return std::stod(outputOf(card, "temp 0").substr(std::string("Sensor 0 temprature: ").size()));
    };
    EXPECT_GT(celsius(kCard + "fan.turns = false\n"), celsius(kCard) + 10);
}

const std::string kDp0 = kCard + "[[card.monitor]]\noutput = \"DP-0\"\nmodel = \"Vista 27Q\"\n";

TEST_F(DescribedCardTest, SinksThatDeferOrKeepSilentFail)
{
    for (const std::string manner : {"defers", "silent", "refuses"}) {
        const std::string card = kDp0 + "aux = \"" + manner + "\"\n";
        EXPECT_THAT(outputOf(card, "dp 0 ddc"), StartsWith("dp 0 get edid failed with err=-")) << manner;
        EXPECT_EQ(outputOf(card, "dp 0 aux r 600;mcu i2c rs"), "aux read [600] error\nNothing is get\n") << manner;
    }
}

TEST_F(DescribedCardTest, SinksThatDeferAFewTimesServeThen)
{
    EXPECT_EQ(outputOf(kDp0 + "deferrals = 2\n", "dp 0 aux r 0;dp 0 aux r 1"), "00000000: 12\n00000001: 14\n");
    EXPECT_EQ(outputOf(kDp0 + "deferrals = 100\n", "dp 0 aux r 0"), "aux read [0] error\n");
}

TEST_F(DescribedCardTest, MonitorsWithoutAnEdidAreSeenAllTheSame)
{
    const std::string card =
        kCard + "[[card.monitor]]\noutput = \"HDMI-0\"\nmodel = \"Vista 24H\"\nedid_answers = false\n";
    EXPECT_EQ(outputOf(card, "ddc 0"), "DDC 0 get edid failed with err=-6\n");
}

TEST_F(DescribedCardTest, ShowsAnEdidOfOnesOwn)
{
    const std::string card = kCard + "[[card.monitor]]\noutput = \"VGA\"\nedid = \"own.bin\"\n";
    const Result saved =
        child_process::run({.arguments = {program_test::programPath(), "--cmd", "ddc 3"}, .folder = folder.path()});
    ASSERT_THAT(saved.output, HasSubstr("Desk 19S"));
    folder.writeFile("own.bin", std::string(128, '\0'));
    EXPECT_THAT(outputOf(card, "ddc 3"), Not(HasSubstr("Desk 19S")));
}

TEST_F(DescribedCardTest, AnMcuWithoutFirmwareNeverAnswers)
{
    const Result result = run(kDp0 + "[card.mcu]\nstate = \"no-firmware\"\n", "rrl 3ff00;mcu aux r 0", {},
                              std::chrono::milliseconds(1500));
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(outputOf(kDp0 + "[card.mcu]\nstate = \"no-firmware\"\n", "rrl 3ff00"), "0003ff00: 00000000\n");
}

TEST_F(DescribedCardTest, AnMcuHeldInResetIsLetGo)
{
    EXPECT_EQ(outputOf(kDp0 + "[card.mcu]\nstate = \"held-in-reset\"\n", "rrl 3ff00;mcu aux r 0;rrl 3ff00"),
              "0003ff00: 00000000\n00000000: 12\n0003ff00: deadbeef\n");
}

TEST_F(DescribedCardTest, DeadChipsDoNotAnswer)
{
    const std::string monitor =
        "[[card.i2c]]\nchip = \"LTC2990\"\nchannel = 1\naddress = 0x4d\n"
        "rails = [{ volts = 1.25, amperes = 2, milliohms = 5 }]\n";
    EXPECT_THAT(outputOf(kCard + monitor, "ltc2990 1 1 7"), StartsWith("v1=1.25"));
    EXPECT_EQ(outputOf(kCard + monitor, "ltc2990 1 0 7"), "LTC2990: 1:0 get voltage error (-6)\n");
    EXPECT_EQ(outputOf(kCard + monitor + "answers = false\n", "ltc2990 1 1 7"),
              "LTC2990: 1:1 get voltage error (-6)\n");
}

std::string stuck(const std::string& memory, const std::string& address, int bit, int value)
{
    return "[[card.stuck_bit]]\nmemory = \"" + memory + "\"\naddress = " + address + "\nbit = " + std::to_string(bit) +
           "\nvalue = " + std::to_string(value) + "\n";
}

TEST_F(DescribedCardTest, BitsStickInTheRegisterRegion)
{
    const std::string card = kCard + stuck("registers", "0x1001", 3, 1) + stuck("registers", "0x1000", 0, 0);
    EXPECT_EQ(outputOf(card, "rwl 1000 ffffffff;rrl 1000;rwl 1000 0;rrl 1000;rrb 1001;rrls ffc 2;arl 1001000"),
              "00001000: fffffffe\n00001000: 00000800\n00001001: 08\n00000ffc: 00000000 00000800\n"
              "01001000: 00000800\n");
}

TEST_F(DescribedCardTest, BitsStickInADevicesRegisters)
{
    // The top bit of a reading of the sensor unit tells that it is valid.
    EXPECT_THAT(outputOf(kCard + stuck("registers", "0x30a013", 7, 0), "temp 0"),
                StartsWith("Sensor 0: get temprature failed\n"));
}

TEST_F(DescribedCardTest, BitsStickInVideoMemory)
{
    const std::string card = kCard + stuck("video-memory", "0x2002", 0, 0);
    EXPECT_EQ(outputOf(card, "vwl 2000 ffffffff;vrl 2000;vrls 1ffe 2;arl 40002000"),
              "00002000: fffeffff\n00001ffe: ffff0000 0000fffe                    |........|\n\n40002000: fffeffff\n");
}

TEST_F(DescribedCardTest, FlashComesWithItsImage)
{
    folder.writeFile("image.bin", "ABCDEFGH");
    const std::string card = kCard + "flash.image = \"image.bin\"\n";
    EXPECT_THAT(outputOf(card, "spi read 0 c"), StartsWith("00000000: 41 42 43 44 45 46 47 48 ff ff ff ff"));
    EXPECT_THAT(outputOf(card, "spi erase 0 1;spi read 0 4"), StartsWith("00000000: ff ff ff ff"));
    EXPECT_THAT(outputOf(card + stuck("flash", "1", 0, 1), "spi read 0 4"), StartsWith("00000000: 41 43 43 44"));
}

TEST_F(DescribedCardTest, AMistakeOpensNothingAndIsToldInOneLine)
{
    const Result result = run("[[card]]\nchip = \"QZ203\"\nboards = 1\n", "temp");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "cards.toml:2: card.chip: has to be \"QZ201\" or \"QZ202\", not \"QZ203\"\n");
    EXPECT_THAT(result.output, StartsWith("Open /dev/tovira device error\n"));
}

TEST_F(DescribedCardTest, ABoardServesDescribedCards)
{
    folder.writeFile("cards.toml", "[[card]]\n");
    const Result refused = child_process::run({.arguments = {VEK_BOARD, "--pty"},
                                               .environment = {{"VEK_CARD_DESCRIPTION", "cards.toml"}},
                                               .folder = folder.path()});
    EXPECT_EQ(refused.exitStatus, 1);
    EXPECT_EQ(refused.error, "cards.toml:1: card.chip: is missing\n");
    folder.writeFile("cards.toml", kCard);
    const Result missing = child_process::run({.arguments = {VEK_BOARD, "--card", "1"},
                                               .environment = {{"VEK_CARD_DESCRIPTION", "cards.toml"}},
                                               .folder = folder.path()});
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_THAT(missing.error, HasSubstr("there is no such card"));
}

/// Described cards that keep their state.
class KeptDescribedCardTest : public DescribedCardTest
{
protected:
    KeptDescribedCardTest() { variables["VEK_STATE_FOLDER"] = "state"; }

    /// What is said when the state is not that of the card.
    std::string refusalOf(const std::string& description)
    {
        const Result result = run(description, "rrl 2000");
        EXPECT_EQ(result.exitStatus, 1);
        return result.error;
    }
};

TEST_F(KeptDescribedCardTest, GoesOnWithItsState)
{
    folder.writeFile("image.bin", "ABCDEFGH");
    const std::string card = kDp0 +
                             "controller = 2\n[[card.i2c]]\nchip = \"24C02\"\nchannel = 0\naddress = 0x50\n"
                             "[card.flash]\nimage = \"image.bin\"\n" +
                             stuck("registers", "0x2000", 0, 1) + stuck("video-memory", "0x2000", 0, 1) +
                             stuck("flash", "0x1000", 0, 0);
    outputOf(card, "rwl 2000 20;vwl 2000 30;i2c set 0 50;i2c wb 40 5a;dp 0 aux w 101 2;spi erase 0 1000;clk 3d 400");
    EXPECT_EQ(outputOf(card, "rrl 2000;vrl 2000;i2c set 0 50;i2c rb 40;dp 0 aux r 101"),
              "00002000: 00000021\n00002000: 00000031\nSet I2C to channel 0 with device address 0x50 (7-bit)\n"
              "0040: 5a\n00000101: 02\n");
    EXPECT_THAT(outputOf(card, "spi read 0 2"), StartsWith("00000000: ff ff"));
    EXPECT_THAT(outputOf(card, "spi read 1000 2"), StartsWith("00001000: fe ff"));
    EXPECT_THAT(outputOf(card, "clk"), HasSubstr("\n3d frequency: 400MHz\n"));
}

TEST_F(KeptDescribedCardTest, StaysTheSameCardWithOtherMonitorsLoadsAndFaults)
{
    const std::string monitorChip = "[[card.i2c]]\nchip = \"LTC2990\"\nchannel = 1\naddress = 0x4c\n";
    const auto rail = [](const std::string& volts) {
        return "rails = [{ volts = " + volts + ", amperes = 0, milliohms = 5 }]\n";
    };
    const auto hdmi0 = [](const std::string& model) {
        return "[[card.monitor]]\noutput = \"HDMI-0\"\nmodel = \"" + model + "\"\n";
    };
    const std::string dp0 = "[[card.monitor]]\noutput = \"DP-0\"\nmodel = \"Vista 27Q\"\n";
    outputOf(kCard + dp0 + hdmi0("Vista 27U") + monitorChip + rail("1.25"),
             "rwl 2000 20;hdmi 0 edid r;dp 0 aux w 101 2;ltc2990 1 0 7");
    EXPECT_THAT(outputOf(kCard + dp0 + hdmi0("Vista 24H") + "controller = 1\n" + monitorChip + rail("1.75"),
                         "rrl 2000;dp 0 aux r 101;ltc2990 1 0 7;crtc output;hdmi 0 edid r"),
                AllOf(StartsWith("00002000: 00000020\n00000101: 02\nv1=1.7"), HasSubstr("CRTC-1 -> HDMI-0"),
                      HasSubstr("Vista 24H")));
    const std::string broken = kCard + dp0 + "aux = \"silent\"\n" + monitorChip + "answers = false\n" +
                               "[card.mcu]\nstate = \"no-firmware\"\n[card.sensors]\ndead_temperatures = [0]\n";
    EXPECT_EQ(outputOf(broken, "rrl 2000;rrl 3ff00;dp 0 aux r 101;ltc2990 1 0 7;temp 0"),
              "00002000: 00000020\n0003ff00: 00000000\naux read [101] error\nLTC2990: 1:0 get voltage error (-6)\n"
              "Sensor 0: get temprature failed\nInvalid argument. Use help or ? for command info\n");
    EXPECT_EQ(outputOf(kCard + dp0 + hdmi0("Vista 27U") + monitorChip + rail("1.25"), "rrl 2000;rrl 3ff00"),
              "00002000: 00000020\n0003ff00: deadbeef\n");
}

TEST_F(KeptDescribedCardTest, IsRefusedTheStateOfAnotherCard)
{
    const std::string card = kCard + "video_memory_mib = 128\n";
    outputOf(card, "rwl 2000 20");
    const std::string anotherCard = "state/card0/state: is the state of a card of another description\n";
    const std::string chip = "[[card.i2c]]\nchip = \"24C02\"\nchannel = 0\naddress = 0x50\n";
    folder.writeFile("image.bin", "ABCDEFGH");
    for (const std::string& other :
         {kCard, kCard + "video_memory_mib = 256\n",
          std::string("[[card]]\nchip = \"QZ202\"\nvideo_memory_mib = 128\n"), card + "board.name = \"Other\"\n",
          card + chip, card + "flash.image = \"image.bin\"\n"}) {
        EXPECT_EQ(refusalOf(other), anotherCard) << other;
    }
    EXPECT_EQ(outputOf(card, "rrl 2000"), "00002000: 00000020\n") << "it has been left alone";
}

TEST_F(KeptDescribedCardTest, TheBuiltInDescriptionIsThatOfTheBuiltInCards)
{
    const std::string description = child_process::run({.arguments = {VEK_DESCRIBE}}).output;
    for (const std::string card : {"0", "1"}) {
        const Result builtIn = child_process::run({.arguments = {program_test::programPath(), "--card", card, "--cmd",
                                                                 "rwl 2000 2" + card + ";dp 0 aux w 101 2"},
                                                   .environment = {{"VEK_STATE_FOLDER", "state"}},
                                                   .folder = folder.path()});
        EXPECT_EQ(builtIn.exitStatus, 0);
        const Result described = run(description, "rrl 2000;dp 0 aux r 101", {"--card", card});
        EXPECT_THAT(described.output, ::testing::EndsWith("00002000: 0000002" + card + "\n00000101: 02\n"))
            << described.error;
    }
}

TEST_F(KeptDescribedCardTest, IsSharedWithABoardThatServesIt)
{
    const std::string card = kCard + "[[card.i2c]]\nchip = \"24C02\"\nchannel = 2\naddress = 0x57\n";
    outputOf(card, "rwl 2000 20;i2c set 2 57;i2c wb 40 5a");
    setenv("VEK_CARD_DESCRIPTION", (folder.path() / "cards.toml").c_str(), 1);
    setenv("VEK_STATE_FOLDER", (folder.path() / "state").c_str(), 1);
    const BoardProcess board;
    unsetenv("VEK_CARD_DESCRIPTION");
    unsetenv("VEK_STATE_FOLDER");
    const Result served =
        child_process::run({.arguments = {program_test::programPath(), "--tty", board.ttyOption(), "--cmd",
                                          "arl 1002000;awl 1002000 21;i2c set 2 57;i2c rb 40"}});
    EXPECT_THAT(served.output, HasSubstr("01002000: 00000020\n"));
    EXPECT_THAT(served.output, HasSubstr("0040: 5a\n"));
    EXPECT_EQ(outputOf(card, "rrl 2000"), "00002000: 00000021\n");
}

// What loading and reading costs is for those only who name a description.
TEST_F(DescribedCardTest, NothingIsLoadedOrReadWithoutADescription)
{
    if (child_process::run({.arguments = {"strace", "-o", "/dev/null", "true"}}).exitStatus != 0) {
        GTEST_SKIP() << "this system does not let strace trace";
    }
    folder.writeFile("cards.toml", kCard);
    const auto filesOf = [&](program_test::Variables environment) {
        // A leak sanitizer does not work while it is traced.
        environment["ASAN_OPTIONS"] = "detect_leaks=0";
        const Result result = child_process::run({.arguments = {"strace", "-f", "-e", "trace=%file", "-o", "trace",
                                                                program_test::programPath(), "--cmd", "rrb 0"},
                                                  .environment = environment,
                                                  .folder = folder.path()});
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        return folder.readFile("trace");
    };
    const auto nameOfDescription = HasSubstr("\"cards.toml\"");
    const auto nameOfReader = HasSubstr("libvek_description.so");
    EXPECT_THAT(filesOf(variables), AllOf(nameOfReader, nameOfDescription));
    EXPECT_THAT(filesOf({}), AllOf(HasSubstr("libutil_vek.so"), Not(nameOfReader), Not(nameOfDescription)));
}

TEST_F(DescribedCardTest, AnEmptyNameIsNone)
{
    const Result result = child_process::run({.arguments = {program_test::programPath(), "--cmd", "query card"},
                                              .environment = {{"VEK_CARD_DESCRIPTION", ""}}});
    EXPECT_EQ(result.output, kStart + "cards: 2\n");
}

}  // namespace
