// Damaged, short and overlong EDIDs: always an end, a bounded text and nothing outside printable ASCII.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "drivers/edid/edid.h"
#include "edid_builder.h"
#include "printed.h"

namespace
{

using edid_builder::Bytes;
using edid_builder::operator+;
using edid_builder::pick;

/// What a full block can come to: every bit of it a line.
constexpr std::size_t kMaxTextPerBlock = 1000 * 120;

std::string expectSane(std::span<const std::uint8_t> edid)
{
    std::string text = printed(edid);
    VekDisplayMode mode{};
    const bool found = vek::preferredTiming(edid, mode);
    EXPECT_EQ(found, mode.clock > 0 && mode.htotal > mode.hdisplay && mode.vtotal > mode.vdisplay);
    EXPECT_TRUE(text.starts_with("EDID: " + std::to_string(edid.size()) + " bytes\n"));
    EXPECT_NE(text.find("Errors and oddities"), std::string::npos);
    EXPECT_LT(text.size(), (edid.size() / 128 + 2) * kMaxTextPerBlock);
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    return text;
}

TEST(Robustness, OfEveryLength)
{
    const Bytes whole = edid_builder::fullSample();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        // A copy of the exact size, so that a read past its end is noticed.
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string text = expectSane(cut);
        EXPECT_EQ(text.find("Errors and oddities: none"), std::string::npos) << size;
    }
    EXPECT_NE(expectSane(edid_builder::fullSample()).find("Block 3, DisplayID"), std::string::npos);
}

TEST(Robustness, OfEveryFlippedBit)
{
    for (const Bytes& good :
         {edid_builder::fullSample(),
          edid_builder::withCta({edid_builder::dataBlock(2, {16, 4}), edid_builder::dataBlock(1, {0x09, 7, 7})},
                                {edid_builder::detailed()})}) {
        for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
            Bytes edid = good;
            edid[bit / 8] = static_cast<std::uint8_t>(edid[bit / 8] ^ 1U << bit % 8);
            EXPECT_NE(expectSane(edid).find("the checksum is 0x"), std::string::npos) << bit;
        }
    }
}

TEST(Robustness, OfBlankBlocks)
{
    for (const std::uint8_t value : {std::uint8_t{0x00}, std::uint8_t{0xFF}}) {
        for (const std::size_t size : {std::size_t{1}, std::size_t{128}, std::size_t{256}, std::size_t{32768}}) {
            EXPECT_NE(expectSane(Bytes(size, value)).find("the header is not"), std::string::npos);
        }
    }
}

TEST(Robustness, OfTheMostBlocks)
{
    Bytes edid = edid_builder::base({edid_builder::detailed(), edid_builder::name()}, 255);
    const Bytes extension = edid_builder::cta({edid_builder::dataBlock(2, Bytes(31, 16))}, {edid_builder::detailed()});
    for (int i = 0; i < 255; ++i) {
        edid = edid + extension;
    }
    ASSERT_EQ(edid.size(), 32768U);
    const std::string text = expectSane(edid);
    EXPECT_NE(text.find("Block 255, CTA-861 Extension Block"), std::string::npos);
    EXPECT_NE(text.find("DTD 256: "), std::string::npos);
    EXPECT_NE(text.find("Errors and oddities: none"), std::string::npos);
    EXPECT_NE(expectSane(edid + Bytes(500, 1)).find("500 bytes follow the declared blocks"), std::string::npos);
}

TEST(Robustness, OfManyFindings)
{
    Bytes edid = edid_builder::base({edid_builder::detailed(), edid_builder::name()}, 100);
    for (int i = 0; i < 100; ++i) {
        edid = edid + Bytes(128, 0x55);
    }
    EXPECT_NE(expectSane(edid).find("36 more"), std::string::npos);
}

TEST(Robustness, OfRandomBytesBehindAGoodFrame)
{
    std::mt19937 random(99);
    for (int run = 0; run < 3000; ++run) {
        Bytes edid = edid_builder::fullSample();
        for (std::size_t i = 132; i < edid.size(); ++i) {
            if (i % 128 > 3) {
                edid[i] = static_cast<std::uint8_t>(pick(random, 0, 255));
            }
        }
        edid[130] = static_cast<std::uint8_t>(pick(random, 0, 255));
        expectSane(edid);
    }
}

}  // namespace
