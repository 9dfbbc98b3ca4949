#include "centre_presence.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include "support/signals.h"

namespace {

using sonivex::Bin;
using sonivex::Fluxes;

constexpr float kFloatEps = 1.1920929e-07F;

Bin centreOf(Bin left, Bin right) {
    Bin centre = {-9, -9};
    sonivex::estimateCentre(&left, &right, 1, &centre);
    return centre;
}

TEST(CentreEstimate, OfEqualChannelsIsEither) {
    const Bin centre = centreOf({3, -4}, {3, -4});
    EXPECT_EQ(centre.re, 3.0F);
    EXPECT_EQ(centre.im, -4.0F);
}

TEST(CentreEstimate, OfOneChannelAloneIsNothing) {
    // |D| = |S|, but for eps: a millionth of the sum's power at this level
    const Bin centre = centreOf({3, -4}, {0, 0});
    EXPECT_NEAR(centre.re, 0, 1e-6);
    EXPECT_NEAR(centre.im, 0, 1e-6);
}

TEST(CentreEstimate, LeavesWhatTheChannelsDoNotShare) {
    // S = (8, 0), D = (2, 0): (1 - 2 / 8) / 2 * 8
    const Bin centre = centreOf({5, 0}, {3, 0});
    EXPECT_FLOAT_EQ(centre.re, 3.0F);
    EXPECT_EQ(centre.im, 0.0F);
    // S = (4, 4), D = (4, -4), a quarter turn apart: |D| = |S|
    EXPECT_NEAR(centreOf({4, 0}, {0, 4}).re, 0, 1e-6);
}

TEST(CentreEstimate, IsNegativeWhereTheChannelsOpposeEachOther) {
    // S = (1, 0), D = (5, 0): (1 - 5) / 2 * 1
    EXPECT_FLOAT_EQ(centreOf({3, 0}, {-2, 0}).re, -2.0F);
}

TEST(CentreEstimate, OfOppositeChannelsAndOfSilenceIsZero) {
    const Bin opposite = centreOf({3, -4}, {-3, 4});
    EXPECT_EQ(opposite.re, 0.0F);
    EXPECT_EQ(opposite.im, 0.0F);
    const Bin silent = centreOf({0, 0}, {0, 0});
    EXPECT_EQ(silent.re, 0.0F);
    EXPECT_EQ(silent.im, 0.0F);
}

TEST(CentreEstimate, IsHeldAtTheLevelOfItsEps) {
    // |S|^2 = eps: the ratio is |D|^2 / (2 eps), here 1 / 8.
    const float root_eps = std::sqrt(kFloatEps);
    const Bin centre = centreOf({0.75F * root_eps, 0}, {0.25F * root_eps, 0});
    EXPECT_NEAR(centre.re / root_eps, 0.5 * (1 - std::sqrt(0.125)), 1e-6);
}

TEST(CentreEstimate, TreatsEveryBinAlike) {
    std::vector<Bin> left(37);
    std::vector<Bin> right(37);
    test::Random random(1);
    for (std::size_t k = 0; k < left.size(); ++k) {
        left[k] = {static_cast<float>(random.between(-999, 999)),
                   static_cast<float>(random.between(-99, 99))};
        right[k] = {static_cast<float>(random.between(-99, 99)),
                    static_cast<float>(random.between(-999, 999))};
    }
    std::vector<Bin> centre(left.size());
    sonivex::estimateCentre(left.data(), right.data(), static_cast<int>(left.size()), centre.data());
    for (std::size_t k = 0; k < left.size(); ++k) {
        const Bin alone = centreOf(left[k], right[k]);
        ASSERT_EQ(centre[k].re, alone.re) << k;
        ASSERT_EQ(centre[k].im, alone.im) << k;
    }
}

float magnitudeOf(float re, float im) {
    const Bin x = {re, im};
    float out = -1;
    sonivex::magnitudes(&x, 1, &out);
    return out;
}

void expectTheBitsOfHypot(const std::vector<Bin>& x) {
    std::vector<float> out(x.size());
    sonivex::magnitudes(x.data(), static_cast<int>(x.size()), out.data());
    for (std::size_t k = 0; k < x.size(); ++k) {
        const float expected = std::hypot(x[k].re, x[k].im);
        ASSERT_EQ(std::bit_cast<std::uint32_t>(out[k]), std::bit_cast<std::uint32_t>(expected))
            << std::hexfloat << x[k].re << ", " << x[k].im;
    }
}

TEST(Magnitude, HasTheValuesOfATable) {
    EXPECT_EQ(magnitudeOf(3, -4), 5.0F);
    EXPECT_EQ(magnitudeOf(-5, 12), 13.0F);
    EXPECT_EQ(magnitudeOf(0, -0.25F), 0.25F);
    EXPECT_EQ(magnitudeOf(0, 0), 0.0F);
    EXPECT_EQ(magnitudeOf(1, 1), 0x1.6a09e6p+0F);
    // Their squares are no floats any more.
    EXPECT_EQ(magnitudeOf(3e30F, 4e30F), 5e30F);
    EXPECT_EQ(magnitudeOf(FLT_TRUE_MIN, 0), FLT_TRUE_MIN);
    EXPECT_EQ(magnitudeOf(3 * FLT_TRUE_MIN, 4 * FLT_TRUE_MIN), 5 * FLT_TRUE_MIN);
}

TEST(Magnitude, HasTheBitsOfTheCLibrarysHypotForEveryFiniteNumber) {
    const std::vector<float> edges = {0.0F,        -0.0F,       FLT_TRUE_MIN, -FLT_TRUE_MIN, FLT_MIN / 2,
                                      FLT_MIN,     FLT_EPSILON, 1.0F,         -1.0F,         0.7071068F,
                                      FLT_MAX / 2, FLT_MAX,     -FLT_MAX};
    std::vector<Bin> pairs;
    for (const float re : edges) {
        for (const float im : edges) pairs.push_back({re, im});
    }
    expectTheBitsOfHypot(pairs);

    test::Random random(2);
    for (int round = 0; round < 200; ++round) {
        pairs.clear();
        while (pairs.size() < 5000) {
            const std::uint64_t bits = random.bits();
            const Bin pair = {std::bit_cast<float>(static_cast<std::uint32_t>(bits)),
                              std::bit_cast<float>(static_cast<std::uint32_t>(bits >> 32U))};
            if (!std::isfinite(pair.re) || !std::isfinite(pair.im)) continue;
            pairs.push_back(pair);
            // Numbers of any exponent seldom meet; here both count.
            pairs.push_back({pair.re, std::ldexp(pair.re, static_cast<int>(bits % 25U) - 12) * 0.7F});
        }
        expectTheBitsOfHypot(pairs);
    }
}

TEST(Magnitude, OfTheSideIsThatOfTheDifference) {
    const std::vector<Bin> left = {{4, 1}, {0, 0}, {1, 1}, {-2, 0}, {7, 7}};
    const std::vector<Bin> right = {{1, 5}, {0, 0}, {1, 1}, {3, 12}, {7, 8}};
    std::vector<float> side(left.size(), -1.0F);
    sonivex::sideMagnitudes(left.data(), right.data(), static_cast<int>(left.size()), side.data());
    EXPECT_EQ(side, (std::vector<float>{5, 0, 0, 13, 1}));
}

TEST(SpectralFlux, IsTheSquaredChangeOfMagnitude) {
    const std::vector<float> centre = {1, 5, 2};
    const std::vector<float> previous_centre = {3, 5, 0};
    const std::vector<float> side = {0, 0, 0.5F};
    const std::vector<float> previous_side = {1, 3, 0};
    const Fluxes fluxes =
        sonivex::spectralFluxes(centre.data(), previous_centre.data(), side.data(), previous_side.data(), 3);
    EXPECT_EQ(fluxes.centre, 8.0F);
    EXPECT_EQ(fluxes.side, 10.25F);
}

TEST(SpectralFlux, IsSummedFromTheFirstBinInFloat) {
    // 2^24 takes up no single 1; from the other end the ones would come to 15 first.
    std::vector<float> rising(16, 1.0F);
    rising[0] = 4096.0F;
    std::vector<float> falling(rising.rbegin(), rising.rend());
    const std::vector<float> zeros(16);
    const Fluxes fluxes =
        sonivex::spectralFluxes(rising.data(), zeros.data(), falling.data(), zeros.data(), 16);
    EXPECT_EQ(fluxes.centre, 16777216.0F);
    EXPECT_EQ(fluxes.side, 16777232.0F);  // 15 + 2^24 lies between two floats and goes to the even one
}

struct PresenceCase {
    float before;
    Fluxes fluxes;
    float voice_level;
    double after;
};

TEST(Presence, HasTheValuesOfATable) {
    const PresenceCase cases[] = {
        {0, {1, 0}, 1, 0.05},       // all centre: p = 0.5
        {0, {1, 0}, 2, 0.1},        // p = 1
        {0, {1, 0}, 50, 0.1},       // held to 1
        {0, {3, 1}, 1, 0.025},      // p = 0.25
        {0, {1, 1}, 1, 0},          // as much as the side
        {0.5F, {1, 3}, 1, 0.45},    // held to 0
        {0.5F, {0, 0}, 1, 0.45},    // silence
        {1, {4, 0}, 2, 1},          // stays full
        {0.5F, {1, 0}, 0, 0.45},    // not sensitive
        {0.5F, {1, 0}, -1, 0.45},   // a negative level turns centre into p < 0
        {0.5F, {0, 1}, -1, 0.5},    // and side into p = 0.5
        {0, {0, 0}, -4, 0.1},       // and silence into p = 2, held to 1
        {0, {kFloatEps, 0}, 1, 0},  // at eps the share is a half
        {0, {3 * kFloatEps, 0}, 1, 0.025},
        {0, {1, 0}, FLT_MAX, 0.1},
        {1, {1, 0}, -FLT_MAX, 0.9},
    };
    for (const PresenceCase& c : cases) {
        EXPECT_NEAR(sonivex::nextPresence(c.before, c.fluxes, c.voice_level), c.after, 1e-7)
            << c.before << ", " << c.fluxes.centre << " : " << c.fluxes.side << ", level " << c.voice_level;
    }
}

TEST(Presence, IsSmoothedInDouble) {
    /* In float 0.9 and 0.1 are other numbers: 0.1F * 0.9F + 0.5F * 0.1F differs. */
    int differs = 0;
    for (int i = 1; i < 1000; ++i) {
        const float before = static_cast<float>(i) / 1000.0F;
        const float after = sonivex::nextPresence(before, {1.0F, 0.0F}, 1.0F);
        const float share = 1.0F / (1.0F + kFloatEps);
        const float p = share - 0.5F;
        const auto exact = static_cast<float>(0.9L * before + 0.1L * p);
        ASSERT_FLOAT_EQ(after, exact);
        ASSERT_EQ(after, static_cast<float>(before * 0.9 + p * 0.1));
        differs += after != before * 0.9F + p * 0.1F ? 1 : 0;
    }
    EXPECT_GT(differs, 100);
}

TEST(Presence, StaysWithinItsRange) {
    test::Random random(3);
    float presence = 0;
    for (int i = 0; i < 10000; ++i) {
        const Fluxes fluxes = {static_cast<float>(random.between(0, 1000)),
                               static_cast<float>(random.between(0, 1000))};
        presence = sonivex::nextPresence(presence, fluxes, static_cast<float>(random.between(-5, 20)));
        ASSERT_GE(presence, 0.0F);
        ASSERT_LE(presence, 1.0F);
    }
}

}  // namespace
