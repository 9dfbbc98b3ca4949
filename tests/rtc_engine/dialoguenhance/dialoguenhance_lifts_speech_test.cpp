// What the effect is for: speech in the centre gets louder against what is at the sides.
#include <gtest/gtest.h>

#include "dialogue_calls.h"
#include "reference/dialogue_parts.h"
#include "speech_ratio.h"
#include "support/dialogue_scene.h"

namespace {

using sonivex_tool::SpeechRatio;
using test::DialogueScene;
using test::Pcm;
using test::Sides;

constexpr int kRate_hz = 48000;
constexpr std::ptrdiff_t kDelaySamples = 2 * 3 * 512;

SpeechRatio measured(const DialogueScene& scene, double voice_level) {
    Pcm in = scene.mix;
    in.resize(in.size() + kDelaySamples, 0);  // for the last of it to come out
    const Pcm late = test::enhanced({.voice_level = voice_level}, in, test::callsOf(512, in.size() / 2));
    const Pcm out(late.begin() + kDelaySamples, late.end());
    return sonivex_tool::compareSpeech(scene.speech, scene.background, out, kRate_hz);
}

// Of the parts of the output themselves, which only a model can tell.
double trueRise_db(const DialogueScene& scene, double voice_level) {
    const model::DialogueParts parts =
        model::enhancedParts(scene.speech, scene.background, kRate_hz, voice_level);
    const std::vector<float> speaker(scene.speech.begin(), scene.speech.end());
    const std::vector<float> background(scene.background.begin(), scene.background.end());
    return sonivex_tool::ratioOfParts_db(parts.speech, parts.background, speaker, kRate_hz) -
           sonivex_tool::ratioOfParts_db(speaker, background, speaker, kRate_hz);
}

class DialogueAndSpeech : public testing::TestWithParam<Sides> {
  protected:
    const DialogueScene scene_ = test::dialogueScene(GetParam(), 6);
};

TEST_P(DialogueAndSpeech, StandAsTheyDidWithoutVoiceLevel) {
    EXPECT_NEAR(measured(scene_, 0).rise_db(), 0, 0.01);
}

// 6 dB is the most there is: twice for speech, once for the background.
TEST_P(DialogueAndSpeech, RisesAgainstWhatIsAtTheSides) {
    const SpeechRatio usual = measured(scene_, 1);
    const SpeechRatio strong = measured(scene_, 3);
    EXPECT_GT(usual.segments, 20U);
    EXPECT_GT(usual.rise_db(), 0.5);
    EXPECT_GT(strong.rise_db(), usual.rise_db() + 0.5);
    EXPECT_LT(strong.rise_db(), 6);
    EXPECT_LT(strong.unexplained, 0.01);
}

// The measure takes some of what varies within a tile for background, so it is rather too low than too high.
TEST_P(DialogueAndSpeech, RisesByWhatItsPartsDo) {
    for (const double voice_level : {1.0, 3.0}) {
        const double rise_db = measured(scene_, voice_level).rise_db();
        const double true_rise_db = trueRise_db(scene_, voice_level);
        EXPECT_LT(rise_db, true_rise_db + 0.02);
        EXPECT_GT(rise_db, true_rise_db - 0.1);
    }
}

INSTANTIATE_TEST_SUITE_P(, DialogueAndSpeech, testing::Values(Sides::kNoise, Sides::kVoices),
                         [](const auto& suite) {
                             return suite.param == Sides::kNoise ? "AmongNoise" : "AmongVoices";
                         });

// The effect knows no speech, only what both channels share.
TEST(SpeechAtASide, FallsAgainstABackgroundInTheMiddle) {
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
