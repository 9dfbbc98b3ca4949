#include <gmock/gmock.h>

#include <cmath>

#include "playback_fixture.h"
#include "support/signals/clicks.h"

namespace {

using sonivex_tool::PlayAction;
using sonivex_tool::PlaybackSettings;
using testing::HasSubstr;

class Overload : public test::PlaybackTest {};

TEST_F(Overload, TheOriginalIsFadedInWhenTheLoadGuardGivesUp) {
    PlaybackSettings wanted = settings(tone(4.0), "normalizer");
    wanted.video_fps = 25.0;
    auto playback = open(wanted);
    std::vector<float> heard = render(*playback, 480);
    EXPECT_TRUE(playback->status().hears_effect);
    const std::vector<float> rest = render(*playback, 2 * kRate_hz);
    heard.insert(heard.end(), rest.begin(), rest.end());

    EXPECT_FALSE(playback->status().hears_effect);
    EXPECT_THAT(playback->status().guard, HasSubstr("too slow"));
    const auto events = playback->takeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_THAT(events[0].text, HasSubstr("the original is heard"));

    const std::vector<float> decoded = test::decode(file("tone.wav"));
    EXPECT_NEAR(heard[2 * 400], -decoded[2 * 400], 1e-4F) << "the effect turns the sign";
    EXPECT_NEAR(heard[2 * 90000], decoded[2 * 90000], 1e-4F);
    const double steady = test::largestSecondDifference(heard, 80000, 90000);
    const double spike = test::largestSecondDifference(heard, 1, 90000);
    EXPECT_LE(20.0 * std::log10(spike / steady), 3.0);
}

TEST_F(Overload, ARetryIsHeardAgain) {
    PlaybackSettings wanted = settings(tone(6.0), "normalizer");
    wanted.video_fps = 25.0;
    wanted.hears_effect = true;
    auto playback = open(wanted);
    render(*playback, 2 * kRate_hz);
    ASSERT_FALSE(playback->status().hears_effect);
    playback->act(PlayAction::Retry);
    render(*playback, 3 * kRate_hz);
    // The new filter gives up too, and so a second event says.
    EXPECT_EQ(playback->takeEvents().size(), 2U);
    EXPECT_FALSE(playback->status().hears_effect);
}

}  // namespace
