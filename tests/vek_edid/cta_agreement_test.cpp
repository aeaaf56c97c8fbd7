// CTA-861 extensions, held against edid-decode.

#include <random>

#include "agreement.h"
#include "edid_builder.h"

namespace
{

using edid_builder::Bytes;
using edid_builder::operator+;
using edid_builder::dataBlock;
using edid_builder::detailed;
using edid_builder::extended;
using edid_builder::pick;
using edid_builder::withCta;

class CtaAgreement : public Agreement
{
};

std::uint8_t byte(unsigned value)
{
    return static_cast<std::uint8_t>(value);
}

TEST_F(CtaAgreement, OfEveryShortVideoDescriptor)
{
    for (unsigned code = 1; code < 220; ++code) {
        if (code == 128) {
            continue;
        }
        expectAgreement(withCta({dataBlock(2, {byte(code)})}), 2);
    }
}

TEST_F(CtaAgreement, OfLongVideoBlocks)
{
    for (unsigned start = 1; start < 100; start += 31) {
        Bytes codes;
        for (unsigned code = start; code < start + 31 && code < 128; ++code) {
            codes.push_back(byte(code));
        }
        expectAgreement(withCta({dataBlock(2, codes)}), codes.size() + 1);
    }
}

TEST_F(CtaAgreement, OfAudioFormats)
{
    for (unsigned format = 1; format < 15; ++format) {
        for (const unsigned detail : {0U, 5U, 80U}) {
            const Bytes audio{byte(format << 3 | (format & 7)), byte(0x7F >> format % 7), byte(detail)};
            expectAgreement(withCta({dataBlock(1, audio)}), 1);
        }
    }
    for (const unsigned extension : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 10U, 11U, 12U, 13U}) {
        expectAgreement(withCta({dataBlock(1, {0x7D, 0x07, byte(extension << 3 | 3)})}), 1);
    }
}

TEST_F(CtaAgreement, OfSpeakers)
{
    for (unsigned bit = 0; bit < 20; ++bit) {
        const unsigned all = 1U << bit;
        // The program spells some positions with a small c and w.
        if (bit == 5 || bit == 7) {
            continue;
        }
        expectAgreement(withCta({dataBlock(4, {byte(all), byte(all >> 8), byte(all >> 16)})}), 1);
    }
}

TEST_F(CtaAgreement, OfHdmiBlocks)
{
    expectAgreement(withCta({dataBlock(3, {0x03, 0x0C, 0x00, 0x12, 0x34})}), 1);
    for (unsigned flags = 8; flags < 0x100; flags += 8) {
        expectAgreement(withCta({dataBlock(3, {0x03, 0x0C, 0x00, 0x10, 0x00, byte(flags), byte(flags)})}), 1);
    }
    const Bytes videos{0x03, 0x0C, 0x00, 0x10, 0x00, 0x80, 60, 0x20, 0x00, 0x80, 1, 2, 3, 4};
    expectAgreement(withCta({dataBlock(3, videos)}), 5);
}

TEST_F(CtaAgreement, OfHdmiForumBlocks)
{
    for (unsigned link = 0; link < 7; ++link) {
        const Bytes capabilities{1, byte(60 + link),     0x80, byte(link << 4 | link), 0, 0xB0, 0x78,
                                 0, byte(link << 4 | 1), 3};
        expectAgreement(withCta({dataBlock(3, Bytes{0xD8, 0x5D, 0xC4} + capabilities)}), 1);
        expectAgreement(withCta({extended(0x79, Bytes{0, 0} + capabilities)}), 1);
    }
}

TEST_F(CtaAgreement, OfVendors)
{
    expectAgreement(withCta({extended(17, {0x46, 0xD0, 0x00, 1}), dataBlock(3, {0x11, 0x22, 0x33, 1})}), 1);
}

TEST_F(CtaAgreement, OfColorAndLuminance)
{
    for (unsigned bit = 0; bit < 16; ++bit) {
        expectAgreement(withCta({extended(5, {byte(1U << bit), byte(1U << bit >> 8)})}), 1);
    }
    for (const unsigned code : {1U, 32U, 96U, 138U, 255U}) {
        expectAgreement(withCta({extended(6, {0x0F, 1, byte(code), byte(code / 2 + 1), byte(code)})}), 1);
    }
}

TEST_F(CtaAgreement, OfYcbcr420Blocks)
{
    const Bytes codes{16, 4, 31, 97, 96, 193, 219, 93, 118};
    expectAgreement(withCta({dataBlock(2, codes), extended(14, {101, 102})}), codes.size() + 3);
    expectAgreement(withCta({dataBlock(2, codes), extended(15, {0x55, 0x01})}), codes.size() + 6);
    expectAgreement(withCta({dataBlock(2, {16}), dataBlock(2, codes), extended(15, {0x03, 0x03})}), codes.size() + 6);
}

TEST_F(CtaAgreement, OfTimingReferences)
{
    expectAgreement(withCta({dataBlock(2, {16, 4}), extended(13, {16, 4, 129, 130, 219})}, {detailed()}), 7);
    expectAgreement(withCta({dataBlock(2, {16}), extended(8, {16, 1, 0x10, 1, 0x20, 2})}), 3);
}

TEST_F(CtaAgreement, OfTimingsOfDisplayIdKinds)
{
    std::mt19937 random(5);
    for (int run = 0; run < 50; ++run) {
        edid_builder::Long timing;
        timing.clock = pick(random, 25000, 2024999);
        timing.options = 8;
        timing.hActive = pick(random, 320, 8319);
        timing.hBlank = pick(random, 100, 599);
        timing.hFront = pick(random, 1, 40);
        timing.hSync = pick(random, 1, 40);
        timing.hPositive = pick(random, 0, 1) == 0;
        timing.vPositive = pick(random, 0, 1) == 0;
        expectAgreement(withCta({extended(34, Bytes{0} + edid_builder::longTiming(timing))}), 2);
    }
    expectAgreement(withCta({extended(35, {0, 1, 2, 0x52, 0x58})}), 5);
    for (unsigned formula = 0; formula < 3; ++formula) {
        expectAgreement(withCta({extended(42, {0, byte(formula), 0x7F, 0x07, 0x37, 0x04, 59})}), 2);
        expectAgreement(withCta({extended(42, {0x10, byte(formula), 0x7F, 0x07, 0x37, 0x04, 59, 0})}), 2);
    }
}

TEST_F(CtaAgreement, OfFlagsAndRevisions)
{
    for (const unsigned revision : {1U, 2U, 3U}) {
        expectAgreement(
            edid_builder::base({detailed(), edid_builder::name()}, 1) + edid_builder::cta({}, {detailed()}, revision),
            2);
    }
}

}  // namespace
