#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <thread>

#include "open_card.h"
#include "vek.h"

namespace
{

constexpr uint64_t kControl0 = 0x100c0;
constexpr uint64_t kControl1 = 0x100d0;
constexpr uint64_t kWidthOffset = 0xc;
constexpr uint64_t kHeightOffset = 0xe;

/** X, Y, W, H, CutLeft, ZoomW, ZoomH, Connector, CameraW, CameraH. */
using Parameters = std::array<int32_t, 10>;

int getParameters(int id, Parameters& p)
{
    return vekZoomVideoGetParm(id, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], &p[7], &p[8], &p[9]);
}

Parameters parametersOf(int id)
{
    Parameters parameters{};
    EXPECT_EQ(getParameters(id, parameters), VEK_OK);
    return parameters;
}

uint16_t readWord(uint64_t address)
{
    uint16_t value = 0;
    EXPECT_EQ(vekRegReadWord(address, &value), VEK_OK);
    return value;
}

/** Turns a port's capture logic on and waits as long as the console does. */
void measure(uint64_t control)
{
    uint32_t value = 0;
    ASSERT_EQ(vekRegReadLong(control, &value), VEK_OK);
    ASSERT_EQ(vekRegWriteLong(control, value | 1), VEK_OK);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

/** Either card, whose ports are as after power-on before and after each test. */
class ZoomVideo : public EitherCard
{
protected:
    ZoomVideo() { clear(); }
    ~ZoomVideo() override { clear(); }

    void clear()
    {
        for (const int card : {1 - GetParam(), GetParam()}) {
            EXPECT_GE(vekRwOpen(card), 0);
            for (uint64_t address = kControl0; address < 0x10120; address += 4) {
                EXPECT_EQ(vekRegWriteLong(address, 0), VEK_OK);
            }
            // So that no size is left from before.
            for (const uint64_t control : {kControl0, kControl1}) {
                EXPECT_EQ(vekRegWriteLong(control, 1), VEK_OK);
                EXPECT_EQ(vekRegWriteLong(control, 0), VEK_OK);
            }
        }
    }
};
INSTANTIATE_TEST_SUITE_P(Cards, ZoomVideo, testing::Values(0, 1));

TEST_P(ZoomVideo, MeasuresThePictureOfTheFirstPortWithoutSetUp)
{
    EXPECT_EQ(readWord(kControl0 + kWidthOffset), 0);
    measure(kControl0);
    EXPECT_EQ(readWord(kControl0 + kWidthOffset), 720);
    EXPECT_EQ(readWord(kControl0 + kHeightOffset), 576);
    EXPECT_EQ(parametersOf(0), (Parameters{0, 0, 0, 0, 0, 0, 0, 0, 720, 576}));
    EXPECT_EQ(parametersOf(1), Parameters{});
}

TEST_P(ZoomVideo, MeasuresNoPictureAtTheSecondPort)
{
    measure(kControl1);
    EXPECT_EQ(readWord(kControl1 + kWidthOffset), 0);
    EXPECT_EQ(readWord(kControl1 + kHeightOffset), 0);
}

TEST_P(ZoomVideo, FindsTheDecodersWhereTheyAre)
{
    for (const int id : {0, 1}) {
        EXPECT_EQ(vekZoomVideoInit(id, 0, 0, 0), VEK_OK);
        EXPECT_EQ(vekZoomVideoInit(id, 1, 1, 1), VEK_OK);
        EXPECT_EQ(vekZoomVideoInit(id, 0, 1, 0), VEK_NO_RESPONSE);
        EXPECT_EQ(vekZoomVideoInit(id, 1, 0, 0), VEK_NO_RESPONSE);
    }
    uint8_t input = 0;
    ASSERT_EQ(vekI2cRead(0, 0x24, 0x02, 1, &input), VEK_OK);
    EXPECT_EQ(input & 0x07, 0);
}

TEST_P(ZoomVideo, StartsStopsAndStartsAgain)
{
    const Parameters started{10, 20, 720, 576, 4, 1, 2, 1, 0, 0};
    ASSERT_EQ(vekZoomVideoInit(0, 0, 0, 0), VEK_OK);
    EXPECT_EQ(vekZoomVideoStart(0, 10, 20, 720, 576, 4, 1, 2, 1), VEK_OK);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    Parameters expected = started;
    expected[8] = 720;
    expected[9] = 576;
    EXPECT_EQ(parametersOf(0), expected);
    EXPECT_EQ(vekZoomVideoStop(0), VEK_OK);
    uint32_t control = 0xee;
    ASSERT_EQ(vekRegReadLong(kControl0, &control), VEK_OK);
    EXPECT_EQ(control, 0U);
    EXPECT_EQ(parametersOf(0), expected);
    EXPECT_EQ(vekZoomVideoRestart(0), VEK_OK);
    ASSERT_EQ(vekRegReadLong(kControl0, &control), VEK_OK);
    EXPECT_EQ(control, 3U);
    EXPECT_EQ(vekZoomVideoStop(1), VEK_OK) << "there is nothing to stop";
}

TEST_P(ZoomVideo, NeedsSetUpAndAStart)
{
    EXPECT_EQ(vekZoomVideoStart(0, 0, 0, 720, 576, 0, 0, 0, 0), VEK_NO_RESPONSE);
    ASSERT_EQ(vekZoomVideoInit(0, 0, 0, 0), VEK_OK);
    EXPECT_EQ(vekZoomVideoRestart(0), VEK_NO_RESPONSE);
    EXPECT_EQ(vekZoomVideoStart(0, 0, 0, 0, 576, 0, 0, 0, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekZoomVideoStart(0, 0, 0, 720, 576, 0, 4, 0, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekZoomVideoStart(0, 0, 0, 720, 576, 0, 0, 0, 2), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekZoomVideoRestart(0), VEK_NO_RESPONSE);
    EXPECT_EQ(parametersOf(0), Parameters{});
}

TEST_P(ZoomVideo, RefusesNumbersOutOfRange)
{
    for (const int wrong : {-0x7fffffff - 1, -1, 2, 10, 0x7fffffff}) {
        EXPECT_EQ(vekZoomVideoInit(wrong, 0, 0, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoInit(0, wrong, 0, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoInit(0, 0, wrong, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoInit(0, 0, 0, wrong), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoStart(wrong, 0, 0, 720, 576, 0, 0, 0, 0), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoStop(wrong), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekZoomVideoRestart(wrong), VEK_BAD_ARGUMENT);
        Parameters parameters{7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
        EXPECT_EQ(getParameters(wrong, parameters), VEK_BAD_ARGUMENT);
        EXPECT_EQ(parameters[9], 7);
    }
}

TEST_P(ZoomVideo, NeedsEveryOutput)
{
    for (std::size_t missing = 0; missing < 10; ++missing) {
        Parameters p{7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
        std::array<int32_t*, 10> out{};
        for (std::size_t i = 0; i < out.size(); ++i) {
            out[i] = i == missing ? nullptr : &p[i];
        }
        EXPECT_EQ(
            vekZoomVideoGetParm(0, out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7], out[8], out[9]),
            VEK_BAD_ARGUMENT);
        EXPECT_EQ(p, (Parameters{7, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
    }
}

TEST_P(ZoomVideo, IsEachCardsOwn)
{
    ASSERT_EQ(vekZoomVideoInit(1, 1, 1, 1), VEK_OK);
    ASSERT_EQ(vekZoomVideoStart(1, 1, 2, 3, 4, 5, 1, 2, 1), VEK_OK);
    ASSERT_GE(vekRwOpen(1 - GetParam()), 0);
    EXPECT_EQ(parametersOf(1), Parameters{});
    EXPECT_EQ(vekZoomVideoStart(1, 1, 2, 3, 4, 5, 1, 2, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(vekZoomVideoRestart(1), VEK_NO_RESPONSE);
    ASSERT_GE(vekRwOpen(GetParam()), 0);
    EXPECT_EQ(parametersOf(1), (Parameters{1, 2, 3, 4, 5, 1, 2, 1, 0, 0}));
}

}  // namespace
