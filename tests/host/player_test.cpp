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
    EXPECT_EQ(numbersOut, firstNumbers(200));
    EXPECT_EQ(player->counts().pushed, 200u);
    EXPECT_EQ(player->counts().pulled, 200u);
    EXPECT_EQ(player->counts().bypassed, 0u);
    EXPECT_EQ(player->counts().dropped, 0u);
    EXPECT_EQ(player->counts().discarded, 0u);
    EXPECT_EQ(player->counts().flushes, 0u);
    EXPECT_EQ(script->processed, 200);
}

TEST_P(PlayerPump, HandsOutFramesAsSoonAsTheyAreReady) {
    const auto player = makePlayer(false);
    pushFrames(*player, 3);
    EXPECT_EQ(numbersOut, firstNumbers(3));
}

TEST_P(PlayerPump, AnswersTryAgainUntilTheFilterHasRoom) {
    script->runsToSkip = isActive() ? 0 : 10;
    script->work = [] { qf_msleep(3); };
    const auto player = makePlayer();
    pushFrames(*player, 20);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_GT(script->refusals, 0);
    EXPECT_EQ(numbersOut, firstNumbers(20));
}

TEST_P(PlayerPump, CountsTheFramesThatTheFilterGaveUp) {
    script->keeps = [](const NumberedFrame& frame) { return frame.number % 3 != 0; };
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
    IQFFrame::audioInfo info = STEREO_48K;
    info.format = 8;  // fltp
    info.sample_rate = 44100;
    pushFrames(*player, 2, info);
    EXPECT_EQ(player->drain(), 0);
    ASSERT_FALSE(script->fences.empty());
    EXPECT_EQ(script->fences[0].channels, 3);
    EXPECT_EQ(script->fences[0].format, 8);
    EXPECT_EQ(script->fences[0].sample_rate, 44100);
    EXPECT_TRUE(script->fencesHoldSamples);
    EXPECT_EQ(player->counts().pushed, 2u);
    EXPECT_EQ(player->counts().pulled, 2u);
}

TEST_P(PlayerPump, DrainsAStreamOfUnknownFormat) {
    const auto player = makePlayer();
    pushFrames(*player, 2, IQFFrame::audioInfo{});
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(2));
}

TEST_P(PlayerPump, SendsNoFenceWhenNothingWasPushed) {
    const auto player = makePlayer();
    EXPECT_EQ(player->drain(), 0);
    pushFrames(*player, 1);
    player->seek();
    EXPECT_EQ(player->drain(), 0);
    EXPECT_TRUE(script->fences.empty());
}

TEST_P(PlayerPump, LetsTheOldFramesOutAndFlushesWhenTheStreamChanges) {
    IQFFrame::audioInfo otherFormat = STEREO_48K;
    otherFormat.format = 3;
    IQFFrame::audioInfo otherRate = otherFormat;
    otherRate.sample_rate = 44100;
    IQFFrame::audioInfo otherChannels = otherRate;
    otherChannels.channels = 6;
    IQFFrame::audioInfo otherLayout = otherChannels;
    otherLayout.channel_layout = 0x60f;

    const auto player = makePlayer();
    pushFrames(*player, 4);
    int flushes = 0;
    for (const auto& info : {otherFormat, otherRate, otherChannels, otherLayout}) {
        pushFrames(*player, 4, info);
        EXPECT_EQ(script->flushes, ++flushes);
        EXPECT_GE(numbersOut.size(), 4u * static_cast<size_t>(flushes))
            << "old frames were not let out first";
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(20));
    EXPECT_EQ(player->counts().flushes, 4u);
    EXPECT_EQ(player->counts().discarded, 0u);
}

TEST_P(PlayerPump, TakesFramesOfAnyLengthWithoutAFlush) {
    const auto player = makePlayer();
    for (const int frames : {1024, 1, 4096}) {
        IQFFrame::audioInfo info = STEREO_48K;
        info.nb_samples = frames;
        pushFrames(*player, 1, info);
    }
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(script->flushes, 0);
}

TEST_P(PlayerPump, ThrowsAwayWhatIsUnderWayOnASeek) {
    script->isStuck = true;
    const auto player = makePlayer();
    pushFrames(*player, 2);
    player->seek();
    script->isStuck = false;
    pushFrames(*player, 3);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_THAT(numbersOut, ElementsAre(2, 3, 4));
    EXPECT_EQ(player->counts().discarded, 2u);
    EXPECT_EQ(player->counts().dropped, 0u);
    EXPECT_EQ(player->counts().flushes, 1u);
}

TEST_P(PlayerPump, FlushesOnlyOnceWhenASeekLeadsIntoAnotherFormat) {
    const auto player = makePlayer();
    pushFrames(*player, 2);
    player->seek();
    IQFFrame::audioInfo mono = STEREO_48K;
    mono.channels = 1;
    pushFrames(*player, 2, mono);
    EXPECT_EQ(script->flushes, 1);
    EXPECT_EQ(player->counts().flushes, 1u);
}

TEST_P(PlayerPump, GivesUpOnAFilterThatMovesNothing) {
    script->isStuck = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    EXPECT_EQ(pushFrame(*player), 0);
    EXPECT_EQ(pushFrame(*player), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(pushFrame(*player), AVERROR(ETIMEDOUT));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(60));
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(player->counts().pushed, 2u);
    EXPECT_EQ(player->counts().dropped, 0u) << "known only after a drain that succeeded";

    script->isStuck = false;
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(2));
}

TEST_P(PlayerPump, GivesUpOnAFilterThatKeepsTheFence) {
    script->eatsFences = true;
    const auto player = makePlayer(isActive(), milliseconds(60));
    pushFrames(*player, 2);
    EXPECT_EQ(player->drain(), AVERROR(ETIMEDOUT));
    EXPECT_EQ(numbersOut, firstNumbers(2));
}

// Two frames and the fence are under way when the drain begins: longer than the limit in all, but not each.
TEST_F(PlayerPump, MeasuresAStallFromTheLastProgress) {
    script->work = [] { qf_msleep(200); };
    const auto player = makePlayer(true, milliseconds(320));
    pushFrames(*player, 4);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(4));
}

TEST_P(PlayerPump, RefusesANullFrame) {
    const auto player = makePlayer();
    EXPECT_EQ(player->push(nullptr), AVERROR(EINVAL));
    EXPECT_EQ(player->counts().pushed, 0u);
}

// A frame that is given up ends a run early: what waits behind it, the fence too, needs another push to move.
TEST_F(PlayerPump, DrainsAnInactiveFilterThatStillHoldsFrames) {
    script->framesPerRun = 1;
    script->runsToSkip = 1;
    const auto player = makePlayer(false);
    pushFrames(*player, 5);
    EXPECT_LT(numbersOut.size(), 5u);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(5));
    pushFrames(*player, 5);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(10));
}

TEST_F(PlayerPump, DrainsAnInactiveFilterThatGivesUpTheLastFrames) {
    script->keeps = [](const NumberedFrame& frame) { return frame.number < 3; };
    script->runsToSkip = 2;
    const auto player = makePlayer(false);
    pushFrames(*player, 7);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(numbersOut, firstNumbers(3));
    EXPECT_EQ(player->counts().dropped, 4u);
}

TEST_F(PlayerPump, IsNotMadeWithoutAFilterThatStarts) {
    PlayerConfig config;
    config.filterName = "nobody answers to this";
    EXPECT_EQ(Player::create(nullptr, config, [](std::unique_ptr<IQFFrame>) {}), nullptr);
    script->initSucceeds = false;
    EXPECT_EQ(makePlayer(true), nullptr);
    EXPECT_TRUE(script->isDestroyed);
}

TEST_F(PlayerPump, PassesTheOptionsOn) {
    const auto player = makePlayer(false);
    EXPECT_TRUE(player->setOptions("{}"));
    EXPECT_FALSE(player->setOptions(""));
    EXPECT_THAT(script->options, ElementsAre("filter_option={}", "filter_option="));
}

}  // namespace
}  // namespace Vorlin::test
