#include "centre_gains.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/signals.h"

namespace {

using sonivex::Bin;
using sonivex::GainRange;

struct Gained {
    Bin left;
    Bin right;
};

Gained gainedBy(Bin left, Bin right, float presence, GainRange range) {
    Gained out = {{-9, -9}, {-9, -9}};
    sonivex::applyCentreGains(&left, &right, 1, presence, range, &out.left, &out.right);
    return out;
}

TEST(CentreGains, LiftTheCentreByFloorAndScale) {
    // D = 0: share 1, gain 0.5 * 1 + 1
    const Gained out = gainedBy({4, -8}, {4, -8}, 0.5F, {1, 1});
    EXPECT_NEAR(out.left.re, 6, 1e-6);
    EXPECT_NEAR(out.left.im, -12, 1e-6);
    EXPECT_EQ(out.right.re, out.left.re);
    EXPECT_EQ(out.right.im, out.left.im);
}

TEST(CentreGains, WeighEachChannelAgainstTheDifference) {
    // D = (2, 0): left 16 / (4 + 16), right 4 / (4 + 4)
    const Gained out = gainedBy({4, 0}, {2, 0}, 1, {1, 1});
    EXPECT_NEAR(out.left.re, 1.8 * 4, 1e-6);
    EXPECT_NEAR(out.right.re, 1.5 * 2, 1e-6);
    EXPECT_EQ(out.left.im, 0.0F);
}

TEST(CentreGains, WeighImaginaryPartsAsWell) {
    // D = (0, 3): left 25 / (9 + 25), right 16 / (9 + 16)
    const Gained out = gainedBy({4, 3}, {4, 0}, 1, {0, 1});
    EXPECT_NEAR(out.left.re, 4 * 25.0 / 34, 1e-6);
    EXPECT_NEAR(out.left.im, 3 * 25.0 / 34, 1e-6);
    EXPECT_NEAR(out.right.re, 4 * 16.0 / 25, 1e-6);
}

TEST(CentreGains, WithoutPresenceAreTheFloorExactly) {
    const Gained out = gainedBy({4, -8}, {1, 2}, 0, {1.5F, 700});
    EXPECT_EQ(out.left.re, 6.0F);
    EXPECT_EQ(out.left.im, -12.0F);
    EXPECT_EQ(out.right.re, 1.5F);
    EXPECT_EQ(out.right.im, 3.0F);
}

TEST(CentreGains, ScaleMultipliesThePresence) {
    EXPECT_NEAR(gainedBy({1, 0}, {1, 0}, 0.25F, {0.5F, 8}).left.re, 2.5, 1e-6);
    EXPECT_NEAR(gainedBy({1, 0}, {1, 0}, 0.25F, {0.5F, -8}).left.re, -1.5, 1e-6);
}

TEST(CentreGains, OfSilenceAreSilence) {
    const Gained out = gainedBy({0, 0}, {0, 0}, 1, {1, 1});
    EXPECT_EQ(out.left.re, 0.0F);
    EXPECT_EQ(out.right.im, 0.0F);
}

TEST(CentreGains, AreHalfWhereTheBinsPowerIsEps) {
    const float root_eps = std::sqrt(1.1920929e-07F);
    EXPECT_NEAR(gainedBy({root_eps, 0}, {root_eps, 0}, 1, {0, 1}).left.re / root_eps, 0.5, 1e-6);
}

TEST(CentreGains, TreatEveryBinAlike) {
    std::vector<Bin> left(37);
    std::vector<Bin> right(37);
    test::Random random(1);
    for (std::size_t k = 0; k < left.size(); ++k) {
        left[k] = {static_cast<float>(random.between(-999, 999)),
                   static_cast<float>(random.between(-99, 99))};
        right[k] = {static_cast<float>(random.between(-99, 99)),
                    static_cast<float>(random.between(-999, 999))};
    }
    std::vector<Bin> out_left(left.size());
    std::vector<Bin> out_right(left.size());
    sonivex::applyCentreGains(left.data(), right.data(), static_cast<int>(left.size()), 0.3F, {1, 2},
                              out_left.data(), out_right.data());
    for (std::size_t k = 0; k < left.size(); ++k) {
        const Gained alone = gainedBy(left[k], right[k], 0.3F, {1, 2});
        ASSERT_EQ(out_left[k].re, alone.left.re) << k;
        ASSERT_EQ(out_left[k].im, alone.left.im) << k;
        ASSERT_EQ(out_right[k].re, alone.right.re) << k;
        ASSERT_EQ(out_right[k].im, alone.right.im) << k;
    }
}

}  // namespace
