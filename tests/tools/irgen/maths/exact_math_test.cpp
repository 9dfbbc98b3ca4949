#include "exact_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace sonivex_irgen;

constexpr double kTolerance = 1e-14;

// Calls check(x) for both ends of a range and for random values distributed evenly over it.
template <typename Check>
void forRange(double from, double to, Check check) {
    constexpr unsigned kSeed = 5;
    SCOPED_TRACE("seed 5");
    std::mt19937_64 random(kSeed);
    std::uniform_real_distribution<double> uniform(from, to);
    check(from);
    check(to);
    for (int i = 0; i < 20000; ++i) check(uniform(random));
}

TEST(IrgenExactMath, ExponentialMatchesTheStandardLibrary) {
    const auto check = [](double x) {
        ASSERT_NEAR(exactExp(x) / std::exp(x), 1.0, kTolerance) << "x = " << x;
    };
    forRange(-1.0, 1.0, check);
    forRange(-50.0, 50.0, check);
    EXPECT_EQ(exactExp(0.0), 1.0);
    EXPECT_EQ(exactExp(-1e4), 0.0);
}

TEST(IrgenExactMath, LogarithmMatchesTheStandardLibrary) {
    forRange(0.5, 2.0, [](double x) { ASSERT_NEAR(exactLog(x), std::log(x), kTolerance) << "x = " << x; });
    forRange(-300.0, 300.0, [](double exponent) {
        const double x = std::pow(10.0, exponent);
        const double expected = std::log(x);
        ASSERT_NEAR(exactLog(x), expected, kTolerance * std::max(1.0, std::abs(expected))) << "x = " << x;
    });
    EXPECT_EQ(exactLog(1.0), 0.0);
}

TEST(IrgenExactMath, SineAndCosineMatchTheStandardLibrary) {
    const auto check = [](double x) {
        ASSERT_NEAR(exactSin(x), std::sin(x), kTolerance) << "x = " << x;
        ASSERT_NEAR(exactCos(x), std::cos(x), kTolerance) << "x = " << x;
    };
    forRange(-7.0, 7.0, check);
    forRange(-9e4, 9e4, check);
    EXPECT_EQ(exactSin(0.0), 0.0);
    EXPECT_EQ(exactCos(0.0), 1.0);
}

TEST(IrgenExactMath, ArcSineMatchesTheStandardLibraryAndClampsItsArgument) {
    forRange(-1.0, 1.0, [](double x) { ASSERT_NEAR(exactAsin(x), std::asin(x), kTolerance) << "x = " << x; });
    EXPECT_EQ(exactAsin(1.0 + 1e-9), exactAsin(1.0));
    EXPECT_EQ(exactAsin(-2.0), exactAsin(-1.0));
}

TEST(IrgenExactMath, DecibelsConvertBothWays) {
    EXPECT_NEAR(powerToDb(1000.0), 30.0, 1e-13);
    EXPECT_NEAR(dbToPower(-20.0), 0.01, 1e-16);
    EXPECT_NEAR(dbToAmplitude(6.0), 1.9952623149688795, 1e-14);
}

TEST(IrgenExactMath, HalfCosineFadeFallsFromOneToZeroThroughAHalf) {
    EXPECT_EQ(halfCosineFade(-1.0), 1.0);
    EXPECT_NEAR(halfCosineFade(0.5), 0.5, 1e-15);
    EXPECT_NEAR(halfCosineFade(1.0 / 3.0), 0.75, 1e-15);
    EXPECT_EQ(halfCosineFade(1.0), 0.0);
}

}  // namespace
