// The reader of card descriptions, the built-in description, and the document that explains them.

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "card/builtin_cards.h"
#include "child_process.h"
#include "description/reader.h"
#include "gmock/gmock.h"
#include "program_support.h"
#include "vek.h"

namespace vek
{
namespace
{

using child_process::Result;
using program_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string kCard = "[[card]]\nchip = \"QZ201\"\n";

class DescriptionTest : public ::testing::Test
{
protected:
    /// Reads a description; mistakes and warnings come without the folder's name.
    int read(const std::string& text)
    {
        folder.writeFile("cards.toml", text);
        return readFile("cards.toml");
    }

    int readFile(const std::string& name)
    {
        cards = std::make_unique<DescribedCards>();
        mistakes.clear();
        warnings.clear();
        const DescriptionListener listener{.tell = listen, .context = this};
        return vekReadCardDescription((folder.path() / name).c_str(), cards.get(), sizeof *cards, &listener);
    }

    const CardFacts& first() const { return cards->cards[0].facts; }

    TemporaryFolder folder;
    std::unique_ptr<DescribedCards> cards;
    std::vector<std::string> mistakes;
    std::vector<std::string> warnings;

private:
    static void listen(void* context, bool warning, const char* line)
    {
        auto& self = *static_cast<DescriptionTest*>(context);
        std::string text = line;
        const std::string prefix = self.folder.path().string() + "/";
        EXPECT_THAT(text, StartsWith(prefix));
        (warning ? self.warnings : self.mistakes).push_back(text.substr(prefix.size()));
    }
};

void expectSameSink(const DpSinkFacts& found, const DpSinkFacts& wanted)
{
    EXPECT_EQ(found.revision, wanted.revision);
    EXPECT_EQ(found.maxRate, wanted.maxRate);
    EXPECT_EQ(found.maxLanes, wanted.maxLanes);
    EXPECT_EQ(found.trainingPattern3, wanted.trainingPattern3);
    EXPECT_EQ(found.panel, wanted.panel);
    EXPECT_EQ(found.cableRate, wanted.cableRate);
    EXPECT_EQ(found.swing, wanted.swing);
    EXPECT_EQ(found.preEmphasis, wanted.preEmphasis);
    EXPECT_EQ(found.oui, wanted.oui);
    EXPECT_EQ(found.name, wanted.name);
    EXPECT_THAT(found.edid, ElementsAreArray(wanted.edid));
    EXPECT_EQ(found.manner, wanted.manner);
    EXPECT_EQ(found.deferrals, wanted.deferrals);
}

void expectSameCard(const CardFacts& found, const CardFacts& wanted)
{
    EXPECT_EQ(found.chip.deviceId, wanted.chip.deviceId);
    EXPECT_EQ(found.chip.videoMemorySize, wanted.chip.videoMemorySize);
    EXPECT_EQ(found.board.chip, wanted.board.chip);
    EXPECT_EQ(found.board.revision, wanted.board.revision);
    EXPECT_EQ(found.board.ddcChannels, wanted.board.ddcChannels);
    EXPECT_EQ(found.board.name, wanted.board.name);
    EXPECT_EQ(found.board.serial, wanted.board.serial);
    EXPECT_TRUE(found.chips == wanted.chips);
    for (std::size_t channel = 0; channel < found.monitors.size(); ++channel) {
        EXPECT_EQ(found.monitors[channel].attached, wanted.monitors[channel].attached) << channel;
        EXPECT_THAT(found.monitors[channel].edid, ElementsAreArray(wanted.monitors[channel].edid)) << channel;
    }
    for (std::size_t output = 0; output < found.sinks.size(); ++output) {
        expectSameSink(found.sinks[output], wanted.sinks[output]);
    }
    EXPECT_EQ(found.routing, wanted.routing);
    EXPECT_EQ(found.mcu, wanted.mcu);
    EXPECT_TRUE(found.sensors == wanted.sensors);
    EXPECT_EQ(found.fanTurns, wanted.fanTurns);
    EXPECT_THAT(found.flashImage, IsEmpty());
    EXPECT_EQ(found.stuckBits.size(), 0U);
    EXPECT_EQ(fingerprintOf(found), fingerprintOf(wanted));
}

TEST_F(DescriptionTest, ThePrintedDescriptionIsThatOfTheBuiltInCards)
{
    const Result printed = child_process::run({.arguments = {VEK_DESCRIBE}});
    ASSERT_EQ(printed.exitStatus, 0);
    ASSERT_EQ(read(printed.output), VEK_OK) << ::testing::PrintToString(mistakes);
    EXPECT_THAT(warnings, IsEmpty());
    ASSERT_EQ(cards->count, 2U);
    expectSameCard(cards->cards[0].facts, kFirstBuiltinCard);
    expectSameCard(cards->cards[1].facts, kSecondBuiltinCard);
}

TEST_F(DescriptionTest, WhatThePrintedDescriptionOffersToBreakCanBeBroken)
{
    const std::string text = child_process::run({.arguments = {VEK_DESCRIBE}}).output;
    folder.writeFile("flash.bin", "image");
    const std::string broken = std::regex_replace(text, std::regex("(^|\n)# (?=\\[|[a-z_]+ = )"), "$1");
    ASSERT_NE(broken, text);
    ASSERT_EQ(read(broken), VEK_OK) << ::testing::PrintToString(mistakes);
    EXPECT_EQ(first().mcu, McuCondition::kNoFirmware);
    EXPECT_FALSE(first().fanTurns);
    EXPECT_EQ(first().sensors.temperatures, 2);
    EXPECT_EQ(first().stuckBits.size(), 1U);
    EXPECT_EQ(first().flashImage.size(), 5U);
}

TEST_F(DescriptionTest, ACardIsNothingButItsChipUnlessMoreIsSaid)
{
    ASSERT_EQ(read("[[card]]\nchip = \"QZ202\"\n"), VEK_OK);
    ASSERT_EQ(cards->count, 1U);
    EXPECT_EQ(first().chip.deviceId, kQz202.deviceId);
    EXPECT_EQ(first().chip.videoMemorySize, kQz202.videoMemorySize);
    EXPECT_EQ(first().board.name, "");
    EXPECT_TRUE(first().chips == BoardChips{});
    EXPECT_FALSE(first().monitors[0].attached);
    EXPECT_FALSE(first().sinks[0].attached());
    EXPECT_EQ(first().routing, 0U);
}

/// A key, and what it makes of the card.
struct Key {
    std::string text;
    std::function<bool(const CardFacts&)> taken;
};

class KeyTest : public DescriptionTest, public ::testing::WithParamInterface<Key>
{
};

TEST_P(KeyTest, IsTaken)
{
    folder.writeFile("flash.bin", "image");
    ASSERT_EQ(read(kCard + GetParam().text), VEK_OK) << ::testing::PrintToString(mistakes);
    EXPECT_TRUE(GetParam().taken(first()));
}

std::string dp(const std::string& keys)
{
    return "[[card.monitor]]\noutput = \"DP-0\"\nmodel = \"Vista 24H\"\n" + keys + "\n";
}

Key sinkKey(const std::string& keys, std::function<bool(const DpSinkFacts&)> taken)
{
    return {dp(keys), [taken](const CardFacts& facts) { return taken(facts.sinks[0]); }};
}

std::string chip(const std::string& keys)
{
    return "[[card.i2c]]\n" + keys + "\n";
}

INSTANTIATE_TEST_SUITE_P(
    Keys, KeyTest,
    ::testing::Values(
        Key{"video_memory_mib = 64", [](const CardFacts& card) { return card.chip.videoMemorySize == 64 * kMiB; }},
        Key{"video_memory_mib = 65536", [](const CardFacts& card) { return card.chip.videoMemorySize == 64 * kGiB; }},
        Key{"board.name = \"B\"", [](const CardFacts& card) { return card.board.name == "B"; }},
        Key{"board.serial = \"0123456789abcdef\"",
            [](const CardFacts& card) { return card.board.serial == "0123456789abcdef"; }},
        Key{"board.revision = 255", [](const CardFacts& card) { return card.board.revision == 255; }},
        Key{"sensors.dead_temperatures = [0, 1]", [](const CardFacts& card) { return card.sensors.temperatures == 3; }},
        Key{"sensors.dead_voltages = [1]", [](const CardFacts& card) { return card.sensors.voltages == 2; }},
        Key{"sensors.dead_process_monitors = [0]", [](const CardFacts& card) { return card.sensors.processes == 1; }},
        Key{"mcu.state = \"held-in-reset\"",
            [](const CardFacts& card) { return card.mcu == McuCondition::kHeldInReset; }},
        Key{"fan.turns = true", [](const CardFacts& card) { return card.fanTurns; }},
        Key{"flash.image = \"flash.bin\"", [](const CardFacts& card) { return card.flashImage.size() == 5; }},
        Key{"stuck_bit = [{memory = \"video-memory\", address = 0xffffffff, bit = 7, value = 0}]",
            [](const CardFacts& card) {
                return card.stuckBits[0] == StuckBit{StuckMemory::kVideoMemory, 0xffff'ffff, 7, false};
            }},
        Key{"[[card.monitor]]\noutput = \"DVO\"\nmodel = \"Desk 19S\"\ncontroller = 3",
            [](const CardFacts& card) { return card.monitors[2].edid.size() == 128 && card.routing == 0x00b0'0000; }},
        Key{"[[card.monitor]]\noutput = \"VGA\"\nmodel = \"Desk 19S\"\nedid_answers = false",
            [](const CardFacts& card) { return card.monitors[3].attached && card.monitors[3].edid.empty(); }},
        sinkKey("", [](const DpSinkFacts& sink) { return sink.revision == 0x12 && sink.maxLanes == 4 && !sink.panel; }),
        sinkKey("revision = \"1.1\"", [](const DpSinkFacts& sink) { return sink.revision == 0x11; }),
        sinkKey("max_rate = \"2.7\"",
                [](const DpSinkFacts& sink) { return sink.maxRate == 10 && sink.cableRate == 10; }),
        sinkKey("cable_rate = \"1.62\"",
                [](const DpSinkFacts& sink) { return sink.maxRate == 20 && sink.cableRate == 6; }),
        sinkKey("max_lanes = 2", [](const DpSinkFacts& sink) { return sink.maxLanes == 2; }),
        sinkKey("training_pattern_3 = false", [](const DpSinkFacts& sink) { return !sink.trainingPattern3; }),
        sinkKey("panel = true", [](const DpSinkFacts& sink) { return sink.panel; }),
        sinkKey("swing = 1\npre_emphasis = 2",
                [](const DpSinkFacts& sink) { return sink.swing == 1 && sink.preEmphasis == 2; }),
        sinkKey("oui = 0x123456",
                [](const DpSinkFacts& sink) {
                    return sink.oui == std::array<std::uint8_t, 3>{0x12, 0x34, 0x56};
                }),
        sinkKey("name = \"Six ch\"",
                [](const DpSinkFacts& sink) { return std::string(sink.name.data(), 6) == "Six ch"; }),
        sinkKey("aux = \"refuses\"", [](const DpSinkFacts& sink) { return sink.manner == AuxManner::kRefuses; }),
        sinkKey("deferrals = 255", [](const DpSinkFacts& sink) { return sink.deferrals == 255; }),
        Key{chip("chip = \"24C02\"\nchannel = 3\naddress = 0x57\nanswers = false"),
            [](const CardFacts& card) {
                return card.chips.eeprom == ChipSeat{3, 0x57, true};
            }},
        Key{chip("chip = \"SAA7111A\"\nchannel = 1\naddress = 0x25\nport = 1\nsignal = \"NTSC\""),
            [](const CardFacts& card) {
                return card.chips.decoders[1] == DecoderFacts{{1, 0x25, false}, VideoSignal::kNtsc};
            }},
        Key{chip("chip = \"LTC2990\"\nchannel = 0\naddress = 0x4f\nsupply = 3.1\ntemperature = -5.5"),
            [](const CardFacts& card) {
                return card.chips.ltc2990[0].supply == 3'100'000 && card.chips.ltc2990[0].temperature == -5'500;
            }},
        Key{chip("chip = \"LTC2991\"\nchannel = 0\naddress = 0x4f\nrails = [{volts = 1, amperes = -2.5, milliohms = "
                 "7}]"),
            [](const CardFacts& card) {
                return card.chips.ltc2991[0].rails[0] == MonitoredRail{1'000'000, -2'500, 7} &&
                       card.chips.ltc2991[0].supply == 3'300'000 && card.chips.ltc2991[0].temperature == 25'000;
            }},
        Key{chip("chip = \"INA3221\"\nchannel = 0\naddress = 0x40") +
                chip("chip = \"INA3221\"\nchannel = 0\naddress = 0x43"),
            [](const CardFacts& card) { return card.chips.ina3221[1].seat.address == 0x43; }}));

/// What stands after the first two lines of a card, and the first mistake found in it.
struct Wrong {
    std::string text;
    std::string mistake;
};

class MistakeTest : public DescriptionTest, public ::testing::WithParamInterface<Wrong>
{
};

TEST_P(MistakeTest, NamesFileLineAndKey)
{
    folder.writeFile("odd.bin", std::string(100, 'x'));
    folder.writeFile("long.bin", std::string(640, 'x'));
    folder.writeFile("flash.bin", std::string(0x20'0001, 'x'));
    EXPECT_LT(read(kCard + GetParam().text), 0);
    ASSERT_THAT(mistakes, Not(IsEmpty()));
    EXPECT_EQ(mistakes[0], "cards.toml:" + GetParam().mistake);
}

const std::string kMonitor = "[[card.monitor]]\n";

INSTANTIATE_TEST_SUITE_P(
    Mistakes, MistakeTest,
    ::testing::Values(
        Wrong{"video_memory_mib = 63", "3: card.video_memory_mib: has to be from 64 to 65536, not 63"},
        Wrong{"video_memory_mib = 4096.0", "3: card.video_memory_mib: has to be an integer, not a decimal number"},
        Wrong{"video_memory_mib = 99999999999999999999",
              "3: Error while parsing decimal integer: '99999999999999999999' is not representable in 64 bits"},
        Wrong{"colour = 1",
              "3: card.colour: is no key here; there may be chip, video_memory_mib, board, monitor, i2c, "
              "flash, sensors, mcu, fan, stuck_bit"},
        Wrong{"board = 1", "3: card.board: has to be a table, [card.board], not an integer"},
        Wrong{"board.name = true", "3: card.board.name: has to be a text in quotes, not a boolean"},
        Wrong{"board.name = \"\\u001b[1m\"", "3: card.board.name: has to be 1 to 16 printable ASCII characters"},
        Wrong{"board.serial = \"0123456789abcdefg\"",
              "3: card.board.serial: has to be 1 to 16 printable ASCII characters"},
        Wrong{"board.revision = -1", "3: card.board.revision: has to be from 0 to 255, not -1"},
        Wrong{"sensors.dead_voltages = [2]",
              "3: card.sensors.dead_voltages: has to have integers from 0 to 1 in it only"},
        Wrong{"sensors.dead_voltages = 1",
              "3: card.sensors.dead_voltages: has to be an array of integers, not an integer"},
        Wrong{"mcu.state = \"off\"",
              "3: card.mcu.state: has to be \"running\", \"held-in-reset\" or \"no-firmware\", not \"off\""},
        Wrong{"fan.turns = 1", "3: card.fan.turns: has to be true or false, not an integer"},
        Wrong{"flash.image = \"absent\"", "3: card.flash.image: cannot be read: No such file or directory"},
        Wrong{"flash.image = \"flash.bin\"", "3: card.flash.image: the file has to have 2 MiB at most"},
        Wrong{"\n[[card.stuck_bit]]\nmemory = \"flash\"\naddress = 0x200000\nbit = 0\nvalue = 0",
              "6: card.stuck_bit.address: has to be from 0x0 to 0x1fffff, not 0x200000"},
        Wrong{"\n[[card.stuck_bit]]\naddress = 0\nbit = 0\nvalue = 0", "4: card.stuck_bit.memory: is missing"},
        Wrong{"stuck_bit = [{memory = \"flash\", address = 0, bit = 0, value = 2}]",
              "3: card.stuck_bit.value: has to be from 0 to 1, not 2"},
        Wrong{"monitor = [1]", "3: card.monitor: has to have tables in it only"},
        Wrong{kMonitor + "model = \"Desk 19S\"", "3: card.monitor.output: is missing"},
        Wrong{kMonitor + "output = \"VGA\"", "3: card.monitor: a monitor has either an edid, a file, or a model"},
        Wrong{kMonitor + "output = \"VGA\"\nmodel = \"Desk 19S\"\nedid = \"odd.bin\"",
              "6: card.monitor.edid: a monitor has either an edid, a file, or a model"},
        Wrong{kMonitor + "output = \"VGA\"\nedid = \"absent\"",
              "5: card.monitor.edid: cannot be read: No such file or directory"},
        Wrong{kMonitor + "output = \"VGA\"\nedid = \".\"", "5: card.monitor.edid: cannot be read: Is a directory"},
        Wrong{kMonitor + "output = \"VGA\"\nedid = \"/dev/zero\"",
              "5: card.monitor.edid: cannot be read: Not a regular file"},
        Wrong{kMonitor + "output = \"VGA\"\nedid = \"odd.bin\"",
              "5: card.monitor.edid: the file has to have 128, 256, 384 or 512 bytes, not 100"},
        Wrong{kMonitor + "output = \"VGA\"\nedid = \"long.bin\"",
              "5: card.monitor.edid: the file has to have 128, 256, 384 or 512 bytes, not more"},
        Wrong{kMonitor + "output = \"VGA\"\nmodel = \"Desk 19S\"\ncontroller = 4",
              "6: card.monitor.controller: has to be from 0 to 3, not 4"},
        Wrong{kMonitor + "output = \"VGA\"\nmodel = \"Desk 19S\"\naux = \"defers\"",
              "6: card.monitor.aux: is for DP-0 and DP-1 only"},
        Wrong{
            kMonitor + "output = \"VGA\"\nmodel = \"Desk 19S\"\n" + kMonitor + "output = \"VGA\"\nmodel = \"Desk 19S\"",
            "7: card.monitor.output: VGA has a monitor already, in line 3"},
        Wrong{dp("max_lanes = 3"), "6: card.monitor.max_lanes: has to be 1, 2 or 4, not 3"},
        Wrong{dp("swing = 2\npre_emphasis = 2"),
              "6: card.monitor.swing: has to be 3 at most together with pre_emphasis"},
        Wrong{kMonitor + "output = \"DP-0\"\nmodel = \"Vista 27Q\"\npre_emphasis = 3",
              "6: card.monitor.pre_emphasis: has to be 3 at most together with the swing of the model"},
        Wrong{chip("chip = \"LTC2990\"\nchannel = 4\naddress = 0x4c"),
              "5: card.i2c.channel: has to be from 0 to 3, not 4"},
        Wrong{chip("chip = \"LTC2990\"\nchannel = 0\naddress = 0x48"),
              "6: card.i2c.address: has to be from 0x4c to 0x4f, not 0x48"},
        Wrong{chip("chip = \"LTC2990\"\nchannel = 0\naddress = 0x4c") +
                  chip("chip = \"LTC2991\"\nchannel = 0\naddress = 0x4c"),
              "10: card.i2c.address: is that of another chip on the channel, in line 3"},
        Wrong{chip("chip = \"24C02\"\nchannel = 0\naddress = 0x50") +
                  chip("chip = \"24C02\"\nchannel = 0\naddress = 0x51"),
              "8: card.i2c.chip: a card has 1 of this kind at most"},
        Wrong{
            chip(
                "chip = \"INA3221\"\nchannel = 0\naddress = 0x40\nrails = [{volts = nan, amperes = 0, milliohms = 0}]"),
            "7: card.i2c.rails.volts: has to be from 0 to 40, not nan"},
        Wrong{
            chip(
                "chip = \"INA3221\"\nchannel = 0\naddress = 0x40\nrails = [{volts = 1, amperes = inf, milliohms = 0}]"),
            "7: card.i2c.rails.amperes: has to be from -200 to 200, not inf"},
        Wrong{chip("chip = \"INA3221\"\nchannel = 0\naddress = 0x40\nrails = [{}, {}, {}, {}]"),
              "7: card.i2c.rails: there may be 3 at most"},
        Wrong{chip("chip = \"INA3221\"\nchannel = 0\naddress = 0x40\nsupply = 3"),
              "7: card.i2c.supply: is no key here; there may be chip, channel, address, answers, rails"},
        Wrong{"chip = \"QZ202\"", "3: Error while parsing key-value pair: cannot redefine existing string 'chip'"},
        Wrong{"[[card]]\nchip = \"QZ203\"", "4: card.chip: has to be \"QZ201\" or \"QZ202\", not \"QZ203\""},
        Wrong{"[[card]]", "3: card.chip: is missing"},
        Wrong{kCard + kCard + kCard + kCard, "9: card: there may be 4 at most"},
        Wrong{"[[card]]\nchip = \"QZ202\"\n[[card.monitor]]\noutput = \"HDMI-1\"\nmodel = \"Desk 19S\"",
              "6: card.monitor.output: the chip has no HDMI-1"}));

TEST_F(DescriptionTest, EveryMistakeIsToldByRisingLines)
{
    EXPECT_EQ(read("[[card]]\nsize = 1\nchip = 2\n"), VEK_BAD_DATA);
    EXPECT_THAT(mistakes,
                ElementsAre(StartsWith("cards.toml:2: card.size: "), StartsWith("cards.toml:3: card.chip: ")));
}

TEST_F(DescriptionTest, ResultsTellWhatIsWrong)
{
    EXPECT_EQ(read(kCard + "flash.image = \"absent\""), VEK_IO_ERROR);
    EXPECT_EQ(readFile("absent.toml"), VEK_IO_ERROR);
    EXPECT_THAT(mistakes, ElementsAre("absent.toml: cannot be read: No such file or directory"));
    EXPECT_EQ(vekReadCardDescription("", cards.get(), sizeof *cards - 1, nullptr), VEK_BAD_ARGUMENT);
}

TEST_F(DescriptionTest, NoCardAtAllIsAMistake)
{
    EXPECT_EQ(read(""), VEK_BAD_DATA);
    EXPECT_EQ(read("card = []"), VEK_BAD_DATA);
    EXPECT_EQ(read("[card]\nchip = \"QZ201\""), VEK_BAD_DATA);
}

TEST_F(DescriptionTest, WrongEdidsAreTakenWithAWarning)
{
    folder.writeFile("wrong.bin", std::string(256, '\1'));
    ASSERT_EQ(read(kCard + kMonitor + "output = \"VGA\"\nedid = \"wrong.bin\""), VEK_OK);
    EXPECT_THAT(first().monitors[3].edid, ElementsAreArray(std::vector<std::uint8_t>(256, 1)));
    EXPECT_THAT(warnings, ElementsAre("cards.toml:5: card.monitor.edid: does not begin with the header of an EDID",
                                      "cards.toml:5: card.monitor.edid: the checksum of block 0 is wrong",
                                      "cards.toml:5: card.monitor.edid: the checksum of block 1 is wrong"));
}

TEST_F(DescriptionTest, HostileFilesAreRefused)
{
    std::string nested;
    for (int level = 0; level < 3000; ++level) {
        nested += "a.a.a.a.a.a.a.a = [{ ";
    }
    std::string dotted = "a";
    for (int level = 0; level < 100'000; ++level) {
        dotted += ".a";
    }
    const std::vector<std::string> texts = {std::string(300'000, '#'),
                                            std::string(1, '\0'),
                                            "\xff\xfe",
                                            "\xc4\x96 'a'",
                                            "[[card]]\nchip = \"QZ201\" \xc4\x96",
                                            "a = \"\xf0\x28\x8c\x28\"",
                                            "a = " + std::string(200'000, '['),
                                            nested,
                                            "[" + dotted + "]",
                                            dotted + " = 1",
                                            "[[card]]\nchip = \"QZ201",
                                            "[[card]]\nchip = 1e999",
                                            "[[card]]\nchip = 2026-11-21",
                                            "[[card]]\r\nchip = \"QZ201\"\r"};
    for (const std::string& text : texts) {
        EXPECT_EQ(read(text), VEK_BAD_DATA) << text.substr(0, 40);
        EXPECT_THAT(mistakes, Not(IsEmpty()));
    }
}

TEST_F(DescriptionTest, NothingThatATerminalWouldObeyIsShown)
{
    EXPECT_EQ(read("[[card]]\nchip = \"\\u001b[31m\"\n\"\\u001b[2J\" = 1\n"), VEK_BAD_DATA);
    for (const std::string& mistake : mistakes) {
        EXPECT_THAT(mistake, Not(HasSubstr("\x1b")));
    }
}

TEST_F(DescriptionTest, WhatIsNoFileIsRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(readFile("fifo"), VEK_IO_ERROR);
    EXPECT_EQ(readFile("."), VEK_IO_ERROR);
    EXPECT_EQ(read(kCard + "flash.image = \"fifo\""), VEK_IO_ERROR);
}

/// The examples of the document, as they stand in it.
std::vector<std::string> documentExamples()
{
    std::ifstream file(CARD_DESCRIPTION_DOCUMENT);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string open = "```toml\n";
    std::vector<std::string> examples;
    for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
        at += open.size();
        examples.push_back(text.substr(at, text.find("```", at) - at));
    }
    return examples;
}

TEST_F(DescriptionTest, TheDocumentsExamplesAreRight)
{
    folder.writeFile("monitor.bin", std::string(128, '\0'));
    const std::vector<std::string> examples = documentExamples();
    ASSERT_EQ(examples.size(), 3U);
    for (const std::string& example : examples) {
        EXPECT_EQ(read(example), VEK_OK) << example << ::testing::PrintToString(mistakes);
    }
}

TEST_F(DescriptionTest, TheDocumentNamesEveryKey)
{
    std::ifstream file(CARD_DESCRIPTION_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(read("x = 1\n" + kCard + "x = 1\nboard.x = 1\nsensors.x = 1\nmcu.x = 1\nfan.x = 1\nflash.x = 1\n" +
                   dp("x = 1") + "[[card.stuck_bit]]\nx = 1\n" +
                   chip("chip = \"LTC2990\"\nchannel = 0\naddress = 0x4c\nx = 1\nrails = [{x = 1}]") +
                   chip("chip = \"SAA7111A\"\nchannel = 0\naddress = 0x24\nx = 1")),
              VEK_BAD_DATA);
    const std::regex keyPattern("[a-z0-9_]+");
    std::size_t found = 0;
    for (const std::string& mistake : mistakes) {
        const std::string offer = "there may be ";
        const std::size_t at = mistake.find(offer);
        if (at == std::string::npos) {
            continue;
        }
        const std::string keys = mistake.substr(at + offer.size());
        for (std::sregex_iterator key(keys.begin(), keys.end(), keyPattern), end; key != end; ++key, ++found) {
            EXPECT_TRUE(document.find("`" + key->str() + "`") != std::string::npos || key->str() == "card")
                << key->str();
        }
    }
    EXPECT_GT(found, 45U);
}

Result describe(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), VEK_DESCRIBE);
    return child_process::run({.arguments = std::move(arguments)});
}

TEST_F(DescriptionTest, CheckSaysWhatADescriptionSays)
{
    folder.writeFile("cards.toml", kCard + "fan.turns = false\n" + dp("controller = 1\naux = \"silent\""));
    const Result result = describe({"--check", folder.path() / "cards.toml"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.output, StartsWith("card 0: QZ201, 4096 MiB of video memory, board without a name\n"
                                          "    DP-0   a monitor with an EDID of 256 bytes, fed by controller 1\n"));
    EXPECT_THAT(result.output, HasSubstr("    fault: the fan does not turn\n"));
}

TEST_F(DescriptionTest, CheckShowsMistakesAndFails)
{
    folder.writeFile("cards.toml", "[[card]]\n");
    const Result result = describe({"--check", folder.path() / "cards.toml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, (folder.path() / "cards.toml").string() + ":1: card.chip: is missing\n");
}

TEST_F(DescriptionTest, TheCompanionKnowsItsOptions)
{
    EXPECT_THAT(describe({"--help"}).output, StartsWith("Usage: "));
    EXPECT_THAT(describe({"--version"}).output, StartsWith("vek_describe "));
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{"--check"}, {"--unknown"}, {"cards.toml"}}) {
        const Result result = describe(wrong);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(result.error, HasSubstr("Usage: "));
    }
    EXPECT_EQ(child_process::run({.arguments = {"sh", "-c", VEK_DESCRIBE " >/dev/full"}}).exitStatus, 1);
}

}  // namespace
}  // namespace vek
