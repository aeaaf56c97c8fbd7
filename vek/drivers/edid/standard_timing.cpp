#include "drivers/edid/standard_timing.h"

#include <array>
#include <cstdio>

#include "drivers/edid/dmt_table.h"
#include "drivers/edid/timing.h"

namespace vek::edid
{
namespace
{

/// One bit of the established timings: a DMT mode, or an older one with its maker's name.
struct Established {
    unsigned dmt;
    const char* name;
    Timing timing;
};

constexpr Established dmtMode(unsigned id)
{
    return {id, nullptr, {}};
}

// From bit 7 of byte 23h on down.
constexpr std::array<Established, 17> kEstablished = {
    Established{0, "IBM", {28320, {720, 18, 108, 54, 0, false}, {400, 21, 2, 26, 0, true}, Scan::kProgressive, {9, 5}}},
    Established{0, "IBM", {35500, {720, 18, 108, 54, 0, false}, {400, 12, 2, 35, 0, true}, Scan::kProgressive, {9, 5}}},
    dmtMode(0x04),
    Established{
        0, "Apple", {30240, {640, 64, 64, 96, 0, false}, {480, 3, 3, 39, 0, false}, Scan::kProgressive, {4, 3}}},
    dmtMode(0x05),
    dmtMode(0x06),
    dmtMode(0x08),
    dmtMode(0x09),
    dmtMode(0x0A),
    dmtMode(0x0B),
    Established{
        0, "Apple", {57284, {832, 32, 64, 224, 0, false}, {624, 1, 3, 39, 0, false}, Scan::kProgressive, {4, 3}}},
    dmtMode(0x0F),
    dmtMode(0x10),
    dmtMode(0x11),
    dmtMode(0x12),
    dmtMode(0x24),
    Established{
        0, "Apple", {100000, {1152, 48, 128, 128, 0, true}, {870, 3, 3, 39, 0, true}, Scan::kProgressive, {192, 145}}},
};

// DMT ids from bit 7 of the descriptor's byte 6 on down.
constexpr std::array<unsigned char, 44> kEstablished3 = {
    0x01, 0x02, 0x03, 0x07, 0x0E, 0x0C, 0x13, 0x15, 0x16, 0x17, 0x18, 0x19, 0x20, 0x21, 0x23,
    0x25, 0x27, 0x2E, 0x2F, 0x30, 0x31, 0x29, 0x2A, 0x2B, 0x2C, 0x39, 0x3A, 0x3B, 0x3C, 0x33,
    0x34, 0x35, 0x36, 0x37, 0x3E, 0x3F, 0x41, 0x42, 0x44, 0x45, 0x46, 0x47, 0x49, 0x4A};

/// Whether the n-th bit is set, counted from bit 7 of the first byte on down.
bool bitFromTop(Bytes bytes, std::size_t number)
{
    return bytes.bit(number / 8, static_cast<unsigned>(7 - number % 8));
}

/// A mode that DMT does not list is one of GTF, or for a source of EDID 1.4 and a display with CVT one of CVT.
void printFormulaTiming(Context& context, unsigned width, unsigned refresh, Ratio ratio)
{
    const FormulaInput input{static_cast<std::int32_t>(width),
                             static_cast<std::int32_t>(width) * ratio.height / ratio.width,
                             static_cast<double>(refresh), ratio};
    if (context.cvtSupported) {
        context.report.timing("CVT", cvt(input), "source of EDID 1.4");
        context.report.timing("GTF", gtf(input), "source of EDID 1.3");
    } else {
        context.report.timing("GTF", gtf(input));
    }
}

void printStandardTiming(Context& context, unsigned first, unsigned second)
{
    constexpr unsigned kUnused = 0x01;
    constexpr unsigned kLeastRefresh = 60;
    constexpr std::array<Ratio, 4> kRatios = {Ratio{16, 10}, Ratio{4, 3}, Ratio{5, 4}, Ratio{16, 9}};
    if (first == kUnused && second == kUnused) {
        return;
    }
    const unsigned dmt = dmtOfStandardCode(first << 8 | second);
    if (dmt != 0) {
        printDmt(context.report, dmt);
        return;
    }
    if (first == 0) {
        std::snprintf(context.report.finding(), Report::kFindingLength, "standard timing %02x %02x is reserved", first,
                      second);
        return;
    }
    const unsigned shape = second >> 6;
    const Ratio ratio = shape == 0 && context.revision < 3 ? Ratio{1, 1} : kRatios[shape];
    constexpr unsigned kCells = 31;
    printFormulaTiming(context, (first + kCells) * 8, (second & 0x3F) + kLeastRefresh, ratio);
}

}  // namespace

void printDmt(Report& report, unsigned id)
{
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "DMT 0x%02x", id);
    const Timing* const timing = findDmt(id);
    if (timing != nullptr) {
        report.timing(name.data(), *timing);
    } else {
        std::fprintf(report.line(), "%s: not assigned\n", name.data());
        std::snprintf(report.finding(), Report::kFindingLength, "%s is not assigned", name.data());
    }
}

void printStandardTimings(Context& context, Bytes codes)
{
    for (std::size_t i = 0; i + 1 < codes.size(); i += 2) {
        printStandardTiming(context, codes.at(i), codes.at(i + 1));
    }
}

void printEstablishedTimings(Report& report, Bytes bits)
{
    for (std::size_t i = 0; i < kEstablished.size(); ++i) {
        if (!bitFromTop(bits, i)) {
            continue;
        }
        if (kEstablished[i].dmt != 0) {
            printDmt(report, kEstablished[i].dmt);
        } else {
            report.timing(kEstablished[i].name, kEstablished[i].timing);
        }
    }
    if (const unsigned own = bits.bits(2, 6, 0)) {
        std::fprintf(report.line(), "Manufacturer's timings: 0x%02x\n", own);
    }
}

void printEstablishedTimings3(Report& report, Bytes bits)
{
    for (std::size_t i = 0; i < kEstablished3.size(); ++i) {
        if (bitFromTop(bits, i)) {
            printDmt(report, kEstablished3[i]);
        }
    }
}

void printCvtCode(Report& report, Bytes code)
{
    struct Rate {
        unsigned bit;
        unsigned preferred;
        double hertz;
        bool reduced;
    };
    // A preferred rate of 60 Hz is that with reduced blanking when both are offered.
    constexpr unsigned kStandard60 = 3;
    constexpr unsigned kReduced60 = 0;
    constexpr std::array<Rate, 5> kRates = {Rate{4, 0, 50, false}, Rate{kStandard60, 1, 60, false},
                                            Rate{2, 2, 75, false}, Rate{1, 3, 85, false},
                                            Rate{kReduced60, 1, 60, true}};
    constexpr std::array<Ratio, 4> kRatios = {Ratio{4, 3}, Ratio{16, 9}, Ratio{16, 10}, Ratio{15, 9}};
    const auto height = static_cast<std::int32_t>(((code.at(0) | code.bits(1, 7, 4) << 8) + 1) * 2);
    const Ratio ratio = kRatios[code.bits(1, 3, 2)];
    const std::int32_t width = height * ratio.width / ratio.height / 8 * 8;
    for (const Rate& rate : kRates) {
        if (!code.bit(2, rate.bit)) {
            continue;
        }
        const FormulaInput input{width, height, rate.hertz, ratio};
        const bool preferred =
            code.bits(2, 6, 5) == rate.preferred && !(rate.bit == kStandard60 && code.bit(2, kReduced60));
        report.timing("CVT", rate.reduced ? cvtReducedBlanking(input) : cvt(input),
                      preferred ? "preferred vertical rate" : nullptr);
    }
}

}  // namespace vek::edid
