// Checks when and why a Player sets its filter invalid to bypass it, and when it sets it valid again.
#include <cmath>
#include <limits>

#include "player_fixture.h"

namespace Vorlin::test {
namespace {

class PlayerBypass : public PlayerFixture {
  protected:
    // The player's answer must agree with the state that it last set in the filter.
    void expectBypassed(const Player& player, bool expected) const {
        EXPECT_EQ(player.isBypassed(), expected);
        EXPECT_EQ(script_->is_invalid, expected);
    }
};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerBypass, testing::Bool(), activity);

TEST_P(PlayerBypass, PassesFramesThroughUntouchedWhileTheListenerBypasses) {
    const auto player = makePlayer();
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    player->setBypass(true);
    expectBypassed(*player, true);
    pushFrames(*player, 4);
    EXPECT_EQ(player->drain(), 0);
    player->setBypass(false);
    expectBypassed(*player, false);
    pushFrames(*player, 5);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->processed, 8);
    EXPECT_EQ(player->counts().bypassed, 4u);
    EXPECT_EQ(numbers_out_, firstNumbers(12));
}

TEST_P(PlayerBypass, SetsANewFilterValid) {
    const auto player = makePlayer();
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, FollowsTheFrameRateInBothDirections) {
    const auto player = makePlayer();
    player->setVideoFps(61);
    expectBypassed(*player, false);
    player->setVideoFps(62);
    expectBypassed(*player, true);
    player->setVideoFps(120);
    expectBypassed(*player, true);
    player->setVideoFps(30);
    expectBypassed(*player, false);
    player->setSpeed(2.0);
    expectBypassed(*player, false);
    player->setVideoFps(31);
    expectBypassed(*player, true);
    player->setSpeed(1.0);
    expectBypassed(*player, false);
    player->setVideoFps(62.5);
    expectBypassed(*player, true);
}

TEST_P(PlayerBypass, RemembersAFrameRateThatRoseDuringAListenerBypass) {
    const auto player = makePlayer();
    player->setBypass(true);
    player->setVideoFps(120);
    player->setBypass(false);
    expectBypassed(*player, true);
    player->setVideoFps(30);
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, RemembersAFrameRateThatFellDuringAListenerBypass) {
    const auto player = makePlayer();
    player->setVideoFps(120);
    player->setBypass(true);
    player->setVideoFps(30);
    expectBypassed(*player, true);
    player->setBypass(false);
    expectBypassed(*player, false);
    player->setVideoFps(120);
    expectBypassed(*player, true);
}

TEST_P(PlayerBypass, KeepsTheFilterInvalidForANewRateDuringAListenerBypass) {
    const auto player = makePlayer();
    player->setVideoFps(120);
    player->setBypass(true);
    const int times_made_valid = script_->times_made_valid;
    player->setVideoFps(30);
    player->setVideoFps(120);
    EXPECT_EQ(script_->times_made_valid, times_made_valid) << "frames could slip through the effect";
    player->setBypass(false);
    expectBypassed(*player, true);
}

TEST_P(PlayerBypass, RepeatsTheNumbersForWhichTheFilterHadNoMemory) {
    const auto player = makePlayer();
    script_->options_without_memory = 3;
    player->setVideoFps(31);
    player->setSpeed(2.0);  // repeats the frame rate, too
    EXPECT_THAT(script_->options, testing::IsEmpty());
    pushFrames(*player, 1);
    expectBypassed(*player, true);
    pushFrames(*player, 1);
    EXPECT_THAT(script_->options, testing::ElementsAre("video_fps=31", "player_speed=2"));
    script_->options_without_memory = 1;
    player->setSpeed(3.0);
    player->setSpeed(1.0);
    expectBypassed(*player, false);
    EXPECT_THAT(script_->options, testing::ElementsAre("video_fps=31", "player_speed=2", "player_speed=1"));
}

TEST_P(PlayerBypass, IgnoresTheEndOfABypassThatNeverBegan) {
    const auto player = makePlayer();
    player->setVideoFps(120);
    player->setBypass(false);
    player->retryAfterOverload();
    expectBypassed(*player, true);
}

TEST_P(PlayerBypass, StaysBypassedAfterAnOverloadUntilARetry) {
    script_->overload_from_ms = 0;
    const auto player = makePlayer();
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    expectBypassed(*player, true);
    EXPECT_EQ(script_->samples_ms.size(), 1u);

    player->setVideoFps(24);
    expectBypassed(*player, true);
    player->seek();
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->samples_ms.size(), 1u) << "the player reported a working time for a bypassed filter";
    EXPECT_EQ(player->counts().bypassed, 3u);

    script_->overload_from_ms = std::numeric_limits<uint64_t>::max();
    player->retryAfterOverload();
    expectBypassed(*player, false);
    pushFrames(*player, 2);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->processed, 3);
    EXPECT_EQ(player->counts().bypassed, 3u);
}

TEST_P(PlayerBypass, RemembersAFrameRateThatRoseDuringAnOverload) {
    script_->overload_from_ms = 0;
    const auto player = makePlayer();
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    player->setVideoFps(120);
    player->setBypass(true);
    player->retryAfterOverload();
    expectBypassed(*player, true);
    player->setBypass(false);
    expectBypassed(*player, true);
    player->setVideoFps(25);
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, IsNotEndedByARecoveryWhileAnOverloadLasts) {
    script_->overload_from_ms = 0;
    const auto player = makePlayer();
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    expectBypassed(*player, true);
    dynamic_cast<FakeFilter&>(player->filter()).send(filterPrototype::FILTER_VALID_RECOVERY);
    expectBypassed(*player, true);
    player->retryAfterOverload();
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, IgnoresEventsThatItDoesNotKnow) {
    const auto player = makePlayer();
    auto& filter = dynamic_cast<FakeFilter&>(player->filter());
    const int times_made_valid = script_->times_made_valid;
    filter.send("SomethingElse");
    expectBypassed(*player, false);
    EXPECT_EQ(script_->times_made_valid, times_made_valid) << "the player told the filter something";
    player->setVideoFps(120);
    filter.send("SomethingElse");
    expectBypassed(*player, true);
}

TEST_P(PlayerBypass, KeepsTheFilterInvalidForALowerRateWhileAnOverloadLasts) {
    script_->overload_from_ms = 0;
    const auto player = makePlayer();
    player->setVideoFps(25);
    pushFrames(*player, 1);
    EXPECT_EQ(player->drain(), 0);
    player->setVideoFps(120);
    player->setBypass(true);
    player->setBypass(false);  // the player learns that the rate is too high, too
    const int times_made_valid = script_->times_made_valid;
    player->setVideoFps(30);
    EXPECT_EQ(script_->times_made_valid, times_made_valid) << "frames could slip through the effect";
    expectBypassed(*player, true);
    player->retryAfterOverload();
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, SurvivesRatesThatTheFilterRejects) {
    const auto player = makePlayer();
    player->setVideoFps(120);
    player->setSpeed(1e300);  // beyond the range of float, so the filter rejects the text
    expectBypassed(*player, true);
    player->setVideoFps(1e-320);
    expectBypassed(*player, true);
    player->setSpeed(1.0);
    player->setVideoFps(30);
    expectBypassed(*player, false);
}

TEST_P(PlayerBypass, WritesNumbersIndependentlyOfTheLocale) {
    const auto player = makePlayer();
    player->setVideoFps(29.97);
    player->setSpeed(0.5);
    EXPECT_THAT(script_->options, testing::ElementsAre("video_fps=29.97", "player_speed=0.5"));
}

}  // namespace
}  // namespace Vorlin::test
