#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>

#include "captured_output.h"
#include "open_card.h"
#include "vek.h"

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

using Fields = std::array<int32_t, 10>;

constexpr uint64_t kRouting = 0x024;

constexpr int32_t kBothPositive = VEK_HSYNC_POSITIVE | VEK_VSYNC_POSITIVE;
constexpr Fields k1080p{148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125, kBothPositive};
constexpr Fields k2160p{594000, 3840, 4016, 4104, 4400, 2160, 2168, 2178, 2250, kBothPositive};
constexpr Fields kSxga{108000, 1280, 1328, 1440, 1688, 1024, 1025, 1028, 1066, kBothPositive};
constexpr Fields kWuxga{154000, 1920, 1968, 2000, 2080,
                        1200,   1203, 1209, 1235, VEK_HSYNC_POSITIVE | VEK_VSYNC_NEGATIVE};

Fields fieldsOf(const VekDisplayMode& mode)
{
    Fields fields;
    static_assert(sizeof fields == sizeof mode);
    std::memcpy(fields.data(), &mode, sizeof mode);
    return fields;
}

/** The mode of a display controller. */
Fields controllerMode(int channel)
{
    VekDisplayMode mode{};
    EXPECT_EQ(vekCrtcModeRead(channel, &mode), VEK_OK) << channel;
    return fieldsOf(mode);
}

Fields hdmiMode(int channel)
{
    VekDisplayMode mode{};
    EXPECT_EQ(vekHdmiModeRead(channel, &mode), VEK_OK) << channel;
    return fieldsOf(mode);
}

Fields dpMode(int channel)
{
    VekDisplayMode mode{};
    EXPECT_EQ(vekDpModeRead(channel, &mode), VEK_OK) << channel;
    return fieldsOf(mode);
}

/** The result of a read that has to fail, and to leave the record alone. */
template <typename Read>
int failureOf(Read read, int channel)
{
    VekDisplayMode mode;
    std::memset(&mode, 0x5a, sizeof mode);
    const Fields before = fieldsOf(mode);
    const int result = read(channel, &mode);
    EXPECT_EQ(fieldsOf(mode), before) << channel;
    return result;
}

uint32_t routing()
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(kRouting, &value), VEK_OK);
    return value;
}

void route(uint32_t value)
{
    ASSERT_EQ(vekRegWriteLong(kRouting, value), VEK_OK);
}

/** Either card, whose routing is put back at the end. */
class DisplayModes : public EitherCard
{
protected:
    ~DisplayModes() override
    {
        EXPECT_GE(vekRwOpen(GetParam()), 0);
        EXPECT_EQ(vekRegWriteLong(kRouting, before), VEK_OK);
    }

    int controllers() const { return GetParam() == 0 ? 4 : 2; }

    const uint32_t before = routing();
};
INSTANTIATE_TEST_SUITE_P(Cards, DisplayModes, testing::Values(0, 1));

TEST_P(DisplayModes, ComeUpWithEveryDisplayRouted)
{
    if (GetParam() == 0) {
        EXPECT_EQ(controllerMode(0), k1080p);
        EXPECT_EQ(controllerMode(1), k2160p);
        EXPECT_EQ(controllerMode(2), dpMode(0));
        EXPECT_EQ(controllerMode(3), kSxga);
        EXPECT_NE(dpMode(1), dpMode(0));
    } else {
        EXPECT_EQ(controllerMode(0), kWuxga);
        EXPECT_EQ(controllerMode(1), dpMode(0));
    }
}

TEST_P(DisplayModes, FollowTheRouting)
{
    // HDMI-0 to controller 1, all else off.
    route(0x9);
    EXPECT_EQ(failureOf(vekCrtcModeRead, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(controllerMode(1), GetParam() == 0 ? k1080p : kWuxga);
    EXPECT_EQ(hdmiMode(0), GetParam() == 0 ? k1080p : kWuxga);
    route(0x1);
    for (int channel = 0; channel < controllers(); ++channel) {
        EXPECT_EQ(failureOf(vekCrtcModeRead, channel), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(failureOf(vekHdmiModeRead, 0), VEK_NO_RESPONSE);
    route(0xf);
    EXPECT_EQ(failureOf(vekHdmiModeRead, 0), VEK_NO_RESPONSE) << "from a controller that no chip has";
}

TEST_P(DisplayModes, FollowTheRoutingOfDisplayPort)
{
    const Fields sink = dpMode(0);
    route(0x900);
    EXPECT_EQ(dpMode(0), sink);
    EXPECT_EQ(controllerMode(1), sink);
    EXPECT_EQ(failureOf(vekCrtcModeRead, 0), VEK_NO_RESPONSE);
    for (const uint32_t off : {0x000U, 0x100U, 0xe00U}) {
        route(off);
        EXPECT_EQ(failureOf(vekDpModeRead, 0), VEK_NO_RESPONSE) << off;
    }
    if (GetParam() == 0) {
        route(0x8000);
        EXPECT_NE(controllerMode(0), sink) << "that of the panel";
        EXPECT_EQ(failureOf(vekDpModeRead, 0), VEK_NO_RESPONSE);
    }
}

TEST_P(DisplayModes, AreThoseOfTheControllersOfTheChip)
{
    for (const int channel : {-0x7fffffff - 1, -1, controllers(), 4, 0x7fffffff}) {
        EXPECT_EQ(failureOf(vekCrtcModeRead, channel), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(vekCrtcModeRead(0, nullptr), VEK_BAD_ARGUMENT);
}

TEST_P(DisplayModes, NeedADisplay)
{
    // VGA has one on the first card; DVO has none there and does not exist on the second one.
    route(0x00880000);
    if (GetParam() == 0) {
        EXPECT_EQ(controllerMode(0), kSxga);
        route(0x00800000);
    }
    EXPECT_EQ(failureOf(vekCrtcModeRead, 0), VEK_NO_RESPONSE);
}

TEST_P(DisplayModes, KeepTheRegisterOfTheOtherCard)
{
    route(0x12345678);
    ASSERT_GE(vekRwOpen(1 - GetParam()), 0);
    EXPECT_NE(routing(), 0x12345678U);
    ASSERT_GE(vekRwOpen(GetParam()), 0);
    EXPECT_EQ(routing(), 0x12345678U);
}

TEST_P(DisplayModes, StandInARegisterThatHoldsEveryBit)
{
    for (const uint32_t value : {0xffffffffU, 0U, 0xdeadbeefU}) {
        route(value);
        EXPECT_EQ(routing(), value);
    }
    uint8_t byte = 0;
    ASSERT_EQ(vekRegWriteByte(kRouting + 1, 0x42), VEK_OK);
    EXPECT_EQ(routing(), 0xdead42efU);
    EXPECT_EQ(vekRegReadByte(kRouting + 3, &byte), VEK_OK);
    EXPECT_EQ(byte, 0xde);
    uint64_t quad = 0;
    ASSERT_EQ(vekRegWriteLong(kRouting + 4, 0x600df00d), VEK_OK);
    EXPECT_EQ(vekRegReadQuad(kRouting, &quad), VEK_OK);
    EXPECT_EQ(quad, 0x600df00d'dead42efU);
}

TEST_P(DisplayModes, ArePrintedAsTheyAreRouted)
{
    CapturedOutput output;
    EXPECT_EQ(vekCrtcOutputPrint(), VEK_OK);
    const std::string first = output.take();
    EXPECT_THAT(first, StartsWith("output routing, reg[0x024] = 0x"));
    EXPECT_THAT(first, HasSubstr("  CRTC-0 -> HDMI-0"));
    EXPECT_EQ(first.back(), '\n');
    EXPECT_EQ(vekCrtcOutputPrint(), VEK_OK);
    EXPECT_EQ(output.take(), first);

    route(0x000b000a);
    EXPECT_EQ(vekCrtcOutputPrint(), VEK_OK);
    const std::string second = output.take();
    EXPECT_THAT(second, StartsWith("output routing, reg[0x024] = 0x000b000a\n  CRTC-0 -> none\n  CRTC-1 -> none\n"));
    if (GetParam() == 0) {
        EXPECT_THAT(second, HasSubstr("  CRTC-2 -> HDMI-0\n  CRTC-3 -> VGA\n  off: "));
    } else {
        EXPECT_THAT(second, HasSubstr("  CRTC-2 -> HDMI-0, but this chip has no CRTC-2\n"
                                      "  CRTC-3 -> VGA, but this chip has no CRTC-3\n"));
    }
}

class Gamma : public EitherCard
{
protected:
    int controllers() const { return GetParam() == 0 ? 4 : 2; }
};
INSTANTIATE_TEST_SUITE_P(Cards, Gamma, testing::Values(0, 1));

TEST_P(Gamma, TakesSettingsOfEveryControllerSilently)
{
    CapturedOutput output;
    CapturedError error;
    for (int id = 0; id < controllers(); ++id) {
        for (const char* rest : {" ga 0.0:0.5:1.0 br 0.25 ct 1000", " ct 25100", ""}) {
            EXPECT_EQ(vekCrtcGammaSet((std::to_string(id) + rest).c_str()), VEK_OK) << id << rest;
        }
    }
    EXPECT_EQ(output.take(), "");
    EXPECT_EQ(error.take(), "");
}

TEST_P(Gamma, RefusesABadSettingWithOneLine)
{
    const std::string beyond = std::to_string(controllers());
    CapturedOutput output;
    CapturedError error;
    for (const char* setting : {static_cast<const char*>(nullptr), "", "  ", beyond.c_str(), "x", "0 br", "0 br 0.5x",
                                "0 br nan", "0 ga 1:1", "0 ct 999", "0 ct 25101", "0 ct 0x1964", "0 zz 1"}) {
        EXPECT_EQ(vekCrtcGammaSet(setting), VEK_BAD_ARGUMENT);
        const std::string line = error.take();
        EXPECT_THAT(line, StartsWith("gamma: "));
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_EQ(line.back(), '\n');
    }
    EXPECT_EQ(output.take(), "");
}

class VgaGains : public EitherCard
{
};
INSTANTIATE_TEST_SUITE_P(Cards, VgaGains, testing::Values(0, 1));

TEST_P(VgaGains, AreSetForTheThreeColours)
{
    EXPECT_EQ(vekVgaSetGain(0x00, 0x80, 0xff), VEK_OK);
    for (const int colour : {0x52, 0x47, 0x42}) {
        EXPECT_EQ(vekVgaSetSigleGain(colour, 0xff), VEK_OK);
    }
    for (const int colour : {0, 0x72, 0x43, 0x152, -0x52}) {
        EXPECT_EQ(vekVgaSetSigleGain(colour, 0x10), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(vekVgaSetGain(0xff, 0xff, 0xff), VEK_OK);
}

}  // namespace
