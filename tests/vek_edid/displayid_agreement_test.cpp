// DisplayID extensions, held against edid-decode.

#include <random>

#include "agreement.h"
#include "edid_builder.h"

namespace
{

using edid_builder::Bytes;
using edid_builder::operator+;
using edid_builder::displayIdBlock;
using edid_builder::pick;

class DisplayIdAgreement : public Agreement
{
};

std::uint8_t byte(unsigned value)
{
    return static_cast<std::uint8_t>(value);
}

Bytes with(const std::vector<Bytes>& blocks, unsigned version)
{
    return edid_builder::base({edid_builder::detailed(), edid_builder::name()}, 1) +
           edid_builder::displayId(blocks, version);
}

edid_builder::Long anyTiming(std::mt19937& random)
{
    // The ratio is left to the pixel counts; at random the timing is preferred or interlaced.
    edid_builder::Long timing;
    timing.clock = pick(random, 2500, 1002499);
    timing.options = 8 | pick(random, 0, 1) << 7 | pick(random, 0, 1) << 4;
    timing.hActive = pick(random, 320, 16319);
    timing.hBlank = pick(random, 100, 599);
    timing.hFront = pick(random, 1, 40);
    timing.hSync = pick(random, 1, 40);
    timing.vActive = 2 * pick(random, 100, 4100);
    timing.vBlank = 2 * pick(random, 50, 300) + 1;
    timing.vFront = 2 * pick(random, 1, 20);
    timing.vSync = 2 * pick(random, 1, 20) + 1;
    timing.hPositive = pick(random, 0, 1) == 0;
    timing.vPositive = pick(random, 0, 1) == 0;
    return timing;
}

TEST_F(DisplayIdAgreement, OfLongTimings)
{
    std::mt19937 random(11);
    for (int run = 0; run < 60; ++run) {
        const Bytes timings = edid_builder::longTiming(anyTiming(random)) +
                              edid_builder::longTiming(anyTiming(random)) + edid_builder::longTiming(anyTiming(random));
        expectAgreement(with({displayIdBlock(0x03, timings)}, 0x13), 4);
        expectAgreement(with({displayIdBlock(0x22, timings)}, 0x20), 4);
    }
}

TEST_F(DisplayIdAgreement, OfStatedRatios)
{
    for (unsigned ratio = 0; ratio < 8; ++ratio) {
        edid_builder::Long timing;
        timing.options = ratio;
        expectAgreement(with({displayIdBlock(0x22, edid_builder::longTiming(timing))}, 0x20), 2);
    }
}

TEST_F(DisplayIdAgreement, OfShortDetailedTimings)
{
    // The program takes no vertical polarity from these, and calls it negative.
    for (const unsigned horizontal : {0x00U, 0x08U}) {
        const Bytes timing{0x01, 0x3A, 0, byte(0x80 | horizontal), 239, 34 << 1, 10 << 4 | 5, 0x37, 4, 44, 3 << 4 | 4};
        expectAgreement(with({displayIdBlock(0x04, timing)}, 0x13), 2);
    }
}

TEST_F(DisplayIdAgreement, OfShortTimings)
{
    for (unsigned ratio = 0; ratio < 8; ++ratio) {
        for (const unsigned formula : {0U, 1U}) {
            const Bytes timing{byte(formula << 4 | ratio), 159, 59};
            expectAgreement(with({displayIdBlock(0x05, timing)}, 0x13), 2);
        }
    }
}

TEST_F(DisplayIdAgreement, OfTimingCodes)
{
    expectAgreement(with({displayIdBlock(0x06, {1, 0x52, 0x58}), displayIdBlock(0x07, Bytes(10, 0xFF)),
                          displayIdBlock(0x08, {0xFF, 0xFF, 0x81, 0, 0, 0, 0, 0x80})},
                         0x13),
                    100);
    expectAgreement(with({displayIdBlock(0x23, {1, 0x52}), displayIdBlock(0x23, {16, 219}, 0x40)}, 0x20), 5);
}

TEST_F(DisplayIdAgreement, OfFormulaTimings)
{
    for (unsigned formula = 0; formula < 3; ++formula) {
        const Bytes timings{byte(formula), 0x7F, 0x07, 0x37, 0x04, 59, byte(formula), 0xFF, 0x0E, 0x6F, 0x08, 143};
        expectAgreement(with({displayIdBlock(0x24, timings)}, 0x20), 3);
    }
}

TEST_F(DisplayIdAgreement, OfProductAndTile)
{
    const Bytes product{'D', 'E', 'L', 1, 2, 3, 4, 5, 6, 12, 20, 3, 'a', 'b', 'c'};
    const Bytes parameters{0, 1, 0, 2, 0x80, 7, 0x38, 4, 0x55, 120, 78, 0x99};
    const Bytes tile{0x82, 0x31, 0x21, 0x00, 0x7F, 7, 0x37, 4, 0, 0, 0, 0, 0, 'A', 'B', 'C', 1, 2, 3, 4, 5, 6};
    expectAgreement(with({displayIdBlock(0x00, product), displayIdBlock(0x12, tile)}, 0x13), 1);
    expectAgreement(
        with({displayIdBlock(0x28, tile), displayIdBlock(0x29, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})},
             0x20),
        1);
    expectAgreement(with({displayIdBlock(0x01, parameters)}, 0x13), 1);
}

TEST_F(DisplayIdAgreement, OfWrongSectionChecksum)
{
    Bytes edid = with({}, 0x20);
    edid[128 + 50] = 0;
    edid[128 + 126] = static_cast<std::uint8_t>(edid[128 + 126] + 5);
    edid[128 + 127] = static_cast<std::uint8_t>(edid[128 + 127] - 5);
    expectAgreement(edid, 1);
}

}  // namespace
