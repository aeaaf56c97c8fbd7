#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "open_card.h"
#include "vek.h"

namespace
{

using testing::Each;
using testing::FloatEq;

constexpr int kLowest = -0x7fffffff - 1;
constexpr int kHighest = 0x7fffffff;
constexpr int kLtcChannel = 1;
constexpr int kInaChannel = 2;
constexpr uint32_t kLtc2990 = 0x4c;
constexpr uint32_t kLtc2991 = 0x48;
constexpr uint32_t kIna3221 = 0x40;

constexpr double kSingleEnded = 305.18e-6;
constexpr double kLtc2990Differential = 19.42e-6;
constexpr double kLtc2991Differential = 19.075e-6;

/** Rails of a card, as its power monitors see them. */
struct Rails {
    int card;
    std::array<double, 4> ltc2990;  ///< Volts.
    std::array<double, 8> ltc2991;
    std::array<double, 2> millivolts;  ///< Of the INA3221.
    std::array<double, 2> amperes;
};

class PowerMonitors : public testing::TestWithParam<Rails>
{
protected:
    PowerMonitors() { EXPECT_GE(vekRwOpen(GetParam().card), 0); }
    ~PowerMonitors() override { vekClose(); }

    static std::vector<float> volts4(int repeated = 0, int wait = 1)
    {
        std::vector<float> v(4, -1);
        EXPECT_EQ(vekLTC2990GetVolt4(kLtcChannel, 0, &v[0], &v[1], &v[2], &v[3], repeated, wait), VEK_OK);
        return v;
    }

    static std::vector<float> currents2(unsigned first, unsigned second, int repeated = 0)
    {
        std::vector<float> a(2, -1);
        EXPECT_EQ(vekLTC2990GetCurrent2(kLtcChannel, 0, first, second, &a[0], &a[1], repeated, 1), VEK_OK);
        return a;
    }

    static std::vector<float> volts8(int repeated = 0)
    {
        std::vector<float> v(8, -1);
        EXPECT_EQ(
            vekLTC2991GetVolt8(kLtcChannel, 0, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], repeated, 1),
            VEK_OK);
        return v;
    }

    static std::vector<float> currents4(const std::array<unsigned, 4>& r, int repeated = 0)
    {
        std::vector<float> a(4, -1);
        EXPECT_EQ(
            vekLTC2991GetCurrent4(kLtcChannel, 0, r[0], r[1], r[2], r[3], &a[0], &a[1], &a[2], &a[3], repeated, 1),
            VEK_OK);
        return a;
    }

    /** The 14 bits and the sign of a chip's data register. */
    static int code(uint32_t device, uint32_t index)
    {
        std::array<uint8_t, 2> bytes{};
        EXPECT_EQ(vekI2cRead(kLtcChannel, device, index, 2, bytes.data()), VEK_OK);
        const int bits = (bytes[0] & 0x7f) << 8 | bytes[1];
        return bits >= 0x4000 ? bits - 0x8000 : bits;
    }
};

INSTANTIATE_TEST_SUITE_P(Cards, PowerMonitors,
                         testing::Values(Rails{.card = 0,
                                               .ltc2990 = {0.903, 0.8478, 1.352, 1.33025},
                                               .ltc2991 = {3.31, 3.3037, 1.806, 1.7939, 1.204, 1.1946, 0.951, 0.9355},
                                               .millivolts = {12069.2, 12121.3},
                                               .amperes = {2.16, 1.74}},
                                         Rails{
                                             .card = 1,
                                             .ltc2990 = {0.884, 0.85505, 1.203, 1.19148},
                                             .ltc2991 = {3.296, 3.2924, 1.797, 1.79045, 1.198, 1.1928, 0.902, 0.89415},
                                             .millivolts = {12032.6, 0},
                                             .amperes = {1.48, 0}}),
                         [](const auto& rails) { return "Card" + std::to_string(rails.param.card); });

TEST_P(PowerMonitors, Ltc2990MeasuresVoltages)
{
    for (const int repeated : {0, 1, 0}) {
        const std::vector<float> volts = volts4(repeated);
        for (std::size_t at = 0; at < 4; ++at) {
            EXPECT_NEAR(volts[at], GetParam().ltc2990[at], kSingleEnded / 2 + 1e-6);
            EXPECT_FLOAT_EQ(volts[at],
                            static_cast<float>(std::round(GetParam().ltc2990[at] / kSingleEnded) * kSingleEnded));
        }
    }
}

TEST_P(PowerMonitors, Ltc2990MeasuresCurrents)
{
    for (const int repeated : {0, 1, 0}) {
        const std::vector<float> amperes = currents2(3, 6, repeated);
        const auto& pins = GetParam().ltc2990;
        const auto current = [&pins](std::size_t first, double ohms) {
            return std::round((pins[first] - pins[first + 1]) / kLtc2990Differential) * kLtc2990Differential / ohms;
        };
        EXPECT_FLOAT_EQ(amperes[0], static_cast<float>(current(0, 0.003)));
        EXPECT_FLOAT_EQ(amperes[1], static_cast<float>(current(2, 0.006)));
    }
}

TEST_P(PowerMonitors, Ltc2991MeasuresVoltages)
{
    for (const int repeated : {0, 1, 0}) {
        const std::vector<float> volts = volts8(repeated);
        for (std::size_t at = 0; at < 8; ++at) {
            EXPECT_NEAR(volts[at], GetParam().ltc2991[at], kSingleEnded / 2 + 1e-6);
        }
    }
}

TEST_P(PowerMonitors, Ltc2991MeasuresCurrents)
{
    for (const int repeated : {0, 1, 0}) {
        const std::vector<float> amperes = currents4({5, 10, 1, 0xffffffff}, repeated);
        const auto& pins = GetParam().ltc2991;
        const auto current = [&pins](std::size_t first, double ohms) {
            return std::round((pins[first] - pins[first + 1]) / kLtc2991Differential) * kLtc2991Differential / ohms;
        };
        EXPECT_FLOAT_EQ(amperes[0], static_cast<float>(current(0, 0.005)));
        EXPECT_FLOAT_EQ(amperes[1], static_cast<float>(current(2, 0.010)));
        EXPECT_FLOAT_EQ(amperes[2], static_cast<float>(current(4, 0.001)));
        EXPECT_FLOAT_EQ(amperes[3], static_cast<float>(current(6, 4294967.295)));
    }
}

TEST_P(PowerMonitors, LtcValuesAreThoseOfTheDataRegisters)
{
    const std::vector<float> volts = volts8();
    for (uint32_t at = 0; at < 8; ++at) {
        EXPECT_FLOAT_EQ(volts[at], static_cast<float>(code(kLtc2991, 0x0a + 2 * at) * kSingleEnded));
    }
    const std::vector<float> amperes = currents2(3, 3);
    EXPECT_FLOAT_EQ(amperes[0], static_cast<float>(code(kLtc2990, 0x06) * kLtc2990Differential / 0.003));
    EXPECT_FLOAT_EQ(amperes[1], static_cast<float>(code(kLtc2990, 0x0a) * kLtc2990Differential / 0.003));
}

TEST_P(PowerMonitors, Ltc2990SaysWhenItHasNothingNew)
{
    volts4(1);
    std::array<float, 2> amperes{-1, -1};
    // The chip has to be set up for currents first.
    EXPECT_EQ(vekLTC2990GetCurrent2(kLtcChannel, 0, 3, 3, &amperes[0], &amperes[1], 1, 0), VEK_BAD_DATA);
    EXPECT_THAT(amperes, Each(-1));
    // The next conversion takes its time, but so may a busy machine between two calls.
    int result = VEK_OK;
    for (int round = 0; round < 100 && result == VEK_OK; ++round) {
        currents2(3, 3, 0);
        result = vekLTC2990GetCurrent2(kLtcChannel, 0, 3, 3, &amperes[0], &amperes[1], 0, 0);
    }
    EXPECT_EQ(result, VEK_BAD_DATA);
    volts4(0);
}

TEST_P(PowerMonitors, Ina3221Measures)
{
    std::array<float, 2> values{};
    ASSERT_EQ(vekINA3221GetVolt2(kInaChannel, &values[0], &values[1]), VEK_OK);
    for (std::size_t at = 0; at < 2; ++at) {
        EXPECT_FLOAT_EQ(values[at], static_cast<float>(std::round(GetParam().millivolts[at] / 8) * 8));
    }
    ASSERT_EQ(vekINA3221GetCurrent2(kInaChannel, 5, 5, &values[0], &values[1]), VEK_OK);
    for (std::size_t at = 0; at < 2; ++at) {
        EXPECT_FLOAT_EQ(values[at], static_cast<float>(std::round(GetParam().amperes[at] * 5000 / 40) * 40e-6 / 0.005));
    }
    std::array<uint8_t, 2> bytes{};
    ASSERT_EQ(vekI2cRead(kInaChannel, kIna3221, 0xfe, 2, bytes.data()), VEK_OK);
    EXPECT_THAT(bytes, testing::ElementsAre(0x54, 0x49));
}

/** Calls all functions on a channel; their outputs must stay as they are. @return their results. */
std::vector<int> callAll(int channel, int addressIndex, unsigned milliohms)
{
    std::array<float, 8> v;
    v.fill(-1);
    float* p = v.data();
    const std::vector<int> results{
        vekLTC2990GetCurrent2(channel, addressIndex, milliohms, 3, p, p + 1, 0, 1),
        vekLTC2990GetCurrent2(channel, addressIndex, 3, milliohms, p, p + 1, 0, 0),
        vekLTC2991GetCurrent4(channel, addressIndex, 3, 3, 3, milliohms, p, p + 1, p + 2, p + 3, 0, 1),
        vekLTC2991GetCurrent4(channel, addressIndex, milliohms, 3, 3, 3, p, p + 1, p + 2, p + 3, 0, 1),
        vekINA3221GetCurrent2(channel, milliohms, 3, p, p + 1),
        vekINA3221GetCurrent2(channel, 3, milliohms, p, p + 1),
    };
    EXPECT_THAT(v, Each(FloatEq(-1)));
    return results;
}

TEST_P(PowerMonitors, RefuseAResistorOfNothing)
{
    EXPECT_THAT(callAll(kLtcChannel, 0, 0), Each(int{VEK_BAD_ARGUMENT}));
}

TEST_P(PowerMonitors, RefuseChannelsThatThereAreNot)
{
    for (const int channel : {kLowest, -1, 4, kHighest}) {
        EXPECT_THAT(callAll(channel, 0, 3), Each(int{VEK_NO_BUS}));
        float v = -1;
        EXPECT_EQ(vekINA3221GetVolt2(channel, &v, &v), VEK_NO_BUS);
        EXPECT_EQ(vekLTC2990GetVolt4(channel, 0, &v, &v, &v, &v, 0, 1), VEK_NO_BUS);
        EXPECT_EQ(v, -1);
    }
}

TEST_P(PowerMonitors, DoNotAnswerWhereTheyAreNot)
{
    EXPECT_THAT(callAll(3, 0, 3), Each(int{VEK_NO_RESPONSE}));
    float v = -1;
    for (const int index : {1, 2, 3}) {
        EXPECT_EQ(vekLTC2990GetVolt4(kLtcChannel, index, &v, &v, &v, &v, 0, 1), VEK_NO_RESPONSE);
        EXPECT_EQ(vekLTC2991GetVolt8(kLtcChannel, index, &v, &v, &v, &v, &v, &v, &v, &v, 0, 1), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(vekINA3221GetVolt2(kLtcChannel, &v, &v), VEK_NO_RESPONSE);
    EXPECT_EQ(v, -1);
}

TEST_P(PowerMonitors, RefuseAddressesThatThereAreNot)
{
    float v = -1;
    for (const int index : {kLowest, -1, 4, 8, kHighest}) {
        EXPECT_EQ(vekLTC2990GetVolt4(kLtcChannel, index, &v, &v, &v, &v, 0, 1), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekLTC2990GetCurrent2(kLtcChannel, index, 3, 3, &v, &v, 0, 1), VEK_BAD_ARGUMENT);
    }
    for (const int index : {kLowest, -1, 8, kHighest}) {
        EXPECT_EQ(vekLTC2991GetVolt8(kLtcChannel, index, &v, &v, &v, &v, &v, &v, &v, &v, 0, 1), VEK_BAD_ARGUMENT);
        EXPECT_EQ(vekLTC2991GetCurrent4(kLtcChannel, index, 3, 3, 3, 3, &v, &v, &v, &v, 0, 1), VEK_BAD_ARGUMENT);
    }
    EXPECT_EQ(v, -1);
}

TEST_P(PowerMonitors, NeedAllTheirOutputs)
{
    float v = -1;
    for (int missing = 0; missing < 8; ++missing) {
        const auto out = [&v, missing](int at) { return at == missing ? nullptr : &v; };
        EXPECT_EQ(
            vekLTC2991GetVolt8(kLtcChannel, 0, out(0), out(1), out(2), out(3), out(4), out(5), out(6), out(7), 0, 1),
            VEK_BAD_ARGUMENT);
        if (missing < 4) {
            EXPECT_EQ(vekLTC2990GetVolt4(kLtcChannel, 0, out(0), out(1), out(2), out(3), 0, 1), VEK_BAD_ARGUMENT);
            EXPECT_EQ(vekLTC2991GetCurrent4(kLtcChannel, 0, 3, 3, 3, 3, out(0), out(1), out(2), out(3), 0, 1),
                      VEK_BAD_ARGUMENT);
        }
        if (missing < 2) {
            EXPECT_EQ(vekLTC2990GetCurrent2(kLtcChannel, 0, 3, 3, out(0), out(1), 0, 1), VEK_BAD_ARGUMENT);
            EXPECT_EQ(vekINA3221GetVolt2(kInaChannel, out(0), out(1)), VEK_BAD_ARGUMENT);
            EXPECT_EQ(vekINA3221GetCurrent2(kInaChannel, 3, 3, out(0), out(1)), VEK_BAD_ARGUMENT);
        }
    }
    EXPECT_EQ(v, -1);
}

}  // namespace
