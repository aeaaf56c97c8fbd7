#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

constexpr int kCrystalKhz = 27000;
constexpr std::array<int, 8> kDomains = {0, 2, 3, 4, 5, 6, 7, 8};
const std::vector<int> kHostile = {-0x7fffffff - 1, -1, 0x7fffffff};

using Frequencies = std::array<int, kDomains.size()>;

Frequencies frequencies()
{
    Frequencies found;
    for (std::size_t n = 0; n < kDomains.size(); ++n) {
        found[n] = vek_qz200_get_freq(kDomains[n]);
    }
    return found;
}

uint32_t settingFor(uint32_t khz)
{
    uint32_t setting = 0;
    EXPECT_EQ(vek_qz200_pllcalc(kCrystalKhz, 1, khz, &setting), VEK_OK) << khz;
    return setting;
}

/** A card whose clocks are as the firmware sets them, before the test and after it. */
class Clocks : public EitherCard
{
protected:
    Clocks() { EXPECT_EQ(frequencies(), firmwares()); }

    ~Clocks() override
    {
        EXPECT_GE(vekRwOpen(GetParam()), 0);
        for (std::size_t n = 0; n < kDomains.size(); ++n) {
            if (kDomains[n] != VEK_CLOCK_PCIE && kDomains[n] != VEK_CLOCK_DDR) {
                vek_qz200_set_clk_freq(kDomains[n], settingFor(static_cast<uint32_t>(firmwares()[n]) * 1000));
            }
        }
        for (int source = 1; source <= 6; ++source) {
            vek_qz200_set_clk_mode(VEK_CLOCK_ON, source);
        }
    }

    Frequencies firmwares() const
    {
        return GetParam() == 0 ? Frequencies{600, 150, 500, 500, 1000, 1000, 600, 1200}
                               : Frequencies{500, 125, 500, 400, 800, 900, 500, 1066};
    }
};
INSTANTIATE_TEST_SUITE_P(Cards, Clocks, testing::Values(0, 1));

TEST_P(Clocks, ReachEveryMegahertzThatPllcalcTakes)
{
    int refused = 0;
    for (uint32_t megahertz = 0; megahertz <= 2500; ++megahertz) {
        uint32_t setting = 0xa5a5a5a5;
        const int result = vek_qz200_pllcalc(kCrystalKhz, 1, megahertz * 1000, &setting);
        if (megahertz < 10 || megahertz > 2400) {
            ASSERT_EQ(result, VEK_OUT_OF_RANGE) << megahertz;
            ASSERT_EQ(setting, 0xa5a5a5a5);
            ++refused;
            continue;
        }
        ASSERT_EQ(result, VEK_OK) << megahertz;
        ASSERT_EQ(vek_qz200_set_clk_freq(VEK_CLOCK_3D, setting), VEK_OK);
        ASSERT_EQ(vek_qz200_get_freq(VEK_CLOCK_3D), static_cast<int>(megahertz));
    }
    EXPECT_EQ(refused, 110);
}

TEST_P(Clocks, AreSetOneByOne)
{
    Frequencies expected = firmwares();
    for (std::size_t n = 0; n < kDomains.size(); ++n) {
        const uint32_t wanted = 321 + static_cast<uint32_t>(n);
        const bool kept = kDomains[n] == VEK_CLOCK_PCIE || kDomains[n] == VEK_CLOCK_DDR;
        EXPECT_EQ(vek_qz200_set_clk_freq(kDomains[n], settingFor(wanted * 1000)), kept ? VEK_PROTECTED : VEK_OK);
        expected[n] = kept ? expected[n] : static_cast<int>(wanted);
        EXPECT_EQ(frequencies(), expected);
    }
}

TEST_P(Clocks, SwitchToTheCrystalOffAndOn)
{
    // Which domains hang on a source, by their place among the domains.
    const std::vector<std::vector<std::size_t>> domainsOf = {{0, 1}, {2, 3}, {4, 6}, {5}, {4}, {6}};
    for (int source = 1; source <= 6; ++source) {
        Frequencies bypassed = firmwares();
        Frequencies off = firmwares();
        for (const std::size_t n : domainsOf[static_cast<std::size_t>(source - 1)]) {
            bypassed[n] = 27;
            off[n] = 0;
        }
        EXPECT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_BYPASS, source), VEK_OK);
        EXPECT_EQ(frequencies(), bypassed) << source;
        EXPECT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_OFF, source), VEK_OK);
        EXPECT_EQ(frequencies(), off) << source;
        EXPECT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_ON, source), VEK_OK);
        EXPECT_EQ(frequencies(), firmwares()) << source;
    }
}

TEST_P(Clocks, RefuseHostileNumbers)
{
    const uint32_t good = settingFor(300'000);
    std::vector<int> domains = kHostile;
    domains.insert(domains.end(), {1, 9, 256});
    for (const int domain : domains) {
        EXPECT_EQ(vek_qz200_get_freq(domain), VEK_BAD_ARGUMENT) << domain;
        EXPECT_EQ(vek_qz200_set_clk_freq(domain, good), VEK_BAD_ARGUMENT) << domain;
    }
    for (const uint32_t setting : {0U, 0xffffffffU, good | 0x40U, good & 0xffffffU}) {
        EXPECT_EQ(vek_qz200_set_clk_freq(VEK_CLOCK_AXI, setting), VEK_BAD_ARGUMENT) << setting;
    }
    EXPECT_EQ(vek_qz200_set_clk_freq(VEK_CLOCK_AXI, 0x7f0fff01), VEK_OUT_OF_RANGE);
    std::vector<int> sources = kHostile;
    sources.insert(sources.end(), {0, 7, 256});
    for (const int source : sources) {
        EXPECT_EQ(vek_qz200_set_clk_mode(VEK_CLOCK_OFF, source), VEK_BAD_ARGUMENT) << source;
    }
    std::vector<int> modes = kHostile;
    modes.insert(modes.end(), {3, 4, 256});
    for (const int mode : modes) {
        EXPECT_EQ(vek_qz200_set_clk_mode(mode, VEK_CLOCK_SOURCE_DEVPLL), VEK_BAD_ARGUMENT) << mode;
    }
}

TEST_P(Clocks, CalculateOnlyFromWhatTheyHave)
{
    uint32_t setting = 0xa5a5a5a5;
    for (const uint32_t khz : {0U, 9'999U, 2'400'001U, 0x7fffffffU, 0x80000000U, 0xfffffc18U, 0xffffffffU}) {
        EXPECT_EQ(vek_qz200_pllcalc(kCrystalKhz, 1, khz, &setting), VEK_OUT_OF_RANGE) << khz;
    }
    for (const int reference : {-0x7fffffff - 1, -27000, -1, 0, 1, 9'999, 100'001, 0x7fffffff}) {
        EXPECT_EQ(vek_qz200_pllcalc(reference, 1, 300'000, &setting), VEK_BAD_ARGUMENT) << reference;
    }
    for (const int mode : {-0x7fffffff - 1, -1, 0, 2, 0x7fffffff}) {
        EXPECT_EQ(vek_qz200_pllcalc(kCrystalKhz, mode, 300'000, &setting), VEK_BAD_ARGUMENT) << mode;
    }
    EXPECT_EQ(setting, 0xa5a5a5a5);
    EXPECT_EQ(vek_qz200_pllcalc(kCrystalKhz, 1, 300'000, nullptr), VEK_BAD_ARGUMENT);
    for (const int reference : {10'000, 25'000, 100'000}) {
        EXPECT_EQ(vek_qz200_pllcalc(reference, 1, 300'000, &setting), VEK_OK) << reference;
    }
}

TEST_P(Clocks, LieInTheRegisterRegion)
{
    const uint32_t setting = settingFor(777'000);
    ASSERT_EQ(vek_qz200_set_clk_freq(VEK_CLOCK_VPU, setting), VEK_OK);
    uint32_t read = 0;
    EXPECT_EQ(vekRegReadLong(0x30b010, &read), VEK_OK);
    EXPECT_EQ(read, setting);
    EXPECT_EQ(vekRegWriteLong(0x30b048, 1), VEK_OK);
    EXPECT_EQ(vek_qz200_get_freq(VEK_CLOCK_VPU), 27);
}

TEST_P(Clocks, BelongToTheirCard)
{
    ASSERT_GE(vekRwOpen(1 - GetParam()), 0);
    const Frequencies other = frequencies();
    ASSERT_GE(vekRwOpen(GetParam()), 0);
    ASSERT_EQ(vek_qz200_set_clk_freq(VEK_CLOCK_AXI, settingFor(333'000)), VEK_OK);
    ASSERT_GE(vekRwOpen(1 - GetParam()), 0);
    EXPECT_EQ(frequencies(), other);
}

}  // namespace
