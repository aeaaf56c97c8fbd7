#include <sys/stat.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::outputs;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/** The longest EDID that is taken for one: 256 blocks. */
constexpr std::size_t kLongestEdid = 0x8000;

/** Some block, with every byte in it from 256 bytes on. */
std::vector<std::uint8_t> someEdid(std::size_t size)
{
    std::vector<std::uint8_t> edid(size);
    for (std::size_t i = 0; i < size; ++i) {
        edid[i] = static_cast<std::uint8_t>(i * 0x1d + (i >> 8));
    }
    return edid;
}

std::string textOf(const std::vector<std::uint8_t>& data)
{
    return {data.begin(), data.end()};
}

class DdcTest : public FolderTest
{
protected:
    DdcTest() { outputs().edid = someEdid(256); }
};

TEST_F(DdcTest, HandsTheBlockToTheDecoder)
{
    EXPECT_EQ(call(doDDC, "ddc 0"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, 256, 1)"));
    EXPECT_EQ(recording_vek::received().printed_edid, outputs().edid);
    EXPECT_TRUE(std::filesystem::is_empty(".")) << "no file without a name";
}

TEST_F(DdcTest, ChannelsAreHexadecimalAndOfAnySize)
{
    for (const char* text : {"ddc a", "ddc 0X1f", "ddc ffffffff", "ddc 80000000", "ddc 100000003", "ddc zz"}) {
        EXPECT_EQ(call(doDDC, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAre("vekDDCRead(10)", "edid_print_helper(buffer, 256, 1)", "vekDDCRead(31)",
                            "edid_print_helper(buffer, 256, 1)", "vekDDCRead(-1)", "edid_print_helper(buffer, 256, 1)",
                            "vekDDCRead(-2147483648)", "edid_print_helper(buffer, 256, 1)", "vekDDCRead(3)",
                            "edid_print_helper(buffer, 256, 1)", "vekDDCRead(0)", "edid_print_helper(buffer, 256, 1)"));
}

TEST_F(DdcTest, NeedsAChannel)
{
    for (const char* text : {"ddc", "ddc ", "ddc ,\t", "ddc\r", ""}) {
        EXPECT_EQ(call(doDDC, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(DdcTest, ChannelThatTheCardLacksIsNamedWithTheCard)
{
    recording_vek::setResult("vekDDCRead", -22);
    outputs().selected_card = 2;
    EXPECT_EQ(call(doDDC, "ddc 3 File"), (Outcome{0, "DDC 3 for card 2 is not exist\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(3)", "vekGetCard()"));
    outputs().selected_card = -19;
    EXPECT_EQ(call(doDDC, "ddc ffffffff"), (Outcome{0, "DDC -1 for card -19 is not exist\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(-1)", "vekGetCard()"));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(DdcTest, OtherFailuresAreNamedWithTheirCode)
{
    writeFile("Kept", "something");
    for (const int code : {-1, -5, -6, -21, -23, -110, 1, 22, INT_MIN, INT_MAX}) {
        recording_vek::setResult("vekDDCRead", code);
        EXPECT_EQ(call(doDDC, "ddc 1b Kept"),
                  (Outcome{0, "DDC 27 get edid failed with err=" + std::to_string(code) + "\n"}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(27)")) << code;
    }
    EXPECT_EQ(readFile("Kept"), "something");
    call(doDDC, "ddc 0 New");
    EXPECT_FALSE(std::filesystem::exists("New"));
}

TEST_F(DdcTest, InvalidBlockIsPrintedAndSavedAllTheSame)
{
    outputs().edid_valid = 0;
    EXPECT_EQ(call(doDDC, "ddc 0 Invalid"), (Outcome{0, "EDID is invalid\n"}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, 256, 1)"));
    EXPECT_EQ(recording_vek::received().printed_edid, outputs().edid);
    EXPECT_EQ(readFile("Invalid"), textOf(outputs().edid));
}

TEST_F(DdcTest, AnyFlagButZeroMeansValid)
{
    for (const int flag : {1, 2, 0x100, -1, INT_MIN}) {
        outputs().edid_valid = flag;
        EXPECT_EQ(call(doDDC, "ddc 0"), Outcome{}) << flag;
    }
}

TEST_F(DdcTest, DecodersResultDoesNotMatter)
{
    for (const int code : {-1, -22, 1}) {
        recording_vek::setResult("edid_print_helper", code);
        EXPECT_EQ(call(doDDC, "ddc 0 File" + std::to_string(code)), Outcome{}) << code;
        EXPECT_EQ(readFile("File" + std::to_string(code)), textOf(outputs().edid)) << code;
    }
}

TEST_F(DdcTest, BlocksAreSavedRaw)
{
    for (const std::size_t size :
         {std::size_t{1}, std::size_t{128}, std::size_t{256}, std::size_t{512}, kLongestEdid}) {
        outputs().edid = someEdid(size);
        writeFile("Edid.Bin", std::string(2 * kLongestEdid, 'x'));
        EXPECT_EQ(call(doDDC, "ddc 1 Edid.Bin"), Outcome{}) << size;
        EXPECT_EQ(readFile("Edid.Bin"), textOf(outputs().edid)) << size;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1) << "the name keeps its case";
}

TEST_F(DdcTest, LengthOfTheLibraryCounts)
{
    outputs().edid_length = 128;
    EXPECT_EQ(call(doDDC, "ddc 1 half"), Outcome{});
    EXPECT_EQ(readFile("half"), textOf(someEdid(256)).substr(0, 128));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(1)", "edid_print_helper(buffer, 128, 1)"));
}

TEST_F(DdcTest, BlockWithoutBytesIsAnEmptyFile)
{
    outputs().edid_length = 0;
    writeFile("empty", "something");
    EXPECT_EQ(call(doDDC, "ddc 1 empty"), Outcome{});
    EXPECT_EQ(readFile("empty"), "");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(1)", "edid_print_helper(buffer, 0, 1)"));
}

TEST_F(DdcTest, NoMoreThanTheLongestEdidIsSaved)
{
    for (const std::size_t size : {kLongestEdid + 1, 4 * kLongestEdid}) {
        outputs().edid = someEdid(size);
        EXPECT_EQ(call(doDDC, "ddc 0 long"), Outcome{});
        EXPECT_EQ(readFile("long"), textOf(outputs().edid).substr(0, kLongestEdid));
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, " + std::to_string(size) + ", 1)"));
    }
}

TEST_F(DdcTest, NegativeLengthSavesNothing)
{
    for (const int length : {-1, -256, INT_MIN}) {
        outputs().edid_length = length;
        writeFile("none", "something");
        EXPECT_EQ(call(doDDC, "ddc 0 none"), Outcome{}) << length;
        EXPECT_EQ(readFile("none"), "") << length;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, " + std::to_string(length) + ", 1)"));
    }
}

TEST_F(DdcTest, MissingBlockSavesNothing)
{
    outputs().edid.clear();
    outputs().edid.shrink_to_fit();
    ASSERT_EQ(outputs().edid.data(), nullptr);
    for (const int length : {0, 128, INT_MAX, INT_MIN}) {
        outputs().edid_length = length;
        writeFile("none", "something");
        EXPECT_EQ(call(doDDC, "ddc 0 none"), Outcome{}) << length;
        EXPECT_EQ(readFile("none"), "") << length;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAre("vekDDCRead(0)", "edid_print_helper(null, " + std::to_string(length) + ", 1)"));
    }
}

TEST_F(DdcTest, FileThatCannotBeOpenedIsPassedOver)
{
    std::filesystem::create_directory("Folder");
    for (const std::string& name : {std::string("missing/file"), std::string("Folder"), std::string(5000, 'n')}) {
        EXPECT_EQ(call(doDDC, "ddc 0 " + name), Outcome{}) << name;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, 256, 1)"));
    }
}

TEST_F(DdcTest, PipeThatNobodyReadsIsPassedOver)
{
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_TRUE(returnsInTime(doDDC, "ddc 0 pipe", Outcome{}));
}

TEST_F(DdcTest, FullDiskIsToldOnStandardError)
{
    const Outcome outcome = call(doDDC, "ddc 0 /dev/full");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, HasSubstr("/dev/full"));
}

TEST_F(DdcTest, SavedFilesAreClosed)
{
    const std::ptrdiff_t before = countOpenDescriptors();
    call(doDDC, "ddc 0 file");
    call(doDDC, "ddc 0 missing/file");
    EXPECT_EQ(countOpenDescriptors(), before);
}

TEST_F(DdcTest, SplitsAtBlanksCommasAndTabs)
{
    for (const char* text : {"ddc 2 file", "ddc,2,file,", "DDC\t2\tfile", " ,\t\r\nddc ,\t2, file rest", "ddc\r2 file",
                             "ddc\n2 file", "ddc 2\n file"}) {
        EXPECT_EQ(call(doDDC, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(2)", "edid_print_helper(buffer, 256, 1)")) << text;
        EXPECT_EQ(readFile("file"), textOf(outputs().edid)) << text;
        std::filesystem::remove("file");
        EXPECT_TRUE(std::filesystem::is_empty(".")) << text;
    }
    // Behind the command word line ends are no delimiters any more.
    call(doDDC, "ddc \n2");
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(0)", "edid_print_helper(buffer, 256, 1)"));
    call(doDDC, "ddc 2 ends\r\n");
    EXPECT_EQ(readFile("ends\r\n"), textOf(outputs().edid)) << "line ends are part of a name";
}

TEST_F(DdcTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doDDC, "ddc 2", 1), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDDCRead(2)", "edid_print_helper(buffer, 256, 1)"));
    EXPECT_EQ(call(doDDC, "ddc", 1), Outcome{-2});
}

TEST_F(DdcTest, LineRunsOnTheDriverDeviceOnly)
{
    EXPECT_EQ(runLine("ddc 0"), Outcome{});
    EXPECT_EQ(takeDeviceCalls().size(), 2U);
    EXPECT_EQ(runLine("ddc"), (Outcome{-2, std::string(kBadArgumentLine)}));
    for (const int mode : {1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("ddc 0 file"), (Outcome{-3, std::string(kModeRefusedLine)})) << mode;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(DdcTest, EmptyLineDoesNotRepeat)
{
    runLine("ddc 0");
    takeDeviceCalls();
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

class EdidTest : public ConsoleTest
{
};

TEST_F(EdidTest, ParsesAFile)
{
    EXPECT_EQ(call(doEdid, "edid parse Folder/Monitor.Bin"), Outcome{});
    EXPECT_EQ(call(doEdid, "edid parse first second"), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(R"(do_edid_parse("Folder/Monitor.Bin"))", R"(do_edid_parse("first"))"));
}

TEST_F(EdidTest, ParsesTheLastBlockWithoutAPath)
{
    for (const char* text : {"edid parse", "edid parse ,\t\r\n"}) {
        EXPECT_EQ(call(doEdid, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("do_edid_parse(null)")) << text;
    }
}

TEST_F(EdidTest, SubCommandIsCaseBlind)
{
    for (const char* word : {"parse", "Parse", "PARSE", "pArSe", "parsE"}) {
        EXPECT_EQ(call(doEdid, std::string("edid ") + word + " path"), Outcome{}) << word;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(R"(do_edid_parse("path"))")) << word;
    }
}

TEST_F(EdidTest, OtherAndMissingSubCommandsAreRefused)
{
    for (const char* text : {"edid", "edid ", "edid ,\t\r\n", "", "edid show", "edid pars path", "edid parsed path",
                             "edid path", "edid p", "edid r", "edid show parse path"}) {
        EXPECT_EQ(call(doEdid, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(EdidTest, ParsersResultDoesNotMatter)
{
    for (const int code : {-5, -38, -2, 1, 7}) {
        recording_vek::setResult("do_edid_parse", code);
        EXPECT_EQ(call(doEdid, "edid parse path"), Outcome{}) << code;
        EXPECT_EQ(call(doEdid, "edid parse"), Outcome{}) << code;
    }
}

TEST_F(EdidTest, SplitsAtBlanksCommasTabsAndLineEnds)
{
    for (const char* text : {"edid parse path", "edid,parse,path", "EDID\tparse\tpath", "edid\r\nparse\r\npath\r\n",
                             " ,\t\r\nedid ,\t\r\nparse ,\t\r\npath rest"}) {
        EXPECT_EQ(call(doEdid, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(R"(do_edid_parse("path"))")) << text;
    }
}

TEST_F(EdidTest, TurnsOnlyTheSubCommandIntoUpperCase)
{
    std::string text = "edid a`b{z\xe4 cd";
    EXPECT_EQ(doEdid(text.data(), 0), -2);
    EXPECT_EQ(text.substr(0, 4), "edid");
    EXPECT_EQ(text.substr(5, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(12), "cd");
}

TEST_F(EdidTest, PathMayBeLong)
{
    const std::string path(9000, 'p');
    EXPECT_EQ(call(doEdid, "edid parse " + path), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("do_edid_parse(\"" + path + "\")"));
}

TEST_F(EdidTest, IgnoresTheRepeatFlag)
{
    EXPECT_EQ(call(doEdid, "edid parse path", 1), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre(R"(do_edid_parse("path"))"));
    EXPECT_EQ(call(doEdid, "edid", 1), Outcome{-2});
}

TEST_F(EdidTest, LineRunsOverEveryPathAndIsRepeated)
{
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine("edid parse path"), Outcome{}) << mode;
        EXPECT_EQ(runLine(""), Outcome{}) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre(R"(do_edid_parse("path"))", R"(do_edid_parse("path"))")) << mode;
    }
    EXPECT_EQ(runLine("edid show"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

}  // namespace
}  // namespace console_test
