#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "playback_fixture.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlaybackSettings;

struct Format {
    std::string name;
    std::vector<std::string> options;
    double tolerance = 0.0;
};

// The decoder of MP2 dithers, and the noise depends on where it began.
constexpr double kStepOf16Bits = 1.0 / 32768.0;

void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.name;
}

class Seeking : public test::PlaybackTest {
  protected:
    static PlaybackSettings originalOf(const std::string& path) {
        PlaybackSettings wanted = settings(path, "normalizer");
        wanted.hears_effect = false;
        wanted.is_matching = false;
        return wanted;
    }
};

class SeekingInFormats : public Seeking, public testing::WithParamInterface<Format> {};

TEST_P(SeekingInFormats, LandsAtTheSample) {
    const std::string path = programme(12.0, GetParam().name, GetParam().options);
    const std::vector<float> decoded = test::decode(path);
    auto playback = open(originalOf(path));
    for (const double target_s : {7.0, 2.0, 9.5, 0.0, 11.25}) {
        SCOPED_TRACE(target_s);
        render(*playback, 4800);
        playback->seekTo(target_s);
        render(*playback, 1920);  // fades out
        const std::vector<float> heard = render(*playback, 14400);
        ASSERT_EQ(heard.size(), 2U * 14400);
        const auto from = static_cast<size_t>(std::lround(target_s * kRate_hz)) * 2;
        float worst = 0.0F;
        for (size_t i = 2 * 1920; i < heard.size(); ++i)  // after the fade in
            worst = std::max(worst, std::abs(heard[i] - decoded.at(from + i)));
        EXPECT_LE(worst, GetParam().tolerance);
        EXPECT_NEAR(playback->status().position_s, target_s + 0.3, 1e-9);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , SeekingInFormats,
    testing::Values(Format{"a.wav", {"-c:a", "pcm_s16le"}, 0.0}, Format{"a.flac", {"-c:a", "flac"}, 0.0},
                    Format{"a.mp3", {"-b:a", "192k"}, 0.0},
                    Format{"a.m4a", {"-c:a", "aac", "-b:a", "192k", "-aac_pns", "0"}, 0.0},
                    Format{"a.opus", {"-b:a", "192k"}, 1e-6},
                    Format{"a.ogg", {"-c:a", "libvorbis", "-b:a", "192k"}, 0.0},
                    Format{"a.aiff", {"-c:a", "pcm_s16be"}, 0.0}, Format{"a.caf", {"-c:a", "pcm_s16le"}, 0.0},
                    Format{"a.mp2", {"-b:a", "256k"}, kStepOf16Bits},
                    Format{"a.aac", {"-c:a", "aac", "-b:a", "192k", "-aac_pns", "0"}, 0.0},
                    Format{"a.wv", {"-c:a", "wavpack"}, 0.0}, Format{"a.mkv", {"-c:a", "flac"}, 0.0}),
    [](const auto& each) { return each.param.name.substr(2); });

TEST_F(Seeking, FlushesTheEffect) {
    // Loud noise, then silence: what surround still holds of the noise must not sound after a seek into the
    // silence.
    test::ffmpeg({"-f", "lavfi", "-i",
                  "anoisesrc=r=48000:a=0.5:seed=3:d=2,aformat=channel_layouts=stereo,apad=pad_dur=6", "-c:a",
                  "pcm_s16le", file("burst.wav")});
    auto playback = open(settings(file("burst.wav"), "surround"));
    render(*playback, kRate_hz);
    playback->seekTo(5.0);
    render(*playback, 1920);
    const std::vector<float> heard = render(*playback, kRate_hz);
    EXPECT_TRUE(std::all_of(heard.begin(), heard.end(), [](float sample) { return sample == 0.0F; }));
}

TEST_F(Seeking, BeyondTheEndEndsThePlay) {
    auto playback = open(originalOf(programme(3.0)));
    render(*playback, 4800);
    playback->act(PlayAction::Forward);
    const std::vector<float> rest = renderAll(*playback);
    EXPECT_LE(rest.size() / 2, 1920U + 480U);
}

TEST_F(Seeking, FromTheEndGoesOnThere) {
    auto playback = open(originalOf(programme(3.0)));
    render(*playback, 3 * kRate_hz - 100);
    playback->seekTo(1.0);
    const std::vector<float> rest = renderAll(*playback);
    EXPECT_GE(rest.size() / 2, 2U * kRate_hz);
}

TEST_F(Seeking, WhilePausedIsHeardAfterThePause) {
    auto playback = open(originalOf(programme(6.0)));
    render(*playback, 4800);
    playback->act(PlayAction::TogglePause);
    render(*playback, 4800);
    playback->seekTo(4.0);
    render(*playback, 4800);
    EXPECT_EQ(playback->status().position_s, 4.0);
    playback->act(PlayAction::TogglePause);
    const std::vector<float> heard = render(*playback, 9600);
    const std::vector<float> decoded = test::decode(file("programme.wav"));
    for (size_t i = 2 * 1920; i < heard.size(); ++i) ASSERT_EQ(heard[i], decoded.at(4U * 2 * kRate_hz + i));
}

TEST_F(Seeking, StartBeginsThere) {
    PlaybackSettings wanted = originalOf(programme(4.0));
    wanted.start_s = 2.5;
    auto playback = open(wanted);
    const std::vector<float> heard = render(*playback, 4800);
    const std::vector<float> decoded = test::decode(file("programme.wav"));
    const size_t from = 2U * 120000;
    for (size_t i = 2 * 1920; i < heard.size(); ++i) ASSERT_EQ(heard[i], decoded.at(from + i));
}

}  // namespace
