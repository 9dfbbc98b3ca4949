#include "speech_shift.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "support/signals/recorded_speech.h"
#include "support/signals/signals.h"

namespace {

using sonivex_tool::alignAndCompareSpeech;
using sonivex_tool::AlignedSpeech;
using Sound = std::vector<float>;

constexpr int kRate_hz = 48000;
constexpr int kFrames = 4 * kRate_hz;

Sound noise(std::uint64_t seed, float amplitude) {
    return test::noiseFloats(seed, 2 * kFrames, amplitude);
}

// The output lags by `frames`; silence fills the gap.
Sound shifted(const Sound& sound, int64_t frames) {
    Sound out(sound.size());
    for (int64_t n = 0; n < std::ssize(out); ++n) {
        const int64_t from = n - 2 * frames;
        if (from >= 0 && from < std::ssize(sound))
            out[static_cast<size_t>(n)] = sound[static_cast<size_t>(from)];
    }
    return out;
}

// The mean of five neighbouring frames; 3 dB down at 4.2 kHz.
Sound smoothed(const Sound& sound) {
    Sound out(sound.size());
    for (size_t n = 4; n + 4 < sound.size(); ++n)
        out[n] = (sound[n - 4] + sound[n - 2] + sound[n] + sound[n + 2] + sound[n + 4]) / 5.0F;
    return out;
}

// Announcements that are the same in both channels, over noise that is independent in each channel.
struct Scene {
    Sound speech;
    Sound background = noise(3, 0.05F);

    explicit Scene(const std::vector<const char*>& words = {"Front_Center", "Rear_Right", "Side_Left"}) {
        for (const char* word : words) {
            for (const auto sample : test::recordedSpeech(word))
                speech.insert(speech.end(), 2, static_cast<float>(sample) / 32768.0F);
        }
        speech.resize(size_t{2} * kFrames);
    }

    Sound mixed(float speech_gain, float background_gain) const {
        Sound out(speech.size());
        for (size_t n = 0; n < out.size(); ++n)
            out[n] = speech_gain * speech[n] + background_gain * background[n];
        return out;
    }
    AlignedSpeech compared(const Sound& out) const {
        return alignAndCompareSpeech(speech, background, out, kRate_hz);
    }
};

TEST(SpeechShift, FindsTheRiseOfAnOutputThatIsLateOrEarly) {
    const Scene scene;
    const Sound out = scene.mixed(2.0F, 1.0F);
    for (const int frames : {0, 1, 256, 1024, 20000, 24000, -1, -256, -20000}) {
        const AlignedSpeech aligned = scene.compared(shifted(out, frames));
        EXPECT_EQ(aligned.shift_frames, frames);
        EXPECT_NEAR(aligned.ratio.rise_db(), 20.0 * std::log10(2.0), 0.01) << frames;
        EXPECT_LT(aligned.ratio.unexplained, 1e-3) << frames;
        EXPECT_TRUE(aligned.isExplained()) << frames;
    }
}

// The sound begins after the 10 s that are compared for the shift.
TEST(SpeechShift, LooksWhereTheMixIsLoud) {
    const Scene scene;
    const auto after_silence = [](Sound sound) {
        sound.insert(sound.begin(), size_t{2} * 15 * kRate_hz, 0.0F);
        return sound;
    };
    const Sound out = after_silence(shifted(scene.mixed(1.0F, 1.0F), 700));
    const AlignedSpeech aligned =
        alignAndCompareSpeech(after_silence(scene.speech), after_silence(scene.background), out, kRate_hz);
    EXPECT_EQ(aligned.shift_frames, 700);
    EXPECT_TRUE(aligned.isExplained());
}

// Steady tones match at every period, so no shift stands out.
TEST(SpeechShift, IsZeroIfNoShiftStandsOut) {
    Scene scene;
    for (size_t n = 0; n < scene.speech.size(); ++n) {
        const double turn = 2.0 * std::numbers::pi * static_cast<double>(n / 2) / kRate_hz;
        scene.speech[n] = static_cast<float>(0.2 * std::sin(480.0 * turn));
        scene.background[n] = static_cast<float>(0.1 * std::sin(1920.0 * turn));
    }
    const AlignedSpeech aligned = scene.compared(scene.mixed(2.0F, 1.0F));
    EXPECT_EQ(aligned.shift_frames, 0);
    EXPECT_NEAR(aligned.ratio.rise_db(), 20.0 * std::log10(2.0), 0.01);
    EXPECT_TRUE(aligned.isExplained());
}

// The treble, which lies above the compared bands, is delayed. It has most of the spectrum.
TEST(SpeechShift, IsZeroIfTheShiftExplainsLess) {
    const Scene scene;
    const Sound mix = scene.mixed(1.0F, 1.0F);
    const Sound bass = smoothed(smoothed(smoothed(mix)));
    Sound treble(mix);
    for (size_t n = 0; n < mix.size(); ++n) treble[n] -= bass[n];
    treble = shifted(treble, 700);
    Sound out(bass);
    for (size_t n = 0; n < out.size(); ++n) out[n] += treble[n];
    EXPECT_EQ(scene.compared(out).shift_frames, 0);
}

TEST(SpeechShift, DoesNotExplainAShiftBeyondHalfASecond) {
    const Scene scene;
    EXPECT_FALSE(scene.compared(shifted(scene.mixed(1.0F, 1.0F), 30000)).isExplained());
}

TEST(SpeechShift, DoesNotExplainAnotherSpeechOrAnotherBackground) {
    const Scene scene;
    const Sound out = scene.mixed(1.0F, 1.0F);
    const Scene other({"Side_Right", "Front_Left", "Rear_Left"});
    EXPECT_FALSE(alignAndCompareSpeech(other.speech, scene.background, out, kRate_hz).isExplained());
    EXPECT_FALSE(alignAndCompareSpeech(scene.speech, noise(9, 0.05F), out, kRate_hz).isExplained());
}

// The background is 30 dB below the speech, and so is everything that is unexplained.
TEST(SpeechShift, DoesNotExplainAFaintBackgroundThatIsAnother) {
    Scene scene;
    for (float& sample : scene.background) sample *= 0.05F;
    const AlignedSpeech aligned =
        alignAndCompareSpeech(scene.speech, noise(9, 0.0025F), scene.mixed(1.0F, 1.0F), kRate_hz);
    EXPECT_LT(aligned.ratio.unexplained, 0.01);
    EXPECT_FALSE(aligned.isExplained());
    EXPECT_TRUE(scene.compared(scene.mixed(1.0F, 1.0F)).isExplained());
}

// A resampled copy whose clock is 0.1 % too fast.
TEST(SpeechShift, DoesNotExplainAnOutputThatDrifts) {
    const Scene scene;
    const Sound mix = scene.mixed(1.0F, 1.0F);
    Sound out(mix.size());
    for (size_t n = 0; n < out.size(); ++n) {
        const double place = static_cast<double>(n / 2) * 1.001;
        const auto from = 2 * static_cast<size_t>(place) + n % 2;
        const auto part = static_cast<float>(place - std::floor(place));
        if (from + 2 < mix.size()) out[n] = (1.0F - part) * mix[from] + part * mix[from + 2];
    }
    EXPECT_FALSE(scene.compared(out).isExplained());
}

// Both channels of the output hold both channels of the mix.
TEST(SpeechShift, DoesNotExplainChannelsThatAreMixed) {
    Scene scene;
    scene.background = noise(3, 0.3F);
    Sound out = scene.mixed(1.0F, 1.0F);
    for (size_t n = 0; n < out.size(); n += 2) out[n] = out[n + 1] = 0.5F * (out[n] + out[n + 1]);
    EXPECT_FALSE(scene.compared(out).isExplained());
}

TEST(SpeechShift, StatesTheShareOfEachSound) {
    Scene scene;
    scene.speech = noise(5, 0.2F);
    scene.background = noise(6, 0.1F);
    const AlignedSpeech aligned = scene.compared(scene.mixed(1.0F, 1.0F));
    EXPECT_NEAR(aligned.ratio.speech_share, 0.8, 0.02);
    EXPECT_NEAR(aligned.ratio.background_share, 0.2, 0.02);
    EXPECT_EQ(aligned.weakerShare(), aligned.ratio.background_share);
}

TEST(SpeechShift, AcceptsSoundsOfAFewFrames) {
    for (const size_t samples : {0U, 2U, 4U, 6U, 200U}) {
        const Sound sound(samples, 0.5F);
        const AlignedSpeech aligned = alignAndCompareSpeech(sound, sound, sound, kRate_hz);
        EXPECT_EQ(aligned.shift_frames, 0);
        EXPECT_EQ(aligned.ratio.segments, 0U);
    }
}

}  // namespace
