#include "agreement.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

#include "child_process.h"
#include "printed.h"

namespace
{

constexpr const char* kProgram = "edid-decode";

bool programFound()
{
    return std::system("command -v edid-decode >/dev/null 2>&1") == 0;
}

std::string shown(const edid_builder::Bytes& edid)
{
    std::ostringstream out;
    for (const unsigned byte : edid) {
        out << std::hex << byte << ' ';
    }
    return out.str();
}

/// Facts that are numbers rounded to so many places: how far apart they may lie.
double tolerance(const std::string& fact)
{
    return fact == "chromaticity" ? 1.01e-4 : 0.0;
}

void expectSameValues(const std::string& fact, const std::vector<std::string>& ours,
                      const std::vector<std::string>& reference)
{
    if (fact.starts_with("deep color")) {
        EXPECT_THAT(ours, testing::UnorderedElementsAreArray(reference)) << fact;
        return;
    }
    if (tolerance(fact) == 0.0 || ours.size() != reference.size()) {
        EXPECT_EQ(ours, reference) << fact;
        return;
    }
    for (std::size_t i = 0; i < ours.size(); ++i) {
        EXPECT_NEAR(std::stod(ours[i]), std::stod(reference[i]), tolerance(fact)) << fact << ' ' << i;
    }
}

}  // namespace

void Agreement::SetUp()
{
    static const bool kFound = programFound();
    if (!kFound) {
        GTEST_SKIP() << "the program edid-decode is not installed (Debian package edid-decode)";
    }
}

std::string referenceOutput(const edid_builder::Bytes& edid, const std::vector<std::string>& options)
{
    child_process::Command command{{kProgram}};
    command.arguments.insert(command.arguments.end(), options.begin(), options.end());
    command.input.assign(edid.begin(), edid.end());
    const child_process::Result result = child_process::run(command);
    EXPECT_EQ(result.signal, 0) << result.error;
    return result.output;
}

void expectSameTiming(const DecodedTiming& ours, const DecodedTiming& reference, double clockToleranceMhz)
{
    constexpr double kRounding = 6e-4;
    std::ostringstream both;
    both << "ours: " << ours << "\nreference: " << reference;
    SCOPED_TRACE(both.str());
    if (!ours.name.empty() && !reference.name.empty()) {
        EXPECT_EQ(ours.name, reference.name);
    }
    EXPECT_EQ(ours.width, reference.width);
    EXPECT_EQ(ours.height, reference.height);
    EXPECT_EQ(ours.interlaced, reference.interlaced);
    EXPECT_NEAR(ours.refreshHz, reference.refreshHz,
                kRounding + reference.refreshHz * clockToleranceMhz / reference.clockMhz);
    // The program shows 0:0 for a DisplayID timing that states no ratio.
    if (reference.ratio != "0:0") {
        EXPECT_EQ(ours.ratio, reference.ratio);
    }
    EXPECT_NEAR(ours.horizontalKhz, reference.horizontalKhz, 2 * kRounding);
    EXPECT_NEAR(ours.clockMhz, reference.clockMhz, clockToleranceMhz);
    EXPECT_EQ(ours.reducedBlanking, reference.reducedBlanking);
    EXPECT_EQ(ours.native, reference.native);
    EXPECT_EQ(ours.preferred, reference.preferred);
    EXPECT_EQ(ours.imageSize, reference.imageSize);
    EXPECT_EQ(ours.horizontal, reference.horizontal);
    EXPECT_EQ(ours.vertical, reference.vertical);
}

void expectAgreement(const edid_builder::Bytes& edid, std::size_t leastTimings)
{
    SCOPED_TRACE(shown(edid));
    const Decoded reference = decodedByReference(referenceOutput(edid, {"--skip-hex-dump"}));
    const Decoded ours = decodedByUs(printed(edid));
    for (const auto& [fact, values] : reference.facts) {
        const auto found = ours.facts.find(fact);
        expectSameValues(fact, found != ours.facts.end() ? found->second : std::vector<std::string>{}, values);
    }
    for (const auto& [fact, values] : ours.facts) {
        EXPECT_TRUE(reference.facts.contains(fact)) << "only ours: " << fact << " = " << values.front();
    }
    ASSERT_EQ(ours.timings.size(), reference.timings.size());
    EXPECT_GE(reference.timings.size(), leastTimings);
    for (std::size_t i = 0; i < reference.timings.size(); ++i) {
        expectSameTiming(ours.timings[i], reference.timings[i]);
    }
}
