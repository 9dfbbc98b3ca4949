#include "centre_presence.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "support/signals/signals.h"

namespace {

using sonivex::Bin;
using sonivex::centreOf;
using sonivex::Fluxes;

constexpr float kFloatEps = 1.1920929e-07F;

TEST(DialogueCentreEstimate, EqualsTheChannelsWhenTheyAreEqual) {
    const Bin centre = centreOf({3, -4}, {3, -4});
    EXPECT_EQ(centre.re, 3.0F);
    EXPECT_EQ(centre.im, -4.0F);
}

TEST(DialogueCentreEstimate, IsZeroWhenOneChannelIsSilent) {
    // |D| = |S| except for eps, which is negligible at this level
    const Bin centre = centreOf({3, -4}, {0, 0});
    EXPECT_NEAR(centre.re, 0, 1e-6);
    EXPECT_NEAR(centre.im, 0, 1e-6);
}

TEST(DialogueCentreEstimate, ExcludesWhatTheChannelsDoNotShare) {
    // S = (8, 0), D = (2, 0): (1 - 2 / 8) / 2 * 8
    const Bin centre = centreOf({5, 0}, {3, 0});
    EXPECT_FLOAT_EQ(centre.re, 3.0F);
    EXPECT_EQ(centre.im, 0.0F);
    // S = (4, 4), D = (4, -4), channels a quarter turn apart: |D| = |S|
    EXPECT_NEAR(centreOf({4, 0}, {0, 4}).re, 0, 1e-6);
}

TEST(DialogueCentreEstimate, IsNegativeWhenTheChannelsOpposeEachOther) {
    // S = (1, 0), D = (5, 0): (1 - 5) / 2 * 1
    EXPECT_FLOAT_EQ(centreOf({3, 0}, {-2, 0}).re, -2.0F);
}

TEST(DialogueCentreEstimate, IsZeroForOppositeChannelsAndForSilence) {
    const Bin opposite = centreOf({3, -4}, {-3, 4});
    EXPECT_EQ(opposite.re, 0.0F);
    EXPECT_EQ(opposite.im, 0.0F);
    const Bin silent = centreOf({0, 0}, {0, 0});
    EXPECT_EQ(silent.re, 0.0F);
    EXPECT_EQ(silent.im, 0.0F);
}

TEST(DialogueCentreEstimate, IsRegularizedAtTheLevelOfEpsilon) {
    // |S|^2 = eps: the ratio is |D|^2 / (2 eps), here 1 / 8.
    const float root_eps = std::sqrt(kFloatEps);
    const Bin centre = centreOf({0.75F * root_eps, 0}, {0.25F * root_eps, 0});
    EXPECT_NEAR(centre.re / root_eps, 0.5 * (1 - std::sqrt(0.125)), 1e-6);
}

struct PresenceCase {
    float before;
    Fluxes fluxes;
    float voice_level;
    double after;
};

TEST(DialoguePresence, MatchesATableOfValues) {
    const PresenceCase cases[] = {
        {0, {1, 0}, 1, 0.05},       // all centre: p = 0.5
        {0, {1, 0}, 2, 0.1},        // p = 1
        {0, {1, 0}, 50, 0.1},       // p clamped to 1
        {0, {3, 1}, 1, 0.025},      // p = 0.25
        {0, {1, 1}, 1, 0},          // equal fluxes: p = 0
        {0.5F, {1, 3}, 1, 0.45},    // p clamped to 0
        {0.5F, {0, 0}, 1, 0.45},    // silence
        {1, {4, 0}, 2, 1},          // stays at 1
        {0.5F, {1, 0}, 0, 0.45},    // level 0: p = 0
        {0.5F, {1, 0}, -1, 0.45},   // negative level: all centre gives p < 0,
        {0.5F, {0, 1}, -1, 0.5},    // all side gives p = 0.5,
        {0, {0, 0}, -4, 0.1},       // silence gives p = 2, clamped to 1
        {0, {kFloatEps, 0}, 1, 0},  // the share is 1 / 2 if the flux equals eps
        {0, {3 * kFloatEps, 0}, 1, 0.025},
        {0, {1, 0}, FLT_MAX, 0.1},
        {1, {1, 0}, -FLT_MAX, 0.9},
    };
    for (const PresenceCase& c : cases) {
        EXPECT_NEAR(sonivex::nextPresence(c.before, c.fluxes, c.voice_level), c.after, 1e-7)
            << c.before << ", " << c.fluxes.centre << " : " << c.fluxes.side << ", level " << c.voice_level;
    }
}

TEST(DialoguePresence, IsSmoothedInDouble) {
    // 0.9F and 0.1F are not 0.9 and 0.1, so that before * 0.9F + p * 0.1F gives other results.
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

TEST(DialoguePresence, StaysBetweenZeroAndOne) {
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
