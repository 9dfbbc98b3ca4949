#include "responses_measures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "responses_tables.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::energyDecay_db;
using sonivex_tool::envelope;
using sonivex_tool::magnitude;
using sonivex_tool::measureResponse;

constexpr int kRate_hz = 48000;

// Returns an impulse at sample 40 followed by noise, which starts at an RMS of 0.03 and falls by 60 dB in
// `time_s`.
std::vector<double> room(double time_s, size_t size, std::uint64_t seed) {
    const std::vector<float> noise = test::noiseFloats(seed, size, 0.03F * std::sqrt(3.0F));
    std::vector<double> gains(noise.begin(), noise.end());
    for (size_t n = 0; n < size; ++n) {
        gains[n] *= std::pow(10.0, -3.0 * static_cast<double>(n) / (kRate_hz * time_s));
    }
    std::fill(gains.begin(), gains.begin() + 40, 0.0);
    gains[40] = 1.0;
    return gains;
}

TEST(ImpulseResponseMeasures, GiveTheGainAndPositionOfASingleSample) {
    std::vector<double> gains(4800, 0.0);
    gains[96] = -0.5;
    const auto measures = measureResponse(gains, kRate_hz, 0.0);
    EXPECT_EQ(measures.peak, 0.5);
    ASSERT_TRUE(measures.energy_db);
    EXPECT_NEAR(*measures.energy_db, -6.0206, 1e-4);
    EXPECT_EQ(measures.arrival_samples, 96U);
    EXPECT_DOUBLE_EQ(measures.arrival_ms, 2.0);
}

TEST(ImpulseResponseMeasures, PlaceTheArrivalAtTheFirstTenthOfThePeak) {
    const std::vector<double> gains = {0.0, 0.099, -0.1, 1.0, 0.0};
    EXPECT_EQ(measureResponse(gains, kRate_hz, 0.0).arrival_samples, 2U);
}

TEST(ImpulseResponseMeasures, GiveNoEnergyAndNoDecayForSilence) {
    const auto measures = measureResponse(std::vector<double>(9600, 0.0), kRate_hz, 0.25);
    EXPECT_EQ(measures.peak, 0.0);
    EXPECT_FALSE(measures.energy_db);
    EXPECT_FALSE(measures.reverberation_s);
    EXPECT_TRUE(energyDecay_db(std::vector<double>(10, 0.0), 1.0).empty());
}

TEST(ImpulseResponseMeasures, FindTheReverberationTimeOfDecayingNoise) {
    for (const double time_s : {0.15, 0.25, 0.4}) {
        for (const unsigned seed : {1U, 2U, 3U}) {
            SCOPED_TRACE(testing::Message() << time_s << " s, seed " << seed);
            std::vector<double> gains = room(time_s, 13000, seed);
            // The closing fade must not count.
            for (size_t n = 9750; n < gains.size(); ++n) gains[n] *= 1e-3;
            const auto measures = measureResponse(gains, kRate_hz, 0.25);
            ASSERT_TRUE(measures.reverberation_s);
            EXPECT_NEAR(*measures.reverberation_s / time_s, 1.0, 0.05);
        }
    }
}

// The tail of the Audio stage is designed with a reverberation time of 0.12 s.
TEST(ImpulseResponseMeasures, LeaveTheClosingFadeOfTheAudioStageOut) {
    const sonivex_tool::ResponseSet& audio = *sonivex_tool::findResponseSet("audio");
    const auto gains = sonivex_tool::gainsOf(audio.sources.front().left, audio);
    const auto measures = sonivex_tool::measureResponse(gains, audio.format.rate_hz, audio.format.faded_part);
    ASSERT_TRUE(measures.reverberation_s.has_value());
    EXPECT_NEAR(*measures.reverberation_s, 0.12, 0.015);
}

TEST(ImpulseResponseMeasures, GiveNoReverberationTimeForShortOrGrowingResponses) {
    EXPECT_FALSE(measureResponse(room(0.2, 2000, 5), kRate_hz, 0.0).reverberation_s);
    EXPECT_FALSE(measureResponse(room(-0.5, 13000, 5), kRate_hz, 0.0).reverberation_s);
}

TEST(ImpulseResponseMeasures, IntegrateTheEnergyDecayBackwards) {
    const std::vector<double> decay = energyDecay_db(std::vector<double>{3.0, 2.0, 1.0, 0.0}, 14.0);
    ASSERT_EQ(decay.size(), 3U);
    EXPECT_DOUBLE_EQ(decay[0], 0.0);
    EXPECT_DOUBLE_EQ(decay[1], 10.0 * std::log10(5.0 / 14.0));
    EXPECT_DOUBLE_EQ(decay[2], 10.0 * std::log10(1.0 / 14.0));
}

TEST(ImpulseResponseMeasures, IntegrateTheDecayOfBothEarsRelativeToOneEnergy) {
    const std::vector<double> louder = energyDecay_db(std::vector<double>{2.0, 0.0}, 4.0);
    const std::vector<double> softer = energyDecay_db(std::vector<double>{0.0, 0.2}, 4.0);
    EXPECT_NEAR(louder.at(0), 0.0, 1e-12);
    EXPECT_NEAR(softer.at(0), -20.0, 1e-9);
}

TEST(ImpulseResponseMeasures, GiveTheLargestMagnitudeOfEachHalfMillisecond) {
    std::vector<double> gains(60, 0.0);  // 24 + 24 + 12 samples
    gains[3] = 0.1;
    gains[20] = -1.0;
    gains[59] = 0.01;
    const auto points = envelope(gains, kRate_hz);
    ASSERT_EQ(points.size(), 3U);
    EXPECT_DOUBLE_EQ(points[0].time_ms, 0.25);
    EXPECT_NEAR(points[0].level_db, 0.0, 1e-9);
    EXPECT_DOUBLE_EQ(points[1].level_db, -200.0);
    EXPECT_DOUBLE_EQ(points[2].time_ms, 1.125);
    EXPECT_NEAR(points[2].level_db, -40.0, 1e-9);
}

TEST(ImpulseResponseMeasures, GiveAFlatMagnitudeForADelay) {
    std::vector<double> gains(7000, 0.0);
    gains[1234] = 2.0;
    const auto points = magnitude(gains, kRate_hz);
    ASSERT_GT(points.size(), 470U);
    EXPECT_EQ(points.front().frequency_hz, 20.0);
    EXPECT_LE(points.back().frequency_hz, 20000.0);
    EXPECT_GT(points.back().frequency_hz, 19700.0);
    for (const auto& point : points) EXPECT_NEAR(point.gain_db, 6.0206, 1e-4) << point.frequency_hz;
}

TEST(ImpulseResponseMeasures, GiveACosineMagnitudeForATwoTapAverage) {
    // (x[n] + x[n-1]) / 2 has the gain cos(pi f / rate).
    const std::vector<double> gains = {0.5, 0.5};
    for (const auto& point : magnitude(gains, kRate_hz)) {
        const double gain = std::cos(std::numbers::pi * point.frequency_hz / kRate_hz);
        EXPECT_NEAR(point.gain_db, 20.0 * std::log10(gain), 0.05) << point.frequency_hz;
    }
}

}  // namespace
