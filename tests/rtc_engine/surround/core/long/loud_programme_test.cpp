// Measures the share of a loud master that the limiter touches. The master is synthetic dance music with far
// more bass than average, at broadcast loudness (-14 LUFS) and at that of the loudest records (-9 LUFS).
#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "support/effects/surround_record.h"

namespace {

using sonivex::kSurroundBlockFrames;
using test::Pcm;

constexpr int kRate_hz = 48000;
constexpr int kMusic_frames = 10 * kRate_hz;
constexpr int kBeat_frames = kRate_hz / 2;  // 120 beats per minute

struct Stereo {
    std::vector<float> left = std::vector<float>(kMusic_frames);
    std::vector<float> right = std::vector<float>(kMusic_frames);
};

double sine(double cycles) {
    return std::sin(2.0 * std::numbers::pi * cycles);
}

// A 50 Hz drum on every beat, a bass line between 41 and 62 Hz with 8 partials, wide sustained chords, and a
// hiss between the beats.
Stereo danceMusic() {
    constexpr double kBassNotes_hz[] = {41.2, 41.2, 55.0, 61.7};
    constexpr double kChord_hz[] = {164.8, 246.9, 329.6, 415.3, 659.3};
    Stereo music;
    test::Random random(3);
    double bass_cycles = 0.0;
    for (int i = 0; i < kMusic_frames; ++i) {
        const double t_s = i / static_cast<double>(kRate_hz);
        const double beat_s = (i % kBeat_frames) / static_cast<double>(kRate_hz);
        const double half_beat_s = ((i + kBeat_frames / 2) % kBeat_frames) / static_cast<double>(kRate_hz);
        const double drum =
            sine(50.0 * beat_s + 2.0 * (1.0 - std::exp(-40.0 * beat_s))) * std::exp(-7.0 * beat_s);
        bass_cycles += kBassNotes_hz[(i / (4 * kBeat_frames)) % 4] / kRate_hz;
        double bass = 0.0;
        for (int partial = 1; partial <= 8; ++partial)
            bass += sine(partial * bass_cycles) / (partial * partial);
        const double middle = 0.9 * drum + 0.35 * bass;
        double left = middle;
        double right = middle;
        for (std::size_t note = 0; note < std::size(kChord_hz); ++note) {
            left += 0.05 * sine(kChord_hz[note] * t_s + 0.1 * static_cast<double>(note));
            right += 0.05 * sine(kChord_hz[note] * 1.003 * t_s + 0.37 * static_cast<double>(note));
        }
        const double hiss = 0.15 * std::exp(-25.0 * half_beat_s) / 32768.0;
        music.left[static_cast<std::size_t>(i)] =
            static_cast<float>(left + hiss * random.between(-32768, 32767));
        music.right[static_cast<std::size_t>(i)] =
            static_cast<float>(right + hiss * random.between(-32768, 32767));
    }
    return music;
}

double loudness_lufs(const Stereo& music) {
    struct Destroy {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    const std::unique_ptr<ebur128_state, Destroy> meter(ebur128_init(2, kRate_hz, EBUR128_MODE_I));
    for (std::size_t i = 0; i < music.left.size(); ++i) {
        const float frame[] = {music.left[i], music.right[i]};
        ebur128_add_frames_float(meter.get(), frame, 1);
    }
    double loudness = 0.0;
    ebur128_loudness_global(meter.get(), &loudness);
    return loudness;
}

// Imitates mastering: raises the music to the wanted loudness and rounds off its peaks below full scale.
Pcm master(double wanted_lufs) {
    const Stereo music = danceMusic();
    double gain_lin = 1.0;
    Stereo mastered = music;
    for (int round = 0; round < 8; ++round) {
        gain_lin *= std::pow(10.0, (wanted_lufs - loudness_lufs(mastered)) / 20.0);
        for (std::size_t i = 0; i < music.left.size(); ++i) {
            mastered.left[i] = static_cast<float>(std::tanh(gain_lin * static_cast<double>(music.left[i])));
            mastered.right[i] = static_cast<float>(std::tanh(gain_lin * static_cast<double>(music.right[i])));
        }
    }
    EXPECT_NEAR(loudness_lufs(mastered), wanted_lufs, 0.1);
    Pcm pcm;
    for (std::size_t i = 0; i < mastered.left.size(); ++i) {
        pcm.push_back(static_cast<std::int16_t>(mastered.left[i] * 32767.0F));
        pcm.push_back(static_cast<std::int16_t>(mastered.right[i] * 32767.0F));
    }
    return pcm;
}

// Share of blocks in which the limiter works, in percent.
double limitedBlocks_percent(const Pcm& in, int type, int mode) {
    test::SurroundEffect surround(2, type, mode);
    const SurroundHandle& inside = test::recordOf(surround);
    int limited = 0;
    const int blocks = kMusic_frames / kSurroundBlockFrames;
    for (int block = 0; block < blocks; ++block) {
        const auto first = in.begin() + std::ptrdiff_t{2} * kSurroundBlockFrames * block;
        surround.process(Pcm(first, first + std::ptrdiff_t{2} * kSurroundBlockFrames));
        if (inside.limiterState->limiting == 1) ++limited;
    }
    const double share_percent = 100.0 * limited / blocks;
    testing::Test::RecordProperty("type" + std::to_string(type) + "mode" + std::to_string(mode),
                                  std::to_string(share_percent));
    return share_percent;
}

TEST(LoudProgramme, TheLimiterIsIdleAtBroadcastLoudness) {
    const Pcm in = master(-14.0);
    EXPECT_EQ(limitedBlocks_percent(in, 1, 1), 0.0);
    for (const int mode : {1, 2, 3}) EXPECT_LE(limitedBlocks_percent(in, 13, mode), 3.0) << mode;
}

TEST(LoudProgramme, TheLimiterIsActiveInAtMost40PercentOfBlocksOfTheLoudestRecords) {
    const Pcm in = master(-9.0);
    EXPECT_LE(limitedBlocks_percent(in, 1, 1), 12.0);
    for (const int mode : {1, 2, 3}) EXPECT_LE(limitedBlocks_percent(in, 13, mode), 40.0) << mode;
}

}  // namespace
