#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "allocation_failure.h"
#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::setResult;
using recording_vek::spiFlash;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/** Results that are failures. */
constexpr int kFailures[] = {-1, -5, -22, INT_MIN, 1, 2, INT_MAX};

constexpr std::uint32_t kFlashSize = 0x200000;

class SpiTest : public FolderTest
{
protected:
    /** Fills the flash from an address on with a pattern that is not periodic in lines. */
    static std::string fillFlash(std::uint32_t address, std::size_t count)
    {
        const std::string data = pattern(count);
        for (std::size_t i = 0; i < count; ++i) {
            spiFlash().poke(address + i, static_cast<std::uint8_t>(data[i]));
        }
        return data;
    }

    static std::string pattern(std::size_t count)
    {
        std::string data;
        for (std::size_t i = 0; i < count; ++i) {
            data += static_cast<char>(i * 0x25 + (i >> 8) + 0x0a);
        }
        return data;
    }

    /** The flash holds exactly this data, at this address. */
    static void expectFlash(std::uint64_t address, const std::string& data)
    {
        std::string held;
        for (const auto& [at, byte] : spiFlash().bytes()) {
            EXPECT_EQ(at, address + held.size());
            held += static_cast<char>(byte);
        }
        EXPECT_TRUE(held == data);
    }

    /** The dump of data, address labels having eight digits. */
    static std::string dump(std::uint32_t address, const std::string& data)
    {
        std::string text;
        for (std::size_t start = 0; start < data.size(); start += 16) {
            std::string field = hexDigits(address + static_cast<std::uint32_t>(start), 8) + ": ";
            std::string column;
            for (const char character : data.substr(start, 16)) {
                const auto byte = static_cast<std::uint8_t>(character);
                field += hexDigits(byte, 2) + " ";
                column += byte >= 0x20 && byte <= 0x7e ? character : '.';
            }
            field.resize(58, ' ');
            text.append(field).append("\t").append(column).append("\n");
        }
        return text;
    }
};

// ---- Reading

TEST_F(SpiTest, ReadDumpsTheBytes)
{
    spiFlash().pokeBytes(0x1fe0, {0x41, 0x42, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a,
                                  0x4b, 0x4c, 0x4d, 0x4e, 0x4f, 0x50, 0x00, 0x7f, 0x7e, 0xff});
    EXPECT_EQ(call(doSpi, "spi read 1fe0 14"),
              (Outcome{0,
                       "00001fe0: 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50 \tABCDEFGHIJKLMNOP\n"
                       "00001ff0: 00 7f 7e ff                                     \t..~.\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiReadBuffer(8160, 20)"));
}

TEST_F(SpiTest, ReadDumpsTwoHundredAndFiftySixBytesAtMost)
{
    const std::string data = fillFlash(0x12345, 0x1001);
    for (const int size : {1, 15, 16, 17, 0xff, 0x100, 0x101, 0x110, 0x1000, 0x1001}) {
        const std::string shown = dump(0x12345, data.substr(0, static_cast<std::size_t>(std::min(size, 0x100))));
        EXPECT_EQ(call(doSpi, "spi read 12345 " + hexDigits(static_cast<std::uint32_t>(size))),
                  (Outcome{0, shown + (size > 0x100 ? "...\n" : "")}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiReadBuffer(74565, " + std::to_string(size) + ")"));
    }
}

TEST_F(SpiTest, ReadReachesTheEndOfTheFlash)
{
    const std::string data = fillFlash(0x1ffff0, 0x20);
    EXPECT_EQ(call(doSpi, "spi read 1ffff0 10"), (Outcome{0, dump(0x1ffff0, data.substr(0, 0x10))}));
    EXPECT_EQ(call(doSpi, "spi read 1fffff 1").status, 0);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiReadBuffer(2097136, 16)", "vekSpiReadBuffer(2097151, 1)"));
}

TEST_F(SpiTest, ReadOfTheWholeFlashIsSavedWhole)
{
    std::string data(kFlashSize, '\0');
    for (const std::uint32_t address : {0x0U, 0xfffU, 0x1000U, 0x100000U, 0x1fff80U}) {
        data.replace(address, 0x80, fillFlash(address, 0x80));
    }
    EXPECT_EQ(call(doSpi, "spi read 0 200000 Image"), (Outcome{0, dump(0, data.substr(0, 0x100)) + "...\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiReadBuffer(0, 2097152)"));
    EXPECT_TRUE(readFile("Image") == data);
}

TEST_F(SpiTest, ReadPastTheFlashIsRefused)
{
    writeFile("kept", "something");
    for (const char* range : {"1ffff0 11", "1fffff 2", "200000 1", "0 200001", "1 200000", "200002 ffffffff",
                              "7ffffffe 1", "0 7fffffff", "300000 ffffffff"}) {
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range), Outcome{-2}) << range;
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range + " kept"), Outcome{-2}) << range;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(readFile("kept"), "something");
}

TEST_F(SpiTest, ReadWithoutSizeIsRefused)
{
    for (const char* text : {"spi read", "spi read ,\t", "spi read 400", "spi read 400 ,", "spi read 0 0",
                             "spi read 0 zz", "spi read 0 0x", "spi read 0 100000000", "spi read 400 0 file"}) {
        EXPECT_EQ(call(doSpi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists("file"));
}

TEST_F(SpiTest, ReadNumbersAreHexadecimalAndCutToThirtyTwoBits)
{
    for (const char* range : {"0X1aB 2", "1ab 0x2", "1000001ab 100000002", "xyz 2", "1abg 2,"}) {
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range).status, 0) << range;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekSpiReadBuffer(427, 2)", "vekSpiReadBuffer(427, 2)", "vekSpiReadBuffer(427, 2)",
                            "vekSpiReadBuffer(0, 2)", "vekSpiReadBuffer(427, 2)"));
}

// The library refuses what the sum of address and size does not.
TEST_F(SpiTest, SumsAndAddressesBelowZeroAreLeftToTheLibrary)
{
    setResult("vekSpiReadBuffer", -22);
    for (const char* range :
         {"7fffffff 1", "80000000 1", "ffffffff 1", "fffffff0 20", "7fffff00 101", "80000000 101"}) {
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range), Outcome{}) << range;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekSpiReadBuffer(2147483647, 1)", "vekSpiReadBuffer(-2147483648, 1)",
                            "vekSpiReadBuffer(-1, 1)", "vekSpiReadBuffer(-16, 32)", "vekSpiReadBuffer(2147483392, 257)",
                            "vekSpiReadBuffer(-2147483648, 257)"));
}

TEST_F(SpiTest, SizesBelowZeroCannotBeHad)
{
    writeFile("kept", "something");
    for (const char* range : {"0 ffffffff", "0 80000000", "200001 ffffffff", "80000000 80000000", "7fffffff 80000001",
                              "ffffffff ffffffff", "0 1ffffffff", "0 fffffffd"}) {
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range), (Outcome{-1, "Out of memory\n"})) << range;
        EXPECT_EQ(call(doSpi, std::string("spi read ") + range + " kept"), (Outcome{-1, "Out of memory\n"})) << range;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(readFile("kept"), "something");
}

TEST_F(SpiTest, ReadWithoutMemoryIsReported)
{
    const AllocationFailure failure(4);
    EXPECT_EQ(call(doSpi, "spi read 0 1 file"), (Outcome{-1, "Out of memory\n"}));
    EXPECT_EQ(call(doSpi, "spi read 0 200000"), (Outcome{-1, "Out of memory\n"}));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists("file"));
    EXPECT_EQ(runLine("spi read 0 1"), (Outcome{-1, "Out of memory\n" + std::string(kBadCommandLine)}));
}

TEST_F(SpiTest, ReadBufferHoldsWholeWords)
{
    for (const auto& [size, request] : std::map<std::string, std::size_t>{
             {"1", 4}, {"3", 4}, {"4", 4}, {"5", 8}, {"101", 260}, {"104", 260}, {"1fffff", kFlashSize}}) {
        takeLargestRequest();
        EXPECT_EQ(call(doSpi, "spi read 0 " + size).status, 0);
        EXPECT_EQ(takeLargestRequest(), request) << size;
    }
}

TEST_F(SpiTest, LargestReadBufferIsAskedFor)
{
    const AllocationFailure failure(0x1000000);
    takeLargestRequest();
    EXPECT_EQ(call(doSpi, "spi read 80000000 7fffffff"), (Outcome{-1, "Out of memory\n"}));
    EXPECT_EQ(takeLargestRequest(), std::size_t{0x80000000});
}

TEST_F(SpiTest, FailedReadIsSilent)
{
    writeFile("kept", "something");
    for (const int code : kFailures) {
        setResult("vekSpiReadBuffer", code);
        EXPECT_EQ(call(doSpi, "spi read 10 101"), Outcome{}) << code;
        EXPECT_EQ(call(doSpi, "spi read 10 101 kept"), Outcome{}) << code;
        EXPECT_EQ(call(doSpi, "spi read 10 101 new"), Outcome{}) << code;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekSpiReadBuffer(16, 257)", "vekSpiReadBuffer(16, 257)", "vekSpiReadBuffer(16, 257)"));
    }
    EXPECT_EQ(readFile("kept"), "something");
    EXPECT_FALSE(std::filesystem::exists("new"));
}

TEST_F(SpiTest, ReadIsSavedRaw)
{
    const std::string data = fillFlash(0x20, 0x101);
    EXPECT_EQ(call(doSpi, "spi read 20 101 Dump.Bin"), (Outcome{0, dump(0x20, data.substr(0, 0x100)) + "...\n"}));
    EXPECT_EQ(readFile("Dump.Bin"), data);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiReadBuffer(32, 257)"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1) << "the name keeps its case";
}

TEST_F(SpiTest, SavedReadReplacesAFile)
{
    spiFlash().pokeBytes(8, {0x0d, 0x0a, 0x00});
    writeFile("old", "a longer text than the read");
    EXPECT_EQ(call(doSpi, "spi read 8,3,old,other"), (Outcome{0, dump(8, bytes({0x0d, 0x0a, 0}))}));
    EXPECT_EQ(readFile("old"), bytes({0x0d, 0x0a, 0x00}));
    EXPECT_FALSE(std::filesystem::exists("other")) << "what follows is not looked at";
}

TEST_F(SpiTest, FileThatCannotBeOpenedIsPassedOver)
{
    std::filesystem::create_directory("Folder");
    for (const std::string& name : {std::string("missing/file"), std::string("Folder"), std::string(5000, 'n')}) {
        EXPECT_EQ(call(doSpi, "spi read 0 1 " + name), (Outcome{0, dump(0, bytes({0}))})) << name;
    }
}

TEST_F(SpiTest, PipeThatNobodyReadsIsPassedOver)
{
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_TRUE(returnsInTime(doSpi, "spi read 0 1 pipe", Outcome{0, dump(0, bytes({0}))}));
}

TEST_F(SpiTest, FullDiskIsToldOnStandardError)
{
    const Outcome outcome = call(doSpi, "spi read 0 1 /dev/full");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, dump(0, bytes({0})));
    EXPECT_THAT(outcome.error, HasSubstr("/dev/full"));
}

// ---- Erasing

TEST_F(SpiTest, EraseHandsAddressAndSizeOn)
{
    for (const char* range : {"10000 1000", "0 0", "0X1fffff 0xAb 7", "ffffffff 80000000", "7fffffff 7fffffff",
                              "100000001 200000002", "zz -1"}) {
        EXPECT_EQ(call(doSpi, std::string("spi erase ") + range), Outcome{}) << range;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekSpiErase(65536, 4096)", "vekSpiErase(0, 0)", "vekSpiErase(2097151, 171)",
                            "vekSpiErase(-1, -2147483648)", "vekSpiErase(2147483647, 2147483647)", "vekSpiErase(1, 2)",
                            "vekSpiErase(0, 0)"));
}

TEST_F(SpiTest, EraseNeedsAddressAndSize)
{
    for (const char* text : {"spi erase", "spi erase ,\t", "spi erase 10000", "spi erase 10000 ,\t"}) {
        EXPECT_EQ(call(doSpi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- Programming

TEST_F(SpiTest, ProgramTakesAFileWhole)
{
    const std::string data = pattern(1000);
    writeFile("Image.bin", data);
    EXPECT_EQ(call(doSpi, "spi program 0x12340 Image.bin"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 74560, 1000)"));
    expectFlash(0x12340, data);
    EXPECT_EQ(readFile("Image.bin"), data);
}

TEST_F(SpiTest, ProgramTakesFilesOfWholeWordsOnly)
{
    for (const std::size_t length : {4U, 8U, 252U, 256U, 4096U, 0x10004U}) {
        writeFile("image", pattern(length));
        EXPECT_EQ(call(doSpi, "spi program 10 image"), Outcome{}) << length;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 16, " + std::to_string(length) + ")"));
    }
    for (const std::size_t length : {1U, 2U, 3U, 5U, 6U, 7U, 255U, 257U, 1001U, 1002U, 1003U, 4097U}) {
        writeFile("image", pattern(length));
        EXPECT_EQ(call(doSpi, "spi program 0 image"), Outcome{}) << length;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramReachesTheEndOfTheFlash)
{
    writeFile("word", "abcd");
    EXPECT_EQ(call(doSpi, "spi program 1ffffc word"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 2097148, 4)"));
    expectFlash(0x1ffffc, "abcd");
}

TEST_F(SpiTest, ProgramFillsTheWholeFlash)
{
    const std::string image = pattern(kFlashSize);
    writeFile("image", image);
    EXPECT_EQ(call(doSpi, "spi program 0 image"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 0, 2097152)"));
    expectFlash(0, image);
}

TEST_F(SpiTest, ProgramPastTheFlashIsRefused)
{
    writeFile("word", "abcd");
    for (const char* address : {"1ffffd", "1fffff", "200000", "200001", "7ffffffb"}) {
        EXPECT_EQ(call(doSpi, std::string("spi program ") + address + " word"), Outcome{-2}) << address;
    }
    writeFile("image", pattern(kFlashSize + 4));
    EXPECT_EQ(call(doSpi, "spi program 0 image"), Outcome{-2});
    writeFile("flash", pattern(kFlashSize));
    EXPECT_EQ(call(doSpi, "spi program 1 flash"), Outcome{-2});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramRefusesAFileOfAnyLengthWithoutReadingIt)
{
    for (const std::uintmax_t length : {0x80000000UL, 0xfffffffcUL, 0x100000000UL, 0x100000004UL, 0x4000000000UL}) {
        writeFile("image", "");
        std::filesystem::resize_file("image", length);
        takeLargestRequest();
        EXPECT_EQ(call(doSpi, "spi program 0 image"), Outcome{-2}) << length;
        EXPECT_LE(takeLargestRequest(), kFlashSize + 4) << length;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramAddressesAreHexadecimalAndCutToThirtyTwoBits)
{
    writeFile("word", "abcd");
    for (const char* address : {"0XaB", "1000000ab", "zz", "abg"}) {
        EXPECT_EQ(call(doSpi, std::string("spi program ") + address + " word more"), Outcome{}) << address;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 171, 4)", "vekSpiProgram(buffer, 171, 4)",
                                               "vekSpiProgram(buffer, 0, 4)", "vekSpiProgram(buffer, 171, 4)"));
}

TEST_F(SpiTest, ProgramAddressesBelowZeroAreLeftToTheLibrary)
{
    setResult("vekSpiProgram", -22);
    writeFile("word", "abcd");
    for (const char* address : {"ffffffff", "80000000", "fffffffc"}) {
        EXPECT_EQ(call(doSpi, std::string("spi program ") + address + " word"), Outcome{}) << address;
    }
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, -1, 4)", "vekSpiProgram(buffer, -2147483648, 4)",
                                               "vekSpiProgram(buffer, -4, 4)"));
}

TEST_F(SpiTest, ProgramOfAnEmptyFileIsOneOfNoBytes)
{
    writeFile("empty", "");
    EXPECT_EQ(call(doSpi, "spi program 10 empty"), Outcome{});
    EXPECT_EQ(call(doSpi, "spi program 200000 empty"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 16, 0)", "vekSpiProgram(buffer, 2097152, 0)"));
}

// Attributes of the kernel have the length of a page, whatever they hold.
TEST_F(SpiTest, ProgramFileThatEndsBeforeItsLengthIsSilent)
{
    const std::string attribute = "/sys/devices/system/cpu/online";
    if (!std::filesystem::exists(attribute) || std::filesystem::file_size(attribute) % 4 != 0 ||
        readFile(attribute).size() == std::filesystem::file_size(attribute)) {
        GTEST_SKIP() << "no file that is shorter than its length";
    }
    EXPECT_EQ(call(doSpi, "spi program 0 " + attribute), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramNeedsAddressAndFile)
{
    for (const char* text : {"spi program", "spi program ,\t", "spi program 0", "spi program 0 ,\t"}) {
        EXPECT_EQ(call(doSpi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramFileThatCannotBeReadIsSilent)
{
    std::filesystem::create_directory("Folder");
    for (const std::string& name :
         {std::string("missing"), std::string("missing/file"), std::string("Folder"), std::string(5000, 'n')}) {
        EXPECT_EQ(call(doSpi, "spi program 0 " + name), Outcome{}) << name;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists("missing"));
}

TEST_F(SpiTest, ProgramFileThatIsAPipeIsSilent)
{
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_TRUE(returnsInTime(doSpi, "spi program 0 pipe", Outcome{}));
}

TEST_F(SpiTest, ProgramWithoutMemoryIsReported)
{
    writeFile("image", pattern(1000));
    const AllocationFailure failure(1000);
    EXPECT_EQ(call(doSpi, "spi program 0 image"), (Outcome{-1, "Out of memory\n"}));
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, ProgramNameKeepsItsCaseAndItsLineEnds)
{
    writeFile("Image\r\n", "abcd");
    EXPECT_EQ(call(doSpi, "spi program 4 Image\r\n"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProgram(buffer, 4, 4)"));
    EXPECT_EQ(call(doSpi, "spi program 4 Image"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- Protection

TEST_F(SpiTest, ProtectionTakesNoArguments)
{
    EXPECT_EQ(call(doSpi, "spi prot"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProtect()"));
    EXPECT_EQ(call(doSpi, "spi unprot"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiUnprotect()"));
    EXPECT_EQ(call(doSpi, "spi prot 1 2"), Outcome{});
    EXPECT_EQ(call(doSpi, "spi unprot prot"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiProtect()", "vekSpiUnprotect()"));
}

// ---- All of them

TEST_F(SpiTest, OnlyTheResultOfAReadIsLookedAt)
{
    writeFile("word", "abcd");
    for (const int code : kFailures) {
        for (const char* function : {"vekSpiErase", "vekSpiProgram", "vekSpiProtect", "vekSpiUnprotect"}) {
            setResult(function, code);
        }
        for (const char* words : {"erase 0 1000", "program 0 word", "prot", "unprot"}) {
            EXPECT_EQ(call(doSpi, std::string("spi ") + words), Outcome{}) << words << code;
        }
        EXPECT_EQ(takeDeviceCalls().size(), 4U);
    }
}

TEST_F(SpiTest, FilesAreClosed)
{
    writeFile("word", "abcd");
    writeFile("odd", "abcde");
    const std::ptrdiff_t before = countOpenDescriptors();
    for (const char* words : {"read 0 4 file", "read 0 4 missing/file", "program 0 word", "program 0 odd",
                              "program 200000 word", "program 0 missing", "program 0 ."}) {
        call(doSpi, std::string("spi ") + words);
        EXPECT_EQ(countOpenDescriptors(), before) << words;
    }
}

TEST_F(SpiTest, OtherSubCommandsAreRefused)
{
    for (const char* text : {"", "spi", "spi ", "spi ,\t", "spi foo", "spi rea 0 4", "spi reads 0 4", "spi r 0 4",
                             "spi erases 0 4", "spi programs 0 word", "spi prog 0 word", "spi pro", "spi prott",
                             "spi unpro", "spi un prot", "spi unprotect", "spi protect", "spi prot\r\n", "spi 0 4"}) {
        EXPECT_EQ(call(doSpi, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(SpiTest, SubCommandsAreCaseBlind)
{
    writeFile("word", "abcd");
    for (const char* words : {"READ 0 1", "rEaD 0 1", "ERASE 0 1", "eRaSe 0 1", "PROGRAM 0 word", "pRoGrAm 0 word",
                              "PROT", "pRoT", "UNPROT", "uNpRoT"}) {
        EXPECT_EQ(call(doSpi, std::string("SPI ") + words).status, 0) << words;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekSpiReadBuffer(0, 1)", "vekSpiReadBuffer(0, 1)", "vekSpiErase(0, 1)",
                            "vekSpiErase(0, 1)", "vekSpiProgram(buffer, 0, 4)", "vekSpiProgram(buffer, 0, 4)",
                            "vekSpiProtect()", "vekSpiProtect()", "vekSpiUnprotect()", "vekSpiUnprotect()"));
}

TEST_F(SpiTest, TurnsOnlyTheSubCommandIntoUpperCase)
{
    std::string text = "spi a`b{z\xe4 cd";
    EXPECT_EQ(doSpi(text.data(), 0), -2);
    EXPECT_EQ(text.substr(0, 3), "spi");
    EXPECT_EQ(text.substr(4, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(11), "cd");

    std::string erase = "spi erase ab cd";
    EXPECT_EQ(doSpi(erase.data(), 0), 0);
    EXPECT_EQ(erase.substr(4, 5), "ERASE");
    EXPECT_EQ(erase.substr(10, 2), "ab");
    EXPECT_EQ(erase.substr(13), "cd");
}

TEST_F(SpiTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"spi erase 10 20", "spi,erase,10,20", "spi\terase\t10\t20",
                             " ,\t\r\nspi ,\terase, 10 ,20 ,", "spi\rerase 10 20", "spi\nerase 10 20\r\n"}) {
        EXPECT_EQ(call(doSpi, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiErase(16, 32)")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    EXPECT_EQ(call(doSpi, "spi\r\nerase 10 20"), Outcome{-2});
    EXPECT_EQ(call(doSpi, "spi erase 10\n20"), Outcome{-2});
    EXPECT_EQ(call(doSpi, "spi erase \n10 20"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekSpiErase(0, 32)"));
}

TEST_F(SpiTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doSpi, "spi read 10 1", 1), (Outcome{0, dump(0x10, bytes({0}))}));
    EXPECT_EQ(call(doSpi, "spi read 10 1", 1), (Outcome{0, dump(0x10, bytes({0}))}));
    EXPECT_EQ(call(doSpi, "spi", 1), Outcome{-2});
}

TEST_F(SpiTest, LineRunsOverEveryPath)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("spi read 10 1"), (Outcome{0, dump(0x10, bytes({0}))})) << mode;
        EXPECT_EQ(runLine("spi read 10"), (Outcome{-2, std::string(kBadArgumentLine)})) << mode;
    }
}

TEST_F(SpiTest, EmptyLineDoesNotRepeat)
{
    runLine("spi erase 0 1000");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

}  // namespace
}  // namespace console_test
