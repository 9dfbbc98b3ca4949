// Level and latency of whole streams, at several sample rates with different hops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/effects/dialogue_effect.h"

namespace {

using test::DialogueEffect;
using test::Pcm;
using test::widened;

constexpr int kRates_hz[] = {16000, 44100, 48000, 50000, 50001, 96000, 100000, 100001, 192000};

// The squared windows sum to 2, the output is divided by 1.5, and the idle limiter's gain settles at
// 0.0999 / (1 - 0.8999).
constexpr double kNeutral = 4.0 / 3.0 * 0.0999 / 0.1001;

double decibels(double gain) {
    return 20 * std::log10(gain);
}

Pcm channelOf(const Pcm& stereo, std::size_t channel) {
    Pcm one;
    for (std::size_t i = channel; i < stereo.size(); i += 2) one.push_back(stereo[i]);
    return one;
}

// Correlation of the input with the output `delay` frames later, over the last quarter of the stream.
double product(const Pcm& in, const Pcm& out, std::size_t delay) {
    double sum = 0;
    for (std::size_t i = in.size() / 4 * 3; i < in.size(); ++i)
        sum += static_cast<double>(in[i - delay]) * out[i];
    return sum;
}

// The delay with the largest correlation.
std::size_t delayOf(const Pcm& in, const Pcm& out, std::size_t longest) {
    std::size_t best = 0;
    double greatest = 0;
    for (std::size_t delay = 0; delay <= longest; ++delay) {
        const double likeness = product(in, out, delay);
        if (likeness > greatest) {
            greatest = likeness;
            best = delay;
        }
    }
    return best;
}

// Least-squares gain from the input to the output `delay` frames later.
double gainOf(const Pcm& in, const Pcm& out, std::size_t delay) {
    double power = 0;
    for (std::size_t i = in.size() / 4 * 3; i < in.size(); ++i) {
        power += static_cast<double>(in[i - delay]) * in[i - delay];
    }
    return product(in, out, delay) / power;
}

std::size_t threeHops(int rate_hz) {
    return 3 * static_cast<std::size_t>(test::hopFrames(rate_hz));
}

TEST(DialogueLatency, IsThreeHopsForCallsOfWholeBlocks) {
    for (const int rate_hz : {16000, 48000, 96000, 192000}) {
        SCOPED_TRACE(rate_hz);
        const int hop = test::hopFrames(rate_hz);
        const Pcm in = test::noise(1, 2 * 16 * hop, 6000);
        for (const int call : {hop, 4 * hop}) {
            DialogueEffect dialogue({.rate_hz = rate_hz, .voice_level = 0});
            const Pcm out = dialogue.processInCallsOf(call, in);
            ASSERT_EQ(out.size(), in.size());
            for (const std::size_t channel : {0U, 1U}) {
                EXPECT_EQ(
                    delayOf(channelOf(in, channel), channelOf(out, channel), 4 * threeHops(rate_hz) / 3),
                    threeHops(rate_hz));
            }
        }
    }
}

// All windows that cover the first frames have been added when these frames leave.
TEST(DialogueLatency, IsSilentAndThenAtFullLevelFromTheFirstFrame) {
    for (const int rate_hz : {48000, 96000, 192000}) {
        SCOPED_TRACE(rate_hz);
        const int hop = test::hopFrames(rate_hz);
        const Pcm one = test::noise(7, 4 * hop, 6000);
        DialogueEffect dialogue({.rate_hz = rate_hz, .voice_level = 0});
        const Pcm out = channelOf(dialogue.processInCallsOf(hop, widened(one)), 0);
        const auto start = static_cast<std::ptrdiff_t>(threeHops(rate_hz));
        EXPECT_TRUE(
            std::all_of(out.begin(), out.begin() + start, [](std::int16_t sample) { return sample == 0; }));
        EXPECT_NEAR(decibels(gainOf(one, out, threeHops(rate_hz))), decibels(kNeutral), 0.01);
    }
}

// The call that completes the first block receives its output.
TEST(DialogueLatency, GrowsByTheStartUpForCallsShorterThanABlock) {
    for (const int rate_hz : {44100, 96000}) {
        const int hop = test::hopFrames(rate_hz);
        const Pcm in = test::noise(2, 2 * 16 * hop, 6000);
        for (const int call : {1, 64, hop / 2}) {
            SCOPED_TRACE(std::to_string(rate_hz) + " Hz, calls of " + std::to_string(call));
            DialogueEffect dialogue({.rate_hz = rate_hz, .voice_level = 0});
            const Pcm out = dialogue.processInCallsOf(call, in);
            const auto start_up = static_cast<std::size_t>(hop - call);
            EXPECT_EQ(delayOf(channelOf(in, 0), channelOf(out, 0), threeHops(rate_hz) + 2 * start_up),
                      threeHops(rate_hz) + start_up);
            EXPECT_TRUE(std::all_of(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(2 * start_up),
                                    [](std::int16_t sample) { return sample == 0; }));
        }
    }
}

void expectLevel(const test::DialogueSettings& settings, const Pcm& in, double expected) {
    const int hop = test::hopFrames(settings.rate_hz);
    const Pcm out = DialogueEffect(settings).processInCallsOf(hop, in);
    for (const std::size_t channel : {0U, 1U}) {
        const double gain =
            gainOf(channelOf(in, channel), channelOf(out, channel), threeHops(settings.rate_hz));
        EXPECT_NEAR(decibels(gain), decibels(expected), 0.01) << "channel " << channel;
    }
}

TEST(DialogueLevel, IsFourThirdsTimesTheIdleLimiterAtVoiceLevelZero) {
    EXPECT_NEAR(decibels(kNeutral), 2.48, 0.005);
    for (const int rate_hz : kRates_hz) {
        SCOPED_TRACE(rate_hz);
        const Pcm in = test::noise(3, 2 * 24 * test::hopFrames(rate_hz), 6000);
        expectLevel({.rate_hz = rate_hz, .voice_level = 0}, in, kNeutral);
    }
}

// With equal channels all change is in the centre, so the presence settles at half the voice level, up to 1.
TEST(DialogueLevel, OfEqualChannelsRisesWithTheVoiceLevelUpToTwice) {
    for (const int rate_hz : {48000, 96000, 192000}) {
        for (const double voice_level : {0.5, 1.0, 2.0, 10.0}) {
            SCOPED_TRACE(std::to_string(rate_hz) + " Hz, voice " + std::to_string(voice_level));
            const Pcm one = test::noise(4, 200 * test::hopFrames(rate_hz), 6000);
            const double presence = std::min(1.0, voice_level / 2);
            expectLevel({.rate_hz = rate_hz, .voice_level = voice_level}, widened(one),
                        kNeutral * (1 + presence));
        }
    }
}

// The signal is all side, so there is no presence.
TEST(DialogueLevel, OfAntiPhaseSignalsStaysNeutral) {
    const Pcm left = test::noise(5, 100 * 512, 6000);
    expectLevel({.voice_level = 10}, test::interleaved({left, test::scaled(left, -1, 1)}), kNeutral);
}

// With presence 1 the left gain is 1 + |L|^2 / (|L - R|^2 + |L|^2), and the right gain likewise. R = 3/4 L
// gives 1 + 1 / (1/16 + 1) on the left and 1 + (9/16) / (1/16 + 9/16) on the right.
TEST(DialogueLevel, OfAChannelFallsAsTheChannelsDiffer) {
    const Pcm left = test::noise(6, 200 * 512, 6000);
    const Pcm right = test::scaled(left, 3, 4);
    const Pcm in = test::interleaved({left, right});
    const Pcm out = DialogueEffect({.voice_level = 100}).processInCallsOf(512, in);
    const double gain_left = gainOf(left, channelOf(out, 0), threeHops(48000));
    const double gain_right = gainOf(right, channelOf(out, 1), threeHops(48000));
    EXPECT_NEAR(decibels(gain_left), decibels(kNeutral * (1 + 16.0 / 17)), 0.01);
    EXPECT_NEAR(decibels(gain_right), decibels(kNeutral * 1.9), 0.01);
}

// With R = L / 2 the centre changes as much as the side, which is the threshold of presence.
TEST(DialogueLevel, IsNeutralWhenOneChannelIsHalfAsLoud) {
    const Pcm left = test::noise(6, 100 * 512, 9000);
    expectLevel({.voice_level = 1}, test::interleaved({left, test::scaled(left, 1, 2)}), kNeutral);
}

// The limiter's ceiling is 0.99 of full scale.
TEST(DialogueLevel, NeverExceedsTheCeiling) {
    for (const int rate_hz : {44100, 96000, 192000}) {
        const Pcm one = test::square(60000, 100, 32767);
        DialogueEffect dialogue({.rate_hz = rate_hz, .voice_level = 10});
        const Pcm out = dialogue.processInCallsOf(512, widened(one));
        const auto [low, high] = std::minmax_element(out.begin(), out.end());
        EXPECT_GE(*low, -32441);
        EXPECT_LE(*high, 32441);
        EXPECT_GT(*high, 30000);
    }
}

}  // namespace
