// Plays through the steered filter, which drops calls, has no memory or does not begin.
#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <new>
#include <thread>

#include "play_thread.h"
#include "playback_fixture.h"
#include "tools/sonivex/steered_filter/steering.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::Playback;
using sonivex_tool::PlayThread;
using sonivex_tool::SoundFeed;
using testing::Contains;
using testing::ElementsAre;

constexpr int kCall_frames = 1024;

class PlayingThroughABadFilter : public test::PlaybackTest {
  protected:
    // Makes a stereo file of a second whose calls [first, end) are steered.
    std::string steeredCalls(int first, int end, int16_t steering = test::kDropCall,
                             int rate_hz = kRate_hz) const {
        std::vector<int16_t> samples(2UL * static_cast<size_t>(rate_hz), 5);
        for (int i = 2 * first * kCall_frames; i < 2 * end * kCall_frames && i < 2 * rate_hz; ++i)
            samples[static_cast<size_t>(i)] = steering;
        test::writeFile(file("in.pcm"), std::string(reinterpret_cast<const char*>(samples.data()),
                                                    samples.size() * sizeof(int16_t)));
        test::ffmpeg({"-f", "s16le", "-ar", std::to_string(rate_hz), "-ac", "2", "-i", file("in.pcm"),
                      file("in.wav")});
        return file("in.wav");
    }

    static std::vector<std::string> eventsOf(Playback& playback) {
        std::vector<std::string> texts;
        for (const auto& event : playback.takeEvents()) texts.push_back(event.text);
        return texts;
    }
};

TEST_F(PlayingThroughABadFilter, SaysHowMuchTheFilterDropped) {
    auto playback = open(settings(steeredCalls(16, 24), "normalizer"));
    EXPECT_EQ(renderAll(*playback).size(), 2U * kRate_hz);
    EXPECT_THAT(eventsOf(*playback), ElementsAre("the filter has dropped 8192 frames so far"));
}

TEST_F(PlayingThroughABadFilter, LeavesTheOriginalIfTheFilterDropsEverything) {
    auto playback = open(settings(steeredCalls(0, 48), "normalizer"));
    EXPECT_EQ(renderAll(*playback).size(), 2U * kRate_hz);
    EXPECT_FALSE(playback->status().hears_effect);
    EXPECT_THAT(eventsOf(*playback), ElementsAre("the original is heard: the filter dropped every frame "
                                                 "(--verbose shows its log) (r retries)"));
}

TEST_F(PlayingThroughABadFilter, KeepsTheOldFilterIfTheNextOneDropsEverything) {
    auto playback = open(settings(steeredCalls(1, 48), "normalizer"));
    render(*playback, kRate_hz * 4 / 5);  // so late that the next filter begins where calls are dropped
    playback->act(PlayAction::Retry);
    renderAll(*playback);
    EXPECT_TRUE(playback->status().hears_effect);
    EXPECT_THAT(eventsOf(*playback), Contains("cannot change to normalizer: the filter dropped every frame "
                                              "(--verbose shows its log)"));
}

TEST_F(PlayingThroughABadFilter, KeepsTheOldFilterIfTheNextOneDoesNotBegin) {
    auto playback = open(settings(steeredCalls(0, 0, 0, test::kOneFilterRate_hz), "normalizer"));
    render(*playback, 4800);
    playback->act(PlayAction::Retry);
    renderAll(*playback);
    EXPECT_TRUE(playback->status().hears_effect);
    EXPECT_THAT(eventsOf(*playback), ElementsAre("cannot change to normalizer: cannot initialise the filter "
                                                 "(--verbose shows its log)"));
}

TEST_F(PlayingThroughABadFilter, EndsTheThreadWithWhatTheFilterThrew) {
    auto playback = open(settings(steeredCalls(0, 48, test::kNoMemory), "normalizer"));
    PlayThread thread(*playback, std::make_shared<SoundFeed>(4800), {});
    for (int i = 0; i < 6000 && !thread.hasEnded(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_TRUE(thread.hasEnded());
    EXPECT_THROW(thread.rethrow(), std::bad_alloc);
}

}  // namespace
