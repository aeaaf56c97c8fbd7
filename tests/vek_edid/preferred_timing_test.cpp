// preferredTiming(): the first detailed timing as a display mode.

#include <gtest/gtest.h>

#include "drivers/edid/edid.h"
#include "edid_builder.h"

namespace
{

using edid_builder::Bytes;
using edid_builder::operator+;
using edid_builder::Detailed;
using edid_builder::detailed;

VekDisplayMode preferred(const Bytes& edid)
{
    VekDisplayMode mode{};
    EXPECT_TRUE(vek::preferredTiming(edid, mode));
    return mode;
}

void expectNone(const Bytes& edid)
{
    VekDisplayMode mode{};
    mode.clock = 7;
    EXPECT_FALSE(vek::preferredTiming(edid, mode));
    EXPECT_EQ(mode.clock, 7);
    EXPECT_EQ(mode.htotal, 0);
}

TEST(PreferredTiming, IsTheFirstOfTheBaseBlock)
{
    const VekDisplayMode mode = preferred(edid_builder::fullSample());
    EXPECT_EQ(mode.clock, 148500);
    EXPECT_EQ(mode.hdisplay, 1920);
    EXPECT_EQ(mode.hsync_start, 2008);
    EXPECT_EQ(mode.hsync_end, 2052);
    EXPECT_EQ(mode.htotal, 2200);
    EXPECT_EQ(mode.vdisplay, 1080);
    EXPECT_EQ(mode.vsync_start, 1084);
    EXPECT_EQ(mode.vsync_end, 1089);
    EXPECT_EQ(mode.vtotal, 1125);
    EXPECT_EQ(mode.flags, VEK_HSYNC_POSITIVE | VEK_VSYNC_POSITIVE);
}

TEST(PreferredTiming, CountsFramesOfInterlacedTimings)
{
    Detailed timing;
    timing.clock10Khz = 7425;
    timing.vActive = 540;
    timing.vBlank = 22;
    timing.vFront = 2;
    timing.flags = 0x9E;
    const VekDisplayMode mode = preferred(edid_builder::base({detailed(timing)}));
    EXPECT_EQ(mode.vdisplay, 1080);
    EXPECT_EQ(mode.vsync_start, 1084);
    EXPECT_EQ(mode.vsync_end, 1094);
    EXPECT_EQ(mode.vtotal, 1125);
}

TEST(PreferredTiming, PutsBordersBesideThePicture)
{
    Detailed timing;
    timing.hBorder = 10;
    timing.vBorder = 2;
    const VekDisplayMode mode = preferred(edid_builder::base({detailed(timing)}));
    EXPECT_EQ(mode.hsync_start, 1920 + 10 + 88);
    EXPECT_EQ(mode.htotal, 2200);
    EXPECT_EQ(mode.vsync_start, 1080 + 2 + 4);
    EXPECT_EQ(mode.vtotal, 1125);
}

TEST(PreferredTiming, StatesThePolaritiesThatAreKnown)
{
    struct Case {
        unsigned flags;
        int expected;
    };
    for (const Case& example :
         {Case{0x18, VEK_HSYNC_NEGATIVE | VEK_VSYNC_NEGATIVE}, Case{0x1A, VEK_HSYNC_POSITIVE | VEK_VSYNC_NEGATIVE},
          Case{0x1C, VEK_HSYNC_NEGATIVE | VEK_VSYNC_POSITIVE}, Case{0x12, VEK_HSYNC_POSITIVE},
          Case{0x10, VEK_HSYNC_NEGATIVE}, Case{0x02, 0}, Case{0x08, 0}}) {
        Detailed timing;
        timing.flags = example.flags;
        EXPECT_EQ(preferred(edid_builder::base({detailed(timing)})).flags, example.expected) << example.flags;
    }
}

TEST(PreferredTiming, MayStandInALaterDescriptorOrInAnExtension)
{
    EXPECT_EQ(preferred(edid_builder::base({edid_builder::name(), detailed()})).hdisplay, 1920);
    const Bytes extension = edid_builder::cta({edid_builder::dataBlock(2, {16})}, {detailed()});
    EXPECT_EQ(preferred(edid_builder::base({edid_builder::name()}, 1) + extension).vtotal, 1125);
}

TEST(PreferredTiming, IsAbsentWhereThereIsNoneOrAnImpossibleOne)
{
    expectNone({});
    expectNone(Bytes(20, 0xFF));
    expectNone(Bytes(128, 0));
    expectNone(edid_builder::base({edid_builder::name()}));
    Detailed impossible;
    impossible.hBlank = 100;
    expectNone(edid_builder::base({detailed(impossible), detailed()}));
    Detailed empty;
    empty.vActive = 0;
    expectNone(edid_builder::base({detailed(empty)}));
}

}  // namespace
