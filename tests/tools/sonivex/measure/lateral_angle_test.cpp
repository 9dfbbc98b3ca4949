#include "lateral_angle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <numbers>

#include "fourier.h"
#include "rigid_sphere.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::lateralAngle;
using Complex = std::complex<double>;
using Samples = std::vector<double>;

constexpr int kRate_hz = 48000;
constexpr std::size_t kPoints = 32768;

struct Ears {
    Samples left;
    Samples right;
};

// Returns white noise after a filter, which is given for frequencies above 0 and below half the rate.
Samples filteredNoise(const std::function<Complex(double frequency_hz)>& filter, std::uint64_t seed = 5) {
    const std::vector<float> noise = test::noiseFloats(seed, kPoints, 0.1F);
    std::vector<Complex> x(noise.begin(), noise.end());
    const sonivex_tool::Fourier fourier(kPoints);
    fourier.transform(x);
    x[0] = 0.0;
    x[kPoints / 2] = 0.0;
    for (std::size_t k = 1; k < kPoints / 2; ++k) {
        x[k] *= filter(static_cast<double>(k) * kRate_hz / kPoints);
        x[kPoints - k] = std::conj(x[k]);
    }
    // The spectrum of a real signal is the conjugate of its mirror image, so transforming forwards again
    // inverts.
    for (Complex& value : x) value = std::conj(value);
    fourier.transform(x);
    Samples samples;
    for (const Complex& value : x) samples.push_back(value.real() / kPoints);
    return samples;
}

// Returns the same noise at both ears of a sphere in the open.
Ears drySphere(double lateral_deg) {
    const auto ear = [](double incidence_deg) {
        return filteredNoise([=](double frequency_hz) {
            return sonivex_tool::spherePressure(std::min(frequency_hz, 20000.0), incidence_deg);
        });
    };
    return {ear(90.0 - lateral_deg), ear(90.0 + lateral_deg)};
}

TEST(LateralAngle, IsTheDirectionOfASourceBesideASphere) {
    for (const double lateral_deg : {-90.0, -60.0, -30.0, -10.0, 0.0, 10.0, 30.0, 45.0, 60.0, 90.0}) {
        SCOPED_TRACE(lateral_deg);
        const Ears ears = drySphere(lateral_deg);
        const auto angle = lateralAngle(ears.left, ears.right, kRate_hz);
        ASSERT_TRUE(angle.has_value());
        EXPECT_NEAR(angle->by_delay_deg, lateral_deg, 2.0);
        EXPECT_NEAR(angle->by_level_deg, lateral_deg, 2.0);
        EXPECT_NEAR(angle->angle_deg, lateral_deg, 2.0);
        EXPECT_GT(angle->clarity, 0.97);
        EXPECT_LE(angle->lowest_by_level_deg, angle->by_level_deg);
        EXPECT_GE(angle->highest_by_level_deg, angle->by_level_deg);
    }
}

TEST(LateralAngle, IsZeroForTheSameSoundAtBothEars) {
    const Ears ears = drySphere(30.0);
    const auto angle = lateralAngle(ears.left, ears.left, kRate_hz);
    ASSERT_TRUE(angle.has_value());
    EXPECT_EQ(angle->angle_deg, 0.0);
    EXPECT_EQ(angle->lowest_by_level_deg, -angle->highest_by_level_deg);
}

TEST(LateralAngle, ChangesItsSignWithTheEars) {
    const Ears ears = drySphere(37.0);
    const auto left = lateralAngle(ears.left, ears.right, kRate_hz);
    const auto right = lateralAngle(ears.right, ears.left, kRate_hz);
    ASSERT_TRUE(left.has_value() && right.has_value());
    EXPECT_NEAR(left->angle_deg, -right->angle_deg, 1e-9);
    EXPECT_EQ(left->by_delay_deg, -right->by_delay_deg);
    EXPECT_EQ(left->lowest_by_level_deg, -right->highest_by_level_deg);
}

// A sphere's lead of 60 degrees with equal levels: the cues disagree, and the angle is their weighted mean.
// The bands below 1.5 kHz have 0.4661 of the weight.
TEST(LateralAngle, IsTheWeightedMeanOfDelayAndLevel) {
    const Ears ears = drySphere(60.0);
    const Samples right = filteredNoise([](double frequency_hz) {
        const Complex near = sonivex_tool::spherePressure(std::min(frequency_hz, 20000.0), 30.0);
        const Complex far = sonivex_tool::spherePressure(std::min(frequency_hz, 20000.0), 150.0);
        return far * std::abs(near) / std::abs(far);
    });
    const auto angle = lateralAngle(ears.left, right, kRate_hz);
    ASSERT_TRUE(angle.has_value());
    EXPECT_NEAR(angle->by_delay_deg, 60.0, 3.0);
    EXPECT_NEAR(angle->by_level_deg, 0.0, 6.0);
    EXPECT_NEAR(angle->angle_deg, 0.4661 * angle->by_delay_deg + 0.5339 * angle->by_level_deg, 1e-9);
}

// Unrelated noise of the same energy at each ear halves the correlation of the ears.
TEST(LateralAngle, LosesClarityWithSoundFromElsewhere) {
    const auto unchanged = [](double) { return 1.0; };
    const Samples sound = filteredNoise(unchanged, 5);
    Samples left = filteredNoise(unchanged, 6);
    Samples right = filteredNoise(unchanged, 7);
    for (std::size_t n = 0; n < kPoints; ++n) {
        left[n] += sound[n];
        right[n] += sound[n];
    }
    const auto angle = lateralAngle(left, right, kRate_hz);
    ASSERT_TRUE(angle.has_value());
    EXPECT_NEAR(angle->clarity, 0.5, 0.1);
    EXPECT_NEAR(angle->by_delay_deg, 0.0, 8.0);
}

// Levels like those of 20 degrees also fit an angle near 90. Which of the two counts, the delay decides.
TEST(LateralAngle, LetsTheDelayDecideBetweenAnglesOfLikeLevels) {
    const Ears ears = drySphere(90.0);
    const auto far_out = lateralAngle(ears.left, ears.right, kRate_hz);
    ASSERT_TRUE(far_out.has_value());
    EXPECT_LT(far_out->lowest_by_level_deg, 30.0);
    EXPECT_GE(far_out->highest_by_level_deg, 88.0);
    EXPECT_GE(far_out->by_level_deg, 88.0);
}

TEST(LateralAngle, IsMissingForSilenceBassAndASoundAtOneEar) {
    const Samples silence(kPoints, 0.0);
    const Samples noise = drySphere(0.0).left;
    const Samples bass = filteredNoise([](double frequency_hz) { return frequency_hz < 120.0 ? 1.0 : 1e-6; });
    EXPECT_FALSE(lateralAngle(silence, silence, kRate_hz).has_value());
    EXPECT_FALSE(lateralAngle({}, {}, kRate_hz).has_value());
    EXPECT_FALSE(lateralAngle(bass, bass, kRate_hz).has_value());
    EXPECT_FALSE(lateralAngle(noise, silence, kRate_hz).has_value());
}

TEST(LateralAngle, IsMissingForEarsThatHaveNothingInCommon) {
    const auto flat = [](double) { return Complex(1.0); };
    const Samples one = filteredNoise(flat, 5);
    EXPECT_EQ(lateralAngle(one, filteredNoise(flat, 6), kRate_hz), std::nullopt);
    Samples opposite = one;
    for (double& sample : opposite) sample = -sample;
    EXPECT_EQ(lateralAngle(one, opposite, kRate_hz), std::nullopt);
}

TEST(LateralAngle, IsTheSameForALongSoundAsForItsParts) {
    const Ears ears = drySphere(40.0);
    Ears longer;
    for (int i = 0; i < 7; ++i) {
        longer.left.insert(longer.left.end(), ears.left.begin(), ears.left.end() - 100 * i);
        longer.right.insert(longer.right.end(), ears.right.begin(), ears.right.end() - 100 * i);
    }
    const auto angle = lateralAngle(longer.left, longer.right, kRate_hz);
    ASSERT_TRUE(angle.has_value());
    EXPECT_NEAR(angle->angle_deg, 40.0, 2.0);
    EXPECT_GT(angle->clarity, 0.98);
}

TEST(LateralAngle, IsMissingIfASampleIsNotFinite) {
    const Samples noise = drySphere(0.0).left;
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        Samples broken = noise;
        broken[1000] = bad;
        EXPECT_FALSE(lateralAngle(broken, noise, kRate_hz).has_value());
        EXPECT_FALSE(lateralAngle(noise, broken, kRate_hz).has_value());
    }
}

}  // namespace
