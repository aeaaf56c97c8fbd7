// checkEdid(): header, checksums and length.

#include <gtest/gtest.h>

#include "drivers/edid/edid.h"
#include "edid_builder.h"

namespace
{

using edid_builder::Bytes;
using edid_builder::operator+;
using vek::EdidVerdict;

TEST(Verdict, IsGoodForWholeEdids)
{
    for (const Bytes& edid : {edid_builder::base({}), edid_builder::withCta({}), edid_builder::fullSample()}) {
        const EdidVerdict verdict = vek::checkEdid(edid);
        EXPECT_TRUE(verdict.headerValid);
        EXPECT_TRUE(verdict.allChecksumsValid);
        EXPECT_EQ(verdict.wholeBlocks, edid.size() / 128);
        EXPECT_EQ(verdict.declaredBlocks, edid.size() / 128);
        EXPECT_TRUE(verdict.valid());
    }
}

TEST(Verdict, FailsOnAnyHeaderByte)
{
    for (std::size_t i = 0; i < 8; ++i) {
        Bytes edid = edid_builder::base({});
        edid[i] ^= 1;
        const EdidVerdict verdict = vek::checkEdid(edid_builder::summed(edid));
        EXPECT_FALSE(verdict.headerValid) << i;
        EXPECT_TRUE(verdict.allChecksumsValid) << i;
        EXPECT_FALSE(verdict.valid()) << i;
    }
}

TEST(Verdict, FailsOnAnyFlippedBit)
{
    const Bytes good = edid_builder::withCta({});
    for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
        Bytes edid = good;
        edid[bit / 8] = static_cast<std::uint8_t>(edid[bit / 8] ^ 1U << bit % 8);
        EXPECT_FALSE(vek::checkEdid(edid).valid()) << bit;
    }
}

TEST(Verdict, FailsOnMissingBlocks)
{
    const EdidVerdict verdict = vek::checkEdid(edid_builder::base({}, 1));
    EXPECT_TRUE(verdict.allChecksumsValid);
    EXPECT_EQ(verdict.wholeBlocks, 1U);
    EXPECT_EQ(verdict.declaredBlocks, 2U);
    EXPECT_FALSE(verdict.valid());
}

TEST(Verdict, CountsBlocksOfAnExtensionOverride)
{
    const Bytes edid = edid_builder::withCta({edid_builder::extended(0x78, {3})});
    EXPECT_EQ(vek::checkEdid(edid).declaredBlocks, 4U);
    EXPECT_FALSE(vek::checkEdid(edid).valid());
    EXPECT_TRUE(vek::checkEdid(edid + edid_builder::cta({}) + edid_builder::cta({})).valid());
}

TEST(Verdict, FailsOnShortAndBlankEdids)
{
    const Bytes whole = edid_builder::base({});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const EdidVerdict verdict = vek::checkEdid(std::span(whole).first(size));
        EXPECT_EQ(verdict.wholeBlocks, 0U);
        EXPECT_EQ(verdict.headerValid, size >= 8);
        EXPECT_FALSE(verdict.allChecksumsValid);
        EXPECT_FALSE(verdict.valid());
    }
    EXPECT_FALSE(vek::checkEdid(Bytes(128, 0x00)).valid());
    EXPECT_FALSE(vek::checkEdid(Bytes(128, 0xFF)).valid());
}

}  // namespace
