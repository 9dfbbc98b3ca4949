#include "playback.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "playback_fixture.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlaybackSettings;
using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;

class Playing : public test::PlaybackTest {};

TEST_F(Playing, TheOriginalHasTheSamplesOfTheFile) {
    PlaybackSettings wanted = settings(programme(1.3), "surround");
    wanted.hears_effect = false;
    wanted.is_matching = false;
    auto playback = open(wanted);
    const std::vector<float> heard = renderAll(*playback);
    const std::vector<float> decoded = test::decode(file("programme.wav"));
    // Surround's reverberation is still awaited after the end of the file.
    ASSERT_GE(heard.size(), decoded.size());
    EXPECT_EQ(std::vector<float>(heard.begin(), heard.begin() + static_cast<ptrdiff_t>(decoded.size())),
              decoded);
    EXPECT_TRUE(std::all_of(heard.begin() + static_cast<ptrdiff_t>(decoded.size()), heard.end(),
                            [](float sample) { return sample == 0.0F; }));
}

TEST_F(Playing, TheEffectHasTheSamplesThatRenderWrites) {
    for (const std::string effect : {"normalizer", "surround", "dialogue"}) {
        SCOPED_TRACE(effect);
        PlaybackSettings wanted = settings(programme(1.3), effect);
        wanted.is_matching = false;
        auto playback = open(wanted);
        const std::vector<float> heard = renderAll(*playback);
        const auto result = test::runProcess(
            {SONIVEX_PROGRAM, "render", file("programme.wav"), file(effect + ".wav"), "--effect", effect});
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const std::vector<float> rendered = test::decode(file(effect + ".wav"));
        ASSERT_GE(heard.size(), rendered.size());
        EXPECT_EQ(std::vector<float>(heard.begin(), heard.begin() + static_cast<ptrdiff_t>(rendered.size())),
                  rendered);
    }
}

TEST_F(Playing, TheSoundIsTheSameInCallsOfAnyLength) {
    const PlaybackSettings wanted = settings(programme(0.7), "dialogue");
    auto whole = open(wanted);
    const std::vector<float> expected = renderAll(*whole);
    auto cut = open(wanted);
    std::vector<float> heard;
    std::vector<float> block(2 * 5000);
    for (const int frames : {1, 7, 480, 481, 5000, 333}) {
        const int rendered = cut->render(block.data(), frames);
        heard.insert(heard.end(), block.begin(), block.begin() + static_cast<ptrdiff_t>(rendered) * 2);
    }
    const std::vector<float> beginning(expected.begin(),
                                       expected.begin() + static_cast<ptrdiff_t>(heard.size()));
    EXPECT_THAT(heard, Pointwise(FloatNear(1e-6F), beginning));
}

TEST_F(Playing, VolumeIsInDecibels) {
    PlaybackSettings wanted = settings(tone(2.0), "normalizer");
    wanted.hears_effect = false;
    wanted.is_matching = false;
    wanted.volume_db = -20.0;
    auto playback = open(wanted);
    const std::vector<float> heard = render(*playback, kRate_hz);
    const float peak = *std::max_element(heard.begin() + kRate_hz, heard.end());
    EXPECT_NEAR(peak, 0.05F, 1e-4F);
    playback->act(PlayAction::Louder);
    EXPECT_EQ(playback->status().volume_db, -18.0);
    for (int i = 0; i < 40; ++i) playback->act(PlayAction::Louder);
    EXPECT_EQ(playback->status().volume_db, 0.0);
    for (int i = 0; i < 40; ++i) playback->act(PlayAction::Quieter);
    EXPECT_EQ(playback->status().volume_db, -60.0);
}

TEST_F(Playing, APauseLosesNothing) {
    PlaybackSettings wanted = settings(programme(2.0), "normalizer");
    wanted.hears_effect = false;
    wanted.is_matching = false;
    auto playback = open(wanted);
    std::vector<float> heard = render(*playback, 24000);
    playback->act(PlayAction::TogglePause);
    const std::vector<float> paused = render(*playback, 24000);
    EXPECT_TRUE(
        std::all_of(paused.begin() + 2 * 2000, paused.end(), [](float sample) { return sample == 0.0F; }));
    const double position_s = playback->status().position_s;
    // 40 ms of the file fade out.
    EXPECT_NEAR(position_s, 0.54, 1e-9);
    playback->act(PlayAction::TogglePause);
    const std::vector<float> after = render(*playback, 24000);
    const std::vector<float> decoded = test::decode(file("programme.wav"));
    const auto from = static_cast<ptrdiff_t>(std::lround(position_s * kRate_hz)) * 2;
    const ptrdiff_t fade = 2 * 1920;
    EXPECT_EQ(std::vector<float>(after.begin() + fade, after.end()),
              std::vector<float>(decoded.begin() + from + fade,
                                 decoded.begin() + from + static_cast<ptrdiff_t>(after.size())));
}

TEST_F(Playing, QuitFadesOutAndEnds) {
    auto playback = open(settings(tone(3.0), "surround"));
    render(*playback, 24000);
    playback->act(PlayAction::Quit);
    const std::vector<float> rest = renderAll(*playback);
    EXPECT_EQ(rest.size(), 2U * 1920);
    EXPECT_EQ(rest.back(), 0.0F);
}

TEST_F(Playing, KeysAfterQuitDoNothing) {
    auto playback = open(settings(programme(5.0), "normalizer"));
    render(*playback, kRate_hz);
    playback->act(PlayAction::Quit);
    render(*playback, 480);
    for (const PlayAction action : {PlayAction::TogglePause, PlayAction::TogglePause}) playback->act(action);
    EXPECT_EQ(render(*playback, kRate_hz).size(), 2U * (kRate_hz / 25 - 480));
}

TEST_F(Playing, EverySourceIsPlayedInStereo) {
    for (const int channels : {1, 6, 8}) {
        SCOPED_TRACE(channels);
        test::makeQuietSpeech(file("speech.wav"), channels);
        const size_t frames = test::decode(file("speech.wav")).size() / static_cast<size_t>(channels);
        for (const std::string effect : {"normalizer", "surround", "dialogue"}) {
            auto playback = open(settings(file("speech.wav"), effect));
            const std::vector<float> heard = renderAll(*playback);
            EXPECT_GE(heard.size() / 2, frames) << effect;
            EXPECT_GT(*std::max_element(heard.begin(), heard.end()), 1e-4F) << effect;
            EXPECT_THAT(playback->takeEvents(), ElementsAre()) << effect;
        }
    }
}

TEST_F(Playing, AnotherRateIsConverted) {
    programme(1.0, "slow.wav", {"-ar", "22050"});
    auto playback = open(settings(file("slow.wav"), "surround"));
    EXPECT_EQ(playback->rate_hz(), 44100);
    const auto frames = static_cast<double>(renderAll(*playback).size()) / 2.0;
    EXPECT_GE(frames, 44100.0);
}

}  // namespace
