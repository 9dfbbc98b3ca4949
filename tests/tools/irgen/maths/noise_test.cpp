#include "noise.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace sonivex_irgen;

TEST(IrgenNoise, SplitMix64MatchesKnownOutputs) {
    SplitMix64 bits(203);
    EXPECT_EQ(bits.next(), 0xb5145f14d921c666U);
    EXPECT_EQ(bits.next(), 0x939ef00c969490cdU);

    // Many test suites of SplitMix64 hold the first output of seed 1234567.
    EXPECT_EQ(SplitMix64(1234567).next(), 6457827717110365317U);
}

TEST(IrgenNoise, FirstGaussianValuesMatchKnownOnes) {
    const std::vector<double> values = gaussianNoise(203, 4);
    const double expected[] = {1.6780, -0.6675, -0.8211, -1.7411};
    for (int n = 0; n < 4; ++n) EXPECT_NEAR(values[static_cast<std::size_t>(n)], expected[n], 0.00005) << n;
}

TEST(IrgenNoise, HasMeanZeroVarianceOneAndGaussianTails) {
    constexpr int kCount = 200000;
    double sum = 0.0;
    double square = 0.0;
    int beyond_two = 0;
    for (const double value : gaussianNoise(7, kCount)) {
        sum += value;
        square += value * value;
        if (std::abs(value) > 2.0) ++beyond_two;
    }
    // The tolerance is five standard errors. Sums of eight uniform values lie beyond two standard
    // deviations in 4.42 % of cases, Gaussian values in 4.55 %.
    EXPECT_NEAR(sum / kCount, 0.0, 5.0 / std::sqrt(kCount));
    EXPECT_NEAR(square / kCount, 1.0, 5.0 * std::sqrt(2.0 / kCount));
    EXPECT_NEAR(beyond_two / double{kCount}, 0.0455, 0.004);
}

}  // namespace
