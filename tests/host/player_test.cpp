// How a Player moves frames: order, back-pressure, drains, seeks, changes of format, stalls.
#include "vorlin/player.h"

#include "player_fixture.h"

extern "C" {
#include <libavutil/error.h>
}

namespace Vorlin::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

class PlayerPump : public PlayerFixture {};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerPump, testing::Bool(), activity);

TEST_P(PlayerPump, HandsOutEveryFrameInOrder) {
    const auto player = makePlayer();
    ASSERT_TRUE(player);
    pushFrames(*player, 200);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(200));
    EXPECT_EQ(player->counts().pushed, 200u);
    EXPECT_EQ(player->counts().pulled, 200u);
    EXPECT_EQ(player->counts().bypassed, 0u);
    EXPECT_EQ(player->counts().dropped, 0u);
    EXPECT_EQ(player->counts().discarded, 0u);
    EXPECT_EQ(player->counts().flushes, 0u);
    EXPECT_EQ(script_->processed, 200);
}

TEST_P(PlayerPump, HandsOutFramesAsSoonAsTheyAreReady) {
    const auto player = makePlayer(false);
    pushFrames(*player, 3);
    EXPECT_EQ(numbers_out_, firstNumbers(3));
}

TEST_P(PlayerPump, AnswersTryAgainUntilTheFilterHasRoom) {
    script_->runs_to_skip = isActive() ? 0 : 10;
    script_->work = [] { qf_msleep(3); };
    const auto player = makePlayer();
    pushFrames(*player, 20);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_GT(script_->refusals, 0);
    EXPECT_EQ(numbers_out_, firstNumbers(20));
}

TEST_P(PlayerPump, CountsTheFramesThatTheFilterGaveUp) {
    script_->keeps = [](const NumberedFrame& frame) { return frame.number % 3 != 0; };
    const auto player = makePlayer();
    pushFrames(*player, 31);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(player->counts().dropped, 11u);
    EXPECT_EQ(player->counts().pulled, 20u);
    pushFrames(*player, 3);  // numbers 31 to 33: one more is given up
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(player->counts().dropped, 12u);
    EXPECT_EQ(player->counts().pushed, player->counts().pulled + player->counts().dropped);
}

TEST_P(PlayerPump, DrainsWithAFenceLikeTheStream) {
    const auto player = makePlayer();
    IQFFrame::audioInfo info = kStereo48k;
    info.format = 8;  // fltp
    info.sample_rate = 44100;
    pushFrames(*player, 2, info);
    EXPECT_EQ(player->drain(), 0);
    ASSERT_FALSE(script_->fences.empty());
    EXPECT_EQ(script_->fences[0].channels, 3);
    EXPECT_EQ(script_->fences[0].format, 8);
    EXPECT_EQ(script_->fences[0].sample_rate, 44100);
    EXPECT_TRUE(script_->fences_hold_samples);
    EXPECT_EQ(player->counts().pushed, 2u);
    EXPECT_EQ(player->counts().pulled, 2u);
}

TEST_P(PlayerPump, DrainsAStreamOfUnknownFormat) {
    const auto player = makePlayer();
    pushFrames(*player, 2, IQFFrame::audioInfo{});
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(2));
}

TEST_P(PlayerPump, SendsNoFenceWhenNothingWasPushed) {
    const auto player = makePlayer();
    EXPECT_EQ(player->drain(), 0);
    pushFrames(*player, 1);
    player->seek();
    EXPECT_EQ(player->drain(), 0);
    EXPECT_TRUE(script_->fences.empty());
}

TEST_P(PlayerPump, LetsTheOldFramesOutAndFlushesWhenTheStreamChanges) {
    IQFFrame::audioInfo other_format = kStereo48k;
    other_format.format = 3;
    IQFFrame::audioInfo other_rate = other_format;
    other_rate.sample_rate = 44100;
    IQFFrame::audioInfo other_channels = other_rate;
    other_channels.channels = 6;
    IQFFrame::audioInfo other_layout = other_channels;
    other_layout.channel_layout = 0x60f;

    const auto player = makePlayer();
    pushFrames(*player, 4);
    int flushes = 0;
    for (const auto& info : {other_format, other_rate, other_channels, other_layout}) {
        pushFrames(*player, 4, info);
        EXPECT_EQ(script_->flushes, ++flushes);
        EXPECT_GE(numbers_out_.size(), 4u * static_cast<size_t>(flushes))
            << "old frames were not let out first";
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(20));
    EXPECT_EQ(player->counts().flushes, 4u);
    EXPECT_EQ(player->counts().discarded, 0u);
}

TEST_P(PlayerPump, TakesFramesOfAnyLengthWithoutAFlush) {
    const auto player = makePlayer();
    for (const int frames : {1024, 1, 4096}) {
        IQFFrame::audioInfo info = kStereo48k;
        info.nb_samples = frames;
        pushFrames(*player, 1, info);
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->flushes, 0);
}

TEST_P(PlayerPump, ThrowsAwayWhatIsUnderWayOnASeek) {
    script_->is_stuck = true;
    const auto player = makePlayer();
    pushFrames(*player, 2);
    player->seek();
    script_->is_stuck = false;
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(numbers_out_, ElementsAre(2, 3, 4));
    EXPECT_EQ(player->counts().discarded, 2u);
    EXPECT_EQ(player->counts().dropped, 0u);
    EXPECT_EQ(player->counts().flushes, 1u);
}

TEST_P(PlayerPump, FlushesOnlyOnceWhenASeekLeadsIntoAnotherFormat) {
    const auto player = makePlayer();
    pushFrames(*player, 2);
    player->seek();
    IQFFrame::audioInfo mono = kStereo48k;
    mono.channels = 1;
    pushFrames(*player, 2, mono);
    EXPECT_EQ(script_->flushes, 1);
    EXPECT_EQ(player->counts().flushes, 1u);
}

TEST_P(PlayerPump, GivesUpOnAFilterThatMovesNothing) {
    script_->is_stuck = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    EXPECT_EQ(pushFrame(*player), 0);
    EXPECT_EQ(pushFrame(*player), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(pushFrame(*player), AVERROR(ETIMEDOUT));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(60));
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(player->counts().pushed, 2u);
    EXPECT_EQ(player->counts().dropped, 0u) << "known only after a drain that succeeded";

    script_->is_stuck = false;
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(2));
}

TEST_P(PlayerPump, GivesUpOnAFilterThatKeepsTheFence) {
    script_->eats_fences = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    pushFrames(*player, 2);
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(numbers_out_, firstNumbers(2));
}

// Two frames and the fence are under way when the drain begins: longer than the limit in all, but not each.
TEST_F(PlayerPump, MeasuresAStallFromTheLastProgress) {
    script_->work = [] { qf_msleep(200); };
    const auto player = makePlayer(true, milliseconds(320));
    pushFrames(*player, 4);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(4));
}

TEST_P(PlayerPump, RefusesANullFrame) {
    const auto player = makePlayer();
    EXPECT_EQ(player->push(nullptr), AVERROR(EINVAL));
    EXPECT_EQ(player->counts().pushed, 0u);
}

// A frame that is given up ends a run early: what waits behind it, the fence too, needs another push to move.
TEST_F(PlayerPump, DrainsAnInactiveFilterThatStillHoldsFrames) {
    script_->frames_per_run = 1;
    script_->runs_to_skip = 1;
    const auto player = makePlayer(false);
    pushFrames(*player, 5);
    EXPECT_LT(numbers_out_.size(), 5u);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(5));
    pushFrames(*player, 5);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(10));
}

TEST_F(PlayerPump, DrainsAnInactiveFilterThatGivesUpTheLastFrames) {
    script_->keeps = [](const NumberedFrame& frame) { return frame.number < 3; };
    script_->runs_to_skip = 2;
    const auto player = makePlayer(false);
    pushFrames(*player, 7);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(3));
    EXPECT_EQ(player->counts().dropped, 4u);
}

TEST_F(PlayerPump, IsNotMadeWithoutAFilterThatStarts) {
    PlayerConfig config;
    config.filter_name = "nobody answers to this";
    EXPECT_EQ(Player::create(nullptr, config, [](std::unique_ptr<IQFFrame>) {}), nullptr);
    script_->init_succeeds = false;
    EXPECT_EQ(makePlayer(true), nullptr);
    EXPECT_TRUE(script_->is_destroyed);
}

TEST_F(PlayerPump, PassesTheOptionsOn) {
    const auto player = makePlayer(false);
    EXPECT_TRUE(player->setOptions("{}"));
    EXPECT_FALSE(player->setOptions(""));
    EXPECT_THAT(script_->options, ElementsAre("filter_option={}", "filter_option="));
}

}  // namespace
}  // namespace Vorlin::test
