#include "centre_gains.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using sonivex::Bin;
using sonivex::GainRange;

struct Gained {
    Bin left;
    Bin right;
};

Gained gainedBy(Bin left, Bin right, float presence, GainRange range) {
    Gained out = {left, right};
    const float side_power = sonivex::power(left - right);
    const float shares[] = {sonivex::centreShare(left, side_power), sonivex::centreShare(right, side_power)};
    sonivex::applyCentreGains(&shares[0], 1, presence, range, &out.left);
    sonivex::applyCentreGains(&shares[1], 1, presence, range, &out.right);
    return out;
}

TEST(DialogueCentreGains, RaiseTheCentreByFloorAndScale) {
    // D = left - right = 0: share 1, gain 0.5 * 1 + 1
    const Gained out = gainedBy({4, -8}, {4, -8}, 0.5F, {1, 1});
    EXPECT_NEAR(out.left.re, 6, 1e-6);
    EXPECT_NEAR(out.left.im, -12, 1e-6);
    EXPECT_EQ(out.right.re, out.left.re);
    EXPECT_EQ(out.right.im, out.left.im);
}

TEST(DialogueCentreGains, WeighEachChannelAgainstTheDifference) {
    // D = (2, 0): left share 16 / (4 + 16), right share 4 / (4 + 4)
    const Gained out = gainedBy({4, 0}, {2, 0}, 1, {1, 1});
    EXPECT_NEAR(out.left.re, 1.8 * 4, 1e-6);
    EXPECT_NEAR(out.right.re, 1.5 * 2, 1e-6);
    EXPECT_EQ(out.left.im, 0.0F);
}

TEST(DialogueCentreGains, WeighImaginaryPartsAsWell) {
    // D = (0, 3): left share 25 / (9 + 25), right share 16 / (9 + 16)
    const Gained out = gainedBy({4, 3}, {4, 0}, 1, {0, 1});
    EXPECT_NEAR(out.left.re, 4 * 25.0 / 34, 1e-6);
    EXPECT_NEAR(out.left.im, 3 * 25.0 / 34, 1e-6);
    EXPECT_NEAR(out.right.re, 4 * 16.0 / 25, 1e-6);
}

TEST(DialogueCentreGains, EqualTheFloorExactlyWithoutPresence) {
    const Gained out = gainedBy({4, -8}, {1, 2}, 0, {1.5F, 700});
    EXPECT_EQ(out.left.re, 6.0F);
    EXPECT_EQ(out.left.im, -12.0F);
    EXPECT_EQ(out.right.re, 1.5F);
    EXPECT_EQ(out.right.im, 3.0F);
}

TEST(DialogueCentreGains, MultiplyThePresenceByTheScale) {
    EXPECT_NEAR(gainedBy({1, 0}, {1, 0}, 0.25F, {0.5F, 8}).left.re, 2.5, 1e-6);
    EXPECT_NEAR(gainedBy({1, 0}, {1, 0}, 0.25F, {0.5F, -8}).left.re, -1.5, 1e-6);
}

TEST(DialogueCentreGains, KeepSilenceSilent) {
    const Gained out = gainedBy({0, 0}, {0, 0}, 1, {1, 1});
    EXPECT_EQ(out.left.re, 0.0F);
    EXPECT_EQ(out.right.im, 0.0F);
}

TEST(DialogueCentreGains, AreHalvedWhenThePowerOfABinEqualsEpsilon) {
    const float root_eps = std::sqrt(1.1920929e-07F);
    EXPECT_NEAR(gainedBy({root_eps, 0}, {root_eps, 0}, 1, {0, 1}).left.re / root_eps, 0.5, 1e-6);
}

TEST(DialogueCentreGains, TreatEveryBinAlike) {
    constexpr float kGuard = 77;
    test::Random random(1);
    std::vector<float> shares;
    std::vector<Bin> spectrum;
    for (int k = 0; k < 80; ++k) {
        shares.push_back(static_cast<float>(random.between(0, 999)) / 999.0F);
        spectrum.push_back(
            {static_cast<float>(random.between(-999, 999)), static_cast<float>(random.between(-99, 99))});
    }
    constexpr float kPresence = 0.3F;
    constexpr GainRange kRange = {1.1F, 2.3F};
    test::forEachVectorTarget([&] {
        for (std::size_t first = 0; first < 3; ++first) {
            for (std::size_t bins = 0; bins <= 70; ++bins) {
                std::vector<Bin> out(spectrum.begin(), spectrum.begin() + static_cast<std::ptrdiff_t>(bins));
                out.push_back({kGuard, kGuard});
                sonivex::applyCentreGains(shares.data() + first, static_cast<int>(bins), kPresence, kRange,
                                          out.data());
                for (std::size_t k = 0; k < bins; ++k) {
                    const float gain = shares[first + k] * kPresence * kRange.scale + kRange.floor;
                    ASSERT_EQ(out[k].re, gain * spectrum[k].re) << k << " of " << bins;
                    ASSERT_EQ(out[k].im, gain * spectrum[k].im) << k << " of " << bins;
                }
                ASSERT_EQ(out[bins].re, kGuard);
                ASSERT_EQ(out[bins].im, kGuard);
            }
        }
    });
}

}  // namespace
