#include "drivers/pll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>

namespace
{

using vek::PllDividers;
using vek::PllSearch;
using vek::Rate;

constexpr std::uint64_t kCrystal = 27'000;

bool operator==(const PllDividers& a, const PllDividers& b)
{
    return a.pre == b.pre && a.feedback == b.feedback && a.post == b.post;
}

std::string text(const PllDividers& dividers)
{
    return std::to_string(dividers.pre) + " " + std::to_string(dividers.feedback) + " " + std::to_string(dividers.post);
}

/// The error of dividers times pre times post, in kHz.
std::uint64_t scaledError(std::uint64_t reference, std::uint64_t wanted, const PllDividers& d)
{
    const std::uint64_t reached = reference * d.feedback;
    const std::uint64_t target = wanted * d.pre * d.post;
    return std::max(reached, target) - std::min(reached, target);
}

/// What the data sheet allows.
bool allowed(std::uint64_t reference, std::uint64_t wanted, const PllDividers& d)
{
    const std::uint64_t vco = reference * d.feedback;
    return d.pre >= 1 && d.pre <= 63 && d.feedback >= 16 && d.feedback <= 4095 && d.post >= 1 && d.post <= 127 &&
           reference >= 1'000 * d.pre && reference <= 50'000 * d.pre && vco >= 1'200'000 * d.pre &&
           vco <= 2'400'000 * d.pre && vco >= 10'000 * d.pre * d.post && vco <= 2'400'000 * d.pre * d.post &&
           wanted >= 10'000 && wanted <= 2'400'000 &&
           1000 * scaledError(reference, wanted, d) <= 5 * wanted * d.pre * d.post;
}

/// Whether `a` is to be preferred to `b`: nearer, then the faster phase detector, then the faster VCO.
bool better(std::uint64_t reference, std::uint64_t wanted, const PllDividers& a, const PllDividers& b)
{
    const std::uint64_t errorA = scaledError(reference, wanted, a) * b.pre * b.post;
    const std::uint64_t errorB = scaledError(reference, wanted, b) * a.pre * a.post;
    if (errorA != errorB) {
        return errorA < errorB;
    }
    return a.pre != b.pre ? a.pre < b.pre : a.feedback > b.feedback;
}

/// The best dividers of all; with `every` feedback divider tried, else the two around the ideal one and the ones at the
/// ends of the VCO's range.
std::optional<PllDividers> slowSearch(std::uint64_t reference, std::uint64_t wanted, bool every)
{
    std::optional<PllDividers> best;
    const auto offer = [&](const PllDividers& d) {
        if (allowed(reference, wanted, d) && (!best || better(reference, wanted, d, *best))) {
            best = d;
        }
    };
    for (std::uint64_t pre = 1; pre <= 63 && reference >= 1'000 * pre; ++pre) {
        for (std::uint64_t post = 1; post <= 127; ++post) {
            if (every) {
                for (std::uint64_t feedback = 0; feedback <= 4096; ++feedback) {
                    offer({pre, feedback, post});
                }
                continue;
            }
            const std::uint64_t below = wanted * pre * post / reference;
            for (const std::uint64_t feedback :
                 {below, below + 1, (1'200'000 * pre + reference - 1) / reference, 2'400'000 * pre / reference}) {
                offer({pre, feedback, post});
            }
        }
    }
    return best;
}

void expectTheBest(std::uint64_t reference, std::uint64_t wanted, bool every = false)
{
    const PllSearch search(reference, wanted);
    const std::optional<PllDividers> best = slowSearch(reference, wanted, every);
    ASSERT_EQ(search.found(), best.has_value()) << wanted << " kHz from " << reference;
    if (best) {
        ASSERT_TRUE(search.dividers() == *best)
            << wanted << " kHz from " << reference << ": " << text(search.dividers()) << " instead of " << text(*best);
    }
}

TEST(Pll, FindsTheBestForEveryMegahertz)
{
    for (std::uint64_t megahertz = 0; megahertz <= 2000; ++megahertz) {
        expectTheBest(kCrystal, megahertz * 1000);
    }
}

TEST(Pll, FindsTheBestBetweenMegahertzAndFromOtherCrystals)
{
    std::mt19937 random(20121);
    std::uniform_int_distribution<std::uint64_t> anyWanted(9'000, 2'420'000);
    for (const std::uint64_t reference : {10'000, 12'288, 25'000, 27'000, 33'333, 100'000}) {
        for (int n = 0; n < 100; ++n) {
            expectTheBest(reference, anyWanted(random));
        }
    }
}

TEST(Pll, FindsTheBestAtTheEndsOfTheVcosRange)
{
    for (const std::uint64_t reference : {27'000, 33'333, 100'000}) {
        for (std::uint64_t apart = 0; apart <= 3'000; apart += 20) {
            expectTheBest(reference, 2'400'000 - apart);
            expectTheBest(reference, 1'200'000 - apart);
            expectTheBest(reference, 1'200'000 + apart);
            expectTheBest(reference, 10'000 + apart / 20);
        }
    }
}

TEST(Pll, RefusesToBeOffByMoreThanHalfAPercent)
{
    // One step of this PLL is the reference, so near 1,200 MHz it has 1,200 and 1,225 MHz alone.
    vek::PllLimits coarse;
    coarse.pre.most = 1;
    coarse.post.most = 1;
    for (std::uint64_t wanted = 1'200'000; wanted <= 1'225'000; ++wanted) {
        const bool near = (wanted - 1'200'000) * 200 <= wanted || (1'225'000 - wanted) * 200 <= wanted;
        ASSERT_EQ(PllSearch(25'000, wanted, coarse).found(), near) << wanted;
    }
    EXPECT_FALSE(PllSearch(25'000, 1'212'500, coarse).found());
    // With 11 MHz the nearest step, 1,199 MHz, is out of the VCO's range, but the next one is near enough.
    const PllSearch beyondNearest(11'000, 1'204'400, coarse);
    ASSERT_TRUE(beyondNearest.found());
    EXPECT_EQ(text(beyondNearest.dividers()), "1 110 1");
}

TEST(Pll, FindsTheBestOfAllDividersThereAre)
{
    for (const std::uint64_t wanted : {10'000, 148'352, 1'214'500, 2'399'999}) {
        expectTheBest(kCrystal, wanted, true);
    }
}

TEST(Pll, ReachesEveryMegahertzOfItsRangeExactly)
{
    for (std::uint64_t megahertz = 10; megahertz <= 2400; ++megahertz) {
        const PllSearch search(kCrystal, megahertz * 1000);
        ASSERT_TRUE(search.found()) << megahertz;
        ASSERT_EQ(scaledError(kCrystal, megahertz * 1000, search.dividers()), 0U) << megahertz;
        ASSERT_EQ(vek::pllOutput(vek::encodePll(search.dividers())).megahertz(), megahertz);
    }
}

TEST(Pll, StaysFarBelowTheErrorThatIsAllowed)
{
    double worst = 0;
    for (std::uint64_t wanted = 10'000; wanted <= 2'400'000; wanted += 50) {
        const PllSearch search(kCrystal, wanted);
        ASSERT_TRUE(search.found()) << wanted;
        const PllDividers& d = search.dividers();
        const double error =
            static_cast<double>(scaledError(kCrystal, wanted, d)) / static_cast<double>(wanted * d.pre * d.post);
        worst = std::max(worst, error);
    }
    RecordProperty("worst_error_per_million", std::to_string(worst * 1e6));
    EXPECT_LT(worst, 0.000412);
    EXPECT_GT(worst, 0.0004);
}

TEST(Pll, PrefersTheFastPhaseDetectorAndThenTheFastVco)
{
    // 27 MHz reaches 540 MHz by 27 * 60 / 3 and by 27 * 80 / 4, with any multiple of both dividers too.
    const PllSearch search(kCrystal, 540'000);
    EXPECT_EQ(text(search.dividers()), "1 80 4");
    // 700 MHz needs a phase detector at 1 MHz for a VCO at 1,400 MHz, but has one at 3 MHz for 2,100 MHz.
    EXPECT_EQ(text(PllSearch(kCrystal, 700'000).dividers()), "9 700 3");
}

TEST(Pll, RefusesFrequenciesThatItCannotReach)
{
    for (const std::uint64_t wanted :
         {0ULL, 1ULL, 999ULL, 9'999ULL, 2'400'001ULL, 0x7fff'ffffULL, 0xffff'fc18ULL, 0xffff'ffffULL}) {
        for (const std::uint64_t reference : {10'000, 27'000, 100'000}) {
            EXPECT_FALSE(PllSearch(reference, wanted).found()) << wanted;
        }
    }
    EXPECT_TRUE(PllSearch(kCrystal, 10'000).found());
    EXPECT_TRUE(PllSearch(kCrystal, 2'400'000).found());
}

TEST(Pll, PacksItsDividersIntoASetting)
{
    for (std::uint64_t pre = 1; pre <= 63; ++pre) {
        for (std::uint64_t post = 1; post <= 127; ++post) {
            for (const std::uint64_t feedback : {16, 17, 255, 256, 2048, 4095}) {
                const PllDividers dividers{pre, feedback, post};
                const std::uint32_t setting = vek::encodePll(dividers);
                ASSERT_EQ(setting, post * 0x100'0000 + feedback * 0x100 + pre);
                ASSERT_TRUE(vek::decodePll(setting) == dividers);
                ASSERT_TRUE(vek::isPllSetting(setting));
            }
        }
    }
}

TEST(Pll, KnowsWhatIsNoSetting)
{
    const std::uint32_t good = vek::encodePll({1, 80, 4});
    ASSERT_TRUE(vek::isPllSetting(good));
    for (const int reserved : {6, 7, 20, 21, 22, 23, 31}) {
        EXPECT_FALSE(vek::isPllSetting(good | 1U << reserved)) << reserved;
    }
    for (const PllDividers& dividers :
         {PllDividers{0, 80, 4}, PllDividers{1, 0, 4}, PllDividers{1, 15, 4}, PllDividers{1, 80, 0}}) {
        EXPECT_FALSE(vek::isPllSetting(vek::encodePll(dividers))) << text(dividers);
    }
    EXPECT_FALSE(vek::isPllSetting(0));
    EXPECT_FALSE(vek::isPllSetting(0xffff'ffff));
}

TEST(Pll, GivesNoClockBeyondItsLimits)
{
    EXPECT_EQ(vek::pllOutput(vek::encodePll({1, 80, 4})).megahertz(), 540U);
    // The VCO too slow, too fast, the phase detector too slow, and no setting at all.
    EXPECT_EQ(vek::pllOutput(vek::encodePll({1, 44, 1})).megahertz(), 0U);
    EXPECT_EQ(vek::pllOutput(vek::encodePll({1, 89, 1})).megahertz(), 0U);
    EXPECT_EQ(vek::pllOutput(vek::encodePll({28, 2000, 1})).megahertz(), 0U);
    EXPECT_EQ(vek::pllOutput(0xffff'ffff).megahertz(), 0U);
    EXPECT_EQ(vek::pllOutput(0).megahertz(), 0U);
}

TEST(Pll, RoundsMegahertzToTheNearest)
{
    EXPECT_EQ((Rate{499, 1}.megahertz()), 0U);
    EXPECT_EQ((Rate{500, 1}.megahertz()), 1U);
    EXPECT_EQ((Rate{1'499, 1}.megahertz()), 1U);
    EXPECT_EQ((Rate{4'498, 3}.megahertz()), 1U);
    EXPECT_EQ((Rate{4'500, 3}.megahertz()), 2U);
    EXPECT_EQ(vek::kNoClock.megahertz(), 0U);
}

}  // namespace
