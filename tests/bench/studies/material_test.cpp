#include "material.h"

#include <gtest/gtest.h>

#include <cmath>

#include "band_energies.h"
#include "effect_runs.h"

namespace {

using study::Sound;

constexpr std::size_t kFrames = std::size_t{8} * study::kRate_hz;

double octave_db(const Sound& sound, double centre_hz) {
    const auto spectrum = study::spectrumOf(sound, study::kRate_hz);
    return 10.0 *
           std::log10(study::bandEnergy(spectrum, centre_hz / std::sqrt(2.0), centre_hz * std::sqrt(2.0)));
}

TEST(StudyMaterial, PinkNoiseHasTheSameEnergyInEveryOctave) {
    const Sound pink = study::pinkNoise(1, kFrames);
    const double middle_db = octave_db(pink, 1000.0);
    for (const double centre_hz : {63.0, 125.0, 250.0, 500.0, 2000.0, 4000.0, 8000.0})
        EXPECT_NEAR(octave_db(pink, centre_hz) - middle_db, 0.0, 0.5) << centre_hz;
}

// White noise rises by 3 dB per octave of energy; the low-pass takes 6 dB and the high-pass gives 6 dB.
TEST(StudyMaterial, SpeechNoiseFallsOnEitherSideOfTheBandOfSpeech) {
    const Sound noise = study::speechNoise(1, kFrames);
    EXPECT_NEAR(octave_db(noise, 4000.0) - octave_db(noise, 2000.0), -3.0, 1.0);
    EXPECT_LT(octave_db(noise, 31.5), octave_db(noise, 250.0) - 12.0);
}

TEST(StudyMaterial, NoisesOfDifferentSeedsAreUnrelated) {
    const Sound one = study::pinkNoise(1, kFrames);
    const Sound other = study::pinkNoise(2, kFrames);
    double product = 0.0;
    double energy = 0.0;
    for (std::size_t n = 0; n < kFrames; ++n) {
        product += one[n] * other[n];
        energy += one[n] * one[n];
    }
    EXPECT_NEAR(product / energy, 0.0, 0.1);
    EXPECT_EQ(one, study::pinkNoise(1, kFrames));
}

// A plucked instrument is left of the middle and chords are right of it; the bass and most drums are common.
TEST(StudyMaterial, MusicIsWideAboveTheBassAndCommonInIt) {
    const study::Channels music = study::music(kFrames);
    Sound difference(kFrames);
    for (std::size_t n = 0; n < kFrames; ++n) difference[n] = music[0][n] - music[1][n];
    EXPECT_LT(octave_db(difference, 63.0), octave_db(music[0], 63.0) - 20.0);
    EXPECT_GT(octave_db(difference, 500.0), octave_db(music[0], 500.0) - 10.0);
}

TEST(StudyMaterial, IsAsLongAsAskedForAndNotSilent) {
    for (const study::Channels& sound :
         {study::music(kFrames), study::drums(kFrames), study::filmEffects(kFrames),
          study::Channels{study::speech(kFrames)}, study::Channels{study::babble(1, kFrames)}}) {
        for (const Sound& channel : sound) EXPECT_EQ(channel.size(), kFrames);
        EXPECT_GT(study::level_dbfs(sound), -60.0);
    }
}

}  // namespace
