#include "drivers/output_timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "card/dp_phy.h"
#include "card/dp_sink.h"
#include "card/dp_sinks.h"
#include "card/monitor_ddc.h"
#include "card/monitor_edids.h"
#include "card/register_region.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using vek::DdcConnector;
using vek::DisplayOutput;
using vek::DisplayUnits;

// What the pixel clock of each monitor's preferred timing is, in kHz.
constexpr int k1080pClock = 148500;
constexpr int k2160pClock = 594000;
constexpr int kSxgaClock = 108000;
constexpr int kQhdClock = 241500;
constexpr int kPanelClock = 138500;

constexpr int kUntouched = -7;

class OutputTimings : public ::testing::Test
{
protected:
    // The clock of a timing, or the result when there is none; nothing may have been touched then.
    template <typename Read>
    int clockOf(Read read)
    {
        VekDisplayMode mode{};
        mode.clock = kUntouched;
        const int result = read(mode);
        if (result == VEK_OK) {
            return mode.clock;
        }
        EXPECT_EQ(mode.clock, kUntouched);
        return result;
    }

    int output(DisplayOutput which)
    {
        return clockOf([&](VekDisplayMode& mode) { return vek::outputTiming(displays, which, mode); });
    }

    int controller(int number)
    {
        return clockOf([&](VekDisplayMode& mode) { return vek::controllerTiming(displays, number, mode); });
    }

    void route(DisplayOutput which, std::uint32_t number)
    {
        routing = vek::output_routing::with(routing, which, number);
        ASSERT_EQ(registers.write(vek::output_routing::kRegister, 4, routing), VEK_OK);
    }

    void switchOff(DisplayOutput which)
    {
        routing &= ~(0xfU << 4 * static_cast<unsigned>(which));
        ASSERT_EQ(registers.write(vek::output_routing::kRegister, 4, routing), VEK_OK);
    }

    void damage(std::size_t channel)
    {
        damaged.assign(vek::kMonitor1080p.begin(), vek::kMonitor1080p.end());
        ++damaged[100];
        buses[channel] = damagedConnector.bus();
    }

    std::vector<std::uint8_t> damaged = std::vector<std::uint8_t>(vek::kMonitor1080p.size());
    DdcConnector damagedConnector{damaged};
    DdcConnector hdmi0{vek::kMonitor1080p};
    DdcConnector hdmi1{vek::kMonitor2160p};
    DdcConnector dvo{std::span<const std::uint8_t>()};
    DdcConnector vga{vek::kMonitorSxga};
    std::array<vek::I2cBus*, 4> buses{hdmi0.bus(), hdmi1.bus(), dvo.bus(), vga.bus()};
    vek::DpPhy phy0{true};
    vek::DpPhy phy1{true};
    vek::DpSink sink{vek::kDpMonitorQhd, phy0};
    vek::DpSink panel{vek::kEdpPanel, phy1};
    std::array<vek::AuxChannel*, 2> auxChannels{&sink, &panel};
    TestClock clock;
    TestPause pause{clock};
    vek::RegisterRegion registers{{}};
    std::uint32_t routing = 0;
    vek::Displays displays{
        .registers = registers,
        .units = {.controllers = 4, .hdmiOutputs = 2, .dpOutputs = 2, .vgaDdc = 3, .dvoDdc = 2},
        .ddc = buses,
        .aux = auxChannels,
        .pause = pause,
    };
};

TEST_F(OutputTimings, AreThoseOfTheDisplayThatIsAttachedAndRouted)
{
    route(DisplayOutput::kHdmi0, 2);
    route(DisplayOutput::kHdmi1, 0);
    route(DisplayOutput::kVga, 1);
    EXPECT_EQ(output(DisplayOutput::kHdmi0), k1080pClock);
    EXPECT_EQ(output(DisplayOutput::kHdmi1), k2160pClock);
    EXPECT_EQ(output(DisplayOutput::kVga), kSxgaClock);
    EXPECT_EQ(controller(0), k2160pClock);
    EXPECT_EQ(controller(1), kSxgaClock);
    EXPECT_EQ(controller(2), k1080pClock);
    EXPECT_EQ(controller(3), VEK_NO_RESPONSE);
}

TEST_F(OutputTimings, OfDisplayPortComeOverAux)
{
    route(DisplayOutput::kDp0, 3);
    route(DisplayOutput::kDp1, 1);
    EXPECT_EQ(output(DisplayOutput::kDp0), kQhdClock);
    EXPECT_EQ(output(DisplayOutput::kDp1), kPanelClock);
    EXPECT_EQ(controller(3), kQhdClock);
    EXPECT_EQ(controller(1), kPanelClock);
    switchOff(DisplayOutput::kDp0);
    EXPECT_EQ(output(DisplayOutput::kDp0), VEK_NO_RESPONSE);
    EXPECT_EQ(controller(3), VEK_NO_RESPONSE);
}

TEST_F(OutputTimings, AreNotThereFromASinkThatDoesNotReply)
{
    route(DisplayOutput::kDp0, 2);
    route(DisplayOutput::kVga, 2);
    sink.setManner(vek::AuxManner::kSilent);
    EXPECT_EQ(output(DisplayOutput::kDp0), VEK_NO_RESPONSE);
    EXPECT_EQ(controller(2), kSxgaClock);
    sink.setManner(vek::AuxManner::kDefers);
    EXPECT_EQ(output(DisplayOutput::kDp0), VEK_TIMED_OUT);
    EXPECT_EQ(controller(2), VEK_TIMED_OUT);
    EXPECT_GT(pause.total, 0U);
}

TEST_F(OutputTimings, HaveAllFieldsOfTheEdid)
{
    route(DisplayOutput::kVga, 1);
    VekDisplayMode mode{};
    ASSERT_EQ(vek::controllerTiming(displays, 1, mode), VEK_OK);
    EXPECT_EQ(mode.hdisplay, 1280);
    EXPECT_EQ(mode.hsync_start, 1328);
    EXPECT_EQ(mode.hsync_end, 1440);
    EXPECT_EQ(mode.htotal, 1688);
    EXPECT_EQ(mode.vdisplay, 1024);
    EXPECT_EQ(mode.vsync_start, 1025);
    EXPECT_EQ(mode.vsync_end, 1028);
    EXPECT_EQ(mode.vtotal, 1066);
    EXPECT_EQ(mode.flags, VEK_HSYNC_POSITIVE | VEK_VSYNC_POSITIVE);
}

TEST_F(OutputTimings, AreNotThereWithoutARoute)
{
    EXPECT_EQ(output(DisplayOutput::kHdmi0), VEK_NO_RESPONSE);
    route(DisplayOutput::kHdmi0, 0);
    EXPECT_EQ(output(DisplayOutput::kHdmi0), k1080pClock);
    switchOff(DisplayOutput::kHdmi0);
    EXPECT_EQ(output(DisplayOutput::kHdmi0), VEK_NO_RESPONSE);
    EXPECT_EQ(controller(0), VEK_NO_RESPONSE);
}

TEST_F(OutputTimings, AreNotThereWithoutADisplay)
{
    route(DisplayOutput::kDvo, 0);
    EXPECT_EQ(output(DisplayOutput::kDvo), VEK_NO_RESPONSE);
    EXPECT_EQ(controller(0), VEK_NO_RESPONSE);
}

TEST_F(OutputTimings, AreNotThereFromAControllerThatTheChipLacks)
{
    for (const std::uint32_t number : {4U, 7U}) {
        route(DisplayOutput::kHdmi0, number);
        EXPECT_EQ(output(DisplayOutput::kHdmi0), VEK_NO_RESPONSE);
    }
    for (const int number : {-0x7fffffff - 1, -1, 4, 7, 0x7fffffff}) {
        EXPECT_EQ(controller(number), VEK_BAD_ARGUMENT);
    }
}

TEST_F(OutputTimings, AreNotThereAtAnOutputThatTheChipLacks)
{
    displays.units = {.controllers = 2, .hdmiOutputs = 1, .dpOutputs = 0, .vgaDdc = vek::kNoDdc, .dvoDdc = vek::kNoDdc};
    for (const DisplayOutput which : {DisplayOutput::kHdmi1, DisplayOutput::kVga, DisplayOutput::kDvo}) {
        route(which, 0);
        EXPECT_EQ(output(which), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(controller(0), VEK_NO_RESPONSE);
}

TEST_F(OutputTimings, OfAControllerAreThoseOfTheFirstOutputWithADisplay)
{
    route(DisplayOutput::kDvo, 1);
    route(DisplayOutput::kVga, 1);
    EXPECT_EQ(controller(1), kSxgaClock);
    route(DisplayOutput::kHdmi1, 1);
    EXPECT_EQ(controller(1), k2160pClock);
    route(DisplayOutput::kHdmi0, 1);
    EXPECT_EQ(controller(1), k1080pClock);
}

TEST_F(OutputTimings, AreNotMadeUpFromADamagedEdid)
{
    damage(0);
    route(DisplayOutput::kHdmi0, 0);
    route(DisplayOutput::kVga, 0);
    EXPECT_EQ(output(DisplayOutput::kHdmi0), VEK_BAD_DATA);
    EXPECT_EQ(controller(0), VEK_BAD_DATA);
}

TEST_F(OutputTimings, CannotBeReadWithoutABus)
{
    route(DisplayOutput::kHdmi0, 0);
    route(DisplayOutput::kVga, 1);
    route(DisplayOutput::kDp0, 2);
    route(DisplayOutput::kDp1, 3);
    displays.ddc = displays.ddc.first(1);
    displays.aux = displays.aux.first(1);
    buses[0] = nullptr;
    auxChannels[0] = nullptr;
    EXPECT_EQ(output(DisplayOutput::kHdmi0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(output(DisplayOutput::kDp0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(controller(3), VEK_NOT_AVAILABLE);
    EXPECT_EQ(controller(1), VEK_NOT_AVAILABLE);
}

}  // namespace
