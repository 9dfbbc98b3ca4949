// Ends of streams: the end itself, seeks, other formats and other effects.
#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"

namespace test {
namespace {

constexpr AVRational kSamples{1, 48000};

class PlayerEnds : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerEnds, testing::Bool(),
                         [](const auto& of) { return of.param ? "Active" : "Inactive"; });

TEST_P(PlayerEnds, WithoutTheTailIfTheSettingSaysSo) {
    const Pcm in = noise(5, 2 * 20 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .delivers_tail = false, .time_base = kSamples}, kSurround);
    pushFrames(run, in, 20);
    run.drain();
    EXPECT_EQ(run.played().size(), 20U);
    EXPECT_TRUE(sameSignal(run.sound(), effectAlone(kSurround, in, 2, 20 * kStreamFrame)));
}

TEST_P(PlayerEnds, DeliversNothingTwice) {
    const Pcm in = noise(5, 2 * 20 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kSurround);
    run.drain();
    EXPECT_TRUE(run.played().empty());
    pushFrames(run, in, 20);
    run.drain();
    const std::size_t frames = run.played().size();
    run.drain();
    EXPECT_EQ(run.played().size(), frames);
}

// Frames that are pushed after the end continue the stream, and the effect has heard silence in between.
TEST_P(PlayerEnds, MayBeFollowedByMore) {
    const Pcm in = noise(5, 2 * 40 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 20);
    run.drain();
    ASSERT_EQ(run.played().size(), 20U);
    // 20 frames fill 9.4 calls, and the delay fills one call more.
    EXPECT_EQ(run.player().counts().pushed, 11U);
    pushFrames(run, in, 20);
    run.drain();
    ASSERT_EQ(run.played().size(), 40U);
    Pcm heard = cut(cut(in, 2, 0, 20 * kStreamFrame), 2, 0, 11 * 1024);
    append(heard, cut(in, 2, 20 * kStreamFrame, 20 * kStreamFrame));
    const Pcm sound = effectAlone(kDialogue, heard, 2, 11 * 1024 + 20 * kStreamFrame);
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 20 * kStreamFrame), cut(sound, 2, 0, 20 * kStreamFrame)));
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 20 * kStreamFrame, 20 * kStreamFrame),
                           cut(sound, 2, 11 * 1024, 20 * kStreamFrame)));
}

TEST_P(PlayerEnds, OfASeekDropEverythingAndStartAfresh) {
    const Pcm in = noise(5, 2 * 60 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kSurround);
    pushFrames(run, in, 21);
    run.player().seek();
    run.clear();
    run.goTo(30 * kStreamFrame);
    pushFrames(run, in, 20);
    run.drain();
    ASSERT_GT(run.played().size(), 20U);
    EXPECT_EQ(run.played()[0].pts, 30 * kStreamFrame);
    EXPECT_TRUE(
        sameSignal(run.sound(), effectAlone(kSurround, cut(in, 2, 30 * kStreamFrame, 20 * kStreamFrame), 2,
                                            20 * kStreamFrame + 13'000)));
}

// A call that was under way at the seek must not stand for one after it. What the effect holds when it is
// bypassed comes out untouched.
TEST_P(PlayerEnds, OfASeekLeaveNoCallBehind) {
    const Pcm in = noise(5, 2 * 20 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 3);  // one call, which a worker has not finished yet
    run.player().seek();
    run.clear();
    run.goTo(0);
    pushFrames(run, in, 3);
    EXPECT_TRUE(run.player().setOptions(kDialogue));  // waits until the call has come out
    run.player().setBypass(true);
    run.drain();
    ASSERT_EQ(run.played().size(), 3U);
    EXPECT_TRUE(sameSignal(run.sound(), cut(in, 2, 0, 3 * kStreamFrame)));
}

TEST_P(PlayerEnds, OfAFormatLetAllFramesOutWithoutATailAndStartAfresh) {
    const Pcm first = noise(5, 2 * 20 * kStreamFrame, 6000);
    const Pcm second = noise(6, 6 * 20 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kSurround);
    pushFrames(run, first, 20, {.format = AV_SAMPLE_FMT_FLTP});
    run.goTo(0);
    pushFrames(run, second, 20, {.channels = 6, .rate_hz = 44100});
    ASSERT_GE(run.played().size(), 20U);
    run.drain();
    EXPECT_EQ(run.played()[19].format, AV_SAMPLE_FMT_FLTP);
    EXPECT_EQ(run.played()[20].format, AV_SAMPLE_FMT_S16);
    EXPECT_EQ(run.player().counts().flushes, 1U);
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 20 * kStreamFrame),
                           effectAlone(kSurround, first, 2, 20 * kStreamFrame)));
    EXPECT_TRUE(
        sameSignal(run.sound(20), effectAlone(kSurround, second, 6, 20 * kStreamFrame + 8544, 44100)));
}

// An effect holds 1536 frames when it is switched off; these come out untouched.
TEST_P(PlayerEnds, OfAnEffectInMidStreamLoseAndRepeatNothing) {
    const Pcm in = noise(5, 2 * 200 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 64);  // 30 calls
    EXPECT_TRUE(run.player().setOptions(kNormalizer));
    pushFrames(run, in, 64);
    EXPECT_TRUE(run.player().setOptions(kDialogue));
    pushFrames(run, in, 64);
    run.drain();
    ASSERT_EQ(run.played().size(), 192U);
    for (std::size_t i = 0; i < 192; ++i)
        EXPECT_EQ(run.played()[i].pts, static_cast<int64_t>(i) * kStreamFrame);

    const int64_t part = 64 * kStreamFrame;
    const Pcm sound = run.sound();
    EXPECT_TRUE(sameSignal(cut(sound, 2, 0, part - 1536), effectAlone(kDialogue, in, 2, part - 1536)));
    EXPECT_TRUE(sameSignal(cut(sound, 2, part - 1536, 1536), cut(in, 2, part - 1536, 1536)));
    EXPECT_TRUE(
        sameSignal(cut(sound, 2, part, part), effectAlone(kNormalizer, cut(in, 2, part, part), 2, part)));
    // Dialogue enhancement continues with the sound that it heard last.
    Pcm heard = cut(in, 2, 0, part);
    append(heard, cut(in, 2, 2 * part, part));
    EXPECT_TRUE(sameSignal(cut(sound, 2, 2 * part, part),
                           cut(effectAlone(kDialogue, heard, 2, 2 * part), 2, part, part)));
}

}  // namespace
}  // namespace test
