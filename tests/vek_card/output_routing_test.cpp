#include "drivers/output_routing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>

#include "captured_output.h"
#include "card/output_routing.h"
#include "vek.h"

namespace
{

using vek::DisplayOutput;
using vek::DisplayUnits;
using vek::OutputRoutingRegisters;

constexpr DisplayUnits kLargeChip{.controllers = 4, .hdmiOutputs = 2, .dpOutputs = 2, .vgaDdc = 3, .dvoDdc = 2};
constexpr DisplayUnits kSmallChip{
    .controllers = 2, .hdmiOutputs = 1, .dpOutputs = 1, .vgaDdc = 1, .dvoDdc = vek::kNoDdc};

constexpr auto kAllOutputs = {DisplayOutput::kHdmi0, DisplayOutput::kHdmi1, DisplayOutput::kDp0,
                              DisplayOutput::kDp1,   DisplayOutput::kVga,   DisplayOutput::kDvo};

std::string printed(std::uint32_t routing, const DisplayUnits& units)
{
    CapturedOutput output;
    vek::printRouting(stdout, routing, units);
    return output.take();
}

TEST(OutputRoutingRegisters, ComeUpWithTheRoutingOfTheBoard)
{
    OutputRoutingRegisters registers(0x89abcdefU);
    EXPECT_EQ(registers.read(4, 4).value, 0x89abcdefU);
    EXPECT_EQ(registers.read(0, 4).value, 0U);
    EXPECT_EQ(registers.read(0, 8).value, 0x89abcdef'00000000U);
}

TEST(OutputRoutingRegisters, KeepAllBitsThatAreWritten)
{
    OutputRoutingRegisters registers(0);
    for (const std::uint32_t value : {0xffffffffU, 0xa5a55a5aU, 0U}) {
        EXPECT_EQ(registers.write(4, 4, value), VEK_OK);
        EXPECT_EQ(registers.read(4, 4).value, value);
    }
    EXPECT_EQ(registers.write(5, 1, 0x77), VEK_OK);
    EXPECT_EQ(registers.write(6, 2, 0x1234), VEK_OK);
    EXPECT_EQ(registers.read(4, 4).value, 0x12347700U);
    EXPECT_EQ(registers.write(0, 4, 0xcafef00dU), VEK_OK);
    EXPECT_EQ(registers.read(0, 8).value, 0x12347700'cafef00dU);
}

TEST(OutputRoutingRegisters, AnswerNothingBeyondTheirEnd)
{
    OutputRoutingRegisters registers(0x11223344U);
    for (const std::uint64_t address : {std::uint64_t{5}, std::uint64_t{8}, ~std::uint64_t{0}}) {
        EXPECT_EQ(registers.read(address, 4).result, VEK_NO_RESPONSE);
        EXPECT_EQ(registers.write(address, 4, 0), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(registers.read(4, 4).value, 0x11223344U);
}

TEST(OutputRouting, HasAFieldOfFourBitsForEachOutput)
{
    unsigned shift = 0;
    for (const DisplayOutput output : kAllOutputs) {
        for (const std::uint32_t others : {0U, ~(0xfU << shift)}) {
            EXPECT_FALSE(routeOf(others, output).on);
            EXPECT_TRUE(routeOf(others | 0x8U << shift, output).on);
            EXPECT_EQ(routeOf(others | 0xdU << shift, output).controller, 5U);
        }
        EXPECT_EQ(vek::output_routing::with(0, output, 3), 0xbU << shift);
        EXPECT_EQ(vek::output_routing::with(0xffffffffU, output, 2), ~(0x5U << shift));
        shift += 4;
    }
}

TEST(OutputRouting, KnowsTheOutputsOfAChip)
{
    for (const DisplayOutput output : kAllOutputs) {
        EXPECT_TRUE(hasOutput(kLargeChip, output));
        EXPECT_FALSE(hasOutput(vek::kNoDisplays, output));
        const bool small =
            output == DisplayOutput::kHdmi0 || output == DisplayOutput::kDp0 || output == DisplayOutput::kVga;
        EXPECT_EQ(hasOutput(kSmallChip, output), small);
    }
}

TEST(OutputRouting, IsPrintedByController)
{
    EXPECT_EQ(printed(0x000ba098U, kLargeChip),
              "output routing, reg[0x024] = 0x000ba098\n"
              "  CRTC-0 -> HDMI-0\n"
              "  CRTC-1 -> HDMI-1\n"
              "  CRTC-2 -> DP-1 (eDP)\n"
              "  CRTC-3 -> VGA\n"
              "  off:      DP-0, DVO\n");
    EXPECT_EQ(printed(0x00a89aa8U, kLargeChip),
              "output routing, reg[0x024] = 0x00a89aa8\n"
              "  CRTC-0 -> HDMI-0, VGA\n"
              "  CRTC-1 -> DP-1 (eDP)\n"
              "  CRTC-2 -> HDMI-1, DP-0, DVO\n"
              "  CRTC-3 -> none\n"
              "  off:      none\n");
}

TEST(OutputRouting, ShowsControllersThatTheChipLacks)
{
    EXPECT_EQ(printed(0x00c0000fU, kLargeChip),
              "output routing, reg[0x024] = 0x00c0000f\n"
              "  CRTC-0 -> none\n"
              "  CRTC-1 -> none\n"
              "  CRTC-2 -> none\n"
              "  CRTC-3 -> none\n"
              "  off:      HDMI-1, DP-0, DP-1 (eDP), VGA\n"
              "  CRTC-7 -> HDMI-0, but this chip has no CRTC-7\n"
              "  CRTC-4 -> DVO, but this chip has no CRTC-4\n");
}

TEST(OutputRouting, LeavesOutWhatASmallerChipLacks)
{
    EXPECT_EQ(printed(0xff8a8998U, kSmallChip),
              "output routing, reg[0x024] = 0xff8a8998\n"
              "  CRTC-0 -> HDMI-0\n"
              "  CRTC-1 -> DP-0\n"
              "  off:      none\n"
              "  CRTC-2 -> VGA, but this chip has no CRTC-2\n");
}

// An output that is off has no controller, whatever its field holds.
TEST(OutputRouting, CallsAnOutputOffThatIsNotSwitchedOn)
{
    EXPECT_EQ(printed(0x00777777U, kSmallChip),
              "output routing, reg[0x024] = 0x00777777\n"
              "  CRTC-0 -> none\n"
              "  CRTC-1 -> none\n"
              "  off:      HDMI-0, DP-0, VGA\n");
}

}  // namespace
