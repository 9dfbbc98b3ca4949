#include "loudness_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::LoudnessCurve;
using sonivex_tool::LoudnessCurveMeter;

constexpr int kRate_hz = 48000;
constexpr int kBlock = 1000;  // no divisor of a step, so that steps and blocks cross

// A stereo sine of 997 Hz whose peak level is `level_db(second)`; nothing where it is below -200.
template <typename Level>
LoudnessCurve curveOf(double seconds, Level level_db) {
    LoudnessCurveMeter meter(test::floatSpec(2));
    const int frames = static_cast<int>(std::lround(seconds * kRate_hz));
    for (int first = 0; first < frames; first += kBlock) {
        meter.add(*test::floatFrame(2, std::min(kBlock, frames - first), [&](int i, int) {
            const double time_s = static_cast<double>(first + i) / kRate_hz;
            const double level = level_db(time_s);
            if (level < -200.0) return 0.0F;
            return static_cast<float>(std::pow(10.0, level / 20.0) *
                                      std::sin(2.0 * std::numbers::pi * 997.0 * time_s));
        }));
    }
    return meter.finish();
}

// EBU Tech 3341, cases 9 and 12: a steady sine of -23 dBFS is -23 LUFS short-term and momentary once the
// windows are full.
TEST(LoudnessCurves, ShowASteadySineAtItsLevel) {
    const LoudnessCurve curve = curveOf(5.0, [](double) { return -23.0; });
    ASSERT_EQ(curve.readings.size(), 50U);
    EXPECT_NEAR(curve.readings[0].time_s, 0.1, 1e-9);
    EXPECT_FALSE(curve.readings[2].momentary_lufs);
    ASSERT_TRUE(curve.readings[3].momentary_lufs);
    EXPECT_NEAR(*curve.readings[3].momentary_lufs, -23.0, 0.1);
    EXPECT_FALSE(curve.readings[28].short_term_lufs);
    ASSERT_TRUE(curve.readings[29].short_term_lufs);
    EXPECT_NEAR(*curve.readings[29].short_term_lufs, -23.0, 0.1);
    EXPECT_NEAR(*curve.integrated_lufs, -23.0, 0.1);
    EXPECT_NEAR(*curve.relative_gate_lufs, -33.0, 0.1);
    EXPECT_NEAR(*curve.true_peak_dbtp, -23.0, 0.1);
}

TEST(LoudnessCurves, FollowAStepOfLevel) {
    const LoudnessCurve curve = curveOf(8.0, [](double time_s) { return time_s < 4.0 ? -40.0 : -20.0; });
    EXPECT_NEAR(*curve.readings[39].momentary_lufs, -40.0, 0.1);
    EXPECT_NEAR(*curve.readings[44].momentary_lufs, -20.0, 0.1);
    EXPECT_NEAR(*curve.readings[39].true_peak_dbtp, -40.0, 0.1);
    EXPECT_NEAR(*curve.readings[41].true_peak_dbtp, -20.0, 0.1);
    ASSERT_TRUE(curve.range_lu);
    EXPECT_GT(*curve.range_lu, 10.0);
}

TEST(LoudnessCurves, OfSilenceHaveNoLevels) {
    const LoudnessCurve curve = curveOf(4.0, [](double) { return -300.0; });
    ASSERT_EQ(curve.readings.size(), 40U);
    for (const auto& reading : curve.readings) {
        EXPECT_FALSE(reading.momentary_lufs);
        EXPECT_FALSE(reading.true_peak_dbtp);
    }
    EXPECT_FALSE(curve.integrated_lufs);
    EXPECT_FALSE(curve.relative_gate_lufs);
    EXPECT_FALSE(curve.true_peak_dbtp);
}

TEST(LoudnessCurves, OfOneSampleHaveOneReadingWithItsPeakAlone) {
    LoudnessCurveMeter meter(test::floatSpec(1));
    meter.add(*test::floatFrame(1, 1, [](int, int) { return 0.5F; }));
    const LoudnessCurve curve = meter.finish();
    ASSERT_EQ(curve.readings.size(), 1U);
    EXPECT_FALSE(curve.readings[0].momentary_lufs);
    EXPECT_FALSE(curve.integrated_lufs);
    EXPECT_FALSE(curve.range_lu);
    ASSERT_TRUE(curve.true_peak_dbtp);
    EXPECT_NEAR(*curve.true_peak_dbtp, -6.0, 0.1);
}

TEST(LoudnessCurves, RefuseARateThatCannotBeMeasured) {
    EXPECT_THROW(LoudnessCurveMeter(test::floatSpec(2, 2000)), sonivex_tool::Failure);
}

}  // namespace
