// The front end of option letters: one operation a call, here many calls in one process.

#include "tovira_parse/legacy/option_commands.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "allocation_failure.h"
#include "captured_output.h"
#include "console_support.h"

namespace
{

using console_test::AllocationFailure;
using console_test::takeDeviceCalls;
using recording_vek::i2cDevice;
using recording_vek::registers;
using recording_vek::setResult;
using recording_vek::SparseMemory;
using recording_vek::videoMemory;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

/** The usage text, as it is printed for a program of this name. */
std::string usageOf(const std::string& name)
{
    return name + " usage.\n" +                                             //
           "eg:\n" +                                                        //
           name + "\n" +                                                    //
           "\tenter command line\n" +                                       //
           name + " reg -a 10028 -o 1 -w 0 -v 12345678 -n 1\n" +            //
           "\t-a: register address in hex\n" +                              //
           "\t-o: operation type, 0 for read, 1 for write, default: 0\n" +  //
           "\t-w: operation width, 1 for a byte, 2 for two byte, 4 for four bytes, 8 for 8 bytes, default: 1\n" +
           "\t-v: operation value for write in hex\n" +                            //
           "\t-n: read count in hex, only used in operation read, default: 1\n" +  //
           name + " vram -a 0 -o 1 -w 0 -v 12345678 -n 1\n" +                      //
           "\t-a: register address in hex\n" +                                     //
           "\t-o: operation type, 0 for read, 1 for write, default: 0\n" +         //
           "\t-w: operation width, 1 for a byte, 2 for two byte, 4 for four bytes, 8 for 8 bytes, default: 1\n" +
           "\t-v: operation value for write in hex\n" +                                    //
           "\t-n: read count in hex, only used in operation read, default: 1\n" +          //
           name + " i2c -c 1 -d 24 -a 0 -o 0 -v 12 -n 1\n" +                               //
           "\t-c: i2c channel, 0 or 1\n" +                                                 //
           "\t-d: i2c device address in hex\n" +                                           //
           "\t-a: i2c device subaddress in hex, default: 0\n" +                            //
           "\t-o: operation type, 0 for read, 1 for write, default: 0\n" +                 //
           "\t-v: operation value for byte write in hex\n" +                               //
           "\t-c: read count in hex, only used in operation read, default: 1\n" +          //
           name + " zv -c 1 -i 1 -x 0 -y 0 -w 720 -h 572 -l 8 -t 0 -e 1\n" +               //
           "\t-c: zoom video controller channel, 0 or 1, default: 0\n" +                   //
           "\t-i: i2c channel for zoom video, 0 or 1, default: 0\n" +                      //
           "\t-x -y: video position for zoom video, default: x = 0, y = 0\n" +             //
           "\t-w -h: video size for zoom video, default: real camera image size\n" +       //
           "\t-l: left cut pixels for video image\n" +                                     //
           "\t-t: composite to crtc selection, 0 to CRTC 0, 1 to CRTC 1, default: 0\n" +   //
           "\t-e: enable for zoom video controller. 0: disable; 1: enable. default 0\n" +  //
           name + " ver\n" +                                                               //
           "\treturn rvtcore version\n";
}

const std::string kUsage = usageOf("tovira_util_tool");

std::string hex(std::uint64_t number, int digits = 1)
{
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(digits) << number;
    return text.str();
}

/** The words of a line. */
std::vector<std::string> split(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

/** Runs words behind the program's name. @return what they print */
std::string runWords(std::vector<std::string> words)
{
    words.insert(words.begin(), "program");
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    CapturedOutput output;
    // What getopt says of unknown options goes there.
    CapturedError error;
    parseArg(static_cast<int>(words.size()), argv.data());
    return output.take();
}

std::string run(const std::string& line)
{
    return runWords(split(line));
}

class OptionCommandsTest : public console_test::ConsoleTest
{
};

// ---- Words

TEST_F(OptionCommandsTest, UsageTextIsThatOfTheProgramNamed)
{
    CapturedOutput output;
    optHelp("tovira_util_tool");
    EXPECT_EQ(output.take(), kUsage);
    optHelp("./a %s %n name");
    EXPECT_EQ(output.take(), usageOf("./a %s %n name"));
}

TEST_F(OptionCommandsTest, DoesNothingWithoutWords)
{
    EXPECT_EQ(runWords({}), "");
    CapturedOutput output;
    char* none[] = {nullptr};
    parseArg(0, none);
    EXPECT_EQ(output.take(), "");
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(OptionCommandsTest, OptionsAreReadHoweverGetoptTreatsOtherWords)
{
    setenv("POSIXLY_CORRECT", "1", 1);
    EXPECT_EQ(run("reg -a 10 -o 1 -v 5"), "[00000010]=05\n");
    unsetenv("POSIXLY_CORRECT");
}

TEST_F(OptionCommandsTest, HelpAndOtherWordsPrintTheUsage)
{
    for (const char* word :
         {"?",  "--help", "-h",  "help", "-?",  "--hel",    "REG",  "Reg", "regs", "re", "VRAM", "I2C",
          "i2", "ZV",     "RUN", "runs", "Ver", "VERSIONS", "vers", "v",   "foo",  "-a", "reg ", "%s"}) {
        EXPECT_EQ(runWords({word}), kUsage) << word;
        EXPECT_EQ(runWords({word, "-a", "1", "-o", "1"}), kUsage) << word;
    }
    EXPECT_EQ(runWords({""}), kUsage);
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- Registers and video memory

/** A region that is reached with reg or vram. */
struct Region {
    const char* word;
    const char* prefix; /**< of the library's functions */
    SparseMemory& (*memory)();
    const char* operationError;
};

const Region kRegions[] = {{"reg", "vekReg", registers, "Register operation type is error\n"},
                           {"vram", "vekVram", videoMemory, "Vram operation type is error\n"}};

struct Width {
    unsigned size; /**< bytes */
    const char* name;
    std::size_t itemsPerLine;
};

constexpr Width kWidths[] = {{1, "Byte", 16}, {2, "Word", 8}, {4, "Long", 4}, {8, "Quad", 2}};

struct RegionAccess {
    Region region;
    Width width;

    std::string options() const { return std::string(region.word) + " -w " + std::to_string(width.size); }
    std::string readCall(std::uint64_t address) const
    {
        return std::string(region.prefix) + "Read" + width.name + "(0x" + hex(address) + ")";
    }
    std::string writeCall(std::uint64_t address, std::uint64_t value) const
    {
        return std::string(region.prefix) + "Write" + width.name + "(0x" + hex(address) + ", 0x" + hex(value) + ")";
    }
    /** An item as it is printed: eight bytes as their lower and their higher half. */
    std::string item(std::uint64_t value) const
    {
        return width.size == 8 ? hex(value & 0xffffffff, 8) + " " + hex(value >> 32, 8)
                               : hex(value, static_cast<int>(width.size) * 2);
    }
};

void PrintTo(const RegionAccess& access, std::ostream* stream)
{
    *stream << access.options();
}

class RegionAccessTest : public OptionCommandsTest, public ::testing::WithParamInterface<RegionAccess>
{
protected:
    const RegionAccess& it = GetParam();
};

TEST_P(RegionAccessTest, ReadsOneItem)
{
    it.region.memory().poke<std::uint64_t>(0x10028, 0x8091a2b3c4d5e6f7);
    const std::uint64_t value = 0x8091a2b3c4d5e6f7 & (UINT64_MAX >> (64 - 8 * it.width.size));
    for (const char* options : {" -a 10028", " -a 0x10028 -o 0 -n 1", " -n1 -a10028 -o0", " -a 10028 -v 55"}) {
        EXPECT_EQ(run(it.options() + options), "00010028: " + it.item(value) + "\n") << options;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(0x10028))) << options;
    }
}

TEST_P(RegionAccessTest, DumpsConsecutiveItems)
{
    for (std::uint64_t i = 0; i < 0x200; ++i) {
        it.region.memory().poke(0x1008 + i, static_cast<std::uint8_t>(i * 0x25 + 5));
    }
    for (std::size_t count = 1; count <= 35; ++count) {
        std::string dump;
        std::vector<std::string> calls;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint64_t address = 0x1008 + i * it.width.size;
            std::uint64_t value = 0;
            for (unsigned byte = it.width.size; byte > 0; --byte) {
                value = value << 8 | ((address + byte - 1 - 0x1008) * 0x25 + 5) % 0x100;
            }
            if (i % it.width.itemsPerLine == 0) {
                dump += (i == 0 ? "" : "\n") + hex(address, 8) + ":";
            }
            dump += " " + it.item(value);
            calls.push_back(it.readCall(address));
        }
        EXPECT_EQ(run(it.options() + " -a 1008 -n " + hex(count)), dump + "\n") << count;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(calls)) << count;
    }
}

TEST_P(RegionAccessTest, CountsBelowOneReadNothing)
{
    for (const char* count : {"0", "zz", "80000000", "ffffffff"}) {
        EXPECT_EQ(run(it.options() + " -a 10 -n " + count), "\n") << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(RegionAccessTest, WritesOneItem)
{
    const std::uint64_t all = UINT64_MAX >> (64 - 8 * it.width.size);
    for (const std::uint64_t value : {std::uint64_t{5}, std::uint64_t{0x8091a2b3c4d5e6f7}, UINT64_MAX}) {
        for (const char* options : {"", " -n 5", " -n 0"}) {
            EXPECT_EQ(run(it.options() + " -o 1 -a 1c -v " + hex(value) + options),
                      "[0000001c]=" + it.item(value & all) + "\n");
            EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(0x1c, value & all)));
            EXPECT_EQ(it.region.memory().bytes().size(), it.width.size);
        }
    }
}

TEST_P(RegionAccessTest, WritesAtZeroUnlessToldOtherwise)
{
    EXPECT_EQ(run(it.options() + " -v 0X1f -o 1"), "[00000000]=" + it.item(0x1f) + "\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.writeCall(0, 0x1f)));
}

TEST_P(RegionAccessTest, LooksAtNoResult)
{
    for (const int code : {-5, 5}) {
        setResult(std::string(it.region.prefix) + "Read" + it.width.name, code);
        setResult(std::string(it.region.prefix) + "Write" + it.width.name, code);
        EXPECT_EQ(run(it.options() + " -n 2").size(), ("00000000: " + it.item(0) + " " + it.item(0) + "\n").size());
        EXPECT_EQ(run(it.options() + " -o 1 -v 3"), "[00000000]=" + it.item(3) + "\n");
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(it.readCall(0), it.readCall(it.width.size), it.writeCall(0, 3)));
    }
}

TEST_P(RegionAccessTest, OtherOperationsPrintTheUsage)
{
    for (const char* operation : {"2", "3", "10", "11", "2147483647"}) {
        EXPECT_EQ(run(it.options() + " -a 10 -o " + operation), it.region.operationError + kUsage) << operation;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

std::vector<RegionAccess> allRegionAccesses()
{
    std::vector<RegionAccess> all;
    for (const Region& region : kRegions) {
        for (const Width& width : kWidths) {
            all.push_back({region, width});
        }
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(All, RegionAccessTest, ::testing::ValuesIn(allRegionAccesses()), [](const auto& access) {
    return access.param.region.word + std::string(access.param.width.name);
});

class RegionTest : public OptionCommandsTest, public ::testing::WithParamInterface<Region>
{
protected:
    const Region& it = GetParam();

    std::string enter(const std::string& options) const { return run(it.word + options); }
    std::string functionAt(const std::string& function) const { return it.prefix + function; }
};

TEST_P(RegionTest, ReadsOneByteAtZeroUnlessToldOtherwise)
{
    it.memory().poke<std::uint8_t>(0, 0xab);
    EXPECT_EQ(enter(""), "00000000: ab\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(functionAt("ReadByte(0x0)")));
}

TEST_P(RegionTest, ShowsQuadsAsTwoHalves)
{
    it.memory().poke<std::uint64_t>(0x100, 0x0000000200000001);
    it.memory().poke<std::uint64_t>(0x108, 0x1122334455667788);
    it.memory().poke<std::uint64_t>(0x110, 0xffffffff00000000);
    EXPECT_EQ(enter(" -a 100 -w 8 -n 3"),
              "00000100: 00000001 00000002 55667788 11223344\n00000110: 00000000 ffffffff\n");
    EXPECT_EQ(enter(" -a 100 -w 8 -o 1 -v 1122334455667788"), "[00000100]=55667788 11223344\n");
    EXPECT_EQ(it.memory().peek<std::uint64_t>(0x100), 0x1122334455667788);
}

TEST_P(RegionTest, OtherWidthsPrintTheUsage)
{
    for (const char* width : {"0", "3", "5", "6", "7", "9", "16", "x8", "257"}) {
        for (const char* operation : {"", " -o 0", " -o 1 -v 3"}) {
            EXPECT_EQ(enter(std::string(" -a 10 -w ") + width + operation),
                      "Register operation width is error\n" + kUsage)
                << width << operation;
        }
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(RegionTest, OperationAndWidthAreDecimal)
{
    EXPECT_EQ(enter(" -o 01 -w 08 -v 1"), "[00000000]=00000001 00000000\n");
    EXPECT_EQ(enter(" -o 0x1 -w 1"), "00000000: 01\n") << "a zero with letters behind it";
}

TEST_P(RegionTest, CountIsHexadecimal)
{
    EXPECT_EQ(enter(" -n 10"), "00000000: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n");
    EXPECT_EQ(enter(" -n 0xA"), "00000000: 00 00 00 00 00 00 00 00 00 00\n");
    EXPECT_EQ(takeDeviceCalls().size(), 26U);
}

TEST_P(RegionTest, AddressesAreThirtyTwoBitsWide)
{
    EXPECT_EQ(enter(" -a ffffffff"), "ffffffff: 00\n");
    EXPECT_EQ(enter(" -a 123456789 -w 4"), "23456789: 00000000\n");
    EXPECT_EQ(enter(" -a 1fffffff0 -o 1 -v 5"), "[fffffff0]=05\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(functionAt("ReadByte(0xffffffff)"), functionAt("ReadLong(0x23456789)"),
                                               functionAt("WriteByte(0xfffffff0, 0x5)")));
}

TEST_P(RegionTest, TheLastOfAnOptionCounts)
{
    EXPECT_EQ(enter(" -a 10 -w 2 -o 1 -a 20 -o 0 -w 4 -n 8 -n 1"), "00000020: 00000000\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(functionAt("ReadLong(0x20)")));
}

TEST_P(RegionTest, EveryCallStartsAfresh)
{
    EXPECT_EQ(enter(" -o 1 -a 10 -w 4 -v 12345678 -n 4"), "[00000010]=12345678\n");
    EXPECT_EQ(enter(""), "00000000: 00\n");
    EXPECT_EQ(enter(" -a 10 -w 4"), "00000010: 12345678\n");
    EXPECT_EQ(run("i2c -c 1 -d 24"), "0000: 00\n");
    EXPECT_EQ(enter(" -w 2 -a 12"), "00000012: 1234\n");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre(functionAt("WriteLong(0x10, 0x12345678)"), functionAt("ReadByte(0x0)"),
                            functionAt("ReadLong(0x10)"), "vekI2cRead(1, 0x24, 0x0, 1)", functionAt("ReadWord(0x12)")));
}

TEST_P(RegionTest, UnknownOptionsAndMissingArgumentsArePassedOver)
{
    EXPECT_EQ(enter(" -z -a 10 -zqx"), "00000010: 00\n");
    EXPECT_EQ(enter(" -a 14 -w"), "00000014: 00\n") << "a letter without its argument leaves the default";
    EXPECT_EQ(enter(" -a 18"), "00000018: 00\n");
}

INSTANTIATE_TEST_SUITE_P(All, RegionTest, ::testing::ValuesIn(kRegions),
                         [](const auto& region) { return std::string(region.param.word); });

// ---- I2C

TEST_F(OptionCommandsTest, I2cReadDumpsTheBytes)
{
    i2cDevice().pokeBytes(0x10, {0xab, 0x05, 0x00});
    EXPECT_EQ(run("i2c -c 1 -d 24 -a 10"), "0010: ab\n");
    EXPECT_EQ(run("i2c -c 1 -d 24 -a 10 -o 0 -v 12 -n 3"), "0010: ab 05 00\n");
    EXPECT_EQ(run("i2c -c 1 -d 24"), "0000: 00\n");
    EXPECT_EQ(run("i2c -cA -d0X7f -a12345 -n2"), "12345: 00 00\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x24, 0x10, 1)", "vekI2cRead(1, 0x24, 0x10, 3)",
                                               "vekI2cRead(1, 0x24, 0x0, 1)", "vekI2cRead(10, 0x7f, 0x12345, 2)"));
}

TEST_F(OptionCommandsTest, I2cReadDumpsSixteenBytesALine)
{
    for (std::uint32_t i = 0; i < 0x400; ++i) {
        i2cDevice().poke(0x18 + i, static_cast<std::uint8_t>(i * 0x25 + 5));
    }
    for (const std::uint32_t count : {15U, 16U, 17U, 32U, 33U, 256U, 257U, 0x400U}) {
        std::string dump;
        for (std::uint32_t i = 0; i < count; ++i) {
            if (i % 16 == 0) {
                dump += (i == 0 ? "" : "\n") + hex(0x18 + i, 4) + ":";
            }
            dump += " " + hex((i * 0x25 + 5) % 0x100, 2);
        }
        EXPECT_EQ(run("i2c -c 0 -d 50 -a 18 -n " + hex(count)), dump + "\n") << count;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(0, 0x50, 0x18, " + std::to_string(count) + ")"));
    }
}

TEST_F(OptionCommandsTest, I2cReadOfNothingIsALineEnd)
{
    for (const char* count : {"0", "zz"}) {
        EXPECT_EQ(run(std::string("i2c -c 1 -d 24 -a 3 -n ") + count), "\n") << count;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x24, 0x3, 0)")) << count;
    }
    EXPECT_EQ(run("i2c -c 1 -d 24 -a 3 -n ffffffff"), "\n");
    EXPECT_EQ(run("i2c -c 1 -d 24 -a 3 -n 80000000"), "\n");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekI2cRead(1, 0x24, 0x3, -1)", "vekI2cRead(1, 0x24, 0x3, -2147483648)"));
}

TEST_F(OptionCommandsTest, I2cReadWithoutMemoryIsReported)
{
    const AllocationFailure failure(1);
    EXPECT_EQ(run("i2c -c 1 -d 24 -n 7fffffff"), "Out of memory\n");
    EXPECT_EQ(run("i2c -c 1 -d 24"), "Out of memory\n");
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(OptionCommandsTest, I2cWriteWritesOneByte)
{
    EXPECT_EQ(run("i2c -c 1 -d 24 -a 5 -o 1 -v 12 -n 7"), "");
    EXPECT_EQ(run("i2c -c 0 -d 51 -o 1 -v 1fe"), "");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekI2cWrite(1, 0x24, 0x5, 1, buffer)", "vekI2cWrite(0, 0x51, 0x0, 1, buffer)"));
    EXPECT_EQ(i2cDevice().bytes(), (std::map<std::uint64_t, std::uint8_t>{{0, 0xfe}, {5, 0x12}}));
}

TEST_F(OptionCommandsTest, I2cErrorsAreTextsOfTheLibrary)
{
    for (const int code : {-1, -5, INT_MIN, 1, 7, INT_MAX}) {
        setResult("vekI2cRead", code);
        setResult("vekI2cWrite", code);
        recording_vek::outputs().i2c_error_texts[code] = "no answer %s %n, ever";
        const std::string asked = "vekI2cErrString(" + std::to_string(code) + ")";
        EXPECT_EQ(run("i2c -c 1 -d 24 -n 20"), "I2C error: no answer %s %n, ever\n") << code;
        EXPECT_EQ(run("i2c -c 1 -d 24 -n 0"), "I2C error: no answer %s %n, ever\n") << code;
        EXPECT_EQ(run("i2c -c 1 -d 24 -o 1 -v 3"), "I2C error: no answer %s %n, ever\n") << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x24, 0x0, 32)", asked, "vekI2cRead(1, 0x24, 0x0, 0)",
                                                   asked, "vekI2cWrite(1, 0x24, 0x0, 1, buffer)", asked));
    }
}

TEST_F(OptionCommandsTest, OtherI2cOperationsPrintTheUsage)
{
    for (const char* operation : {"2", "10", "a", "ff", "ffffffff"}) {
        EXPECT_EQ(run(std::string("i2c -c 1 -d 24 -o ") + operation), "I2c operation type is error\n" + kUsage)
            << operation;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(run("i2c -c 1 -d 24 -o 0x1 -v 3"), "") << "hexadecimal";
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cWrite(1, 0x24, 0x0, 1, buffer)"));
}

// ---- Zoom video

TEST_F(OptionCommandsTest, ZoomVideoIsInitialisedAndStarted)
{
    EXPECT_EQ(run("zv -c 1 -i 2 -x 30 -y 40 -w 720 -h 572 -l 8 -t 9 -e 1"), "");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekZoomVideoInit(1, 2, 0, 0)", "vekZoomVideoStart(1, 30, 40, 720, 572, 8, 0, 0, 9)"));
}

TEST_F(OptionCommandsTest, ZoomVideoStartsWithZeroesUnlessToldOtherwise)
{
    EXPECT_EQ(run("zv"), "");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 0)"));
}

TEST_F(OptionCommandsTest, EveryLetterOfZoomVideoHasItsPlace)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> letters = {
        {"-c", {"vekZoomVideoInit(7, 0, 0, 0)", "vekZoomVideoStart(7, 0, 0, 0, 0, 0, 0, 0, 0)"}},
        {"-i", {"vekZoomVideoInit(0, 7, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 0)"}},
        {"-x", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 7, 0, 0, 0, 0, 0, 0, 0)"}},
        {"-y", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 7, 0, 0, 0, 0, 0, 0)"}},
        {"-w", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 7, 0, 0, 0, 0, 0)"}},
        {"-h", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 7, 0, 0, 0, 0)"}},
        {"-l", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 7, 0, 0, 0)"}},
        {"-t", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 7)"}},
        {"-e", {"vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 0)"}}};
    for (const auto& [letter, calls] : letters) {
        EXPECT_EQ(run("zv " + letter + " 7"), "") << letter;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(calls)) << letter;
    }
}

TEST_F(OptionCommandsTest, ZoomVideoNumbersAreDecimalWithASign)
{
    EXPECT_EQ(run("zv -c 010 -x -5 -y +6 -w 0x10 -h 12a -l 2147483647 -t -2147483648 -i zz"), "");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoInit(10, 0, 0, 0)",
                                               "vekZoomVideoStart(10, -5, 6, 0, 12, 2147483647, 0, 0, -2147483648)"));
}

TEST_F(OptionCommandsTest, DisabledZoomVideoIsStoppedOnly)
{
    EXPECT_EQ(run("zv -e 0 -c 1"), "");
    EXPECT_EQ(run("zv -c 2 -w 720 -e 0"), "");
    EXPECT_EQ(run("zv -e zz"), "");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekZoomVideoStop(1)", "vekZoomVideoStop(2)", "vekZoomVideoStop(0)"));
    EXPECT_EQ(run("zv -e -1"), "");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 0)"));
}

TEST_F(OptionCommandsTest, ZoomVideoLooksAtNoResult)
{
    for (const int code : {-5, 5}) {
        for (const char* function : {"vekZoomVideoInit", "vekZoomVideoStart", "vekZoomVideoStop"}) {
            setResult(function, code);
        }
        EXPECT_EQ(run("zv"), "");
        EXPECT_EQ(run("zv -e 0"), "");
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekZoomVideoInit(0, 0, 0, 0)", "vekZoomVideoStart(0, 0, 0, 0, 0, 0, 0, 0, 0)",
                                "vekZoomVideoStop(0)"));
    }
}

// ---- Scripts and the version

TEST_F(OptionCommandsTest, RunHandsItsScriptOn)
{
    for (const int code : {0, -5, 5}) {
        setResult("vekRunScript", code);
        EXPECT_EQ(runWords({"run", "/A folder/Script"}), "");
        EXPECT_EQ(runWords({"run", "first", "second"}), "");
        EXPECT_EQ(runWords({"run", "-a"}), "");
        EXPECT_EQ(runWords({"run", ""}), "");
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRunScript(\"/A folder/Script\")", "vekRunScript(\"first\")",
                                                   "vekRunScript(\"-a\")", "vekRunScript(\"\")"));
    }
}

TEST_F(OptionCommandsTest, RunWithoutScriptPrintsTheUsage)
{
    EXPECT_EQ(run("run"), kUsage);
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(OptionCommandsTest, VersionHasFourNumbers)
{
    recording_vek::outputs().version = {1, 20, 0, 4711};
    for (const char* word : {"ver", "VER", "version", "VERSION", "ver more -a"}) {
        EXPECT_EQ(run(word), "1.20.0.4711\n") << word;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRvtcoreVer()")) << word;
    }
    recording_vek::outputs().version = {-1, INT_MIN, INT_MAX, 0};
    EXPECT_EQ(run("ver"), "-1.-2147483648.2147483647.0\n");
}

TEST_F(OptionCommandsTest, VersionThatCannotBeHadIsSilent)
{
    for (const int code : {-1, -5, INT_MIN, 1}) {
        setResult("vekRvtcoreVer", code);
        EXPECT_EQ(run("ver"), "") << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekRvtcoreVer()")) << code;
    }
}

}  // namespace
