#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "captured_output.h"
#include "child_process.h"
#include "open_card.h"
#include "scratch_folder.h"
#include "vek.h"

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kBlock = 128;
constexpr int kMaxEdid = 32768;

/** An EDID as vekDDCRead() delivers it. */
struct Edid {
    int result = 0;
    int length = -1;
    uint8_t* data = nullptr;
    int valid = -1;

    explicit Edid(int channel) { result = vekDDCRead(channel, &length, &data, &valid); }

    bool untouched() const { return length == -1 && data == nullptr && valid == -1; }
    std::string bytes() const { return {reinterpret_cast<const char*>(data), static_cast<std::size_t>(length)}; }
};

/** What a function prints on standard output; its result must be 0. */
template <typename Function>
std::string printedBy(Function function)
{
    CapturedOutput output;
    EXPECT_EQ(function(), 0);
    return output.take();
}

/** What edid_print_helper() prints. */
std::string printed(const void* data, int length, int flag = 1)
{
    return printedBy([&] { return edid_print_helper(static_cast<const uint8_t*>(data), length, flag); });
}

std::string printed(const Edid& edid, int flag = 1)
{
    return printed(edid.data, edid.length, flag);
}

/** A monitor as it is attached by default. */
struct Monitor {
    int card;
    int channel;
    int blocks;
    std::string name;
    std::string firstTiming;
};

std::ostream& operator<<(std::ostream& out, const Monitor& monitor)
{
    return out << "card " << monitor.card << " channel " << monitor.channel;
}

class AttachedMonitor : public testing::TestWithParam<Monitor>
{
protected:
    AttachedMonitor() { EXPECT_GE(vekRwOpen(GetParam().card), 0); }
    ~AttachedMonitor() override { vekClose(); }
};
INSTANTIATE_TEST_SUITE_P(Cards, AttachedMonitor,
                         testing::Values(Monitor{0, 0, 2, "Vista 24H", "DTD 1: 1920x1080  60.000 Hz"},
                                         Monitor{0, 1, 4, "Vista 27U", "DTD 1: 3840x2160  60.000 Hz"},
                                         Monitor{0, 3, 1, "Desk 19S", "DTD 1: 1280x1024  60.020 Hz"},
                                         Monitor{1, 0, 2, "Desk 24W", "DTD 1: 1920x1200  59.950 Hz"}));

TEST_P(AttachedMonitor, DeliversAllItsBlocks)
{
    const Edid edid(GetParam().channel);
    ASSERT_EQ(edid.result, VEK_OK);
    EXPECT_EQ(edid.length, GetParam().blocks * kBlock);
    EXPECT_EQ(edid.valid, 1);
    const std::string bytes = edid.bytes();
    EXPECT_THAT(bytes, StartsWith(std::string("\x00\xff\xff\xff\xff\xff\xff\x00", 8)));
    for (auto block = bytes.begin(); block != bytes.end(); block += kBlock) {
        EXPECT_EQ(std::accumulate(block, block + kBlock, 0) % 256, 0);
    }
    EXPECT_THAT(bytes, HasSubstr(GetParam().name));
}

TEST_P(AttachedMonitor, IsPrintedDecodedAndWithoutOddities)
{
    const std::string text = printed(Edid(GetParam().channel));
    EXPECT_THAT(text, HasSubstr("Display Product Name: '" + GetParam().name + "'"));
    EXPECT_THAT(text, HasSubstr(GetParam().firstTiming));
    EXPECT_THAT(text, EndsWith("Errors and oddities: none\n"));
}

TEST_P(AttachedMonitor, IsPrintedTheSameFromAFile)
{
    const ScratchFolder folder;
    const Edid edid(GetParam().channel);
    const std::string file = folder.write("m.bin", edid.bytes());
    EXPECT_EQ(printedBy([&] { return do_edid_parse(file.c_str()); }), printed(edid));
}

TEST_P(AttachedMonitor, IsTheLastEdidOnceItIsRead)
{
    const Edid edid(GetParam().channel);
    EXPECT_EQ(printedBy([] { return do_edid_parse(nullptr); }), printed(edid));
}

TEST_P(AttachedMonitor, IsPrintedWithoutExtensionsOnRequest)
{
    const std::string text = printed(Edid(GetParam().channel), 0);
    EXPECT_THAT(text, HasSubstr("Block 0"));
    EXPECT_THAT(text, Not(HasSubstr("Block 1")));
}

TEST(Ddc, FindsNoMonitorOnEmptyChannels)
{
    for (const auto& [card, channel] : {std::pair{0, 2}, std::pair{1, 1}}) {
        ASSERT_GE(vekRwOpen(card), 0);
        const Edid edid(channel);
        EXPECT_EQ(edid.result, VEK_NO_RESPONSE);
        EXPECT_TRUE(edid.untouched());
    }
    vekClose();
}

TEST(Ddc, HasFourChannelsOnOneChipAndTwoOnTheOther)
{
    for (const auto& [card, channels] : {std::pair{0, 4}, std::pair{1, 2}}) {
        ASSERT_GE(vekRwOpen(card), 0);
        for (const int channel : {-0x7fffffff - 1, -1, channels, channels + 1, 0x7fffffff}) {
            const Edid edid(channel);
            EXPECT_EQ(edid.result, -22) << channel;
            EXPECT_TRUE(edid.untouched());
        }
        for (int channel = 0; channel < channels; ++channel) {
            EXPECT_NE(Edid(channel).result, -22) << channel;
        }
    }
    vekClose();
}

class Ddc0 : public FirstCard
{
};

TEST_F(Ddc0, NeedsAllItsOutputs)
{
    int number = 7;
    uint8_t* data = nullptr;
    EXPECT_EQ(vekDDCRead(0, nullptr, &data, &number), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDDCRead(0, &number, nullptr, &number), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekDDCRead(0, &number, &data, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(data, nullptr);
}

TEST_F(Ddc0, KeepsTheLastEdidWhenAReadFails)
{
    const Edid first(0);
    const std::string text = printed(first);
    EXPECT_EQ(Edid(2).result, VEK_NO_RESPONSE);
    EXPECT_EQ(Edid(9).result, VEK_BAD_ARGUMENT);
    EXPECT_EQ(printed(first), text);
    EXPECT_EQ(printedBy([] { return do_edid_parse(nullptr); }), text);
}

TEST_F(Ddc0, DoesNotTakeAParsedFileForTheLastEdid)
{
    const ScratchFolder folder;
    const std::string file = folder.write("m.bin", Edid(3).bytes());
    const Edid last(0);
    CapturedOutput output;
    ASSERT_EQ(do_edid_parse(file.c_str()), VEK_OK);
    output.take();
    ASSERT_EQ(do_edid_parse(nullptr), VEK_OK);
    EXPECT_THAT(output.take(), HasSubstr("Vista 24H"));
}

TEST(EdidPrint, RefusesWhatIsNothing)
{
    const uint8_t byte = 0;
    CapturedOutput output;
    EXPECT_EQ(edid_print_helper(nullptr, 128, 1), VEK_BAD_ARGUMENT);
    for (const int length : {0, -1, -0x7fffffff - 1}) {
        EXPECT_EQ(edid_print_helper(&byte, length, 1), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(output.take(), "");
}

TEST(EdidPrint, NeedsNoCard)
{
    vekClose();
    const std::vector<uint8_t> zeros(kBlock);
    EXPECT_THAT(printed(zeros.data(), kBlock), StartsWith("EDID: 128 bytes\n"));
}

TEST(EdidPrint, LooksAtNoMoreThanTheLongestEdid)
{
    // The pages behind the longest EDID cannot be touched.
    const std::size_t guard = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* pages = mmap(nullptr, kMaxEdid + guard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<char*>(pages) + kMaxEdid, guard, PROT_NONE), 0);
    EXPECT_EQ(printed(pages, 0x7fffffff), printed(pages, kMaxEdid));
    munmap(pages, kMaxEdid + guard);
}

TEST(EdidParse, LooksAtNoMoreOfAFileThanTheLongestEdid)
{
    const ScratchFolder folder;
    const std::string longest(kMaxEdid, '\0');
    const std::string file = folder.write("long.bin", longest + std::string(kBlock, 'x'));
    EXPECT_EQ(printedBy([&] { return do_edid_parse(file.c_str()); }), printed(longest.data(), kMaxEdid));
}

TEST(EdidParse, PrintsAFileThatIsNoEdid)
{
    const ScratchFolder folder;
    const std::string text = "no EDID at all";
    const std::string file = folder.write("text", text);
    EXPECT_EQ(printedBy([&] { return do_edid_parse(file.c_str()); }),
              printed(text.data(), static_cast<int>(text.size())));
}

/** Parses what cannot be: one line on standard error, nothing on standard output. @return the result. */
int failingParse(const char* path)
{
    CapturedOutput output;
    CapturedError error;
    const int result = do_edid_parse(path);
    const std::string line = error.take();
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
    EXPECT_THAT(line, EndsWith("\n"));
    EXPECT_THAT(line, HasSubstr(path == nullptr ? "edid" : path));
    EXPECT_EQ(output.take(), "");
    return result;
}

TEST(EdidParse, ReportsAFileThatCannotBeRead)
{
    const ScratchFolder folder;
    EXPECT_EQ(failingParse(folder.path("missing").c_str()), VEK_IO_ERROR);
    EXPECT_EQ(failingParse(folder.path("").c_str()), VEK_IO_ERROR);
    EXPECT_EQ(failingParse(""), VEK_IO_ERROR);
    EXPECT_EQ(failingParse("/dev/zero"), VEK_IO_ERROR);
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(failingParse(fifo.c_str()), VEK_IO_ERROR);
    EXPECT_EQ(failingParse(folder.write("empty", "").c_str()), VEK_BAD_DATA);
}

TEST(EdidParse, ReportsThatNoCardIsOpen)
{
    vekClose();
    EXPECT_EQ(failingParse(nullptr), VEK_NO_PATH);
}

/** Runs one command line of the finished program. */
child_process::Result runProgram(const std::string& line, const std::string& folder)
{
    return child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--cmd", line}, .folder = folder});
}

/** What follows the line that the program starts with. */
std::string afterStartLine(const std::string& output)
{
    return output.substr(output.find('\n') + 1);
}

TEST(EdidInProgram, IsPrintedTheSameFromDdcAndFromItsFile)
{
    const ScratchFolder folder;
    for (const std::string channel : {"0", "1", "3"}) {
        const auto fetched = runProgram("ddc " + channel + " m.bin", folder.path(""));
        const auto parsed = runProgram("edid parse m.bin", folder.path(""));
        EXPECT_EQ(afterStartLine(parsed.output), afterStartLine(fetched.output));
        EXPECT_THAT(parsed.output, HasSubstr("Errors and oddities: none"));
        EXPECT_EQ(parsed.error, "");
    }
}

TEST(EdidInProgram, IsReportedWhenNoneHasBeenRead)
{
    const ScratchFolder folder;
    const auto result = runProgram("edid parse", folder.path(""));
    EXPECT_EQ(afterStartLine(result.output), "");
    EXPECT_EQ(result.error, "edid: none has been read yet\n");
}

}  // namespace
