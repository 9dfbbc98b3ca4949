// Levels, mixing and transfer on signals whose figures are known.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "levels.h"
#include "sound.h"
#include "transfer.h"

namespace {

using study::Channels;
using study::Sound;

constexpr int kRate_hz = 48000;

Sound tone(double frequency_hz, double amplitude, std::size_t frames = kRate_hz) {
    Sound sound;
    for (std::size_t n = 0; n < frames; ++n)
        sound.push_back(amplitude *
                        std::sin(2.0 * std::numbers::pi * frequency_hz * static_cast<double>(n) / kRate_hz));
    return sound;
}

TEST(StudySound, LevelsCoverAllChannels) {
    EXPECT_NEAR(study::level_dbfs({Sound(100, 0.5), Sound(100, -0.5)}), -6.02, 0.01);
    EXPECT_NEAR(study::level_dbfs({Sound(100, 0.5), Sound(100)}), -9.03, 0.01);
    EXPECT_NEAR(study::peak_dbfs({{0.1, -0.5}, {0.25, 0.0}}), -6.02, 0.01);
    EXPECT_NEAR(study::level_dbfs(study::atLevel({tone(1000.0, 0.7)}, -20.0)), -20.0, 1e-9);
    EXPECT_NEAR(study::scaled({{0.5}}, -6.0206)[0][0], 0.25, 1e-5);
    EXPECT_THROW(study::atLevel({Sound(100)}, -20.0), std::invalid_argument);
}

TEST(StudySound, WindowsHaveLevelsOfTheirOwn) {
    Sound sound(200, 1.0);
    std::fill(sound.begin() + 100, sound.end(), 0.1);
    sound.resize(250);  // the rest of 50 is no whole window
    const std::vector<double> levels = study::windowLevels_dbfs(sound, 100);
    ASSERT_EQ(levels.size(), 2U);
    EXPECT_NEAR(levels[0], 0.0, 1e-9);
    EXPECT_NEAR(levels[1], -20.0, 1e-9);
}

TEST(StudySound, AddsPansAndMixesDown) {
    EXPECT_EQ(study::sum({{{1.0, 2.0}}, {{0.5}}}), (Channels{{1.5, 2.0}}));
    EXPECT_EQ(study::inMono({{1.0}, {0.0}}), (Channels{{0.5}, {0.5}}));
    const Channels left = study::panned({1.0}, 0.0);
    EXPECT_NEAR(left[0][0], 1.0, 1e-12);
    EXPECT_NEAR(left[1][0], 0.0, 1e-12);
    const Channels middle = study::panned({1.0}, 0.5);
    EXPECT_NEAR(middle[0][0], std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(middle[1][0], std::sqrt(0.5), 1e-12);
}

TEST(StudySound, FiltersLoseThreeDecibelsAtTheirCorner) {
    const auto middle_dbfs = [](const Sound& sound) {
        return study::level_dbfs({Sound(sound.begin() + kRate_hz / 2, sound.end())});
    };
    const double before_db = middle_dbfs(tone(500.0, 1.0));
    EXPECT_NEAR(middle_dbfs(study::lowPassed(tone(500.0, 1.0), 500.0)) - before_db, -3.0, 0.3);
    EXPECT_NEAR(middle_dbfs(study::highPassed(tone(500.0, 1.0), 500.0)) - before_db, -3.0, 0.3);
    EXPECT_NEAR(middle_dbfs(study::lowPassed(tone(500.0, 1.0), 50.0)) - before_db, -20.0, 0.5);
}

TEST(StudySound, BecomesSixteenBitsAndBack) {
    const test::Pcm pcm = study::toPcm({{0.5, 2.0}, {-0.25, -2.0}});
    EXPECT_EQ(pcm, (test::Pcm{16384, -8192, 32767, -32768}));
    EXPECT_EQ(study::channelOf(pcm, 2, 1), (Sound{-0.25, -1.0}));
}

// EBU Tech 3341, case 1: a stereo sine of 1 kHz that peaks at -23 dBFS is -23 LUFS, within 0.1 LU.
TEST(StudyLevels, AreThoseOfTheLoudnessStandards) {
    const Sound sine = tone(1000.0, std::pow(10.0, -23.0 / 20.0), 10 * kRate_hz);
    EXPECT_NEAR(study::loudness_lufs(study::toPcm({sine, sine}), 2), -23.0, 0.1);
    EXPECT_THROW(study::loudness_lufs(test::Pcm(96000), 2), std::runtime_error);
}

// A quarter of the rate at 45 degrees: every sample is 3.01 dB below the peak between the samples.
TEST(StudyLevels, FindTruePeaksBetweenTheSamples) {
    Sound sound;
    for (int n = 0; n < kRate_hz; ++n) sound.push_back((n / 2) % 2 == 0 ? 0.5 : -0.5);
    const auto levels = study::levelsOf(study::toPcm({sound}), 1).all;
    EXPECT_NEAR(levels.sample_peak_dbfs.value(), -6.02, 0.01);
    EXPECT_NEAR(levels.true_peak_dbtp.value(), -3.01, 0.3);
}

// One channel has tones of 300 Hz and 3 kHz. At half its amplitude at both ears, 300 Hz has half its energy.
// At half its amplitude at one ear, 3 kHz has a quarter.
TEST(StudyTransfer, IsTheEnergyAtBothEarsOverTheEnergyPlayed) {
    const Sound low = tone(300.0, 0.2);
    const Channels in = study::sum({{low, Sound(kRate_hz)}, {tone(3000.0, 0.2), Sound(kRate_hz)}});
    const Channels out = study::scaled({in[0], low}, -6.0206);
    const study::Transfer transfer(in, study::toPcm(out));
    EXPECT_NEAR(transfer.gain_db(200.0, 400.0), -3.01, 0.02);
    EXPECT_NEAR(transfer.gain_db(2500.0, 3500.0), -6.02, 0.02);
}

}  // namespace
