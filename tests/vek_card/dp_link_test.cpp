#include "drivers/dp_link.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "aux_fakes.h"
#include "card/dp_controller.h"
#include "card/dp_phy.h"
#include "card/dp_sink.h"
#include "card/dp_sinks.h"
#include "drivers/dp_controller.h"
#include "drivers/dp_phy.h"
#include "drivers/edid/edid.h"
#include "test_clock.h"
#include "test_pause.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::ElementsAre;
using vek::AuxAnswer;
using vek::AuxCommand;
using vek::AuxManner;
using vek::AuxReply;
using vek::AuxRequest;
using vek::AuxTransfer;
using vek::DpLink;
using vek::DpSinkFacts;
using vek::LaneDrive;
namespace dpcd = vek::dpcd;

/// A source with its PHY switched on, a cable and a sink. What goes over the AUX channel can be falsified on its way.
class Link
{
public:
    explicit Link(const DpSinkFacts& facts) : sink(facts, phy) { EXPECT_EQ(driver.init(), VEK_OK); }

    int train() { return vek::DpLinkTrainer(aux, driver).train(link); }

    bool trained()
    {
        bool answer = false;
        EXPECT_EQ(vek::senseLink(aux, answer), VEK_OK);
        return answer;
    }

    std::uint8_t field(std::uint32_t address)
    {
        std::uint8_t value = 0xee;
        EXPECT_EQ(aux.readDpcd(address, value), VEK_OK);
        return value;
    }

    /// What was written to a field, in order.
    std::vector<int> writtenTo(std::uint32_t address) const
    {
        std::vector<int> values;
        for (const AuxRequest& request : channel.requests) {
            const bool covers = request.command == AuxCommand::kNativeWrite && request.address <= address &&
                                address < request.address + request.length;
            if (covers) {
                values.push_back(request.data[address - request.address]);
            }
        }
        return values;
    }

    std::size_t looks() const
    {
        std::size_t count = 0;
        for (const AuxRequest& request : channel.requests) {
            const bool looks = request.command == AuxCommand::kNativeRead && request.address == dpcd::kLane01Status;
            count += looks ? 1U : 0U;
        }
        return count;
    }

    void expectNoPattern()
    {
        EXPECT_EQ(phy.mainLink().pattern, 0);
        EXPECT_EQ(field(dpcd::kTrainingPatternSet), 0);
    }

    std::function<void(const AuxRequest&, AuxReply&)> falsify = [](const AuxRequest&, AuxReply&) {};
    TestClock clock;
    TestPause pause{clock};
    vek::DpPhy phy{true};
    vek::DpSink sink;
    NotingAux channel{[this](const AuxRequest& request) {
        AuxReply reply = sink.transact(request);
        falsify(request, reply);
        return reply;
    }};
    AuxTransfer aux{channel, pause};
    vek::DpPhyDriver driver{phy, pause};
    DpLink link{};
};

/// Changes a field on its way to the source.
template <typename Change>
auto changed(std::uint32_t address, Change change)
{
    return [=](const AuxRequest& request, AuxReply& reply) {
        const bool covers = request.command == AuxCommand::kNativeRead && request.address <= address &&
                            address < request.address + reply.length;
        if (covers) {
            std::uint8_t& value = reply.data[address - request.address];
            value = static_cast<std::uint8_t>(change(value));
        }
    };
}

DpSinkFacts monitorThat(std::uint8_t cableRate, std::uint8_t swing, std::uint8_t preEmphasis)
{
    DpSinkFacts facts = vek::kDpMonitorQhd;
    facts.cableRate = cableRate;
    facts.swing = swing;
    facts.preEmphasis = preEmphasis;
    return facts;
}

TEST(DpLinkTraining, FollowsWhatTheSinkAsksFor)
{
    Link link(monitorThat(dpcd::kHbr2, 2, 1));
    ASSERT_EQ(link.train(), VEK_OK);
    EXPECT_EQ(link.link.rate, dpcd::kHbr2);
    EXPECT_EQ(link.link.lanes, 4);
    EXPECT_TRUE(link.link.enhancedFraming);
    EXPECT_THAT(link.phy.mainLink().drives, Each(LaneDrive{.swing = 2, .preEmphasis = 1}));
    // Pattern 1, then 3, both unscrambled, then none.
    EXPECT_THAT(link.writtenTo(dpcd::kTrainingPatternSet), ElementsAre(0x21, 0x23, 0x00));
    // Swing 0 to 2, the last one once more with pattern 3, then the pre-emphasis.
    EXPECT_THAT(link.writtenTo(dpcd::kTrainingLane0Set), ElementsAre(0x00, 0x01, 0x02, 0x02, 0x0a));
    EXPECT_EQ(link.looks(), 5U);
    EXPECT_TRUE(link.trained());
    EXPECT_EQ(link.field(dpcd::kLane01Status), 0x77);
    EXPECT_EQ(link.field(dpcd::kLane23Status), 0x77);
    EXPECT_EQ(link.field(dpcd::kSinkStatus), 1);
    link.expectNoPattern();
}

TEST(DpLinkTraining, SaysWhenALevelIsTheHighest)
{
    Link link(monitorThat(dpcd::kHbr2, 3, 0));
    ASSERT_EQ(link.train(), VEK_OK);
    EXPECT_EQ(link.field(dpcd::kTrainingLane0Set), 0x07);
    Link emphasised(monitorThat(dpcd::kHbr2, 0, 3));
    ASSERT_EQ(emphasised.train(), VEK_OK);
    EXPECT_EQ(emphasised.field(dpcd::kTrainingLane0Set), 0x38);
}

TEST(DpLinkTraining, UsesPattern2WhereTheSinkHasNo3)
{
    Link link(vek::kDpMonitorWuxga);
    ASSERT_EQ(link.train(), VEK_OK);
    EXPECT_THAT(link.writtenTo(dpcd::kTrainingPatternSet), ElementsAre(0x21, 0x22, 0x00));
    EXPECT_EQ(link.link.rate, dpcd::kHbr);
    EXPECT_EQ(link.link.lanes, 2);
    EXPECT_EQ(link.field(dpcd::kLane01Status), 0x77);
    EXPECT_EQ(link.field(dpcd::kLane23Status), 0x00);
}

TEST(DpLinkTraining, StepsDownToTheRateThatComesThrough)
{
    for (const std::uint8_t rate : {dpcd::kHbr, dpcd::kRbr}) {
        Link link(monitorThat(rate, 1, 1));
        ASSERT_EQ(link.train(), VEK_OK);
        EXPECT_EQ(link.link.rate, rate);
        EXPECT_EQ(link.link.lanes, 4);
        EXPECT_EQ(link.field(dpcd::kLinkRateSet), rate);
        EXPECT_EQ(link.phy.mainLink().rate, rate);
        EXPECT_TRUE(link.trained());
        link.expectNoPattern();
    }
}

TEST(DpLinkTraining, StepsDownToTheLanesThatWork)
{
    Link link(monitorThat(dpcd::kHbr2, 1, 1));
    link.falsify = changed(dpcd::kLane23Status, [](unsigned) { return 0; });
    ASSERT_EQ(link.train(), VEK_OK);
    EXPECT_EQ(link.link.rate, dpcd::kHbr2);
    EXPECT_EQ(link.link.lanes, 2);
    EXPECT_EQ(link.phy.mainLink().lanes, 2);
    EXPECT_EQ(link.field(dpcd::kLaneCountSet), 0x82);
    EXPECT_THAT(link.writtenTo(dpcd::kLinkRateSet), ElementsAre(0x14, 0x0a, 0x06, 0x14));
    EXPECT_TRUE(link.trained());
}

TEST(DpLinkTraining, EndsWhenNothingWorks)
{
    Link link(monitorThat(0, 0, 0));
    link.link = {.rate = 0x77, .lanes = 7, .enhancedFraming = false};
    EXPECT_EQ(link.train(), VEK_IO_ERROR);
    EXPECT_EQ(link.link.rate, 0x77);
    EXPECT_THAT(link.writtenTo(dpcd::kLinkRateSet), ElementsAre(0x14, 0x0a, 0x06, 0x14, 0x0a, 0x06, 0x14, 0x0a, 0x06));
    EXPECT_THAT(link.writtenTo(dpcd::kLaneCountSet), ElementsAre(0x84, 0x84, 0x84, 0x82, 0x82, 0x82, 0x81, 0x81, 0x81));
    // With every combination the sink is asked with the same swing as often as the standard allows.
    EXPECT_EQ(link.looks(), 9U * vek::kMaxSameSwing);
    EXPECT_FALSE(link.trained());
    link.expectNoPattern();
}

TEST(DpLinkTraining, EndsWithTheHighestSwing)
{
    Link link(monitorThat(dpcd::kHbr2, 0, 0));
    // The clock is never recovered, and ever more swing is asked for.
    link.falsify = [&](const AuxRequest& request, AuxReply& reply) {
        if (request.command == AuxCommand::kNativeRead && request.address == dpcd::kLane01Status) {
            const unsigned swing = std::min(link.phy.mainLink().drives[0].swing + 1U, 3U);
            const auto both = static_cast<std::uint8_t>(swing | swing << 4);
            reply.data = {0, 0, 0, 0, both, both};
        }
    };
    EXPECT_EQ(link.train(), VEK_IO_ERROR);
    // Three steps up, and a look with the highest swing.
    EXPECT_EQ(link.looks(), 9U * 4);
    link.expectNoPattern();
}

TEST(DpLinkTraining, EndsWhenTheSinkWavers)
{
    Link link(monitorThat(dpcd::kHbr2, 0, 0));
    std::uint8_t swing = 0;
    link.falsify = [&](const AuxRequest& request, AuxReply& reply) {
        if (request.command == AuxCommand::kNativeRead && request.address == dpcd::kLane01Status) {
            swing ^= 1;
            const auto both = static_cast<std::uint8_t>(swing | swing << 4);
            reply.data = {0, 0, 0, 0, both, both};
        }
    };
    EXPECT_EQ(link.train(), VEK_IO_ERROR);
    EXPECT_EQ(link.looks(), 9U * vek::kMaxClockRecoveryLooks);
}

TEST(DpLinkTraining, EndsWhenTheLanesAreNeverEqualised)
{
    // More pre-emphasis than fits beside that swing.
    Link link(monitorThat(dpcd::kHbr2, 1, 3));
    EXPECT_EQ(link.train(), VEK_IO_ERROR);
    EXPECT_EQ(link.looks(), 9U * (2 + vek::kMaxEqualisationLooks));
    EXPECT_FALSE(link.trained());
    link.expectNoPattern();
}

TEST(DpLinkTraining, WantsTheLanesAligned)
{
    Link link(monitorThat(dpcd::kHbr2, 0, 0));
    link.falsify = changed(dpcd::kLaneAlignStatusUpdated, [](unsigned) { return 0; });
    EXPECT_EQ(link.train(), VEK_IO_ERROR);
    EXPECT_FALSE(link.trained());
}

TEST(DpLinkTraining, WaitsAsLongAsTheSinkAsksFor)
{
    const struct {
        unsigned interval;
        std::uint64_t milliseconds;
    } cases[] = {{1, 4}, {4, 16}, {0x7f, 16}, {0x81, 4}};
    for (const auto& [interval, milliseconds] : cases) {
        Link link(monitorThat(dpcd::kHbr2, 0, 0));
        link.falsify = changed(dpcd::kTrainingAuxReadInterval, [interval = interval](unsigned) { return interval; });
        ASSERT_EQ(link.train(), VEK_OK);
        EXPECT_EQ(link.clock.nanoseconds(), 2 * milliseconds * 1'000'000);
    }
    Link link(monitorThat(dpcd::kHbr2, 0, 0));
    ASSERT_EQ(link.train(), VEK_OK);
    EXPECT_EQ(link.clock.nanoseconds(), 500'000U);
}

TEST(DpLinkTraining, DoesNotBelieveImpossibleCapabilities)
{
    for (const std::uint32_t address : {dpcd::kMaxLinkRate, dpcd::kMaxLaneCount}) {
        Link link(vek::kDpMonitorQhd);
        link.falsify = changed(address, [](unsigned) { return 0; });
        EXPECT_EQ(link.train(), VEK_BAD_DATA);
        EXPECT_TRUE(link.writtenTo(dpcd::kLinkRateSet).empty());
    }
    // Rates and lane counts that are too high, or none that links have, are cut.
    Link fast(vek::kDpMonitorQhd);
    fast.falsify = changed(dpcd::kMaxLinkRate, [](unsigned) { return 0xff; });
    EXPECT_EQ(fast.train(), VEK_OK);
    EXPECT_EQ(fast.link.rate, dpcd::kHbr2);
    for (const unsigned lanes : {0x1fU, 5U, 3U}) {
        Link wide(vek::kDpMonitorQhd);
        wide.falsify = changed(dpcd::kMaxLaneCount, [lanes](unsigned) { return lanes; });
        EXPECT_EQ(wide.train(), VEK_OK);
        EXPECT_EQ(wide.link.lanes, lanes == 3 ? 2 : 4);
        EXPECT_FALSE(wide.link.enhancedFraming);
    }
}

TEST(DpLinkTraining, WakesTheSink)
{
    Link link(vek::kDpMonitorQhd);
    ASSERT_EQ(link.aux.writeDpcd(dpcd::kSetPower, 2), VEK_OK);
    EXPECT_EQ(link.train(), VEK_OK);
    EXPECT_EQ(link.field(dpcd::kSetPower), 1);
}

TEST(DpLinkTraining, NeedsThePhysPower)
{
    Link link(vek::kDpMonitorQhd);
    ASSERT_EQ(link.phy.write(vek::dp_phy::kControl, 4, 0), VEK_OK);
    EXPECT_EQ(link.train(), VEK_TIMED_OUT);
    link.expectNoPattern();
}

TEST(DpLinkTraining, ReportsWhatTheChannelReports)
{
    const struct {
        AuxManner manner;
        int result;
    } cases[] = {{AuxManner::kDefers, VEK_TIMED_OUT},
                 {AuxManner::kSilent, VEK_NO_RESPONSE},
                 {AuxManner::kRefuses, VEK_IO_ERROR}};
    for (const auto& [manner, result] : cases) {
        Link link(vek::kDpMonitorQhd);
        link.sink.setManner(manner);
        EXPECT_EQ(link.train(), result);
        bool trained = true;
        EXPECT_EQ(vek::senseLink(link.aux, trained), result);
        EXPECT_TRUE(trained);
    }
}

TEST(DpLinkTraining, StopsItsPatternWhenTheSinkIsPulledOut)
{
    Link link(vek::kDpMonitorQhd);
    link.falsify = [&](const AuxRequest& request, AuxReply&) {
        if (request.command == AuxCommand::kNativeWrite && request.address == dpcd::kTrainingLane0Set) {
            link.sink.setManner(AuxManner::kSilent);
        }
    };
    EXPECT_EQ(link.train(), VEK_NO_RESPONSE);
    EXPECT_EQ(link.phy.mainLink().pattern, 0);
}

TEST(DpLinkState, IsLostWithWhatItWasTrainedWith)
{
    const auto lose = [](auto breakIt) {
        Link link(vek::kDpMonitorQhd);
        EXPECT_EQ(link.train(), VEK_OK);
        EXPECT_TRUE(link.trained());
        breakIt(link);
        EXPECT_FALSE(link.trained());
        EXPECT_EQ(link.field(dpcd::kSinkStatus), 0);
    };
    lose([](Link& link) { EXPECT_EQ(link.driver.init(), VEK_OK); });
    lose([](Link& link) { EXPECT_EQ(link.aux.writeDpcd(dpcd::kSetPower, 2), VEK_OK); });
    lose([](Link& link) { EXPECT_EQ(link.aux.writeDpcd(dpcd::kLinkRateSet, dpcd::kHbr), VEK_OK); });
    lose([](Link& link) { EXPECT_EQ(link.aux.writeDpcd(dpcd::kLaneCountSet, 0), VEK_OK); });
    lose([](Link& link) { EXPECT_EQ(link.phy.write(vek::dp_phy::kPattern, 4, 1), VEK_OK); });
    lose([](Link& link) { EXPECT_EQ(link.phy.write(vek::dp_phy::kControl, 4, 0x31), VEK_OK); });
}

class DpStream : public testing::Test
{
protected:
    static VekDisplayMode timing()
    {
        VekDisplayMode mode{};
        EXPECT_TRUE(vek::preferredTiming(vek::kEdpPanelEdid, mode));
        return mode;
    }

    std::uint64_t at(std::uint64_t address) { return registers.read(address, 2).value; }

    vek::DpController registers;
    vek::DpControllerDriver driver{registers};
};

TEST_F(DpStream, NeedsALink)
{
    EXPECT_EQ(driver.sendStream(timing()), VEK_IO_ERROR);
    EXPECT_EQ(driver.init(), VEK_OK);
    EXPECT_EQ(driver.sendStream(timing()), VEK_IO_ERROR);
    EXPECT_EQ(driver.setLink({.rate = 0x0a, .lanes = 2, .enhancedFraming = true}), VEK_OK);
    EXPECT_EQ(driver.sendStream(timing()), VEK_OK);
    EXPECT_EQ(at(vek::dp_controller::kStatus), 3U);
    EXPECT_EQ(at(vek::dp_controller::kMvidLow), std::uint64_t{138500} * 0x8000 / 270000);
    EXPECT_EQ(driver.dropLink(), VEK_OK);
    EXPECT_EQ(at(vek::dp_controller::kStatus), 0U);
    EXPECT_EQ(driver.sendStream(timing()), VEK_IO_ERROR);
}

TEST_F(DpStream, HasToFitTheLink)
{
    ASSERT_EQ(driver.init(), VEK_OK);
    ASSERT_EQ(driver.setLink({.rate = 0x06, .lanes = 1, .enhancedFraming = false}), VEK_OK);
    VekDisplayMode mode = timing();
    // One lane of 1.62 Gbit/s carries 1.296 Gbit/s, 54 million pixels.
    mode.clock = 54001;
    EXPECT_EQ(driver.sendStream(mode), VEK_OUT_OF_RANGE);
    mode.clock = 54000;
    EXPECT_EQ(driver.sendStream(mode), VEK_OK);
}

TEST_F(DpStream, HasToFitItsFields)
{
    ASSERT_EQ(driver.init(), VEK_OK);
    ASSERT_EQ(driver.setLink({.rate = 0x14, .lanes = 4, .enhancedFraming = true}), VEK_OK);
    using Field = int32_t VekDisplayMode::*;
    const struct {
        Field field;
        int32_t value;
    } cases[] = {
        {&VekDisplayMode::clock, 0},          {&VekDisplayMode::clock, -1},        {&VekDisplayMode::clock, 0x7fffffff},
        {&VekDisplayMode::htotal, 0x10000},   {&VekDisplayMode::htotal, 0},        {&VekDisplayMode::htotal, 1900},
        {&VekDisplayMode::hsync_start, 2100}, {&VekDisplayMode::hsync_end, 1968},  {&VekDisplayMode::hdisplay, 0},
        {&VekDisplayMode::vtotal, -5},        {&VekDisplayMode::vsync_end, 50000}, {&VekDisplayMode::vdisplay, 1112}};
    for (const auto& [field, value] : cases) {
        VekDisplayMode mode = timing();
        mode.*field = value;
        EXPECT_EQ(driver.sendStream(mode), VEK_OUT_OF_RANGE) << value;
        EXPECT_EQ(at(vek::dp_controller::kHtotal), 0U);
        EXPECT_EQ(at(vek::dp_controller::kStatus), 1U);
    }
}

}  // namespace
