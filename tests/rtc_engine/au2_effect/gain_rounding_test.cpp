// The gain stage computes logarithm and power with the C library in double and rounds each result to float.
// C libraries differ in the last bits of a double. These tests show that such differences never change the
// float.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "support/signals/signals.h"

namespace {

constexpr bool kLongDoubleIsLonger = std::numeric_limits<long double>::digits >= 64;

// Distance from `exact` to the nearest boundary where rounding to float changes the result, in units in the
// last place of a double.
double doubleUlpsToRoundingBoundary(long double exact) {
    const auto nearest = static_cast<float>(exact);
    const float infinity = std::numeric_limits<float>::infinity();
    const long double centre = nearest;
    const long double above = (centre + static_cast<long double>(std::nextafter(nearest, infinity))) / 2;
    const long double below = (centre + static_cast<long double>(std::nextafter(nearest, -infinity))) / 2;
    const long double distance = std::min(std::abs(exact - above), std::abs(exact - below));
    const double magnitude = std::abs(static_cast<double>(exact));
    const double ulp = std::nextafter(magnitude, 1e300) - magnitude;
    return static_cast<double>(distance / static_cast<long double>(ulp));
}

// The best C libraries are accurate to one unit, the worst in use to two.
constexpr double kSafeUlps = 8;

float levelOfPeakDb(int peak) {
    return static_cast<float>(20.0 * std::log10(static_cast<double>(peak) / 32768.0));
}

float gainAfter(float gain_db, int peak) {
    const float over = levelOfPeakDb(peak) + gain_db;
    return over > 0 ? std::max(0.0F, gain_db - std::max(3.0F, over)) : gain_db;
}

void expectSafePower(float gain_db) {
    const float exponent = gain_db / 20.0F;
    const long double exact = std::pow(10.0L, static_cast<long double>(exponent));
    ASSERT_GT(doubleUlpsToRoundingBoundary(exact), kSafeUlps) << "gain " << gain_db;
    ASSERT_EQ(static_cast<float>(std::pow(10.0, static_cast<double>(exponent))), static_cast<float>(exact));
}

TEST(NormalizerGainRounding, LevelsOfAllPeaksAreFarFromRoundingBoundaries) {
    if (!kLongDoubleIsLonger) GTEST_SKIP() << "needs a long double that is more precise than double";
    double nearest_ulps = 1e300;
    for (int peak = 1; peak <= 32768; ++peak) {
        const long double exact = 20.0L * std::log10(static_cast<long double>(peak) / 32768.0L);
        const double ulps = doubleUlpsToRoundingBoundary(exact);
        nearest_ulps = std::min(nearest_ulps, ulps);
        ASSERT_GT(ulps, kSafeUlps) << "peak " << peak;
        ASSERT_EQ(levelOfPeakDb(peak), static_cast<float>(exact)) << "peak " << peak;
    }
    RecordProperty("nearest_double_ulps", std::to_string(nearest_ulps));
}

TEST(NormalizerGainRounding, FactorsAfterTheFirstStepAreFarFromRoundingBoundaries) {
    if (!kLongDoubleIsLonger) GTEST_SKIP() << "needs a long double that is more precise than double";
    std::set<float> gains{20.0F};
    for (int peak = 1; peak <= 32768; ++peak) {
        // After the first step, every later block that is slightly too loud causes a step of 3 dB.
        for (float gain = gainAfter(20.0F, peak); gain > 0; gain = std::max(0.0F, gain - 3.0F))
            gains.insert(gain);
    }
    gains.insert(0.0F);
    ASSERT_GT(gains.size(), 29000U);
    for (const float gain : gains) ASSERT_NO_FATAL_FAILURE(expectSafePower(gain));
}

TEST(NormalizerGainRounding, FactorsAfterRandomPeaksAreFarFromRoundingBoundaries) {
    if (!kLongDoubleIsLonger) GTEST_SKIP() << "needs a long double that is more precise than double";
    constexpr std::uint64_t kSeed = 20;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    test::Random random(kSeed);
    for (int run = 0; run < 50000; ++run) {
        float gain = 20.0F;
        for (int block = 0; block < 6 && gain > 0; ++block) {
            gain = gainAfter(gain, random.between(1, 32768));
            ASSERT_NO_FATAL_FAILURE(expectSafePower(gain));
        }
    }
}

}  // namespace
