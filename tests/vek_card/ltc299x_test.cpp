#include "drivers/ltc299x.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "card/conversion_sequence.h"
#include "card/ltc299x_inputs.h"
#include "drivers/ltc2990.h"
#include "drivers/ltc2991.h"

namespace
{

using vek::ltc299x::codeOf;
using vek::ltc299x::kDataValid;
using vek::ltc299x::kSingleEndedWeight;
using vek::ltc299x::temperatureData;
using vek::ltc299x::voltageData;
using vek::ltc299x::voltsOf;

constexpr int kLtc2990Differential = 19'420;
constexpr int kLtc2991Differential = 19'075;

/** A voltage and its code, the sign in bit 14. */
struct Format {
    int microvolts;
    int weight;
    std::uint16_t code;
};

class Ltc299xVoltages : public testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(Formats, Ltc299xVoltages,
                         testing::Values(Format{3'500'000, kSingleEndedWeight, 0x2ccd},   //
                                         Format{0, kSingleEndedWeight, 0x0000},           //
                                         Format{-300'000, kSingleEndedWeight, 0x7c29},    //
                                         Format{200'000, kSingleEndedWeight, 0x028f},     // VCC of 2.7 V
                                         Format{300'000, kLtc2990Differential, 0x3c58},   //
                                         Format{100'000, kLtc2990Differential, 0x141d},   //
                                         Format{-100'000, kLtc2990Differential, 0x6be3},  //
                                         Format{-300'000, kLtc2990Differential, 0x43a8},  //
                                         Format{300'000, kLtc2991Differential, 0x3d6f},   //
                                         Format{100'000, kLtc2991Differential, 0x147a},   //
                                         Format{-100'000, kLtc2991Differential, 0x6b86}));

TEST_P(Ltc299xVoltages, HaveTheirCode)
{
    const auto& [microvolts, weight, code] = GetParam();
    EXPECT_EQ(voltageData(microvolts, weight), kDataValid | code);
}

TEST_P(Ltc299xVoltages, ComeBackFromTheirCode)
{
    const auto& [microvolts, weight, code] = GetParam();
    for (const int data : {code + 0, code | kDataValid}) {
        EXPECT_NEAR(voltsOf(codeOf(static_cast<std::uint16_t>(data)), weight), microvolts * 1e-6, weight * 0.5e-9);
    }
}

TEST(Ltc299x, WeighTheLowestBit)
{
    EXPECT_EQ(vek::ltc2990::kDifferentialWeight, kLtc2990Differential);
    EXPECT_EQ(vek::ltc2991::kDifferentialWeight, kLtc2991Differential);
    EXPECT_DOUBLE_EQ(voltsOf(1, kSingleEndedWeight), 305.18e-6);
    EXPECT_DOUBLE_EQ(voltsOf(-1, kLtc2990Differential), -19.42e-6);
    EXPECT_DOUBLE_EQ(voltsOf(1, kLtc2991Differential), 19.075e-6);
}

TEST(Ltc299x, CutWhatIsOutOfRange)
{
    EXPECT_EQ(voltageData(6'000'000, kSingleEndedWeight), kDataValid | 0x3fff);
    EXPECT_EQ(voltageData(400'000, kLtc2990Differential), kDataValid | 0x3fff);
    EXPECT_EQ(voltageData(-400'000, kLtc2990Differential), kDataValid | 0x4000);
    EXPECT_EQ(codeOf(0x3fff), 16383);
    EXPECT_EQ(codeOf(0x4000), -16384);
    EXPECT_EQ(codeOf(0xffff), -1);
}

TEST(Ltc299x, CountTemperaturesInSixteenths)
{
    EXPECT_EQ(temperatureData(25'000, false), kDataValid | 0x0190);
    EXPECT_EQ(temperatureData(125'000, false), kDataValid | 0x07d0);
    EXPECT_EQ(temperatureData(-40'000, false), kDataValid | 0x1d80);
    EXPECT_EQ(temperatureData(25'000, true), kDataValid | 0x12a2);
}

TEST(ConversionSequence, EndsItsStepsInTurn)
{
    vek::ConversionSequence sequence;
    sequence.add(3, 10);
    sequence.add(1, 5);
    sequence.start(100, false);
    std::uint32_t ended = 0;
    const auto store = [&ended](std::uint8_t slot) { ended = ended * 10 + slot; };
    EXPECT_FALSE(sequence.advance(109, store));
    EXPECT_EQ(ended, 0U);
    EXPECT_FALSE(sequence.advance(110, store));
    EXPECT_EQ(ended, 3U);
    EXPECT_TRUE(sequence.advance(115, store));
    EXPECT_EQ(ended, 31U);
    EXPECT_FALSE(sequence.running());
    EXPECT_FALSE(sequence.advance(1000, store));
    EXPECT_EQ(ended, 31U);
}

TEST(ConversionSequence, GoesRoundWhenItIsRepeated)
{
    vek::ConversionSequence sequence;
    sequence.add(1, 10);
    sequence.add(2, 5);
    sequence.start(0, true);
    int ended = 0;
    const auto store = [&ended](std::uint8_t slot) { ended += slot; };
    EXPECT_TRUE(sequence.advance(25, store));
    EXPECT_EQ(ended, 4);
    EXPECT_FALSE(sequence.advance(29, store));
    EXPECT_TRUE(sequence.advance(30, store));
    EXPECT_EQ(ended, 6);
    // However long nobody looked: each step at least once, in its place.
    ended = 0;
    EXPECT_TRUE(sequence.advance(15'000'000'000'000 + 10, store));
    EXPECT_GE(ended, 3);
    EXPECT_LE(ended, 7);
    ended = 0;
    EXPECT_FALSE(sequence.advance(15'000'000'000'000 + 14, store));
    EXPECT_TRUE(sequence.advance(15'000'000'000'000 + 15, store));
    EXPECT_EQ(ended, 2);
}

TEST(ConversionSequence, DoesNotStartWithoutAStep)
{
    vek::ConversionSequence sequence;
    sequence.start(0, true);
    EXPECT_FALSE(sequence.running());
    EXPECT_FALSE(sequence.advance(1000, [](std::uint8_t) { FAIL(); }));
    sequence.add(1, 10);
    sequence.start(0, true);
    sequence.clear();
    EXPECT_FALSE(sequence.running());
}

}  // namespace
