#include "speech_ratio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/signals/recorded_speech.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::compareSpeech;
using sonivex_tool::SpeechRatio;
using Sound = std::vector<float>;

constexpr int kRate_hz = 48000;
constexpr int kFrames = 2 * kRate_hz;

Sound floats(const test::Pcm& pcm) {
    return {pcm.begin(), pcm.end()};
}

// Speech that is the same in both channels, over noise that is independent in each channel.
struct Scene {
    Sound speech = [] {
        const test::Pcm words = test::recordedSpeech("Front_Center");
        Sound both = floats(test::interleaved({words, words}));
        both.resize(2 * kFrames);
        return both;
    }();
    Sound background = floats(test::noise(3, 2 * kFrames, 2000));

    Sound mixed(const std::function<float(std::size_t frame)>& speech_gain,
                const std::function<float(std::size_t frame)>& background_gain) const {
        Sound out(speech.size());
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = speech_gain(i / 2) * speech[i] + background_gain(i / 2) * background[i];
        return out;
    }
    Sound mixed(float speech_gain, float background_gain) const {
        return mixed([=](std::size_t) { return speech_gain; }, [=](std::size_t) { return background_gain; });
    }
    SpeechRatio compared(const Sound& out) const { return compareSpeech(speech, background, out, kRate_hz); }
};

TEST(SpeechRatio, ReportsNoRiseForTheMixItself) {
    const Scene scene;
    for (const float level : {1.0F, 4.0F / 3.0F}) {
        const SpeechRatio ratio = scene.compared(scene.mixed(level, level));
        EXPECT_GT(ratio.segments, 5U);
        EXPECT_NEAR(ratio.rise_db(), 0.0, 1e-3);
        EXPECT_LT(ratio.unexplained, 1e-9);
    }
}

TEST(SpeechRatio, FindsTheAppliedRiseAtAnyLevel) {
    const Scene scene;
    for (const float speech_gain : {0.5F, 1.0F, 2.0F}) {
        for (const float background_gain : {0.25F, 1.0F, 1.5F}) {
            const SpeechRatio ratio = scene.compared(scene.mixed(speech_gain, background_gain));
            EXPECT_NEAR(ratio.rise_db(), 20.0 * std::log10(speech_gain / background_gain), 1e-3);
            EXPECT_LT(ratio.unexplained, 1e-9);
        }
    }
}

TEST(SpeechRatio, ReportsThePowerRatioOfTwoNoises) {
    const Sound speech = floats(test::noise(5, 2 * kFrames, 6000));
    const Sound background = floats(test::noise(6, 2 * kFrames, 3000));
    Sound mix(speech);
    for (std::size_t i = 0; i < mix.size(); ++i) mix[i] += background[i];
    const SpeechRatio ratio = compareSpeech(speech, background, mix, kRate_hz);
    // The power of 2 s of noise varies by 0.15 dB.
    EXPECT_NEAR(ratio.before_db, 20.0 * std::log10(2.0), 0.15);
    EXPECT_EQ(ratio.segments, 20U);
}

// If gains change from segment to segment, powers add up: two halves of the same noise at gains 1 and 2 have
// a mean power of 2.5.
TEST(SpeechRatio, AddsPowersIfGainsChangeOverTime) {
    Scene scene;
    scene.speech = floats(test::noise(5, 2 * kFrames, 6000));
    const auto rising = [](std::size_t frame) { return frame < kFrames / 2 ? 1.0F : 2.0F; };
    const SpeechRatio ratio = scene.compared(scene.mixed(rising, [](std::size_t) { return 1.0F; }));
    EXPECT_NEAR(ratio.rise_db(), 10.0 * std::log10(2.5), 0.1);
    EXPECT_LT(ratio.unexplained, 1e-2);
}

// Both channels have the same words, but the right channel has twice the amplitude.
TEST(SpeechRatio, CountsBothChannels) {
    const Scene scene;
    Sound out = scene.mixed(1.0F, 1.0F);
    for (std::size_t i = 1; i < out.size(); i += 2) out[i] += scene.speech[i];
    EXPECT_NEAR(scene.compared(out).rise_db(), 10.0 * std::log10((1.0 + 4.0) / 2.0), 1e-3);
}

// A low-pass attenuates the broadband background and leaves the speech, here a low tone, unchanged.
TEST(SpeechRatio, DetectsAGainThatDependsOnFrequency) {
    Scene scene;
    constexpr std::size_t kMean = 8;  // frames; the moving average has its first zero at 6 kHz
    for (std::size_t channel = 0; channel < 2; ++channel) {
        float phase = 0.0F;
        for (std::size_t i = channel; i < scene.speech.size(); i += 2, phase += 0.04F)  // 306 Hz
            scene.speech[i] = 3000.0F * std::sin(phase);
    }
    const Sound mix = scene.mixed(1.0F, 1.0F);
    Sound out(mix.size());
    for (std::size_t i = 2 * kMean; i < mix.size(); ++i) {
        for (std::size_t k = 0; k < kMean; ++k) out[i - kMean] += mix[i - 2 * k] / static_cast<float>(kMean);
    }
    EXPECT_GT(scene.compared(out).rise_db(), 1.0);
}

// The speech pauses for a second. The background is ducked during the pause, after the filters have rung out.
TEST(SpeechRatio, MeasuresOnlySegmentsThatContainSpeech) {
    Scene scene;
    scene.speech = floats(test::noise(5, 2 * kFrames, 6000));
    std::fill(scene.speech.begin() + kFrames, scene.speech.end(), 0.0F);
    const auto ducked = [](std::size_t frame) { return frame < kFrames / 2 + kRate_hz / 10 ? 1.0F : 0.1F; };
    const SpeechRatio ratio = scene.compared(scene.mixed([](std::size_t) { return 1.0F; }, ducked));
    EXPECT_NEAR(ratio.rise_db(), 0.0, 1e-3);
    EXPECT_GE(ratio.segments, 10U);
    EXPECT_LE(ratio.segments, 11U);
}

// The speech is a second of noise, then a second of fainter noise. The fainter half counts as speech at 18 dB
// below the mean power, but not at 22 dB. Its first segment may count because the filters still ring.
TEST(SpeechRatio, CountsSegmentsLessThanTwentyDecibelsBelowTheMeanAsSpeech) {
    const auto segments_with = [](double below_db) {
        Scene scene;
        scene.speech = floats(test::noise(5, 2 * kFrames, 6000));
        // The mean of the powers 1 and g^2 is (1 + g^2) / 2, and g^2 = share * mean.
        const double share = std::pow(10.0, -below_db / 10.0);
        const auto gain = static_cast<float>(std::sqrt(share / (2.0 - share)));
        for (std::size_t i = kFrames; i < scene.speech.size(); ++i) scene.speech[i] *= gain;
        return scene.compared(scene.mixed(1.0F, 1.0F)).segments;
    };
    EXPECT_EQ(segments_with(18.0), 20U);
    EXPECT_LE(segments_with(22.0), 11U);
}

TEST(SpeechRatio, ReportsAMisalignedOutputAsUnexplained) {
    const Scene scene;
    Sound late(scene.speech.size());
    const Sound mix = scene.mixed(1.0F, 1.0F);
    std::copy(mix.begin(), mix.end() - 2 * 500, late.begin() + 2 * 500);
    EXPECT_GT(scene.compared(late).unexplained, 0.3);
}

TEST(SpeechRatio, IsTheSameForSixteenBitSamples) {
    const test::Pcm words = test::recordedSpeech("Front_Center");
    const test::Pcm speech = test::interleaved({words, words});
    const test::Pcm background = test::noise(3, static_cast<int>(speech.size()), 2000);
    test::Pcm out(speech.size());
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = static_cast<std::int16_t>(speech[i] / 2 + background[i] / 4);
    const SpeechRatio whole = compareSpeech(speech, background, out, kRate_hz);
    const SpeechRatio real = compareSpeech(floats(speech), floats(background), floats(out), kRate_hz);
    EXPECT_EQ(whole.before_db, real.before_db);
    EXPECT_EQ(whole.after_db, real.after_db);
    EXPECT_NEAR(whole.rise_db(), 20.0 * std::log10(2.0), 0.01);
}

// Speech that an effect silences early is still measured where it was spoken.
TEST(SpeechRatioOfParts, MeasuresWhereTheSpeakerIsActive) {
    const Sound speaker = floats(test::noise(5, 2 * kFrames, 6000));
    const Sound background = floats(test::noise(6, 2 * kFrames, 6000));
    Sound speech = speaker;
    EXPECT_NEAR(sonivex_tool::ratioOfParts_db(speech, background, speaker, kRate_hz), 0.0, 0.15);
    std::fill(speech.begin() + kFrames, speech.end(), 0.0F);
    EXPECT_NEAR(sonivex_tool::ratioOfParts_db(speech, background, speaker, kRate_hz), 10.0 * std::log10(0.5),
                0.25);
    EXPECT_NEAR(sonivex_tool::ratioOfParts_db(speech, background, speech, kRate_hz), 0.0, 0.5);
    EXPECT_EQ(sonivex_tool::ratioOfParts_db(speech, background, Sound(speech.size()), kRate_hz), 0.0);
}

TEST(SpeechRatioOfParts, EqualsTheRatioInTheMix) {
    const Scene scene;
    EXPECT_EQ(sonivex_tool::ratioOfParts_db(scene.speech, scene.background, scene.speech, kRate_hz),
              scene.compared(scene.mixed(1.0F, 1.0F)).before_db);
}

TEST(SpeechRatio, IsZeroWithoutSpeechBackgroundOrOutput) {
    const Scene scene;
    const Sound silence(scene.speech.size());
    const Sound mix = scene.mixed(1.0F, 1.0F);
    for (const SpeechRatio& ratio : {compareSpeech(silence, scene.background, mix, kRate_hz),
                                     compareSpeech(scene.speech, silence, mix, kRate_hz),
                                     compareSpeech(scene.speech, scene.background, silence, kRate_hz),
                                     compareSpeech(Sound(), scene.background, mix, kRate_hz)}) {
        EXPECT_EQ(ratio.segments, 0U);
        EXPECT_EQ(ratio.rise_db(), 0.0);
        EXPECT_EQ(ratio.unexplained, 0.0);
    }
}

TEST(SpeechRatio, IsZeroIfSamplesAreNotFinite) {
    const Scene scene;
    const Sound mix = scene.mixed(1.0F, 1.0F);
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        const auto broken = [bad](Sound sound) {
            sound[50000] = bad;
            return sound;
        };
        for (const SpeechRatio& ratio :
             {compareSpeech(broken(scene.speech), scene.background, mix, kRate_hz),
              compareSpeech(scene.speech, broken(scene.background), mix, kRate_hz),
              compareSpeech(scene.speech, scene.background, broken(mix), kRate_hz)}) {
            EXPECT_EQ(ratio.segments, 0U);
            EXPECT_EQ(ratio.rise_db(), 0.0);
            EXPECT_EQ(ratio.unexplained, 0.0);
        }
        EXPECT_EQ(
            sonivex_tool::ratioOfParts_db(broken(scene.speech), scene.background, scene.speech, kRate_hz),
            0.0);
    }
}

}  // namespace
