#include "sound_plan.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::kSoundBudget_bytes;
using sonivex_tool::planSound;
using sonivex_tool::SoundPlan;

double bytesOf(const SoundPlan& plan, int versions) {
    return plan.length_s * plan.rate_bps / 8.0 * versions;
}

TEST(SoundPlans, KeepAShortSoundWholeAndAtTheHighestRate) {
    const SoundPlan plan = planSound(20.0, 4, {});
    EXPECT_EQ(plan.start_s, 0.0);
    EXPECT_EQ(plan.length_s, 20.0);
    EXPECT_EQ(plan.rate_bps, 128000);
    EXPECT_FALSE(plan.is_excerpt);
}

TEST(SoundPlans, KeepThreeMinutesOfFourVersionsWholeAtALowerRate) {
    const SoundPlan plan = planSound(180.0, 4, {});
    EXPECT_EQ(plan.length_s, 180.0);
    EXPECT_FALSE(plan.is_excerpt);
    EXPECT_GE(plan.rate_bps, 30000);
    EXPECT_LE(bytesOf(plan, 4), static_cast<double>(kSoundBudget_bytes));
    EXPECT_GE(bytesOf(plan, 4), 0.99 * static_cast<double>(kSoundBudget_bytes));
}

TEST(SoundPlans, TakeAnExcerptFromTheMiddleOfAnHour) {
    const SoundPlan plan = planSound(3600.0, 4, {});
    EXPECT_TRUE(plan.is_excerpt);
    EXPECT_EQ(plan.rate_bps, 64000);
    EXPECT_NEAR(plan.start_s + plan.length_s / 2.0, 1800.0, 1e-6);
    EXPECT_NEAR(bytesOf(plan, 4), static_cast<double>(kSoundBudget_bytes), 1.0);
}

TEST(SoundPlans, FollowTheUsersStretch) {
    const SoundPlan plan = planSound(3600.0, 2, {.start_s = 100.0, .length_s = 30.0});
    EXPECT_EQ(plan.start_s, 100.0);
    EXPECT_EQ(plan.length_s, 30.0);
    EXPECT_EQ(plan.rate_bps, 128000);
    EXPECT_TRUE(plan.is_excerpt);
    const SoundPlan from = planSound(3600.0, 2, {.start_s = 100.0});
    EXPECT_EQ(from.start_s, 100.0);
    EXPECT_NEAR(bytesOf(from, 2), static_cast<double>(kSoundBudget_bytes), 1.0);
}

TEST(SoundPlans, EndWithTheSound) {
    EXPECT_EQ(planSound(10.0, 2, {.start_s = 8.0, .length_s = 5.0}).length_s, 2.0);
    EXPECT_EQ(planSound(10.0, 2, {.start_s = 12.0}).length_s, 0.0);
    EXPECT_EQ(planSound(0.0, 2, {}).length_s, 0.0);
}

}  // namespace
