#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "captured_output.h"
#include "open_card.h"
#include "vek.h"

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

constexpr uint64_t kRouting = 0x024;
constexpr uint64_t kGopVersion = 0x30e008;
constexpr char kUntouched = 0x55;

/** The report for a keyword; it has to end in a line end and to leave the rest of the buffer alone. */
std::string query(const std::string& keyword)
{
    std::array<char, VEK_QUERY_REPORT_SIZE + 64> buffer;
    buffer.fill(kUntouched);
    EXPECT_EQ(vekQueryInfo(keyword.c_str(), buffer.data()), VEK_OK) << keyword;
    EXPECT_NE(std::find(buffer.begin(), buffer.begin() + VEK_QUERY_REPORT_SIZE, '\0'),
              buffer.begin() + VEK_QUERY_REPORT_SIZE);
    EXPECT_TRUE(std::all_of(buffer.begin() + VEK_QUERY_REPORT_SIZE, buffer.end(),
                            [](char character) { return character == kUntouched; }));
    const std::string report = buffer.data();
    EXPECT_EQ(report.empty() ? '\0' : report.back(), '\n') << keyword;
    return report;
}

class FirstCardQueries : public FirstCard
{
};

class Queries : public EitherCard
{
};

const std::vector<std::string> kKeywords = {"ID",  "CARD",   "GOP",    "AXI",  "VPU",       "3D",   "2D",
                                            "DDR", "3DCORE", "2DCORE", "VRAM", "BANDWIDTH", "LOAD", "CHANNEL"};

uint32_t reg(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(address, &value), VEK_OK);
    return value;
}

gpu_info information()
{
    gpu_info info{};
    EXPECT_EQ(vekInfoRead(&info), VEK_OK);
    EXPECT_EQ(info.used + info.free, info.total);
    return info;
}

std::string freeNodes()
{
    CapturedOutput output;
    EXPECT_EQ(vekDumpVramFree(), VEK_OK);
    return output.take();
}

TEST_F(FirstCardQueries, ReportsItsFacts)
{
    EXPECT_EQ(query("ID"), "id: vendor 0x6e5a, device 0x0201, revision 0x01, subsystem 0x6e5a 0x2010\n");
    EXPECT_EQ(query("CARD"), "cards: 2\n");
    EXPECT_EQ(query("GOP"), "gop: version 1.12, mode 1920x1080\n");
    EXPECT_EQ(query("AXI"), "axi: 600 MHz\n");
    EXPECT_EQ(query("VPU"), "vpu: 500 MHz\n");
    EXPECT_EQ(query("3D"), "3d: 1000 MHz\n3d shader: 1000 MHz\n");
    EXPECT_EQ(query("2D"), "2d: 600 MHz\n");
    EXPECT_EQ(query("DDR"), "ddr: 1200 MHz\n");
    EXPECT_EQ(query("3DCORE"), "3d cores: 2\n");
    EXPECT_EQ(query("2DCORE"), "2d cores: 1\n");
    EXPECT_EQ(query("BANDWIDTH"),
              "bandwidth: 38.4 GB/s, DDR at 1200 MHz over 128 bits\n"
              "pcie link: x16 of x16 at 8.0 of 8.0 GT/s\n");
    EXPECT_EQ(query("LOAD"),
              "load of 3d core 0: 62.0%\n"
              "load of 3d core 1: 31.0%\n"
              "load of 2d core 0: 25.0%\n"
              "load of vpu core 0: 40.0%\n");
}

TEST_F(FirstCardQueries, ReportsItsChannelsAndWhatIsAttached)
{
    EXPECT_EQ(query("CHANNEL"),
              "channels: 4 I2C, 4 CRTC\n"
              "HDMI-0: DDC 0, CRTC-0, display of 1920x1080\n"
              "HDMI-1: DDC 1, CRTC-1, display of 3840x2160\n"
              "DP-0: AUX, CRTC-2, display of 2560x1440\n"
              "DP-1 (eDP): AUX, CRTC-2, display of 1920x1080\n"
              "VGA: DDC 3, CRTC-3, display of 1280x1024\n"
              "DVO: DDC 2, off, no display\n");
    const uint32_t routing = reg(kRouting);
    EXPECT_EQ(vekRegWriteLong(kRouting, routing & ~0xfU), VEK_OK);
    EXPECT_THAT(query("CHANNEL"), HasSubstr("HDMI-0: DDC 0, off, display of 1920x1080\n"));
    EXPECT_EQ(vekRegWriteLong(kRouting, routing), VEK_OK);
}

TEST_F(FirstCardQueries, ReportsItsClocksAndLoadsAsTheyAreNow)
{
    ASSERT_EQ(vekPowerSetState(VEK_POWER_SAVE), VEK_OK);
    EXPECT_EQ(query("3D"), "3d: 500 MHz\n3d shader: 500 MHz\n");
    EXPECT_THAT(query("LOAD"), StartsWith("load of 3d core 0: 100.0%\nload of 3d core 1: 62.0%\n"));
    ASSERT_EQ(vekPowerSetState(VEK_POWER_STANDBY), VEK_OK);
    EXPECT_EQ(query("2D"), "2d: off\n");
    EXPECT_THAT(query("LOAD"), StartsWith("load of 3d core 0: 0.0%\n"));
    ASSERT_EQ(vekPowerSetState(VEK_POWER_PERFORMANCE), VEK_OK);
    ASSERT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_2DCORE), VEK_OK);
    EXPECT_EQ(query("2D"), "2d: 27 MHz\n");
    ASSERT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_ON, VEK_CLOCK_SOURCE_2DCORE), VEK_OK);
}

TEST_F(FirstCardQueries, ReportsTheMarksOfTheUefiDriver)
{
    const uint32_t mark = reg(kGopVersion);
    EXPECT_EQ(vekRegWriteLong(kGopVersion, 0), VEK_OK);
    EXPECT_EQ(query("GOP"), "gop: not started\n");
    EXPECT_EQ(vekRegWriteLong(kGopVersion, 0x8000'0207), VEK_OK);
    EXPECT_EQ(query("GOP"), "gop: version 2.7, mode 1920x1080\n");
    EXPECT_EQ(vekRegWriteLong(kGopVersion, mark), VEK_OK);
}

TEST_P(Queries, ReportsEverythingWithoutAKeyword)
{
    std::string all;
    for (const std::string& keyword : kKeywords) {
        all += query(keyword);
    }
    EXPECT_EQ(query(""), all);
    EXPECT_LT(all.size(), std::size_t{VEK_QUERY_REPORT_SIZE});
}

TEST_P(Queries, RefusesOtherKeywordsAndNullPointers)
{
    std::array<char, VEK_QUERY_REPORT_SIZE> report;
    report.fill(kUntouched);
    const std::string endless(100000, 'A');
    for (const char* keyword : {"id", "IDS", "I", " ID", "ID ", "AXI\n", "3DCORES", "LOAD 3", "CHANNELS", "BANDWIDTHS",
                                "%s%n", "\x80", endless.c_str()}) {
        EXPECT_EQ(vekQueryInfo(keyword, report.data()), VEK_BAD_ARGUMENT) << keyword;
    }
    EXPECT_EQ(vekQueryInfo(nullptr, report.data()), VEK_BAD_ARGUMENT);
    EXPECT_TRUE(std::all_of(report.begin(), report.end(), [](char character) { return character == kUntouched; }));
    EXPECT_EQ(vekQueryInfo("ID", nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekQueryInfo(nullptr, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekInfoRead(nullptr), VEK_BAD_ARGUMENT);
    int number = 7;
    EXPECT_EQ(vekRvtcoreVer(nullptr, &number, &number, &number), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRvtcoreVer(&number, nullptr, &number, &number), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRvtcoreVer(&number, &number, nullptr, &number), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekRvtcoreVer(&number, &number, &number, nullptr), VEK_BAD_ARGUMENT);
    EXPECT_EQ(number, 7);
}

TEST_P(Queries, CountsTheCards)
{
    for (const int card : {0, 1}) {
        int value = -7;
        EXPECT_EQ(vekQueryInt(VEK_QUERY_CARD_COUNT, &value, card), VEK_OK);
        EXPECT_EQ(value, 2);
    }
    int value = -7;
    for (const int item : {0, 7, 9, -1, 0x7fffffff, -0x7fffffff - 1}) {
        EXPECT_EQ(vekQueryInt(item, &value, 0), VEK_BAD_ARGUMENT) << item;
    }
    for (const int card : {2, 3, -1, 0x7fffffff, -0x7fffffff - 1}) {
        EXPECT_EQ(vekQueryInt(VEK_QUERY_CARD_COUNT, &value, card), VEK_NO_RESPONSE) << card;
    }
    EXPECT_EQ(value, -7);
    EXPECT_EQ(vekQueryInt(VEK_QUERY_CARD_COUNT, nullptr, 0), VEK_BAD_ARGUMENT);
}

TEST_P(Queries, TellsADriverVersionThatKnowsMemoryInformation)
{
    int major = 0;
    int minor = -1;
    int third = -1;
    int fourth = -1;
    EXPECT_EQ(vekRvtcoreVer(&major, &minor, &third, &fourth), VEK_OK);
    EXPECT_GE(major, 1);
    EXPECT_GE(minor, 0);
    EXPECT_GE(third, 0);
    EXPECT_GE(fourth, 0);
}

TEST_P(Queries, TellsTheUseOfMemoryTheSameEverywhere)
{
    const gpu_info info = information();
    EXPECT_EQ(info.total, GetParam() == 0 ? 4096 : 2048);
    EXPECT_EQ(info.reserved, 0);
    EXPECT_GT(info.used, 0);

    std::istringstream list(freeNodes());
    std::string line;
    std::getline(list, line);
    EXPECT_THAT(line, testing::ContainsRegex("^node +first +last +size$"));
    uint64_t sum = 0;
    unsigned nodes = 0;
    uint64_t end = 0;
    while (std::getline(list, line) && line.find("total") != 0) {
        unsigned number = 0;
        unsigned long long first = 0;
        unsigned long long last = 0;
        unsigned long long size = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "%u 0x%llx 0x%llx %llu KB", &number, &first, &last, &size), 4) << line;
        EXPECT_EQ(number, nodes);
        EXPECT_GE(first, end);
        EXPECT_EQ(last - first + 1, size * 1024);
        end = last + 1;
        sum += size;
        ++nodes;
    }
    EXPECT_EQ(line, "total: " + std::to_string(nodes) + (nodes == 1 ? " node, " : " nodes, ") + std::to_string(sum) +
                        " of " + std::to_string(static_cast<uint64_t>(info.total) * 1024) + " KB free");
    EXPECT_EQ(static_cast<uint64_t>(info.free), sum / 1024);

    const uint64_t usedKb = static_cast<uint64_t>(info.total) * 1024 - sum;
    const uint64_t permille =
        (usedKb * 1000 + static_cast<uint64_t>(info.total) * 512) / (static_cast<uint64_t>(info.total) * 1024);
    EXPECT_EQ(query("VRAM"), "vram: " + std::to_string(permille / 10) + "." + std::to_string(permille % 10) +
                                 "% used, " + std::to_string(info.used) + " of " + std::to_string(info.total) +
                                 " MB\n");
}

INSTANTIATE_TEST_SUITE_P(Cards, Queries, testing::Values(0, 1));

TEST_F(FirstCardQueries, MovesMemoryWithItsCommands)
{
    const gpu_info before = information();
    const std::string nodesBefore = freeNodes();

    EXPECT_EQ(vekVramWriteLong(0x10000000, 1), VEK_OK);
    EXPECT_EQ(freeNodes(), nodesBefore) << "to write into memory does not allocate it";

    {
        CapturedOutput output;
        char open[] = "func 3d 1 2";
        EXPECT_EQ(tovira_func(open, 0), VEK_OK);
    }
    EXPECT_EQ(information().used, before.used + 8);

    ASSERT_EQ(vekZoomVideoInit(0, 0, 0, 0), VEK_OK);
    ASSERT_EQ(vekZoomVideoStart(0, 0, 0, 100, 100, 0, 0, 0, 0), VEK_OK);
    EXPECT_GT(information().used, before.used + 8);
    {
        CapturedOutput output;
        char close[] = "func close";
        EXPECT_EQ(tovira_func(close, 0), VEK_OK);
    }
    EXPECT_THAT(freeNodes(), HasSubstr("total: 2 nodes, ")) << "the traces leave a hole before the capture buffer";
    ASSERT_EQ(vekZoomVideoStop(0), VEK_OK);
    EXPECT_EQ(freeNodes(), nodesBefore);

    const uint32_t routing = reg(kRouting);
    EXPECT_EQ(vekRegWriteLong(kRouting, 0), VEK_OK);
    EXPECT_LT(information().used, before.used) << "without displays no frame buffers";
    EXPECT_EQ(vekRegWriteLong(kRouting, routing), VEK_OK);
    EXPECT_EQ(freeNodes(), nodesBefore);
}

TEST_F(FirstCardQueries, SwitchesToTheOtherCardAndBack)
{
    EXPECT_EQ(vekRegWriteLong(0x700, 0x11111111), VEK_OK);
    EXPECT_EQ(vekVramWriteLong(0x5000, 0xaaaaaaaa), VEK_OK);
    const std::string first = query("");
    ASSERT_EQ(vekSetCard(1), VEK_OK);
    EXPECT_EQ(vekGetCard(), 1);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_DRIVER);
    EXPECT_EQ(vekRegWriteLong(0x700, 0x22222222), VEK_OK);
    EXPECT_EQ(vekVramWriteLong(0x5000, 0xbbbbbbbb), VEK_OK);
    EXPECT_EQ(query("ID"), "id: vendor 0x6e5a, device 0x0202, revision 0x00, subsystem 0x6e5a 0x2020\n");
    EXPECT_EQ(query("BANDWIDTH"),
              "bandwidth: 17.1 GB/s, DDR at 1066 MHz over 64 bits\n"
              "pcie link: x8 of x8 at 8.0 of 8.0 GT/s\n");
    EXPECT_EQ(query("3DCORE"), "3d cores: 1\n");
    ASSERT_EQ(vekPowerSetState(VEK_POWER_STANDBY), VEK_OK);
    ASSERT_EQ(vekSetCard(0), VEK_OK);
    EXPECT_EQ(vekGetCard(), 0);
    EXPECT_EQ(reg(0x700), 0x11111111U);
    uint32_t memory = 0;
    EXPECT_EQ(vekVramReadLong(0x5000, &memory), VEK_OK);
    EXPECT_EQ(memory, 0xaaaaaaaaU);
    EXPECT_EQ(query(""), first);
    ASSERT_EQ(vekSetCard(1), VEK_OK);
    EXPECT_EQ(reg(0x700), 0x22222222U);
    EXPECT_EQ(query("2D"), "2d: off\n");
    ASSERT_EQ(vekPowerSetState(VEK_POWER_PERFORMANCE), VEK_OK);
}

TEST_F(FirstCardQueries, StaysSelectedWhenTheOtherDoesNotExist)
{
    for (const int selected : {0, 1}) {
        ASSERT_EQ(vekSetCard(selected), VEK_OK);
        ASSERT_EQ(vekSetCard(selected), VEK_OK) << "the same card once more";
        for (const int card : {2, 3, 4, -1, 0x7fffffff, -0x7fffffff - 1}) {
            EXPECT_EQ(vekSetCard(card), VEK_NO_RESPONSE) << card;
            EXPECT_EQ(vekGetCard(), selected);
        }
    }
}

}  // namespace
