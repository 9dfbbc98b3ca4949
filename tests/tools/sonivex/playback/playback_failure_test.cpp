// Files that break or change while they play, and filters that are bypassed.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "failure.h"
#include "playback_fixture.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlaybackSettings;
using testing::HasSubstr;

class PlayingBadInput : public test::PlaybackTest {};

TEST_F(PlayingBadInput, TheLoadGuardLeavesTheOriginalAndSaysSo) {
    PlaybackSettings wanted = settings(programme(2.0), "surround");
    wanted.video_fps = 120.0;
    wanted.is_matching = false;
    auto playback = open(wanted);
    const std::vector<float> heard = renderAll(*playback);
    EXPECT_EQ(heard, test::decode(file("programme.wav")));
    EXPECT_FALSE(playback->status().hears_effect);
    EXPECT_THAT(playback->status().guard, HasSubstr("frame rate"));
    const auto events = playback->takeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_THAT(events[0].text, HasSubstr("the original is heard"));
}

TEST_F(PlayingBadInput, ARetryThatIsBypassedAgainSaysSoAgain) {
    PlaybackSettings wanted = settings(programme(2.0), "surround");
    wanted.video_fps = 120.0;
    auto playback = open(wanted);
    render(*playback, 4800);
    playback->takeEvents();
    playback->act(PlayAction::Retry);
    render(*playback, 24000);
    const auto events = playback->takeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_THAT(events[0].text, HasSubstr("frame rate"));
}

TEST_F(PlayingBadInput, ACutFileIsPlayedAsFarAsItGoes) {
    programme(4.0, "whole.flac", {"-c:a", "flac"});
    const auto bytes = std::filesystem::file_size(file("whole.flac"));
    std::filesystem::resize_file(file("whole.flac"), bytes / 2);
    PlaybackSettings wanted = settings(file("whole.flac"), "normalizer");
    auto playback = open(wanted);
    const double heard_s = static_cast<double>(renderAll(*playback).size()) / 2.0 / kRate_hz;
    EXPECT_GT(heard_s, 1.5);
    EXPECT_LT(heard_s, 2.5);
    EXPECT_TRUE(playback->hasReadAll());
    EXPECT_TRUE(playback->damage().isDamaged());
}

TEST_F(PlayingBadInput, AHoleInAFileDoesNotEndThePlay) {
    programme(6.0, "whole.mp3", {"-b:a", "128k"});
    std::string bytes = test::readFile(file("whole.mp3"));
    std::fill_n(bytes.begin() + 40000, 8000, '\x55');
    test::writeFile(file("holed.mp3"), bytes);
    auto playback = open(settings(file("holed.mp3"), "dialogue"));
    const double heard_s = static_cast<double>(renderAll(*playback).size()) / 2.0 / kRate_hz;
    EXPECT_GT(heard_s, 5.0);
    EXPECT_TRUE(playback->damage().isDamaged());
}

TEST_F(PlayingBadInput, AFileThatChangesItsFormatPlaysOn) {
    test::makeQuietSpeech(file("first.ac3"), 2, {"-b:a", "448k"});
    test::makeQuietSpeech(file("second.ac3"), 6, {"-b:a", "448k"});
    test::writeFile(file("in.ac3"), test::readFile(file("first.ac3")) + test::readFile(file("second.ac3")));
    const size_t frames =
        test::decode(file("first.ac3")).size() / 2 + test::decode(file("second.ac3")).size() / 6;
    auto playback = open(settings(file("in.ac3"), "normalizer"));
    const std::vector<float> heard = renderAll(*playback);
    EXPECT_EQ(heard.size() / 2, frames);
    const float late = *std::max_element(heard.end() - kRate_hz, heard.end());
    EXPECT_GT(late, 1e-4F);
    const auto events = playback->takeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_THAT(events[0].text, HasSubstr("the file goes on with 48000 Hz, 5.1"));
}

TEST_F(PlayingBadInput, AFileThatVanishesPlaysOn) {
    auto playback = open(settings(programme(3.0), "surround"));
    render(*playback, 24000);
    std::filesystem::remove(file("programme.wav"));
    const std::vector<float> rest = renderAll(*playback);
    EXPECT_GE(rest.size() / 2, 120000U);
}

TEST_F(PlayingBadInput, AFileWithoutSamplesEndsAtOnce) {
    test::ffmpeg(
        {"-f", "lavfi", "-i", "anullsrc=r=48000:cl=stereo:d=0", "-c:a", "pcm_s16le", file("empty.wav")});
    auto playback = open(settings(file("empty.wav"), "surround"));
    EXPECT_TRUE(renderAll(*playback).empty());
}

}  // namespace
