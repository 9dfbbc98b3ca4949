#include "delay_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/signals/recorded_speech.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::findDelay;
using Samples = std::vector<float>;

constexpr int kLongest = 5000;

Samples speech(const std::string& name) {
    Samples samples;
    for (const auto sample : test::recordedSpeech(name))
        samples.push_back(static_cast<float>(sample) / 32768.0F);
    samples.resize(60000, 0.0F);
    return samples;
}

// RMS 0.1.
Samples noise(std::uint64_t seed) {
    return test::noiseFloats(seed, 60000, 0.1732F);
}

Samples shifted(const Samples& samples, int delay) {
    Samples out(samples.size(), 0.0F);
    for (size_t n = 0; n < out.size(); ++n) {
        const auto from = static_cast<int64_t>(n) - delay;
        if (from >= 0 && from < static_cast<int64_t>(samples.size()))
            out[n] = samples[static_cast<size_t>(from)];
    }
    return out;
}

// Applies a one-pole low-pass. With a coefficient of 0.1 it attenuates the treble by 20 dB and more.
Samples muffled(Samples samples, float coefficient = 0.1F) {
    float level = 0.0F;
    for (float& sample : samples) sample = level += coefficient * (sample - level);
    return samples;
}

TEST(DelayFinder, FindsTheDelayOfSpeechInBothDirections) {
    const Samples before = speech("Front_Center");
    for (const int delay : {0, 1, 511, 1536, 4999, -1, -700}) {
        const Samples after = shifted(before, delay);
        EXPECT_EQ(findDelay({{before, after}}, kLongest), delay);
    }
}

TEST(DelayFinder, FindsTheDelayDespiteAFilterAGainAndAnInvertedSign) {
    const Samples before = speech("Front_Center");
    Samples after = muffled(shifted(before, 1000));
    for (float& sample : after) sample *= -3.0F;
    const auto delay = findDelay({{before, after}}, kLongest);
    ASSERT_TRUE(delay.has_value());
    EXPECT_NEAR(static_cast<double>(*delay), 1000.0, 2.0);
}

TEST(DelayFinder, FindsTheDelayUnderNoiseAsLoudAsTheSignal) {
    const Samples before = noise(1);
    Samples after = shifted(before, 300);
    const Samples other = noise(2);
    for (size_t n = 0; n < after.size(); ++n) after[n] += other[n];
    EXPECT_EQ(findDelay({{before, after}}, kLongest), 300);
}

TEST(DelayFinder, CombinesChannelsAndIgnoresSilentOnes) {
    const Samples left = noise(1);
    const Samples right = noise(2);
    const Samples silence(left.size(), 0.0F);
    const Samples late_left = shifted(left, 64);
    const Samples late_right = shifted(right, 64);
    EXPECT_EQ(findDelay({{left, late_left}, {right, late_right}}, kLongest), 64);
    EXPECT_EQ(findDelay({{silence, silence}, {right, late_right}}, kLongest), 64);
}

// Mixes `common`, attenuated by `below_db`, into `other`.
Samples buried(const Samples& common, double below_db, Samples other) {
    const auto gain = static_cast<float>(std::pow(10.0, -below_db / 20.0));
    for (size_t n = 0; n < other.size(); ++n) other[n] += gain * common[n];
    return other;
}

// Rounds the samples to 16 bits.
Samples rounded(Samples samples) {
    for (float& sample : samples) sample = std::nearbyint(sample * 32768.0F) / 32768.0F;
    return samples;
}

// Three low-passes at 76 Hz leave nothing above 1 kHz. Faint noise, which is the same in both recordings and
// not delayed, therefore dominates most of the spectrum.
TEST(DelayFinder, IgnoresFaintCommonNoiseUnderLowPassedSounds) {
    Samples dull = noise(3);
    for (int pass = 0; pass < 3; ++pass) dull = muffled(dull, 0.01F);
    const auto [lowest, highest] = std::minmax_element(dull.begin(), dull.end());
    const float loudness = 0.5F / std::max(*highest, -*lowest);
    for (float& sample : dull) sample *= loudness;
    Samples late = shifted(dull, 700);
    for (float& sample : late) sample *= 0.77F;
    const Samples other = noise(4);
    constexpr double kFaint_db = 60.0;
    EXPECT_EQ(findDelay({{buried(other, kFaint_db, dull), buried(other, kFaint_db, late)}}, kLongest), 700);
}

// Common white noise of N samples makes a peak of sqrt(N) times its share of the amplitude, relative to the
// RMS of the correlation. If that share is small, another factor of pi / 4 applies: 14 times at -23 dB, 8
// times at -28 dB.
TEST(DelayFinder, RejectsAPeakBelowTenTimesTheRmsOfTheCorrelation) {
    const Samples before = noise(1);
    EXPECT_EQ(findDelay({{before, buried(shifted(before, 300), 23.0, noise(2))}}, kLongest), 300);
    EXPECT_EQ(findDelay({{before, buried(shifted(before, 300), 28.0, noise(2))}}, kLongest), std::nullopt);
}

// A tone matches at every half period, and the instants at which both recordings are cut must not count.
TEST(DelayFinder, FindsNoDelayInSteadyTones) {
    for (const double frequency_hz : {50.0, 100.0, 440.0, 997.3, 3000.0}) {
        Samples before(60000);
        Samples after(before.size());
        for (size_t n = 0; n < before.size(); ++n) {
            const double step = 2.0 * std::numbers::pi * frequency_hz / 48000.0;
            before[n] = static_cast<float>(0.25 * std::sin(step * static_cast<double>(n)));
            after[n] = static_cast<float>(0.4 * std::sin(step * (static_cast<double>(n) - 1536.0)));
        }
        EXPECT_EQ(findDelay({{rounded(before), rounded(after)}}, kLongest), std::nullopt) << frequency_hz;
    }
}

TEST(DelayFinder, FindsNoDelayBetweenUnrelatedSoundsOrInSilence) {
    const Samples silence(60000, 0.0F);
    const Samples voice = speech("Front_Center");
    const Samples other_voice = speech("Rear_Right");
    EXPECT_EQ(findDelay({{noise(1), noise(2)}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{voice, other_voice}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{voice, silence}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{silence, silence}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({}, kLongest), std::nullopt);
}

}  // namespace
