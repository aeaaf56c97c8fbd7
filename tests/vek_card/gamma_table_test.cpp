#include "drivers/gamma_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "card/gamma_table.h"
#include "vek.h"

namespace
{

using vek::GammaCurve;
using vek::gammaCurve;
using vek::GammaSetting;
using vek::GammaTable;

using Curves = std::array<GammaCurve, 3>;

std::uint16_t entryOf(GammaTable& table, std::uint64_t address)
{
    const auto [result, value] = table.read(address, 2);
    EXPECT_EQ(result, VEK_OK) << address;
    EXPECT_LE(value, 0xffffU);
    return static_cast<std::uint16_t>(value);
}

Curves curvesOf(GammaTable& table)
{
    Curves curves{};
    std::uint64_t address = 0;
    for (GammaCurve& curve : curves) {
        for (std::uint16_t& entry : curve) {
            entry = entryOf(table, address);
            address += 2;
        }
    }
    return curves;
}

GammaCurve identity()
{
    GammaCurve curve{};
    for (std::size_t i = 0; i < curve.size(); ++i) {
        curve[i] = static_cast<std::uint16_t>(i << 8 | i);
    }
    return curve;
}

Curves programmed(const GammaSetting& setting)
{
    GammaTable table;
    EXPECT_EQ(vek::programGammaTables(table, setting), VEK_OK);
    return curvesOf(table);
}

// Within one unit of what the library of the host works out.
void expectCurve(const GammaCurve& curve, double gamma, double factor)
{
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const double expected = 65535 * factor * std::pow(static_cast<double>(i) / 255, 1 / gamma);
        EXPECT_NEAR(curve[i], expected, 0.5 + 1e-6) << "entry " << i << ", gamma " << gamma << ", factor " << factor;
    }
}

TEST(GammaTable, PassesThePictureOnAfterPowerOn)
{
    GammaTable table;
    EXPECT_EQ(curvesOf(table), (Curves{identity(), identity(), identity()}));
}

TEST(GammaTable, KeepsEveryEntryByItself)
{
    GammaTable table;
    ASSERT_EQ(table.write(0x2fe, 2, 0x1234), VEK_OK);
    EXPECT_EQ(entryOf(table, 0x2fe), 0x1234);
    Curves expected{identity(), identity(), identity()};
    expected[1][127] = 0x1234;
    EXPECT_EQ(curvesOf(table), expected);
    for (std::uint64_t address = 0; address < 0x600; address += 2) {
        ASSERT_EQ(table.write(address, 2, 0x10000 + address * 3), VEK_OK);
    }
    for (std::uint64_t address = 0; address < 0x600; address += 2) {
        EXPECT_EQ(entryOf(table, address), address * 3);
    }
}

TEST(GammaTable, AnswersWordsInItsRangeOnly)
{
    GammaTable table;
    for (const auto& [address, width] : std::initializer_list<std::pair<std::uint64_t, unsigned>>{
             {1, 2}, {0x600, 2}, {0x5ff, 2}, {~std::uint64_t{1}, 2}, {0, 1}, {0, 4}, {0, 8}}) {
        EXPECT_EQ(table.read(address, width).result, VEK_NO_RESPONSE);
        EXPECT_EQ(table.write(address, width, 0x55), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(curvesOf(table), (Curves{identity(), identity(), identity()}));
}

TEST(GammaCurve, IsTheIdentityByDefault)
{
    EXPECT_EQ(gammaCurve(1, 1, 1), identity());
}

TEST(GammaCurve, IsAPowerOfTheInput)
{
    for (const double gamma : {0.01, 0.1, 0.25, 1 / 2.2, 0.5, 0.75, 0.9, 1.0}) {
        for (const double factor : {1.0, 0.7, 0.001}) {
            expectCurve(gammaCurve(gamma, factor, 1), gamma, factor);
            expectCurve(gammaCurve(gamma, 1, factor), gamma, factor);
            expectCurve(gammaCurve(gamma, factor, factor), gamma, factor * factor);
        }
    }
}

TEST(GammaCurve, NeverFalls)
{
    for (double gamma = 0; gamma <= 1; gamma += 0.01) {
        for (const double brightness : {1.0, 0.5, 0.01}) {
            const GammaCurve curve = gammaCurve(gamma, brightness, 1);
            EXPECT_TRUE(std::is_sorted(curve.begin(), curve.end())) << gamma;
            EXPECT_EQ(curve.front(), 0);
            EXPECT_EQ(curve.back(), std::lround(65535 * brightness)) << gamma;
        }
    }
}

TEST(GammaCurve, DarkensTheMiddleWithASmallerGamma)
{
    EXPECT_GT(gammaCurve(1, 1, 1)[128], gammaCurve(0.9, 1, 1)[128]);
    EXPECT_GT(gammaCurve(0.9, 1, 1)[128], gammaCurve(0.5, 1, 1)[128]);
}

TEST(GammaCurve, LeavesFullScaleAloneWithGammaNought)
{
    for (const double gamma : {0.0, 1e-9}) {
        const GammaCurve curve = gammaCurve(gamma, 0.5, 1);
        EXPECT_TRUE(std::all_of(curve.begin(), curve.end() - 1, [](std::uint16_t entry) { return entry == 0; }));
        EXPECT_EQ(curve.back(), 32768);
    }
}

TEST(GammaCurve, IsBlackWithoutBrightness)
{
    for (const double gamma : {0.0, 0.5, 1.0}) {
        EXPECT_EQ(gammaCurve(gamma, 0, 1), GammaCurve{});
    }
}

TEST(GammaTables, AreTheIdentityWithTheDefaults)
{
    EXPECT_EQ(programmed({}), (Curves{identity(), identity(), identity()}));
}

TEST(GammaTables, ReturnToTheIdentity)
{
    GammaTable table;
    ASSERT_EQ(vek::programGammaTables(table, {.gamma = {0.1, 0.2, 0.3}, .brightness = 0.4, .kelvin = 2000}), VEK_OK);
    EXPECT_NE(curvesOf(table)[0], identity());
    ASSERT_EQ(vek::programGammaTables(table, {}), VEK_OK);
    EXPECT_EQ(curvesOf(table), (Curves{identity(), identity(), identity()}));
}

TEST(GammaTables, TakeEachColoursGamma)
{
    const Curves curves = programmed({.gamma = {0.25, 0.5, 0.75}, .brightness = 0.8});
    expectCurve(curves[0], 0.25, 0.8);
    expectCurve(curves[1], 0.5, 0.8);
    expectCurve(curves[2], 0.75, 0.8);
}

// 2856 K is CIE illuminant A, at x 0.4476 and y 0.4074; a black body of 6500 K is at x 0.3136 and y 0.3237. In linear
// sRGB the colours stand to one another as 1.8457 : 0.8261 : 0.2334 and 1.0436 : 0.9836 : 1.0343.
TEST(GammaTables, TintWithTheColourTemperature)
{
    const Curves curves = programmed({.kelvin = 2856});
    const double red = 1.8457 / 1.0436;
    EXPECT_EQ(curves[0], identity());
    EXPECT_NEAR(curves[1].back(), 65535 * std::pow(0.8261 / 0.9836 / red, 1 / 2.2), 65);
    EXPECT_NEAR(curves[2].back(), 65535 * std::pow(0.2334 / 1.0343 / red, 1 / 2.2), 65);
}

TEST(GammaTables, ReachBothEndsOfTheColourTemperature)
{
    const Curves warm = programmed({.kelvin = 1000});
    EXPECT_EQ(warm[0], identity());
    EXPECT_LT(warm[1].back(), 0.2 * 65535);
    EXPECT_EQ(warm[2], GammaCurve{});
    const Curves cool = programmed({.kelvin = 25100});
    EXPECT_LT(cool[0].back(), cool[1].back());
    EXPECT_LT(cool[1].back(), cool[2].back());
    EXPECT_EQ(cool[2], identity());
}

// Refuses the write with a number of its own.
class FailingTable final : public vek::AddressSpace
{
public:
    explicit FailingTable(int served) : served_(served) {}

    vek::ReadResult read(std::uint64_t /*address*/, unsigned /*width*/) override { return vek::kUnanswered; }
    int write(std::uint64_t /*address*/, unsigned /*width*/, std::uint64_t /*value*/) override
    {
        return served_-- > 0 ? VEK_OK : VEK_NO_RESPONSE;
    }

private:
    int served_;
};

TEST(GammaTables, ReportAFailedWrite)
{
    for (const int served : {0, 1, 300, 767}) {
        FailingTable table(served);
        EXPECT_EQ(vek::programGammaTables(table, {}), VEK_NO_RESPONSE) << served;
    }
    FailingTable table(768);
    EXPECT_EQ(vek::programGammaTables(table, {}), VEK_OK);
}

}  // namespace
