// The tables and formulas of standard timings, held against edid-decode with every porch and polarity.

#include <cstdio>
#include <sstream>

#include "agreement.h"
#include "child_process.h"
#include "drivers/edid/dmt_table.h"
#include "drivers/edid/timing.h"
#include "drivers/edid/vic_table.h"

namespace
{

using vek::edid::Axis;
using vek::edid::FormulaInput;
using vek::edid::Scan;
using vek::edid::Timing;

class TimingTable : public Agreement
{
};

DecodedAxis decoded(const Axis& axis)
{
    return {axis.frontPorch, axis.sync, axis.backPorch, axis.border, axis.positiveSync ? 'P' : 'N'};
}

DecodedTiming decoded(const std::string& name, const Timing& timing)
{
    const vek::edid::Ratio ratio = pictureRatio(timing);
    DecodedTiming result;
    result.name = name;
    result.width = timing.horizontal.active;
    result.height = frameHeight(timing);
    result.interlaced = timing.scan != Scan::kProgressive;
    result.refreshHz = refreshRateHz(timing);
    result.ratio = std::to_string(ratio.width) + ':' + std::to_string(ratio.height);
    result.horizontalKhz = horizontalRateKhz(timing);
    result.clockMhz = static_cast<double>(timing.clockKhz) / 1000.0;
    result.reducedBlanking = timing.reducedBlanking;
    result.horizontal = decoded(timing.horizontal);
    result.vertical = decoded(timing.vertical);
    return result;
}

std::vector<DecodedTiming> reference(const std::vector<std::string>& options)
{
    child_process::Command command{{"edid-decode", "--long-timings"}};
    command.arguments.insert(command.arguments.end(), options.begin(), options.end());
    return decodedByReference(child_process::run(command).output).timings;
}

unsigned codeOf(const DecodedTiming& timing, int base)
{
    return static_cast<unsigned>(std::stoul(timing.name.substr(timing.name.rfind(' ')), nullptr, base));
}

TEST_F(TimingTable, HasEveryVic)
{
    const std::vector<DecodedTiming> listed = reference({"--list-vics"});
    ASSERT_EQ(listed.size(), 154U);
    for (const DecodedTiming& timing : listed) {
        const Timing* const found = vek::edid::findVic(codeOf(timing, 10));
        ASSERT_NE(found, nullptr) << timing.name;
        expectSameTiming(decoded(timing.name, *found), timing);
    }
}

TEST_F(TimingTable, HasEveryHdmiVic)
{
    const std::vector<DecodedTiming> listed = reference({"--list-hdmi-vics"});
    ASSERT_EQ(listed.size(), 4U);
    for (const DecodedTiming& timing : listed) {
        const Timing* const found = vek::edid::findHdmiVic(codeOf(timing, 10));
        ASSERT_NE(found, nullptr) << timing.name;
        expectSameTiming(decoded(timing.name, *found), timing);
    }
}

TEST_F(TimingTable, HasEveryDmt)
{
    const std::vector<DecodedTiming> listed = reference({"--list-dmts"});
    ASSERT_EQ(listed.size(), 88U);
    for (const DecodedTiming& timing : listed) {
        const Timing* const found = vek::edid::findDmt(codeOf(timing, 16));
        ASSERT_NE(found, nullptr) << timing.name;
        expectSameTiming(decoded(timing.name, *found), timing);
    }
}

TEST(TimingTableBounds, ReservedCodesHaveNoTiming)
{
    for (const unsigned code : {0U, 128U, 192U, 220U, 255U, 1000U}) {
        EXPECT_EQ(vek::edid::findVic(code), nullptr) << code;
    }
    for (const unsigned code : {0U, 5U, 255U}) {
        EXPECT_EQ(vek::edid::findHdmiVic(code), nullptr) << code;
    }
    for (const unsigned code : {0U, 0x59U, 0xFFFFU}) {
        EXPECT_EQ(vek::edid::findDmt(code), nullptr) << code;
    }
    EXPECT_EQ(vek::edid::dmtOfStandardCode(0), 0U);
    EXPECT_EQ(vek::edid::dmtOfStandardCode(0x0101), 0U);
    EXPECT_EQ(vek::edid::dmtOfStandardCode(0xD1C0), 0x52U);
}

/// The frames of a table's timing take as long as its rate says.
TEST(TimingTableBounds, VicsRunAtWholeRatesOrTheirVideoVariants)
{
    for (unsigned code = 1; code < 220; ++code) {
        const Timing* const timing = vek::edid::findVic(code);
        if (timing == nullptr) {
            continue;
        }
        const double rate = refreshRateHz(*timing);
        const double nearest = static_cast<double>(static_cast<int>(rate + 0.5));
        EXPECT_NEAR(rate, nearest, nearest * 0.0025) << code;
        EXPECT_EQ(vek::edid::pictureRatio(*timing).width > 0, true) << code;
    }
}

void expectFormula(const std::string& option, const std::string& extra, Timing (*formula)(const FormulaInput&),
                   double clockToleranceMhz = 0.0006)
{
    constexpr std::pair<int, int> kSizes[] = {{640, 480},   {800, 600},   {1024, 768},  {1280, 1024}, {1280, 768},
                                              {1360, 768},  {1440, 900},  {1920, 1080}, {1920, 1200}, {2048, 1536},
                                              {2560, 1440}, {3440, 1440}, {3840, 2160}, {5120, 2880}};
    for (const auto& [width, height] : kSizes) {
        for (const int rate : {50, 60, 75, 85, 120}) {
            std::ostringstream size;
            size << "w=" << width << ",h=" << height << ",fps=" << rate << extra;
            const std::vector<DecodedTiming> calculated = reference({option, size.str()});
            ASSERT_EQ(calculated.size(), 1U) << size.str();
            SCOPED_TRACE(size.str());
            expectSameTiming(decoded(calculated[0].name, formula({width, height, static_cast<double>(rate), {0, 0}})),
                             calculated[0], clockToleranceMhz);
        }
    }
}

TEST_F(TimingTable, CalculatesCvt)
{
    expectFormula("--cvt", "", vek::edid::cvt);
}

TEST_F(TimingTable, CalculatesCvtReducedBlanking)
{
    expectFormula("--cvt", ",rb=1", vek::edid::cvtReducedBlanking);
}

TEST_F(TimingTable, CalculatesCvtReducedBlanking2)
{
    // The program loses a step of 1 kHz to rounding where the rate comes out whole.
    expectFormula("--cvt", ",rb=2", vek::edid::cvtReducedBlanking2, 0.0011);
}

TEST_F(TimingTable, CalculatesGtf)
{
    expectFormula("--gtf", "", vek::edid::gtf);
}

}  // namespace
