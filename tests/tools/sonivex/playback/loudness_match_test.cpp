#include "loudness_match.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::LoudnessMatch;

constexpr int kRate_hz = 48000;

// Adds noise, and the same noise `ratio_db` louder.
void add(LoudnessMatch& match, double seconds, double ratio_db, float amplitude = 0.1F) {
    const auto frames = static_cast<size_t>(seconds * kRate_hz);
    const std::vector<float> original = test::noiseFloats(5, 2 * frames, amplitude);
    std::vector<float> processed = original;
    for (float& sample : processed) sample *= static_cast<float>(std::pow(10.0, ratio_db / 20.0));
    match.add(original.data(), processed.data(), static_cast<int>(frames));
}

TEST(LoudnessMatch, LowersTheLouderOne) {
    LoudnessMatch louder(kRate_hz);
    add(louder, 1.0, 6.0);
    EXPECT_NEAR(louder.reading().processed_gain_db, -6.0, 0.01);
    EXPECT_EQ(louder.reading().original_gain_db, 0.0);
    LoudnessMatch quieter(kRate_hz);
    add(quieter, 1.0, -4.0);
    EXPECT_EQ(quieter.reading().processed_gain_db, 0.0);
    EXPECT_NEAR(quieter.reading().original_gain_db, -4.0, 0.01);
}

TEST(LoudnessMatch, KnowsNothingBeforeTheFirstGatingBlock) {
    LoudnessMatch match(kRate_hz);
    add(match, 0.39, 6.0);
    EXPECT_FALSE(match.reading().original_lufs.has_value());
    EXPECT_EQ(match.reading().processed_gain_db, 0.0);
    add(match, 0.02, 6.0);
    EXPECT_NEAR(match.reading().processed_gain_db, -6.0, 0.01);
}

TEST(LoudnessMatch, FollowsAChangeSmoothly) {
    LoudnessMatch match(kRate_hz);
    add(match, 3.0, 0.0);
    double last = match.reading().processed_gain_db;
    for (int i = 0; i < 60; ++i) {
        add(match, 0.1, 6.0);
        EXPECT_LE(std::abs(match.reading().processed_gain_db - last), 1.2);
        last = match.reading().processed_gain_db;
    }
    EXPECT_NEAR(last, -6.0, 0.1);
}

TEST(LoudnessMatch, KeepsTheGainInSilence) {
    LoudnessMatch match(kRate_hz);
    add(match, 2.0, 6.0);
    add(match, 10.0, 0.0, 0.0F);
    EXPECT_NEAR(match.reading().processed_gain_db, -6.0, 0.01);
    EXPECT_FALSE(match.reading().original_lufs.has_value());
    EXPECT_FALSE(match.reading().original_peak_dbfs.has_value());
}

TEST(LoudnessMatch, MeasuresTheShortTermLoudnessAndThePeak) {
    LoudnessMatch match(kRate_hz);
    // A full-scale sine of 997 Hz in one channel has -3.01 LUFS by the definition of the scale.
    std::vector<float> sine(2 * 5 * kRate_hz);
    for (size_t i = 0; i < sine.size(); i += 2)
        sine[i] = static_cast<float>(
            std::sin(2.0 * 3.14159265358979 * 997.0 * static_cast<double>(i / 2) / kRate_hz));
    match.add(sine.data(), sine.data(), 5 * kRate_hz);
    EXPECT_NEAR(match.reading().original_lufs.value(), -3.01, 0.05);
    EXPECT_NEAR(match.reading().original_peak_dbfs.value(), 0.0, 0.01);
    EXPECT_EQ(match.reading().processed_gain_db, 0.0);
}

}  // namespace
