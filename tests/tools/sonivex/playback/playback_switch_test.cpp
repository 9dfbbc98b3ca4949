// Switching between original and effect, and between effects: no click, and the same loudness.

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <stdexcept>

#include "playback_fixture.h"
#include "support/signals/clicks.h"
#include "support/signals/wav_file.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlaybackSettings;
using testing::HasSubstr;

struct Switch {
    std::string name;
    std::string effect;
    std::vector<PlayAction> actions;
};

void PrintTo(const Switch& one, std::ostream* stream) {
    *stream << one.name;
}

class Switching : public test::PlaybackTest {
  protected:
    // Measures the integrated loudness of stereo samples with ffmpeg.
    double loudness_lufs(const std::vector<float>& stereo) const {
        test::writeFile(file("part.wav"), test::wavOf(stereo, 2, kRate_hz));
        const auto result = test::runProcess({"ffmpeg", "-nostdin", "-hide_banner", "-i", file("part.wav"),
                                              "-af", "ebur128", "-f", "null", "-"});
        // The summary comes last, after a line for every tenth of a second.
        const size_t summary = result.err.rfind("I: ");
        if (summary == std::string::npos) throw std::runtime_error(result.err);
        return std::stod(result.err.substr(summary + 2));
    }
};

class SwitchingEverything : public Switching, public testing::WithParamInterface<Switch> {};

TEST_P(SwitchingEverything, DoesNotClick) {
    auto playback = open(settings(tone(8.0), GetParam().effect));
    std::vector<float> heard = render(*playback, 2 * kRate_hz);
    double steady = test::largestSecondDifference(heard, kRate_hz, heard.size() / 2 - 1);
    for (const PlayAction action : GetParam().actions) {
        const size_t at = heard.size() / 2;
        playback->act(action);
        const std::vector<float> after = render(*playback, kRate_hz);
        heard.insert(heard.end(), after.begin(), after.end());
        const size_t end = heard.size() / 2 - 1;
        const double after_steady = test::largestSecondDifference(heard, end - 12000, end);
        const double spike = test::largestSecondDifference(heard, at - 2, end);
        const double louder = std::max(steady, after_steady);
        const double spike_db = 20.0 * std::log10(spike / louder);
        RecordProperty("spike_db", std::to_string(spike_db));
        EXPECT_LE(spike_db, 3.0);
        steady = after_steady;
    }
}

INSTANTIATE_TEST_SUITE_P(
    , SwitchingEverything,
    testing::Values(
        Switch{"Effect",
               "surround",
               {PlayAction::ToggleEffect, PlayAction::ToggleEffect, PlayAction::ToggleEffect}},
        Switch{"EffectOfDialogue", "dialogue", {PlayAction::ToggleEffect, PlayAction::ToggleEffect}},
        Switch{"EffectOfNormalizer", "normalizer", {PlayAction::ToggleEffect, PlayAction::ToggleEffect}},
        Switch{"NextEffect",
               "normalizer",
               {PlayAction::NextEffect, PlayAction::NextEffect, PlayAction::NextEffect}},
        Switch{"TypeAndMode", "surround", {PlayAction::NextType, PlayAction::NextMode, PlayAction::NextMode}},
        Switch{"Voice", "dialogue", {PlayAction::RaiseVoice, PlayAction::RaiseVoice, PlayAction::LowerVoice}},
        Switch{"Matching", "dialogue", {PlayAction::ToggleMatching, PlayAction::ToggleMatching}},
        Switch{"Volume", "surround", {PlayAction::Quieter, PlayAction::Quieter, PlayAction::Louder}},
        Switch{"Pause", "surround", {PlayAction::TogglePause, PlayAction::TogglePause}},
        Switch{"Seek", "surround", {PlayAction::Back, PlayAction::Back}},
        Switch{"Retry", "surround", {PlayAction::Retry, PlayAction::Retry}}),
    [](const auto& each) { return each.param.name; });

TEST_F(Switching, TwiceAtOnceDoesNotClick) {
    auto playback = open(settings(tone(6.0), "surround"));
    std::vector<float> heard = render(*playback, 2 * kRate_hz);
    const double steady = test::largestSecondDifference(heard, kRate_hz, heard.size() / 2 - 1);
    const size_t at = heard.size() / 2;
    for (int i = 0; i < 7; ++i) {
        playback->act(i % 2 == 0 ? PlayAction::ToggleEffect : PlayAction::NextEffect);
        const std::vector<float> piece = render(*playback, 700);
        heard.insert(heard.end(), piece.begin(), piece.end());
    }
    const double spike = test::largestSecondDifference(heard, at - 2, heard.size() / 2 - 1);
    EXPECT_LE(20.0 * std::log10(spike / steady), 3.0);
}

TEST_F(Switching, OriginalAndEffectAreEquallyLoud) {
    programme(14.0, "loud.wav");
    test::ffmpeg({"-i", file("loud.wav"), "-af", "volume=-26dB", file("quiet.wav")});
    double most_raised_db = 0.0;
    for (const std::string source : {"loud.wav", "quiet.wav"}) {
        for (const std::string effect : {"normalizer", "surround", "dialogue"}) {
            SCOPED_TRACE(source + ", " + effect);
            std::array<double, 2> matched{};
            std::array<double, 2> unmatched{};
            for (const size_t heard : {0U, 1U}) {
                PlaybackSettings wanted = settings(file(source), effect);
                wanted.hears_effect = heard == 1;
                matched.at(heard) = loudness_lufs(render(*open(wanted), 12 * kRate_hz));
                wanted.is_matching = false;
                unmatched.at(heard) = loudness_lufs(render(*open(wanted), 12 * kRate_hz));
            }
            RecordProperty("difference_lu of " + effect + " in " + source,
                           std::to_string(matched[1] - matched[0]) + ", unmatched " +
                               std::to_string(unmatched[1] - unmatched[0]));
            EXPECT_NEAR(matched[0], matched[1], 0.5);
            // Matching raises nothing.
            EXPECT_LE(matched[0], unmatched[0] + 0.1);
            EXPECT_LE(matched[1], unmatched[1] + 0.1);
            most_raised_db = std::max(most_raised_db, unmatched[1] - unmatched[0]);
        }
    }
    EXPECT_GT(most_raised_db, 3.0) << "no effect raised the level, so the test shows nothing";
}

TEST_F(Switching, ANewEffectHasHeardWhatCameBefore) {
    programme(5.0);
    PlaybackSettings wanted = settings(file("programme.wav"), "surround");
    wanted.is_matching = false;
    auto from_the_beginning = open(wanted);
    const std::vector<float> expected = render(*from_the_beginning, 3 * kRate_hz);
    wanted.choice.chain = {sonivex_tool::findEffect("normalizer")};
    auto switched = open(wanted);
    std::vector<float> heard = render(*switched, 2 * kRate_hz);
    switched->act(PlayAction::NextEffect);
    const std::vector<float> after = render(*switched, kRate_hz);
    heard.insert(heard.end(), after.begin(), after.end());
    // After the run-up and the crossfade, which take 0.1 s of what is heard.
    double error = 0.0;
    double power = 0.0;
    for (size_t i = 2 * (2 * kRate_hz + 5280); i < heard.size(); ++i) {
        error += std::pow(heard[i] - expected[i], 2.0);
        power += std::pow(expected[i], 2.0);
    }
    const double error_db = 10.0 * std::log10(error / power);
    RecordProperty("error_db", std::to_string(error_db));
    EXPECT_LT(error_db, -60.0);
    EXPECT_EQ(switched->status().effect, "surround (3DSurround)");
}

TEST_F(Switching, AnOptionThatTheEffectLacksIsRefusedInWords) {
    auto playback = open(settings(tone(2.0), "normalizer"));
    for (const PlayAction action : {PlayAction::NextType, PlayAction::NextMode, PlayAction::RaiseVoice})
        playback->act(action);
    const auto events = playback->takeEvents();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_THAT(events[0].text, HasSubstr("only surround"));
    EXPECT_THAT(events[1].text, HasSubstr("MegaBass"));
    EXPECT_THAT(events[2].text, HasSubstr("only dialogue"));
    EXPECT_EQ(playback->status().effect, "normalizer");
}

}  // namespace
