#include "pair_comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "support/signals/signals.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::ComparedSide;
using sonivex_tool::comparePair;
using sonivex_tool::FramePtr;
using sonivex_tool::FrameStream;

constexpr int kRate_hz = 8000;
constexpr int kSecond = kRate_hz;

using Samples = std::vector<float>;

Samples silence(int frames) {
    Samples samples(static_cast<size_t>(frames));
    return samples;
}

Samples noise(std::uint64_t seed, int frames) {
    return test::noiseFloats(seed, static_cast<size_t>(frames), 0.2F);
}

Samples joined(std::initializer_list<Samples> parts) {
    Samples all;
    for (const Samples& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Samples scaled(Samples samples, float gain) {
    for (float& sample : samples) sample *= gain;
    return samples;
}

// Makes a side with the same samples in every channel, in frames of an odd length.
ComparedSide side(const Samples& samples, int channels = 1, int rate_hz = kRate_hz) {
    const auto audible =
        std::find_if(samples.begin(), samples.end(), [](float x) { return std::abs(x) > 0.001F; });
    ComparedSide made;
    made.frames = std::ssize(samples);
    if (audible != samples.end()) made.first_audible_frame = audible - samples.begin();
    made.open = [=] {
        auto position = std::make_shared<size_t>(0);
        const auto read = [=]() -> FramePtr {
            constexpr size_t kFrames = 1237;
            const size_t first = *position;
            const size_t count = std::min(kFrames, samples.size() - first);
            if (count == 0) return nullptr;
            *position += count;
            return test::floatFrame(
                channels, static_cast<int>(count),
                [&](int i, int) { return samples[first + static_cast<size_t>(i)]; }, rate_hz);
        };
        return FrameStream{"pcm_f32le", test::floatSpec(channels, rate_hz), read, 0};
    };
    return made;
}

TEST(PairComparison, MeasuresDelayAndGainOfLateAndEarlyOutputs) {
    const Samples sound = noise(1, 2 * kSecond);
    const Samples quiet = silence(700);
    const auto late = comparePair(side(sound), side(joined({quiet, scaled(sound, 2.0F)})));
    EXPECT_EQ(late.delay_frames, 700);
    EXPECT_NEAR(late.gain_db.value(), 20.0 * std::log10(2.0), 1e-6);
    const auto early = comparePair(side(joined({quiet, sound})), side(scaled(sound, 0.5F)));
    EXPECT_EQ(early.delay_frames, -700);
    EXPECT_NEAR(early.gain_db.value(), -20.0 * std::log10(2.0), 1e-6);
}

// Only the common part counts. Here one side continues with louder noise after the end of the other.
TEST(PairComparison, MeasuresTheGainOverTheCommonLength) {
    const Samples sound = noise(1, 2 * kSecond);
    const Samples more = joined({sound, scaled(noise(2, kSecond), 4.0F)});
    for (const auto& [input, output] :
         {std::pair(side(sound), side(more)), std::pair(side(more), side(sound))}) {
        const auto difference = comparePair(input, output);
        EXPECT_EQ(difference.delay_frames, 0);
        EXPECT_NEAR(difference.gain_db.value(), 0.0, 1e-6);
    }
    const auto cut_before = comparePair(side(joined({scaled(noise(2, 300), 4.0F), sound})), side(sound));
    EXPECT_EQ(cut_before.delay_frames, -300);
    EXPECT_NEAR(cut_before.gain_db.value(), 0.0, 1e-6);
}

TEST(PairComparison, SearchesTheDelayFromTheFirstAudibleFrame) {
    const Samples quiet = silence(20 * kSecond);
    const Samples sound = noise(1, kSecond);
    const auto difference =
        comparePair(side(joined({quiet, sound, silence(500)})), side(joined({quiet, silence(500), sound})));
    EXPECT_EQ(difference.delay_frames, 500);
    EXPECT_NEAR(difference.gain_db.value(), 0.0, 1e-6);
}

TEST(PairComparison, SearchesTheDelayInTenSeconds) {
    const auto matching_after = [](int seconds) {
        const Samples common = noise(1, 5 * kSecond);
        return comparePair(side(joined({noise(2, seconds * kSecond), common, silence(500)})),
                           side(joined({noise(3, seconds * kSecond), silence(500), common})))
            .delay_frames;
    };
    EXPECT_EQ(matching_after(4), 500);
    EXPECT_EQ(matching_after(11), std::nullopt);
}

// At 768 kHz ten seconds would take half a gigabyte. The limit of 2^21 frames less half a second is 2.2 s
// there.
TEST(PairComparison, SearchesAShorterTimeAtTheHighestRates) {
    constexpr int kHighRate_hz = 768000;
    constexpr int kUnrelated = 5 * kHighRate_hz / 2;
    const Samples common = noise(1, kHighRate_hz / 2);
    const auto difference =
        comparePair(side(joined({noise(2, kUnrelated), common, silence(900)}), 1, kHighRate_hz),
                    side(joined({noise(3, kUnrelated), silence(900), common}), 1, kHighRate_hz));
    EXPECT_EQ(difference.delay_frames, std::nullopt);
}

TEST(PairComparison, ComparesChannelSumsIfTheChannelCountsDiffer) {
    const Samples sound = noise(1, kSecond);
    const auto difference = comparePair(side(sound, 6), side(joined({silence(60), sound}), 2));
    EXPECT_EQ(difference.delay_frames, 60);
    EXPECT_NEAR(difference.gain_db.value(), 10.0 * std::log10(2.0 / 6.0), 1e-6);
}

TEST(PairComparison, ReportsNothingForSilenceAndNonFiniteSamples) {
    const Samples sound = noise(1, kSecond);
    Samples broken = sound;
    broken[100] = std::numeric_limits<float>::infinity();
    Samples no_number = sound;
    no_number[100] = std::numeric_limits<float>::quiet_NaN();
    for (const Samples& other : {silence(kSecond), broken, no_number}) {
        for (const auto& difference :
             {comparePair(side(sound), side(other)), comparePair(side(other), side(sound)),
              comparePair(side(other), side(other))}) {
            EXPECT_EQ(difference.delay_frames, std::nullopt);
            EXPECT_EQ(difference.gain_db, std::nullopt);
        }
    }
}

}  // namespace
