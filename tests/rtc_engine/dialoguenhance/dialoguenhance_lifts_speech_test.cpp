// The purpose of the effect: speech in the centre becomes louder relative to a background at the sides.
#include <gtest/gtest.h>

#include "models/dialogue_parts.h"
#include "speech_ratio.h"
#include "support/effects/dialogue_effect.h"
#include "support/signals/dialogue_scene.h"

namespace {

using sonivex_tool::SpeechRatio;
using test::DialogueScene;
using test::Pcm;
using test::Sides;

constexpr int kRate_hz = 48000;
constexpr std::ptrdiff_t kDelaySamples = 2 * 3 * 512;

SpeechRatio measured(const DialogueScene& scene, double voice_level) {
    Pcm in = scene.mix;
    in.resize(in.size() + kDelaySamples, 0);  // flushes the last frames out of the effect
    const Pcm late = test::DialogueEffect({.voice_level = voice_level}).processInCallsOf(512, in);
    const Pcm out(late.begin() + kDelaySamples, late.end());
    return sonivex_tool::compareSpeech(scene.speech, scene.background, out, kRate_hz);
}

// Rise between the separate parts of the output, which only the model can compute.
double trueRise_db(const DialogueScene& scene, double voice_level) {
    const model::DialogueParts parts =
        model::enhancedParts(scene.speech, scene.background, kRate_hz, voice_level);
    const std::vector<float> speaker(scene.speech.begin(), scene.speech.end());
    const std::vector<float> background(scene.background.begin(), scene.background.end());
    return sonivex_tool::ratioOfParts_db(parts.speech, parts.background, speaker, kRate_hz) -
           sonivex_tool::ratioOfParts_db(speaker, background, speaker, kRate_hz);
}

class DialogueSpeechRatio : public testing::TestWithParam<Sides> {
  protected:
    const DialogueScene scene_ = test::dialogueScene(GetParam(), 6);
};

TEST_P(DialogueSpeechRatio, IsUnchangedAtVoiceLevelZero) {
    EXPECT_NEAR(measured(scene_, 0).rise_db(), 0, 0.01);
}

// The largest possible rise is 6 dB: gain 2 for speech and 1 for the background.
TEST_P(DialogueSpeechRatio, RisesOverABackgroundAtTheSides) {
    const SpeechRatio usual = measured(scene_, 1);
    const SpeechRatio strong = measured(scene_, 3);
    EXPECT_GT(usual.segments, 20U);
    EXPECT_GT(usual.rise_db(), 0.5);
    EXPECT_GT(strong.rise_db(), usual.rise_db() + 0.5);
    EXPECT_LT(strong.rise_db(), 6);
    EXPECT_LT(strong.unexplained, 0.01);
}

// The measure counts some variation within a tile as background, so it errs on the low side.
TEST_P(DialogueSpeechRatio, RisesByAsMuchAsThatOfTheSeparateParts) {
    for (const double voice_level : {1.0, 3.0}) {
        const double rise_db = measured(scene_, voice_level).rise_db();
        const double true_rise_db = trueRise_db(scene_, voice_level);
        EXPECT_LT(rise_db, true_rise_db + 0.02);
        EXPECT_GT(rise_db, true_rise_db - 0.1);
    }
}

INSTANTIATE_TEST_SUITE_P(, DialogueSpeechRatio, testing::Values(Sides::kNoise, Sides::kVoices),
                         [](const auto& suite) {
                             return suite.param == Sides::kNoise ? "AmongNoise" : "AmongVoices";
                         });

// The effect does not recognise speech; it raises what both channels share.
TEST(DialogueSpeechAtOneSide, FallsRelativeToABackgroundInTheCentre) {
    DialogueScene scene = test::dialogueScene(Sides::kNoise, 0);
    for (std::size_t i = 0; i < scene.mix.size(); i += 2) {
        scene.speech[i + 1] = 0;
        scene.background[i + 1] = scene.background[i];
        scene.mix[i] = static_cast<std::int16_t>(scene.speech[i] + scene.background[i]);
        scene.mix[i + 1] = scene.background[i + 1];
    }
    EXPECT_LT(measured(scene, 3).rise_db(), -0.5);
}

}  // namespace
