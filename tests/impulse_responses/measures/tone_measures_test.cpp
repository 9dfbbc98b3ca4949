// Tests of the measures of tone and loudness, on signals whose figures are known.
#include <gtest/gtest.h>

#include <cmath>

#include "test_signals.h"
#include "tone.h"

namespace response_quality {
namespace {

TEST(ToneMeasures, FlatResponseHasNoColourBassLiftOrLoudnessChange) {
    const Signal power = responsePower(impulse(4096, 40));
    EXPECT_NEAR(worst(colour_db(power, 80.0, 12500.0)), 0.0, 1e-9);
    EXPECT_EQ(colour_db(power, 80.0, 12500.0).size(), 23u);
    EXPECT_EQ(colour_db(power, 250.0, 12500.0).size(), 18u);
    EXPECT_NEAR(bassLift_db(power, kRate_hz), 0.0, 1e-9);
    EXPECT_NEAR(loudnessChange_lu(power, Programme::kPink), 0.0, 1e-9);
    EXPECT_NEAR(loudnessChange_lu(power, Programme::kMusic), 0.0, 1e-9);
}

TEST(ToneMeasures, TiltedResponseShowsItsTiltAsColour) {
    // The power rises by 3 dB per octave, so each third octave is 1 dB above the one below.
    Signal power(16385);
    for (std::size_t k = 0; k < power.size(); ++k) power[k] = static_cast<double>(k);
    const Signal colour = colour_db(power, 400.0, 2500.0);
    ASSERT_EQ(colour.size(), 9u);
    for (std::size_t i = 0; i < colour.size(); ++i) EXPECT_NEAR(colour[i], static_cast<double>(i) - 4.0, 0.1);
    EXPECT_NEAR(rms(colour), std::sqrt(60.0 / 9.0), 0.1);
    EXPECT_NEAR(worst(colour), 4.0, 0.1);
}

TEST(ToneMeasures, ColourIsRelativeToTheMeanOfItsBands) {
    // The treble above 1122 Hz, the edge of a third octave, is 6 dB softer and fills 11 of 23 bands.
    Signal power(16385, 1.0);
    for (std::size_t k = 0; k < power.size(); ++k) {
        if (static_cast<double>(k) * kRate_hz / 32768.0 > 1122.0) power[k] = 0.25;
    }
    const Signal colour = colour_db(power, 80.0, 12500.0);
    ASSERT_EQ(colour.size(), 23u);
    EXPECT_NEAR(colour.front(), 6.0206 * 11.0 / 23.0, 0.01);
    EXPECT_NEAR(colour.back(), -6.0206 * 12.0 / 23.0, 0.01);
}

TEST(ToneMeasures, MusicWeightsTrebleLessThanPinkNoiseDoes) {
    Signal power(16385, 1.0);
    for (std::size_t k = 0; k < power.size(); ++k) {
        if (static_cast<double>(k) * kRate_hz / 32768.0 > 4000.0) power[k] = 4.0;
    }
    EXPECT_LT(loudnessChange_lu(power, Programme::kMusic), loudnessChange_lu(power, Programme::kPink) - 1.0);
}

}  // namespace
}  // namespace response_quality
