#include "bench_signal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "bench_effects.h"

namespace {

using sonivex_tool::makeBabble;

constexpr int kRate_hz = 48000;

std::vector<double> channelOf(const std::vector<int16_t>& babble, int channels, int channel) {
    std::vector<double> samples;
    for (size_t i = static_cast<size_t>(channel); i < babble.size(); i += static_cast<size_t>(channels))
        samples.push_back(babble[i]);
    return samples;
}

double product(const std::vector<double>& a, const std::vector<double>& b, size_t lag = 0) {
    double sum = 0.0;
    for (size_t i = 0; i + lag < a.size(); ++i) sum += a[i] * b[i + lag];
    return sum;
}

double likeness(const std::vector<double>& a, const std::vector<double>& b) {
    return product(a, b) / std::sqrt(product(a, a) * product(b, b));
}

TEST(BenchSignal, HasTheStatedLevelInEveryChannel) {
    const auto babble = makeBabble(8, kRate_hz, kRate_hz);
    ASSERT_EQ(babble.size(), 8U * kRate_hz);
    for (int channel = 0; channel < 8; ++channel) {
        const auto samples = channelOf(babble, 8, channel);
        const double rms = std::sqrt(product(samples, samples) / kRate_hz) / 32768.0;
        EXPECT_NEAR(20.0 * std::log10(rms), -30.0, 0.1) << channel;
    }
}

TEST(BenchSignal, DiffersBetweenChannels) {
    const auto babble = makeBabble(2, kRate_hz, kRate_hz);
    EXPECT_LT(std::abs(likeness(channelOf(babble, 2, 0), channelOf(babble, 2, 1))), 0.1);
}

TEST(BenchSignal, HasTheDarkSpectrumAndThePausesOfSpeech) {
    const auto samples = channelOf(makeBabble(1, kRate_hz, kRate_hz), 1, 0);
    EXPECT_GT(product(samples, samples, 1) / product(samples, samples), 0.9);  // 0 for white noise
    double loudest = 0.0;
    double quietest = std::numeric_limits<double>::infinity();
    constexpr size_t kPart = kRate_hz / 40;
    for (size_t first = 0; first + kPart <= samples.size(); first += kPart) {
        double energy = 0.0;
        for (size_t i = first; i < first + kPart; ++i) energy += samples[i] * samples[i];
        loudest = std::max(loudest, energy);
        quietest = std::min(quietest, energy);
    }
    EXPECT_GT(10.0 * std::log10(loudest / quietest), 15.0);
}

TEST(BenchSignal, IsIdenticalInEveryRun) {
    EXPECT_EQ(makeBabble(2, 1000, kRate_hz), makeBabble(2, 1000, kRate_hz));
}

TEST(BenchCases, CoverEveryEffectOrOnlyTheNamedOne) {
    EXPECT_EQ(sonivex_tool::benchCases("").size(), 11U);
    EXPECT_EQ(sonivex_tool::benchCases("surround").size(), 6U);
    EXPECT_EQ(sonivex_tool::benchCases("normalizer").size(), 4U);
    const auto dialogue = sonivex_tool::benchCases("dialogue");
    ASSERT_EQ(dialogue.size(), 1U);
    EXPECT_EQ(dialogue[0].channels, 2);
}

}  // namespace
