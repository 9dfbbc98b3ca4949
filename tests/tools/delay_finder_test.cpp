#include "delay_finder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "support/recorded_speech.h"

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

Samples noise(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> value(0.0F, 0.1F);
    Samples samples(60000);
    for (float& sample : samples) sample = value(random);
    return samples;
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

/** Through a one-pole low-pass, which takes the treble away by 20 dB and more. */
Samples muffled(Samples samples) {
    float level = 0.0F;
    for (float& sample : samples) sample = level += 0.1F * (sample - level);
    return samples;
}

TEST(DelayFinder, FindsDelaysOfSpeechInBothDirections) {
    const Samples before = speech("Front_Center");
    for (const int delay : {0, 1, 511, 1536, 4999, -1, -700}) {
        const Samples after = shifted(before, delay);
        EXPECT_EQ(findDelay({{before, after}}, kLongest), delay);
    }
}

TEST(DelayFinder, IsNotMisledByAFilterAGainOrAnInvertedSign) {
    const Samples before = speech("Front_Center");
    Samples after = muffled(shifted(before, 1000));
    for (float& sample : after) sample *= -3.0F;
    const auto delay = findDelay({{before, after}}, kLongest);
    ASSERT_TRUE(delay.has_value());
    EXPECT_NEAR(static_cast<double>(*delay), 1000.0, 2.0);
}

TEST(DelayFinder, FindsADelayUnderAsMuchNoise) {
    const Samples before = noise(1);
    Samples after = shifted(before, 300);
    const Samples other = noise(2);
    for (size_t n = 0; n < after.size(); ++n) after[n] += other[n];
    EXPECT_EQ(findDelay({{before, after}}, kLongest), 300);
}

TEST(DelayFinder, ChannelsThatAgreeFindWhatTheyShare) {
    const Samples left = noise(1);
    const Samples right = noise(2);
    const Samples silence(left.size(), 0.0F);
    const Samples lateLeft = shifted(left, 64);
    const Samples lateRight = shifted(right, 64);
    EXPECT_EQ(findDelay({{left, lateLeft}, {right, lateRight}}, kLongest), 64);
    EXPECT_EQ(findDelay({{silence, silence}, {right, lateRight}}, kLongest), 64);
}

TEST(DelayFinder, SeesNoDelayWhereNothingMatches) {
    const Samples silence(60000, 0.0F);
    const Samples voice = speech("Front_Center");
    const Samples otherVoice = speech("Rear_Right");
    EXPECT_EQ(findDelay({{noise(1), noise(2)}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{voice, otherVoice}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{voice, silence}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({{silence, silence}}, kLongest), std::nullopt);
    EXPECT_EQ(findDelay({}, kLongest), std::nullopt);
}

}  // namespace
