#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::i2cDevice;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string targetLine(const std::string& channel, const std::string& device)
{
    return "Set I2C to channel " + channel + " with device address 0x" + device + " (7-bit)\n";
}

/** Starts each test with channel 1 and device 0x50: the target outlives a test. */
class I2cTest : public FolderTest
{
protected:
    I2cTest()
    {
        call(doI2c, "i2c set 1 50");
        takeDeviceCalls();
    }

    /** Fills the device from a sub-address on with a pattern that holds every byte. */
    static std::vector<int> fillDevice(std::uint32_t start, int count)
    {
        std::vector<int> values;
        for (int i = 0; i < count; ++i) {
            values.push_back((i * 0x25 + 0x0a) & 0xff);
            i2cDevice().poke(start + static_cast<std::uint32_t>(i), static_cast<std::uint8_t>(values.back()));
        }
        return values;
    }

    /** A block as it is listed: 16 bytes a line, each line led by the sub-address of its first. */
    static std::string listing(std::uint32_t start, const std::vector<int>& values)
    {
        std::string text;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i % 16 == 0) {
                text.append(i == 0 ? "" : "\n").append(hexDigits(start + static_cast<std::uint32_t>(i), 4)).append(":");
            }
            text.append(" ").append(hexDigits(static_cast<std::uint32_t>(values[i]), 2));
        }
        return text + "\n";
    }
};

TEST_F(I2cTest, SetTakesChannelAndDevice)
{
    EXPECT_EQ(call(doI2c, "i2c set 2 3c"), (Outcome{0, targetLine("2", "3c")}));
    EXPECT_EQ(call(doI2c, "i2c set 0 0"), (Outcome{0, targetLine("0", "00")}));
    EXPECT_EQ(call(doI2c, "i2c set 3 7 9"), (Outcome{0, targetLine("3", "07")})) << "what follows is not looked at";
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(I2cTest, SetWithoutArgumentsReportsOnly)
{
    EXPECT_EQ(call(doI2c, "i2c set"), (Outcome{0, targetLine("1", "50")}));
    EXPECT_EQ(call(doI2c, "i2c set ,\t"), (Outcome{0, targetLine("1", "50")}));
    EXPECT_EQ(call(doI2c, "i2c set"), (Outcome{0, targetLine("1", "50")}));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(I2cTest, SetWithOneArgumentKeepsTheDevice)
{
    EXPECT_EQ(call(doI2c, "i2c set 4"), (Outcome{0, targetLine("4", "50")}));
    EXPECT_EQ(call(doI2c, "i2c set"), (Outcome{0, targetLine("4", "50")}));
}

TEST_F(I2cTest, SetTakesHexadecimalNumbersOfAnySize)
{
    EXPECT_EQ(call(doI2c, "i2c set 1a 0X7F").output, targetLine("26", "7f"));
    EXPECT_EQ(call(doI2c, "i2c set 0x10 123").output, targetLine("16", "123"));
    EXPECT_EQ(call(doI2c, "i2c set ffffffff ffffffff").output, targetLine("-1", "ffffffff"));
    EXPECT_EQ(call(doI2c, "i2c set 80000000 80000000").output, targetLine("-2147483648", "80000000"));
    EXPECT_EQ(call(doI2c, "i2c set 100000002 200000033").output, targetLine("2", "33"));
    EXPECT_EQ(call(doI2c, "i2c set 5 6").output, targetLine("5", "06"));
    EXPECT_EQ(call(doI2c, "i2c set zz -5").output, targetLine("0", "00"));
    EXPECT_EQ(call(doI2c, "i2c set 2g 3h").output, targetLine("2", "03"));
}

TEST_F(I2cTest, EveryTransferGoesToTheTarget)
{
    call(doI2c, "i2c set ffffffff 123");
    call(doI2c, "i2c rb 1");
    call(doI2c, "i2c wb 2 3");
    call(doI2c, "i2c rbs 4 5");
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekI2cRead(-1, 0x123, 0x1, 1)", "vekI2cWrite(-1, 0x123, 0x2, 1, buffer)",
                            "vekI2cRead(-1, 0x123, 0x4, 5)"));
}

TEST_F(I2cTest, OnlySetChangesTheTarget)
{
    for (const char* text : {"i2c", "i2c foo 7 8", "i2c rb 7", "i2c wb 7 8", "i2c rbs 7 8", "i2c rb", "i2c sett 7 8"}) {
        call(doI2c, text);
        EXPECT_EQ(call(doI2c, "i2c set").output, targetLine("1", "50")) << text;
    }
    recording_vek::setResult("vekI2cRead", -5);
    recording_vek::setResult("vekI2cWrite", -5);
    for (const char* text : {"i2c rb 7", "i2c wb 7 8", "i2c rbs 7 8"}) {
        call(doI2c, text);
        EXPECT_EQ(call(doI2c, "i2c set").output, targetLine("1", "50")) << text;
    }
}

TEST_F(I2cTest, ReadByteShowsSubAddressAndByte)
{
    i2cDevice().pokeBytes(0x10, {0xab, 0x05});
    EXPECT_EQ(call(doI2c, "i2c rb 10"), (Outcome{0, "0010: ab\n"}));
    EXPECT_EQ(call(doI2c, "i2c rb 11"), (Outcome{0, "0011: 05\n"}));
    EXPECT_EQ(call(doI2c, "i2c rb 0 7"), (Outcome{0, "0000: 00\n"})) << "what follows is not looked at";
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x10, 1)", "vekI2cRead(1, 0x50, 0x11, 1)",
                                               "vekI2cRead(1, 0x50, 0x0, 1)"));
}

TEST_F(I2cTest, SubAddressesAreHexadecimalAndThirtyTwoBitsWide)
{
    EXPECT_EQ(call(doI2c, "i2c rb 0xAbC").output, "0abc: 00\n");
    EXPECT_EQ(call(doI2c, "i2c rb 12345").output, "12345: 00\n");
    EXPECT_EQ(call(doI2c, "i2c rb ffffffff").output, "ffffffff: 00\n");
    EXPECT_EQ(call(doI2c, "i2c rb 123456789").output, "23456789: 00\n");
    EXPECT_EQ(call(doI2c, "i2c rb xyz").output, "0000: 00\n");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0xabc, 1)", "vekI2cRead(1, 0x50, 0x12345, 1)",
                                               "vekI2cRead(1, 0x50, 0xffffffff, 1)",
                                               "vekI2cRead(1, 0x50, 0x23456789, 1)", "vekI2cRead(1, 0x50, 0x0, 1)"));
}

TEST_F(I2cTest, WriteByteIsSilent)
{
    EXPECT_EQ(call(doI2c, "i2c wb 10 34"), Outcome{});
    EXPECT_EQ(call(doI2c, "i2c wb 12345678 9 77"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekI2cWrite(1, 0x50, 0x10, 1, buffer)", "vekI2cWrite(1, 0x50, 0x12345678, 1, buffer)"));
    EXPECT_EQ(i2cDevice().bytes(), (std::map<std::uint64_t, std::uint8_t>{{0x10, 0x34}, {0x12345678, 0x09}}));
}

TEST_F(I2cTest, WriteByteCutsTheValueToEightBits)
{
    EXPECT_EQ(call(doI2c, "i2c WB 5 1ff"), Outcome{});
    EXPECT_EQ(call(doI2c, "i2c wb 6 100"), Outcome{});
    EXPECT_EQ(call(doI2c, "i2c wb 7 123456789abcdef01"), Outcome{});
    EXPECT_EQ(call(doI2c, "i2c wb 8 zz"), Outcome{});
    EXPECT_EQ(i2cDevice().bytes(),
              (std::map<std::uint64_t, std::uint8_t>{{0x5, 0xff}, {0x6, 0x00}, {0x7, 0x01}, {0x8, 0x00}}));
}

TEST_F(I2cTest, FailuresAreTextsOfTheLibrary)
{
    for (const int code : {-1, -5, -110, 1, 2, INT_MIN, INT_MAX}) {
        recording_vek::setResult("vekI2cRead", code);
        recording_vek::setResult("vekI2cWrite", code);
        recording_vek::outputs().i2c_error_texts[code] = "no answer %s %n, ever";
        const std::string asked = "vekI2cErrString(" + std::to_string(code) + ")";
        const Outcome reported{0, "I2C error: no answer %s %n, ever\n"};
        EXPECT_EQ(call(doI2c, "i2c rb 10"), reported) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x10, 1)", asked));
        EXPECT_EQ(call(doI2c, "i2c wb 10 5"), reported) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cWrite(1, 0x50, 0x10, 1, buffer)", asked));
        EXPECT_EQ(call(doI2c, "i2c rbs 10 5"), reported) << code;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x10, 5)", asked));
    }
}

TEST_F(I2cTest, BlocksAreListedSixteenBytesALine)
{
    const std::vector<int> values = fillDevice(0x10, 0x11);
    EXPECT_EQ(call(doI2c, "i2c rbs 10 11"),
              (Outcome{0, "0010: 0a 2f 54 79 9e c3 e8 0d 32 57 7c a1 c6 eb 10 35\n0020: 5a\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x10, 17)"));
}

TEST_F(I2cTest, BlocksOfEverySizeAreListedToTheirEnd)
{
    for (const int count : {1, 2, 15, 16, 17, 31, 32, 33, 255, 256}) {
        const std::vector<int> values = fillDevice(3, count);
        EXPECT_EQ(call(doI2c, "i2c rbs 3 " + hexDigits(static_cast<std::uint32_t>(count))),
                  (Outcome{0, listing(3, values)}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x3, " + std::to_string(count) + ")"));
    }
}

TEST_F(I2cTest, BlocksEndAtTwoHundredAndFiftySixBytes)
{
    const std::vector<int> values = fillDevice(0x10, 256);
    for (const char* count : {"100", "101", "300", "7fffffff", "500000300"}) {
        EXPECT_EQ(call(doI2c, std::string("i2c rbs 10 ") + count + " Block"), (Outcome{0, listing(0x10, values)}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x10, 256)")) << count;
        EXPECT_EQ(readFile("Block"), bytes(values)) << count;
    }
}

TEST_F(I2cTest, LabelsOfBlocksWrapAtThirtyTwoBits)
{
    EXPECT_EQ(call(doI2c, "i2c rbs fffffff8 11"),
              (Outcome{0, "fffffff8: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n0008: 00\n"}));
    EXPECT_EQ(call(doI2c, "i2c rbs 1fff8 11"),
              (Outcome{0, "1fff8: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n20008: 00\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekI2cRead(1, 0x50, 0xfffffff8, 17)", "vekI2cRead(1, 0x50, 0x1fff8, 17)"));
}

TEST_F(I2cTest, BlockOfNoBytesIsAnEmptyLine)
{
    for (const char* text : {"i2c rbs 0 0", "i2c rbs 0 zz", "i2c rbs 0 100000000"}) {
        EXPECT_EQ(call(doI2c, text), (Outcome{0, "\n"})) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x0, 0)")) << text;
    }
    writeFile("Empty", "something");
    EXPECT_EQ(call(doI2c, "i2c rbs 0 0 Empty"), (Outcome{0, "\n"}));
    EXPECT_EQ(readFile("Empty"), "");
}

TEST_F(I2cTest, NegativeCountsAreRefused)
{
    writeFile("Kept", "something");
    for (const char* count : {"80000000", "ffffffff", "1ffffffff"}) {
        EXPECT_EQ(call(doI2c, std::string("i2c rbs 0 ") + count), Outcome{-2}) << count;
        EXPECT_EQ(call(doI2c, std::string("i2c rbs 0 ") + count + " Kept"), Outcome{-2}) << count;
        EXPECT_EQ(call(doI2c, std::string("i2c rbs 0 ") + count + " New"), Outcome{-2}) << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(readFile("Kept"), "something");
    EXPECT_FALSE(std::filesystem::exists("New"));
}

TEST_F(I2cTest, BlocksAreSavedRaw)
{
    const std::vector<int> values = fillDevice(0, 256);
    EXPECT_EQ(call(doI2c, "i2c rbs 0 100 Eeprom.Bin"), (Outcome{0, listing(0, values)}));
    EXPECT_EQ(readFile("Eeprom.Bin"), bytes(values));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cRead(1, 0x50, 0x0, 256)"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1) << "the name keeps its case";
}

TEST_F(I2cTest, SavedBlockReplacesAFile)
{
    i2cDevice().pokeBytes(8, {0x0d, 0x0a, 0x00});
    writeFile("old", "a longer text than the block");
    EXPECT_EQ(call(doI2c, "i2c rbs 8,3,old,other"), (Outcome{0, "0008: 0d 0a 00\n"}));
    EXPECT_EQ(readFile("old"), bytes({0x0d, 0x0a, 0x00}));
    EXPECT_FALSE(std::filesystem::exists("other")) << "what follows is not looked at";
}

TEST_F(I2cTest, NameRunsToABlankACommaOrATab)
{
    std::filesystem::create_directory("Folder");
    EXPECT_EQ(call(doI2c, "i2c rbs 0 1 Folder/Name\t"), (Outcome{0, "0000: 00\n"}));
    EXPECT_EQ(readFile("Folder/Name"), bytes({0}));
    EXPECT_EQ(call(doI2c, "i2c rbs 0 1 ends\r\n"), (Outcome{0, "0000: 00\n"}));
    EXPECT_EQ(readFile("ends\r\n"), bytes({0})) << "line ends are part of a name";
}

TEST_F(I2cTest, FileThatCannotBeOpenedIsPassedOver)
{
    std::filesystem::create_directory("Folder");
    for (const std::string& name : {std::string("missing/file"), std::string("Folder"), std::string(5000, 'n')}) {
        EXPECT_EQ(call(doI2c, "i2c rbs 0 1 " + name), (Outcome{0, "0000: 00\n"})) << name;
    }
}

TEST_F(I2cTest, PipeThatNobodyReadsIsPassedOver)
{
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_TRUE(returnsInTime(doI2c, "i2c rbs 0 1 pipe", Outcome{0, "0000: 00\n"}));
}

TEST_F(I2cTest, FullDiskIsToldOnStandardError)
{
    const Outcome outcome = call(doI2c, "i2c rbs 0 1 /dev/full");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "0000: 00\n");
    EXPECT_THAT(outcome.error, HasSubstr("/dev/full"));
}

TEST_F(I2cTest, FailedReadWritesNoFile)
{
    writeFile("kept", "something");
    for (const int code : {-5, 3}) {
        recording_vek::setResult("vekI2cRead", code);
        EXPECT_EQ(call(doI2c, "i2c rbs 0 4 kept").status, 0);
        EXPECT_EQ(call(doI2c, "i2c rbs 0 4 new").status, 0);
    }
    EXPECT_EQ(readFile("kept"), "something");
    EXPECT_FALSE(std::filesystem::exists("new"));
}

TEST_F(I2cTest, SavedFilesAreClosed)
{
    const std::ptrdiff_t before = countOpenDescriptors();
    call(doI2c, "i2c rbs 0 4 file");
    call(doI2c, "i2c rbs 0 4 missing/file");
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    const int reader = open("fifo", O_RDONLY | O_NONBLOCK);
    call(doI2c, "i2c rbs 0 4 fifo");
    close(reader);
    EXPECT_EQ(countOpenDescriptors(), before);
}

TEST_F(I2cTest, MissingArgumentsAreRefused)
{
    for (const char* text : {"i2c", "i2c ", "i2c ,\t", "", "i2c rb", "i2c rb ,", "i2c wb", "i2c wb 5", "i2c wb 5 \t",
                             "i2c rbs", "i2c rbs 5", "i2c rbs 5 ,"}) {
        EXPECT_EQ(call(doI2c, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(I2cTest, OtherSubCommandsAreRefused)
{
    for (const char* text : {"i2c rbx 0", "i2c r 0", "i2c w 0 1", "i2c se 0 1", "i2c sets 0 1", "i2c rbss 0 1",
                             "i2c wbs 0 1", "i2c foo", "i2c 0 1", "i2c set\r\n", "i2c rb\n 0", "i2c i2c"}) {
        EXPECT_EQ(call(doI2c, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(I2cTest, SubCommandsAreCaseBlind)
{
    for (const char* word : {"set", "SET", "Set", "sEt", "seT"}) {
        EXPECT_EQ(call(doI2c, std::string("i2c ") + word), (Outcome{0, targetLine("1", "50")})) << word;
    }
    for (const char* word : {"rb", "RB", "Rb", "rB"}) {
        EXPECT_EQ(call(doI2c, std::string("i2c ") + word + " 1"), (Outcome{0, "0001: 00\n"})) << word;
    }
    for (const char* word : {"rbs", "RBS", "Rbs", "rBs", "rbS"}) {
        EXPECT_EQ(call(doI2c, std::string("I2C ") + word + " 1 1"), (Outcome{0, "0001: 00\n"})) << word;
    }
    for (const char* word : {"wb", "WB", "Wb", "wB"}) {
        takeDeviceCalls();
        EXPECT_EQ(call(doI2c, std::string("i2c ") + word + " 1 2"), Outcome{}) << word;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekI2cWrite(1, 0x50, 0x1, 1, buffer)")) << word;
    }
}

TEST_F(I2cTest, TurnsOnlyTheSubCommandIntoUpperCase)
{
    std::string text = "i2c a`b{z\xe4 cd";
    EXPECT_EQ(doI2c(text.data(), 0), -2);
    EXPECT_EQ(text.substr(0, 3), "i2c");
    EXPECT_EQ(text.substr(4, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(11), "cd");
}

TEST_F(I2cTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"i2c rb 10", "i2c,rb,10", "i2c\trb\t10", " ,\t\r\ni2c ,\trb, 10 ,", "i2c\rrb 10",
                             "i2c\nrb 10", "i2c rb 10\r\n"}) {
        EXPECT_EQ(call(doI2c, text), (Outcome{0, "0010: 00\n"})) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(call(doI2c, "i2c rb \n10"), (Outcome{0, "0000: 00\n"}));
    EXPECT_EQ(call(doI2c, "i2c\r\nrb 10"), Outcome{-2});
    EXPECT_EQ(call(doI2c, "i2c rb 10\r20"), (Outcome{0, "0010: 00\n"}));
}

TEST_F(I2cTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doI2c, "i2c rb 10", 1), (Outcome{0, "0010: 00\n"}));
    EXPECT_EQ(call(doI2c, "i2c rb 10", 1), (Outcome{0, "0010: 00\n"}));
    EXPECT_EQ(call(doI2c, "i2c rb", 1), Outcome{-2});
}

TEST_F(I2cTest, LineRunsOverEveryPath)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("i2c rb 10"), (Outcome{0, "0010: 00\n"})) << mode;
    }
    EXPECT_EQ(runLine("i2c rb"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

TEST_F(I2cTest, EmptyLineDoesNotRepeat)
{
    runLine("i2c rb 10");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

}  // namespace
}  // namespace console_test
