#include "level_plan.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::levelNote;
using sonivex_tool::LevelPlan;
using sonivex_tool::LevelSettings;
using sonivex_tool::Loudness;
using sonivex_tool::lowerLimit;
using sonivex_tool::planLevel;

const LevelSettings kFilm = {.target_lufs = -23.0, .true_peak_dbtp = -1.0};

Loudness measured(double lufs, double true_peak_dbtp) {
    return {
        .integrated_lufs = lufs, .sample_peak_dbfs = true_peak_dbtp - 1.0, .true_peak_dbtp = true_peak_dbtp};
}

TEST(LevelPlan, LeadsToTheTargetInEitherDirection) {
    EXPECT_DOUBLE_EQ(planLevel(measured(-30.0, -20.0), kFilm).gain_db, 7.0);
    EXPECT_DOUBLE_EQ(planLevel(measured(-9.5, 0.3), kFilm).gain_db, -13.5);
}

TEST(LevelPlan, LimitsOnlyIfTheGainLiftsTheTruePeakAboveTheCeiling) {
    EXPECT_FALSE(planLevel(measured(-30.0, -8.0), kFilm).limits);
    EXPECT_TRUE(planLevel(measured(-30.0, -7.9), kFilm).limits);
    EXPECT_TRUE(planLevel({.integrated_lufs = -30.0}, kFilm).limits) << "the true peak is unknown";
    EXPECT_DOUBLE_EQ(
        planLevel(measured(-30.0, -1.0), {.target_lufs = -16.0, .true_peak_dbtp = -2.0}).ceiling_dbtp, -2.0);
}

TEST(LevelPlan, LeavesSoundAloneThatIsTooQuietToMeasure) {
    const LevelPlan plan = planLevel({}, kFilm);
    EXPECT_EQ(plan.gain_db, 0.0);
    EXPECT_FALSE(plan.limits);
    EXPECT_EQ(plan.note, "the output is too quiet for its loudness to be measured; its level stays");
    EXPECT_FALSE(planLevel(measured(-30.0, -8.0), kFilm).note);
}

TEST(LevelPlan, LowersTheLimitByWhatATrialExceeds) {
    LevelPlan plan = planLevel(measured(-30.0, -1.0), kFilm);
    const double first_dbtp = plan.limit_dbtp;
    EXPECT_LT(first_dbtp, -1.0);
    EXPECT_FALSE(lowerLimit(plan, measured(-23.0, -1.05)));
    EXPECT_EQ(plan.limit_dbtp, first_dbtp);
    EXPECT_TRUE(lowerLimit(plan, measured(-23.0, -0.5)));
    EXPECT_NEAR(plan.limit_dbtp, first_dbtp - 0.52, 1e-9);
    LevelPlan unlimited = planLevel(measured(-30.0, -9.0), kFilm);
    EXPECT_FALSE(lowerLimit(unlimited, measured(-23.0, 0.0)));
}

TEST(LevelPlan, SaysHowMuchTheLimiterTakes) {
    const LevelPlan plan = planLevel(measured(-30.0, -1.0), kFilm);
    EXPECT_FALSE(levelNote(plan, kFilm, measured(-23.4, -1.1)));
    EXPECT_EQ(levelNote(plan, kFilm, measured(-24.63, -1.1)),
              "the limiter holds the true peak at -1.0 dBTP; the output has -24.6 LUFS, not -23.0");
    EXPECT_FALSE(levelNote(planLevel({}, kFilm), kFilm, measured(-60.0, -40.0)));
}

}  // namespace
