#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "api/connection.h"
#include "aux_channel.h"
#include "card/dp_controller.h"
#include "card/dp_phy.h"
#include "card/dp_sink.h"
#include "card/dp_sinks.h"
#include "drivers/dp_controller.h"
#include "vek.h"

namespace
{

using testing::Each;
using vek::AuxManner;

/** A sink that falls silent after some requests. */
class TiredSink final : public vek::AuxChannel
{
public:
    explicit TiredSink(vek::AuxChannel& sink) : sink_(sink) {}

    vek::AuxReply transact(const vek::AuxRequest& request) override
    {
        return requestsLeft-- > 0 ? sink_.transact(request) : vek::AuxReply{.answer = vek::AuxAnswer::kNone};
    }

    int requestsLeft = 1 << 20;

private:
    vek::AuxChannel& sink_;
};

/** The exported functions on a path to one DisplayPort output of the test's own. */
class DisplayPortOnPath : public testing::Test
{
protected:
    ~DisplayPortOnPath() override { vek::openPath = nullptr; }

    void attach(const vek::DpSinkFacts& facts)
    {
        phy_ = vek::DpPhy(true);
        sink_ = std::make_unique<vek::DpSink>(facts, phy_);
        tired_ = std::make_unique<TiredSink>(*sink_);
        path_.dpAux = {tired_.get()};
        path_.dpPhys = {&phy_};
        path_.dpControllers = {&controller_};
        vek::openPath = &path_;
    }

    void openWithoutOutputs()
    {
        path_.dpAux = {};
        path_.dpPhys = {};
        path_.dpControllers = {};
        vek::openPath = &path_;
    }

    vek::DpSink& sink() { return *sink_; }
    void silenceAfter(int requests) { tired_->requestsLeft = requests; }

    static uint16_t controllerStatus()
    {
        uint16_t status = 0;
        EXPECT_EQ(vekDpCdbRead(0, vek::dp_controller::kStatus, &status), VEK_OK);
        return status;
    }

private:
    vek::DpPhy phy_{true};
    vek::DpController controller_;
    std::unique_ptr<vek::DpSink> sink_;
    std::unique_ptr<TiredSink> tired_;
    vek::AccessPath path_{.mode = VEK_ACCESS_DRIVER,
                          .card = 0,
                          .deviceId = VEK_DEVICE_QZ201,
                          .registers = nullptr,
                          .videoMemory = nullptr,
                          .kernelMemory = nullptr,
                          .amba = nullptr,
                          .crtc = nullptr,
                          .pciConfiguration = nullptr,
                          .i2c = {},
                          .ddc = {},
                          .hdmiPhys = {}};
};

/** Everything that goes over the AUX channel answers so and leaves its outputs alone. */
void expectFromAux(int result)
{
    std::vector<uint8_t> bytes(VEK_EDID_BUFFER_SIZE, 0xee);
    int length = 7;
    EXPECT_EQ(vekDpAuxRead(0, 0, bytes.data()), result);
    EXPECT_EQ(vekDpAuxReadBuf(0, 0, bytes.data(), 100), result);
    EXPECT_EQ(vekDpAuxWrite(0, 0x300, 1), result);
    EXPECT_EQ(vekDpAuxEdidGet(0, bytes.data(), &length), result);
    EXPECT_EQ(vekDpI2cRead(0, 0x50, 0, bytes.data()), result);
    EXPECT_EQ(vekDpI2cReadBuf(0, 0x50, 0, bytes.data(), 100), result);
    EXPECT_EQ(vekDpLinkTraining(0), result);
    EXPECT_EQ(vekDpCTLCfg(0), result);
    EXPECT_EQ(vekEdpSelfTestSet(0, 1), result);
    EXPECT_THAT(bytes, Each(0xee));
    EXPECT_EQ(length, 7);
}

TEST_F(DisplayPortOnPath, ReportsHowItsSinkBehaves)
{
    attach(vek::kDpMonitorQhd);
    sink().setManner(AuxManner::kSilent);
    expectFromAux(VEK_NO_RESPONSE);
    sink().setManner(AuxManner::kDefers);
    expectFromAux(VEK_TIMED_OUT);
    sink().setManner(AuxManner::kRefuses);
    expectFromAux(VEK_IO_ERROR);
}

TEST_F(DisplayPortOnPath, HasNothingToReadWithoutASink)
{
    attach(vek::kNoDpSink);
    expectFromAux(VEK_NO_RESPONSE);
    EXPECT_EQ(vekDpInit(0), VEK_OK);
}

TEST_F(DisplayPortOnPath, LeavesTheBufferAloneWhenAReadingBreaksOff)
{
    attach(vek::kDpMonitorQhd);
    for (const int requests : {1, 2, 3, 8, 20}) {
        std::vector<uint8_t> bytes(VEK_EDID_BUFFER_SIZE, 0xee);
        int length = 7;
        silenceAfter(requests);
        EXPECT_EQ(vekDpAuxReadBuf(0, 0, bytes.data(), 400), VEK_NO_RESPONSE);
        silenceAfter(requests);
        EXPECT_EQ(vekDpI2cReadBuf(0, 0x50, 0, bytes.data(), 400), VEK_NO_RESPONSE);
        silenceAfter(requests);
        EXPECT_EQ(vekDpAuxEdidGet(0, bytes.data(), &length), VEK_NO_RESPONSE);
        EXPECT_THAT(bytes, Each(0xee));
        EXPECT_EQ(length, 7);
    }
}

TEST_F(DisplayPortOnPath, HandsADamagedEdidOverButTakesNoTimingFromIt)
{
    std::vector<uint8_t> edid(vek::kDpMonitorQhdEdid.begin(), vek::kDpMonitorQhdEdid.end());
    edid[300] ^= 1;
    vek::DpSinkFacts facts = vek::kDpMonitorQhd;
    facts.edid = edid;
    attach(facts);
    std::vector<uint8_t> bytes(VEK_EDID_BUFFER_SIZE);
    int length = 0;
    EXPECT_EQ(vekDpAuxEdidGet(0, bytes.data(), &length), VEK_OK);
    EXPECT_EQ(bytes, edid);
    ASSERT_EQ(vekDpInit(0), VEK_OK);
    ASSERT_EQ(vekDpLinkTraining(0), VEK_OK);
    EXPECT_EQ(vekDpCTLCfg(0), VEK_BAD_DATA);
    EXPECT_EQ(controllerStatus(), 1);
}

TEST_F(DisplayPortOnPath, HasNoLinkWhenTrainingFails)
{
    vek::DpSinkFacts facts = vek::kDpMonitorQhd;
    facts.cableRate = 0;
    attach(facts);
    ASSERT_EQ(vekDpInit(0), VEK_OK);
    EXPECT_EQ(vekDpLinkTraining(0), VEK_IO_ERROR);
    EXPECT_EQ(controllerStatus(), 0);
    EXPECT_EQ(vekDpCTLCfg(0), VEK_IO_ERROR);
}

TEST_F(DisplayPortOnPath, SendsNoStreamThatItsLinkIsTooSlowFor)
{
    vek::DpSinkFacts facts = vek::kDpMonitorWuxga;
    facts.cableRate = vek::dpcd::kRbr;
    attach(facts);
    ASSERT_EQ(vekDpInit(0), VEK_OK);
    ASSERT_EQ(vekDpLinkTraining(0), VEK_OK);
    EXPECT_EQ(vekDpCTLCfg(0), VEK_OUT_OF_RANGE);
    EXPECT_EQ(controllerStatus(), 1);
}

TEST_F(DisplayPortOnPath, IsNotAvailableOverAPathWithoutOutputs)
{
    openWithoutOutputs();
    expectFromAux(VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekDpInit(0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekDpPhyWrite(0, 4, 0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekDpCdbWrite(0, 2, 0), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpPwmSet(1000), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpLightSet(10), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekEdpEnablePwm(), VEK_NOT_AVAILABLE);
}

}  // namespace
