#include "drivers/driver_core.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <span>

#include "card/feature_registers.h"
#include "card/monitor_ddc.h"
#include "card/monitor_edids.h"
#include "card/register_region.h"
#include "drivers/feature_switches.h"
#include "drivers/output_routing.h"
#include "drivers/zoom_video.h"
#include "fake_registers.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using vek::DisplayOutput;
using vek::VideoMemory;

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kSize = 1024 * kMiB;
/// The firmware's area, page tables of 8 bytes for each 4 KiB and four rings.
constexpr std::uint64_t kFixed = 16 * kMiB + 2 * kMiB + 4 * kMiB;
constexpr std::uint64_t k1080pBytes = 1920 * 1080 * 4;
constexpr std::uint64_t kSxgaBytes = 1280 * 1024 * 4;

std::uint64_t inPages(std::uint64_t bytes)
{
    return (bytes + VideoMemory::kPageSize - 1) / VideoMemory::kPageSize * VideoMemory::kPageSize;
}

class DriverCores : public testing::Test
{
protected:
    /// What is used besides the fixed buffers.
    std::uint64_t used()
    {
        EXPECT_EQ(core.followCard({.displays = displays, .features = features}), VEK_OK);
        return core.memory().totalBytes() - core.memory().freeBytes() - kFixed;
    }

    void route(std::uint32_t routing) { ASSERT_EQ(registers.write(0x024, 4, routing), VEK_OK); }
    void open(std::uint32_t functions) { ASSERT_EQ(features.write(0, 4, functions), VEK_OK); }

    vek::DdcConnector hdmi{vek::kMonitor1080p};
    vek::DdcConnector empty{std::span<const std::uint8_t>()};
    vek::DdcConnector vga{vek::kMonitorSxga};
    std::array<vek::I2cBus*, 4> buses{hdmi.bus(), empty.bus(), empty.bus(), vga.bus()};
    std::array<vek::AuxChannel*, 2> auxChannels{};
    TestClock clock;
    TestPause pause{clock};
    vek::RegisterRegion registers{{}};
    vek::FeatureRegisters features;
    vek::Displays displays{
        .registers = registers,
        .units = {.controllers = 4, .hdmiOutputs = 2, .dpOutputs = 0, .vgaDdc = 3, .dvoDdc = 2},
        .ddc = buses,
        .aux = auxChannels,
        .pause = pause,
    };
    vek::DriverCore core{{1, 2, 3, 4}, kSize};
};

TEST_F(DriverCores, HoldTheirOwnBuffersFromTheStart)
{
    EXPECT_EQ(core.memory().totalBytes(), kSize);
    EXPECT_EQ(used(), 0U);
    EXPECT_EQ(core.version().major, 1);
    EXPECT_EQ(core.version().fourth, 4);
}

TEST_F(DriverCores, HoldAFrameBufferForEachControllerWithADisplay)
{
    route(vek::output_routing::with(0, DisplayOutput::kHdmi0, 0));
    EXPECT_EQ(used(), inPages(k1080pBytes));
    route(vek::output_routing::with(vek::output_routing::with(0, DisplayOutput::kHdmi0, 0), DisplayOutput::kVga, 3));
    EXPECT_EQ(used(), inPages(k1080pBytes) + inPages(kSxgaBytes));
    route(vek::output_routing::with(0, DisplayOutput::kHdmi1, 1));
    EXPECT_EQ(used(), 0U) << "there is no display";
}

TEST_F(DriverCores, KeepTheirModesUntilTheRoutingChanges)
{
    const std::uint32_t routing = vek::output_routing::with(0, DisplayOutput::kHdmi0, 0);
    route(routing);
    EXPECT_EQ(used(), inPages(k1080pBytes));
    buses[0] = vga.bus();
    EXPECT_EQ(used(), inPages(k1080pBytes));
    route(routing | 1U << 31);
    EXPECT_EQ(used(), inPages(kSxgaBytes));
}

TEST_F(DriverCores, HoldACaptureBufferWhileAPortShowsItsWindow)
{
    constexpr std::uint64_t kCapture = 3 * 720 * 576 * 2;
    const std::uint64_t second = vek::zoom_video::kBase + vek::zoom_video::kCaptureStep;
    ASSERT_EQ(registers.write(vek::zoom_video::kBase, 4, vek::zoom_video::kControlCapture), VEK_OK);
    EXPECT_EQ(used(), 0U) << "to measure a picture takes no memory";
    ASSERT_EQ(registers.write(vek::zoom_video::kBase, 4, 3), VEK_OK);
    EXPECT_EQ(used(), inPages(kCapture));
    ASSERT_EQ(registers.write(second, 4, 3), VEK_OK);
    EXPECT_EQ(used(), 2 * inPages(kCapture));
    ASSERT_EQ(registers.write(vek::zoom_video::kBase, 4, 0), VEK_OK);
    EXPECT_EQ(used(), inPages(kCapture));
    EXPECT_EQ(core.memory().nodes().size(), 6U + 3U) << "the buffer that is given back leaves a hole";
    ASSERT_EQ(registers.write(second, 4, 0), VEK_OK);
    EXPECT_EQ(used(), 0U);
    EXPECT_EQ(core.memory().nodes().size(), 6U + 1U);
}

TEST_F(DriverCores, HoldABufferForEachFunctionThatIsOpen)
{
    open(0x1);
    EXPECT_EQ(used(), 4 * kMiB);
    open(0xf);
    EXPECT_EQ(used(), 16 * kMiB);
    open(0x18);
    EXPECT_EQ(used(), 36 * kMiB);
    open(0);
    EXPECT_EQ(used(), 0U);
}

TEST_F(DriverCores, StayAsTheyAreWhenTheCardDoesNotAnswer)
{
    open(0x1);
    EXPECT_EQ(used(), 4 * kMiB);
    FakeRegisters region;
    FakeRegisters switches;
    switches.longs[0] = 0x1f;
    const vek::CardInUse failing{
        .displays = {.registers = region, .units = displays.units, .ddc = buses, .aux = auxChannels, .pause = pause},
        .features = switches};
    for (const std::uint64_t address : {std::uint64_t{0x024}, vek::zoom_video::kBase}) {
        region.failing = {address};
        EXPECT_EQ(core.followCard(failing), VEK_IO_ERROR) << address;
    }
    region.failing = {};
    switches.failing = {0};
    EXPECT_EQ(core.followCard(failing), VEK_IO_ERROR);
    EXPECT_EQ(kSize - core.memory().freeBytes(), kFixed + 4 * kMiB);
}

TEST_F(DriverCores, DoWithoutABufferThatThereIsNoRoomFor)
{
    vek::DriverCore small({1, 0, 0, 0}, 24 * kMiB);
    open(0x11);
    ASSERT_EQ(small.followCard({.displays = displays, .features = features}), VEK_OK);
    const std::uint64_t left = 24 * kMiB - 16 * kMiB - 48 * 1024 - 4 * kMiB;
    EXPECT_EQ(small.memory().freeBytes(), left) << "neither fits behind the fixed buffers";
    open(0);
    EXPECT_EQ(small.followCard({.displays = displays, .features = features}), VEK_OK);
}

TEST_F(DriverCores, TakeAFrameBufferOnceThereIsRoomForIt)
{
    vek::DriverCore small({1, 0, 0, 0}, 32 * kMiB);
    const auto freeBytes = [&] {
        EXPECT_EQ(small.followCard({.displays = displays, .features = features}), VEK_OK);
        return small.memory().freeBytes();
    };
    const std::uint64_t withoutBuffers = freeBytes();
    open(0x3);
    const std::uint64_t withTraces = freeBytes();
    ASSERT_LT(withTraces, inPages(k1080pBytes));
    route(vek::output_routing::with(0, DisplayOutput::kHdmi0, 0));
    EXPECT_EQ(freeBytes(), withTraces) << "there is no room";
    open(0);
    freeBytes();
    EXPECT_EQ(freeBytes(), withoutBuffers - inPages(k1080pBytes));
    route(0);
    EXPECT_EQ(freeBytes(), withoutBuffers);
}

}  // namespace
