// Checks how a Player moves frames: order, back-pressure, drains, seeks, changes of format and stalls.
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

TEST_P(PlayerPump, OutputsEveryFrameInOrder) {
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

TEST_P(PlayerPump, OutputsFramesAsSoonAsTheyAreReady) {
    const auto player = makePlayer(false);
    pushFrames(*player, 3);
    EXPECT_EQ(numbers_out_, firstNumbers(3));
}

TEST_P(PlayerPump, RetriesAPushUntilTheFilterHasRoom) {
    script_->runs_to_skip = isActive() ? 0 : 10;
    script_->work = [] { qf_msleep(3); };
    const auto player = makePlayer();
    pushFrames(*player, 20);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_GT(script_->refusals, 0);
    EXPECT_EQ(numbers_out_, firstNumbers(20));
}

TEST_P(PlayerPump, CountsTheFramesThatTheFilterGivesUp) {
    script_->keeps = [](const NumberedFrame& frame) { return frame.number % 3 != 0; };
    const auto player = makePlayer();
    pushFrames(*player, 31);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(player->counts().dropped, 11u);
    EXPECT_EQ(player->counts().pulled, 20u);
    pushFrames(*player, 3);  // numbers 31 to 33, of which the filter gives up one
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(player->counts().dropped, 12u);
    EXPECT_EQ(player->counts().pushed, player->counts().pulled + player->counts().dropped);
}

TEST_P(PlayerPump, DrainsWithAFenceOfTheStreamsFormatAndThreeChannels) {
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

TEST_P(PlayerPump, SendsNoFenceIfNothingWasPushed) {
    const auto player = makePlayer();
    EXPECT_EQ(player->drain(), 0);
    pushFrames(*player, 1);
    player->seek();
    EXPECT_EQ(player->drain(), 0);
    EXPECT_TRUE(script_->fences.empty());
}

TEST_P(PlayerPump, OutputsTheOldFramesAndFlushesWhenTheStreamChanges) {
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
            << "the player must output the old frames before it flushes";
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(20));
    EXPECT_EQ(player->counts().flushes, 4u);
    EXPECT_EQ(player->counts().discarded, 0u);
}

TEST_P(PlayerPump, AcceptsFramesOfAnyLengthWithoutAFlush) {
    const auto player = makePlayer();
    for (const int frames : {1024, 1, 4096}) {
        IQFFrame::audioInfo info = kStereo48k;
        info.nb_samples = frames;
        pushFrames(*player, 1, info);
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script_->flushes, 0);
}

TEST_P(PlayerPump, DiscardsTheFramesUnderWayOnASeek) {
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

TEST_P(PlayerPump, CountsOnAfterTheOutputHadNoMemory) {
    number_without_memory_ = 5;
    const auto player = makePlayer();
    int failures = 0;
    for (int i = 0; i < 10; ++i) {
        const int result = pushFrame(*player);
        if (result == 0) continue;
        EXPECT_EQ(result, AVERROR(ENOMEM));
        ++failures;
        EXPECT_EQ(player->counts().pushed, player->counts().pulled + player->counts().discarded);
    }
    if (const int result = player->drain(); result != 0) {
        EXPECT_EQ(result, AVERROR(ENOMEM));
        ++failures;
    }
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(failures, 1);
    const PlayerCounts& counts = player->counts();
    EXPECT_EQ(counts.pushed, 13u);
    EXPECT_EQ(counts.pulled, numbers_out_.size());
    EXPECT_EQ(counts.discarded, 13u - numbers_out_.size());
    EXPECT_EQ(counts.dropped, 0u);
    EXPECT_EQ(counts.flushes, 1u);
}

TEST_P(PlayerPump, FlushesOnlyOnceForASeekToAnotherFormat) {
    const auto player = makePlayer();
    pushFrames(*player, 2);
    player->seek();
    IQFFrame::audioInfo mono = kStereo48k;
    mono.channels = 1;
    pushFrames(*player, 2, mono);
    EXPECT_EQ(script_->flushes, 1);
    EXPECT_EQ(player->counts().flushes, 1u);
}

TEST_P(PlayerPump, TimesOutOnAFilterThatMovesNoFrame) {
    script_->is_stuck = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    EXPECT_EQ(pushFrame(*player), 0);
    EXPECT_EQ(pushFrame(*player), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(pushFrame(*player), AVERROR(ETIMEDOUT));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(60));
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(player->counts().pushed, 2u);
    EXPECT_EQ(player->counts().dropped, 0u) << "the player knows the drops only after a successful drain";

    script_->is_stuck = false;
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(2));
}

TEST_P(PlayerPump, TimesOutOnAFilterThatKeepsTheFence) {
    script_->eats_fences = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    pushFrames(*player, 2);
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(numbers_out_, firstNumbers(2));
}

// Two frames and the fence are under way when the drain begins. Together they take longer than the limit, but
// each takes less.
TEST_F(PlayerPump, MeasuresAStallFromTheLastProgress) {
    script_->work = [] { qf_msleep(200); };
    const auto player = makePlayer(true, milliseconds(320));
    pushFrames(*player, 4);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbers_out_, firstNumbers(4));
}

TEST_P(PlayerPump, RejectsANullFrame) {
    const auto player = makePlayer();
    EXPECT_EQ(player->push(nullptr), AVERROR(EINVAL));
    EXPECT_EQ(player->counts().pushed, 0u);
}

// A run of an inactive filter may end early. The frames that still wait, including the fence, then move only
// with another push.
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

TEST_F(PlayerPump, IsNotCreatedWithoutAFilterThatStarts) {
    PlayerConfig config;
    config.filter_name = "no filter has this name";
    EXPECT_EQ(Player::create(nullptr, config, [](std::unique_ptr<IQFFrame>) {}), nullptr);
    script_->init_succeeds = false;
    EXPECT_EQ(makePlayer(true), nullptr);
    EXPECT_TRUE(script_->is_destroyed);
}

TEST_F(PlayerPump, IsNotCreatedIfTheFilterHasNoMemoryToStart) {
    script_->init_throws = true;
    script_->sends_at_its_end = true;  // the receiver must still exist
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
