// The base block, held against edid-decode.

#include <algorithm>
#include <random>

#include "agreement.h"
#include "edid_builder.h"

namespace
{

using edid_builder::base;
using edid_builder::Bytes;
using edid_builder::operator+;
using edid_builder::descriptor;
using edid_builder::Detailed;
using edid_builder::detailed;
using edid_builder::name;
using edid_builder::text;

class BaseAgreement : public Agreement
{
};

Bytes plain(const std::vector<std::pair<std::size_t, unsigned>>& changes)
{
    return base({detailed(), name()}, 0, changes);
}

TEST_F(BaseAgreement, OfIdentificationAndDates)
{
    expectAgreement(plain({}), 1);
    for (const unsigned week : {0U, 1U, 53U, 54U, 0xFFU}) {
        for (const unsigned year : {0U, 10U, 36U}) {
            expectAgreement(plain({{16, week}, {17, year}}), 1);
        }
    }
    expectAgreement(plain({{8, 0x10}, {9, 0xAC}, {10, 0xFF}, {11, 0xFF}}), 1);
    expectAgreement(plain({{8, 0x04}, {9, 0x21}}), 1);
    expectAgreement(plain({{8, 0x6B}, {9, 0x5A}, {12, 0xFF}, {13, 0xFF}, {14, 0xFF}, {15, 0xFF}}), 1);
    expectAgreement(plain({{12, 0}, {13, 0}, {14, 0}, {15, 0}}), 1);
    for (const unsigned revision : {0U, 1U, 2U, 3U}) {
        expectAgreement(plain({{19, revision}, {20, 0x81}}), 1);
    }
}

TEST_F(BaseAgreement, OfInputSizeAndGamma)
{
    for (unsigned depth = 0; depth < 7; ++depth) {
        for (unsigned kind = 0; kind < 6; ++kind) {
            expectAgreement(plain({{20, 0x80 | depth << 4 | kind}}), 1);
        }
    }
    for (const unsigned analog : {0x00U, 0x2FU, 0x48U, 0x7FU}) {
        expectAgreement(plain({{20, analog}}), 1);
    }
    for (const unsigned size : {1U, 26U, 61U, 79U, 255U}) {
        expectAgreement(plain({{21, size}, {22, size}}), 1);
        expectAgreement(plain({{21, size}, {22, 0}}), 1);
        expectAgreement(plain({{21, 0}, {22, size}}), 1);
    }
    expectAgreement(plain({{21, 0}, {22, 0}}), 1);
    for (const unsigned gamma : {0U, 120U, 254U, 255U}) {
        expectAgreement(plain({{23, gamma}}), 1);
    }
}

TEST_F(BaseAgreement, OfChromaticities)
{
    std::mt19937 random(7);
    for (int run = 0; run < 60; ++run) {
        std::vector<std::pair<std::size_t, unsigned>> changes;
        for (std::size_t offset = 25; offset < 35; ++offset) {
            changes.emplace_back(offset, edid_builder::pick(random, 0, 255));
        }
        expectAgreement(plain(changes), 1);
    }
}

TEST_F(BaseAgreement, OfEstablishedTimings)
{
    expectAgreement(plain({{35, 0xFF}, {36, 0xFF}, {37, 0xFF}}), 18);
    for (unsigned bit = 0; bit < 24; ++bit) {
        expectAgreement(plain({{35 + bit / 8, 1U << bit % 8}}), 1);
    }
    const Bytes third = descriptor(0xF7, {0, 10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xF0});
    expectAgreement(base({detailed(), third, name()}), 45);
}

TEST_F(BaseAgreement, OfEveryStandardTimingCode)
{
    // Eight codes in the base block and six in each of two descriptors: all of them, twenty a run.
    // The program takes every code that starts with 01 for unused, not 01 01 alone.
    std::vector<unsigned> codes;
    for (unsigned first = 2; first < 0x100; ++first) {
        for (const unsigned rate : {0U, 5U, 12U, 15U, 25U, 63U}) {
            for (unsigned shape = 0; shape < 4; ++shape) {
                codes.push_back(first << 8 | shape << 6 | rate);
            }
        }
    }
    for (const unsigned revision : {2U, 3U, 4U}) {
        for (std::size_t start = 0; start < codes.size(); start += revision == 4 ? 20 : 200) {
            std::vector<std::pair<std::size_t, unsigned>> changes{{19, revision}};
            Bytes extra[2] = {Bytes(13, 0x01), Bytes(13, 0x01)};
            for (std::size_t i = 0; i < 20; ++i) {
                const unsigned code = start + i < codes.size() ? codes[start + i] : 0x0101;
                if (i < 8) {
                    changes.emplace_back(38 + 2 * i, code >> 8);
                    changes.emplace_back(39 + 2 * i, code & 0xFF);
                } else {
                    extra[(i - 8) / 6].at(1 + (i - 8) % 6 * 2) = static_cast<std::uint8_t>(code >> 8);
                    extra[(i - 8) / 6].at(2 + (i - 8) % 6 * 2) = static_cast<std::uint8_t>(code);
                }
            }
            extra[0].at(0) = extra[1].at(0) = 0;
            extra[0].push_back(0x0A);
            extra[1].push_back(0x0A);
            expectAgreement(
                base({detailed(), descriptor(0xFA, extra[0]), descriptor(0xFA, extra[1]), name()}, 0, changes),
                std::min<std::size_t>(20, codes.size() - start));
        }
    }
}

TEST_F(BaseAgreement, OfStandardTimingCodesOfACvtDisplay)
{
    const Bytes limits = descriptor(0xFD, {0, 50, 85, 30, 120, 20, 4, 0x11, 0, 0, 0xF8, 0x18, 0xF0, 60});
    for (unsigned shape = 0; shape < 4; ++shape) {
        const unsigned second = shape << 6 | 10;
        const Bytes edid = base({detailed(), limits, name()}, 0, {{38, 0x45}, {39, second}, {40, 0xA0}, {41, second}});
        expectAgreement(edid, 5);
    }
}

TEST_F(BaseAgreement, OfDetailedTimingFlags)
{
    for (unsigned flags = 0; flags < 0x100; ++flags) {
        Detailed timing;
        timing.flags = flags;
        timing.vActive = 540;
        expectAgreement(base({detailed(timing), name()}), 1);
    }
}

TEST_F(BaseAgreement, OfRandomDetailedTimings)
{
    std::mt19937 random(42);
    const auto pick = [&random](unsigned low, unsigned high) { return edid_builder::pick(random, low, high); };
    const auto any = [&pick] {
        Detailed timing;
        // The program leaves clocks below 10 MHz out.
        timing.clock10Khz = pick(1000, 65535);
        timing.hActive = pick(1, 4095);
        timing.vActive = pick(1, 4095);
        timing.hBlank = pick(20, 4095);
        timing.vBlank = pick(20, 4095);
        timing.hSync = pick(1, std::min(timing.hBlank / 4, 1023U));
        timing.hFront = pick(0, std::min(timing.hBlank / 4, 1023U));
        timing.hBorder = pick(0, std::min(timing.hBlank / 8, 255U)) * pick(0, 1);
        timing.vSync = pick(1, std::min(timing.vBlank / 4, 63U));
        timing.vFront = pick(0, std::min(timing.vBlank / 4, 63U));
        timing.vBorder = pick(0, std::min(timing.vBlank / 8, 255U)) * pick(0, 1);
        timing.widthMm = pick(0, 4095);
        timing.heightMm = timing.widthMm == 0 ? 0 : pick(1, 4095);
        timing.flags = pick(0, 255);
        // The program leaves vertical borders out of the refresh rate of interlaced timings.
        if ((timing.flags & 0x80) != 0) {
            timing.vBorder = 0;
        }
        return detailed(timing);
    };
    for (int run = 0; run < 60; ++run) {
        constexpr unsigned kExtensions = 10;
        Bytes edid = base({any(), any(), any(), name()}, kExtensions);
        for (unsigned block = 0; block < kExtensions; ++block) {
            edid = edid + edid_builder::cta({}, {any(), any(), any(), any(), any(), any()});
        }
        expectAgreement(edid, 63);
    }
}

TEST_F(BaseAgreement, OfTextDescriptors)
{
    for (const unsigned tag : {0xFFU, 0xFEU, 0xFCU}) {
        for (const char* content : {"A", "ABCDEFGHIJKL", "ABCDEFGHIJKLM", "with  blanks", "!\"#$%&()*+,-."}) {
            expectAgreement(base({detailed(), text(tag, content), name()}), 1);
        }
    }
}

TEST_F(BaseAgreement, OfRangeLimits)
{
    const std::vector<Bytes> limits = {
        {0, 48, 75, 30, 90, 17, 1, 10, 32, 32, 32, 32, 32, 32},
        {0x0F, 48, 75, 30, 90, 17, 1, 10, 32, 32, 32, 32, 32, 32},
        {0x0A, 48, 75, 30, 90, 255, 0, 10, 32, 32, 32, 32, 32, 32},
        {0, 50, 85, 30, 120, 20, 2, 0, 40, 80, 0x58, 0x02, 128, 40},
        {0, 50, 85, 30, 120, 20, 4, 0x11, 0x5A, 0xF0, 0xF8, 0x38, 0xF0, 60},
        {0, 50, 85, 30, 120, 20, 4, 0x10, 0x00, 0x00, 0x80, 0x90, 0x80, 75},
    };
    for (const Bytes& limit : limits) {
        expectAgreement(base({detailed(), descriptor(0xFD, limit), name()}), 1);
    }
}

TEST_F(BaseAgreement, OfColorDescriptors)
{
    const Bytes points{0, 1, 0x0A, 0x60, 0x60, 120, 2, 0x05, 0x50, 0x54, 130, 0x0A, 0x20, 0x20};
    expectAgreement(base({detailed(), descriptor(0xFB, points), name()}), 1);
    const Bytes management{0, 3, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    expectAgreement(base({detailed(), descriptor(0xF9, management), name()}), 1);
}

TEST_F(BaseAgreement, OfCvtCodes)
{
    for (unsigned lines = 100; lines < 4000; lines += 97) {
        for (unsigned shape = 0; shape < 4; ++shape) {
            const unsigned value = lines / 2 - 1;
            const Bytes code{static_cast<std::uint8_t>(value),
                             static_cast<std::uint8_t>((value >> 8) << 4 | shape << 2),
                             static_cast<std::uint8_t>((lines & 3) << 5 | 0x1F)};
            expectAgreement(base({detailed(), descriptor(0xF8, Bytes{0, 1} + code), name()}), 6);
        }
    }
    for (unsigned rates = 1; rates < 0x80; ++rates) {
        const Bytes code{0x1B, 0x24, static_cast<std::uint8_t>(rates)};
        expectAgreement(base({detailed(), descriptor(0xF8, Bytes{0, 1} + code), name()}), 1);
    }
}

TEST_F(BaseAgreement, OfOtherDescriptors)
{
    for (const unsigned tag : {0x00U, 0x05U, 0x0FU, 0x10U, 0x55U}) {
        expectAgreement(base({detailed(), descriptor(tag, {0, 1, 2, 3}), name()}), 1);
    }
}

TEST_F(BaseAgreement, OfWrongChecksums)
{
    for (const unsigned wrong : {1U, 0x7FU, 0xFFU}) {
        Bytes edid = edid_builder::withCta({});
        edid[127] = static_cast<std::uint8_t>(edid[127] + wrong);
        edid[255] = static_cast<std::uint8_t>(edid[255] ^ wrong);
        expectAgreement(edid, 1);
    }
}

}  // namespace
