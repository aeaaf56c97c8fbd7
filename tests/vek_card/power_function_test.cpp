#include "drivers/power_function.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

constexpr double kTolerance = 1e-12;

void expectClose(double value, double expected)
{
    EXPECT_NEAR(value, expected, kTolerance * std::abs(expected)) << "instead of " << expected;
}

TEST(PowerFunction, RaisesTwo)
{
    for (double exponent = -1022; exponent <= 1023; exponent += 0.37) {
        expectClose(vek::powerOfTwo(exponent), std::exp2(exponent));
    }
    for (const int exponent : {-1022, -100, -1, 0, 1, 52, 1023}) {
        EXPECT_EQ(vek::powerOfTwo(exponent), std::ldexp(1, exponent));
    }
}

TEST(PowerFunction, StaysFiniteBeyondTheEnds)
{
    EXPECT_EQ(vek::powerOfTwo(-1022.5), 0);
    EXPECT_EQ(vek::powerOfTwo(-1e300), 0);
    EXPECT_EQ(vek::powerOfTwo(1023.5), std::ldexp(1, 1023));
    EXPECT_EQ(vek::powerOfTwo(1e300), std::ldexp(1, 1023));
}

TEST(PowerFunction, TakesLogarithms)
{
    for (double number = 1e-300; number < 1e300; number *= 1.71) {
        EXPECT_NEAR(vek::logarithmToBaseTwo(number), std::log2(number), kTolerance) << number;
    }
    for (double number = 0.99; number < 1.01; number += 1e-5) {
        EXPECT_NEAR(vek::logarithmToBaseTwo(number), std::log2(number), 1e-15) << number;
    }
    EXPECT_EQ(vek::logarithmToBaseTwo(1), 0);
    EXPECT_EQ(vek::logarithmToBaseTwo(0.25), -2);
    EXPECT_EQ(vek::logarithmToBaseTwo(1024), 10);
}

TEST(PowerFunction, RaisesFractions)
{
    for (int part = 1; part <= 255; ++part) {
        for (const double exponent : {0.1, 0.4545, 1.0, 1.5, 2.2, 10.0, 100.0}) {
            expectClose(vek::power(part / 255.0, exponent), std::pow(part / 255.0, exponent));
        }
    }
    EXPECT_EQ(vek::power(1, 1e9), 1);
    EXPECT_EQ(vek::power(254.0 / 255, 1e9), 0);
    EXPECT_EQ(vek::power(0, 2.2), 0);
}

TEST(PowerFunction, RaisesE)
{
    for (double exponent = -100; exponent <= 100; exponent += 0.173) {
        expectClose(vek::exponential(exponent), std::exp(exponent));
    }
}

}  // namespace
