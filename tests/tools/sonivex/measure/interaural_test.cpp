#include "interaural.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::compareEars;
using sonivex_tool::heardSide;
using sonivex_tool::InterauralDifference;

constexpr int kRate_hz = 48000;

// Returns eight tones below 4 kHz, delayed by exactly `delay_s`, which need not be whole samples.
std::vector<double> tones(double delay_s, double gain = 0.1) {
    std::vector<double> samples(kRate_hz / 2);
    for (size_t n = 0; n < samples.size(); ++n) {
        const double time_s = static_cast<double>(n) / kRate_hz - delay_s;
        for (int k = 1; k <= 8; ++k) {
            samples[n] += gain * std::sin(2.0 * std::numbers::pi * (97.0 * k * k - 40.0) * time_s + k);
        }
    }
    return samples;
}

TEST(EarComparison, FindsFractionalDelaysAndTheLevelDifference) {
    for (const double delay_us : {-730.0, -260.0, -31.0, 0.0, 7.0, 333.0, 950.0}) {
        SCOPED_TRACE(delay_us);
        const auto ears = compareEars(tones(0.0, 0.1), tones(delay_us * 1e-6, 0.05), kRate_hz);
        EXPECT_NEAR(ears.delay_us, delay_us, 1.0);
        EXPECT_NEAR(ears.level_db, 6.02, 0.05);
        EXPECT_GT(ears.likeness, 0.98);
        EXPECT_FALSE(ears.is_silent);
    }
}

TEST(EarComparison, SwappingTheEarsSwapsTheSigns) {
    const auto ears = compareEars(tones(0.0002, 0.03), tones(0.0, 0.1), kRate_hz);
    EXPECT_NEAR(ears.delay_us, -200.0, 1.0);
    EXPECT_NEAR(ears.level_db, -10.46, 0.05);
    EXPECT_EQ(heardSide(ears), "right");
}

TEST(EarComparison, ReportsALowLikenessForIndependentNoise) {
    const std::vector<float> noise = test::noiseFloats(7, 48000);
    const std::vector<double> left(noise.begin(), noise.begin() + 24000);
    const std::vector<double> right(noise.begin() + 24000, noise.end());
    EXPECT_LT(compareEars(left, right, kRate_hz).likeness, 0.1);
}

TEST(EarComparison, ReportsSilenceAsSilentWithoutASide) {
    const std::vector<double> none(4800, 0.0);
    const std::vector<double> rounding(4800, 1.0 / 32768.0);
    for (const auto& ears : {compareEars(none, none, kRate_hz), compareEars(rounding, none, kRate_hz),
                             compareEars({}, {}, kRate_hz)}) {
        EXPECT_TRUE(ears.is_silent);
        EXPECT_EQ(ears.delay_us, 0.0);
        EXPECT_EQ(ears.level_db, 0.0);
        EXPECT_EQ(heardSide(ears), "silent");
    }
}

TEST(EarComparison, ReportsOneHundredDecibelsAndNoDelayForOneSilentEar) {
    const auto ears = compareEars(tones(0.0), std::vector<double>(kRate_hz / 2, 0.0), kRate_hz);
    EXPECT_DOUBLE_EQ(ears.level_db, 100.0);
    EXPECT_EQ(ears.delay_us, 0.0);
    EXPECT_EQ(heardSide(ears), "left");
}

TEST(EarComparison, NamesASideOnlyForAudibleConsistentDifferences) {
    const auto side = [](double delay_us, double level_db) {
        return heardSide(InterauralDifference{false, delay_us, level_db, 1.0});
    };
    EXPECT_EQ(side(0.0, 0.0), "middle");
    EXPECT_EQ(side(19.0, -0.9), "middle");
    EXPECT_EQ(side(21.0, 0.0), "left");
    EXPECT_EQ(side(0.0, -1.1), "right");
    EXPECT_EQ(side(-300.0, -4.0), "right");
    EXPECT_EQ(side(300.0, -4.0), "unclear");
}

}  // namespace
