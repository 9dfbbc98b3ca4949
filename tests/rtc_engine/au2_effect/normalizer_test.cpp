#include "sonivex/normalizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/effects/normalizer_effect.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::NormalizerEffect;
using test::Pcm;
using test::sameSignal;

int largestOf(const Pcm& pcm) {
    int largest = 0;
    for (const std::int16_t sample : pcm) largest = std::max(largest, std::abs(static_cast<int>(sample)));
    return largest;
}

TEST(Normalizer, CreationPrintsTheMixersVersion) {
    EXPECT_EQ(NormalizerEffect(2).printed(), "mix Version: 88.\n");
}

TEST(Normalizer, IsSilentUntilTheFirstBlockIsComplete) {
    NormalizerEffect normalizer(1);
    const Pcm in(100, 1000);
    for (int call = 1; call <= 5; ++call) {
        EXPECT_TRUE(sameSignal(normalizer.process(in), Pcm(100, 0), {.channels = 1})) << "call " << call;
    }
    EXPECT_GT(normalizer.process(in).front(), 9000);
}

TEST(Normalizer, LatencyOfCallsThatDivideABlockIsTheRestOfTheBlock) {
    for (int frames = 1; frames <= 512; frames *= 2) {
        SCOPED_TRACE(frames);
        NormalizerEffect normalizer(2);
        const Pcm out = normalizer.processInCallsOf(frames, Pcm(2 * 1024, 500));
        const auto first = std::find_if(out.begin(), out.end(), [](std::int16_t s) { return s != 0; });
        EXPECT_EQ(first - out.begin(), 2 * (512 - frames));
    }
}

TEST(Normalizer, CallsOfWholeBlocksHaveNoLatency) {
    const Pcm in = test::noise(5, 2 * 4096, 1000);
    const Pcm out_512 = NormalizerEffect(2).processInCallsOf(512, in);
    EXPECT_NE(out_512.front(), 0);
    for (const int frames : {1024, 2048, 4096}) {
        EXPECT_TRUE(sameSignal(NormalizerEffect(2).processInCallsOf(frames, in), out_512)) << frames;
    }
}

TEST(Normalizer, ACallGetsAllItsSamplesOrSilence) {
    NormalizerEffect normalizer(1);
    const Pcm out = normalizer.processInCallsOf(700, Pcm(700 * 3, 800));
    // Call 1: 700 in, 512 rendered: silence. Call 2: 1400 in, 1024 rendered: served, 324 remain.
    // Call 3: 2100 in, 2048 rendered: 1348 available, served.
    EXPECT_EQ(std::count(out.begin(), out.begin() + 700, 0), 700);
    EXPECT_EQ(std::count(out.begin() + 700, out.end(), 0), 0);
}

TEST(Normalizer, RaisesQuietSignalsByTwentyDecibels) {
    NormalizerEffect normalizer(2);
    const Pcm in = test::sweep(48000, 2, 1000);
    const Pcm out = normalizer.processInCallsOf(512, in);
    double energy_in = 0;
    double energy_out = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        energy_in += in[i] * in[i];
        energy_out += out[i] * out[i];
    }
    // Two idle limiters, each with a gain of 0.0999 / 0.1001 = -0.017 dB, and two truncations.
    EXPECT_NEAR(10 * std::log10(energy_out / energy_in), 20 - 2 * 0.0174, 0.003);
}

TEST(Normalizer, RaisesQuietSpeechAndKeepsItsShape) {
    NormalizerEffect normalizer(1);
    const Pcm in = test::scaled(test::recordedSpeech("Front_Center"), 1, 30);
    const Pcm out = normalizer.processInCallsOf(1024, in);
    ASSERT_LT(largestOf(in) * 10, 32768);
    for (std::size_t i = 0; i < out.size(); ++i) {
        ASSERT_LE(std::abs(out[i]), std::abs(in[i] * 10)) << i;
        ASSERT_GE(std::abs(out[i]), std::abs(in[i] * 10) * 0.996 - 2) << i;
    }
}

TEST(Normalizer, LimitsFullScaleToTheCeiling) {
    for (const int channels : {1, 2, 6, 8}) {
        for (const int half_period : {1, 7, 64, 5000}) {
            NormalizerEffect normalizer(channels);
            const Pcm out =
                normalizer.processInCallsOf(512, test::square(channels * 20480, half_period, 32767));
            EXPECT_LE(largestOf(out), 32440) << channels << " channels, half period " << half_period;
            EXPECT_GT(largestOf(out), 32000);
        }
    }
}

TEST(Normalizer, NeverExceedsTheCeilingInASuddenLoudPassageForAnyCallSize) {
    for (const int frames : {1, 64, 512, 1000, 4096}) {
        for (const std::uint64_t seed : {1U, 2U}) {
            NormalizerEffect normalizer(2);
            const Pcm out = normalizer.processInCallsOf(frames, test::bursts(seed, 80000));
            EXPECT_LE(largestOf(out), 32440) << "seed " << seed << ", " << frames << " frames";
        }
    }
}

TEST(Normalizer, KeepsSilenceSilent) {
    NormalizerEffect normalizer(6);
    EXPECT_EQ(largestOf(normalizer.processInCallsOf(512, Pcm(6 * 4096))), 0);
}

TEST(Normalizer, TheGainDoesNotRecoverAfterALoudPassage) {
    NormalizerEffect normalizer(1);
    normalizer.process(test::square(512, 16, 32767));
    const Pcm quiet(48000, 1000);
    const Pcm out = normalizer.processInCallsOf(512, quiet);
    EXPECT_LE(largestOf(out), 1000);
    EXPECT_GE(out.back(), 994);
}

TEST(Normalizer, HandlesAreIndependent) {
    const Pcm loud = test::bursts(3, 20480);
    const Pcm quiet = test::noise(4, 20480, 800);
    const Pcm expected = NormalizerEffect(2).processInCallsOf(256, quiet);

    NormalizerEffect first(2);
    NormalizerEffect second(2);
    Pcm out;
    for (std::size_t done = 0; done < quiet.size(); done += 512) {
        const auto part = static_cast<std::ptrdiff_t>(done);
        first.process(Pcm(loud.begin() + part, loud.begin() + part + 512));
        test::append(out, second.process(Pcm(quiet.begin() + part, quiet.begin() + part + 512)));
    }
    EXPECT_TRUE(sameSignal(out, expected));
}

}  // namespace
