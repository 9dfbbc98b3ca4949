// A filter that is bypassed in mid-stream: the clock goes on, and nothing is lost or heard twice.
#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"

namespace test {
namespace {

constexpr AVRational kSamples{1, 48000};

// Checks that the clock goes on without a step. Parts of a frame follow each other. @return frames played.
int64_t expectContinuous(const PlayerRun& run) {
    int64_t next = 0;
    for (const Played& frame : run.played()) {
        EXPECT_EQ(frame.pts, next);
        EXPECT_EQ(frame.duration, frame.frames);
        next += frame.frames;
    }
    return next;
}

class PlayerBypassInStream : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerBypassInStream, testing::Bool(),
                         [](const auto& of) { return of.param ? "Active" : "Inactive"; });

TEST_F(PlayerBypassInStream, LetsOutUntouchedWhatTheEffectHolds) {
    const Pcm in = noise(5, 2 * 192 * kStreamFrame, 6000);
    PlayerRun run({.active = false, .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 64);
    run.player().setBypass(true);
    pushFrames(run, in, 64);
    run.player().setBypass(false);
    pushFrames(run, in, 64);
    run.drain();
    const int64_t part = 64 * kStreamFrame;
    EXPECT_EQ(expectContinuous(run), 3 * part);
    EXPECT_EQ(run.played().size(), 192U);

    const Pcm sound = run.sound();
    EXPECT_TRUE(sameSignal(cut(sound, 2, 0, part - 1536), effectAlone(kDialogue, in, 2, part - 1536)));
    EXPECT_TRUE(sameSignal(cut(sound, 2, part - 1536, part + 1536), cut(in, 2, part - 1536, part + 1536)));
    Pcm heard = cut(in, 2, 0, part);
    append(heard, cut(in, 2, 2 * part, part));
    EXPECT_TRUE(sameSignal(cut(sound, 2, 2 * part, part),
                           cut(effectAlone(kDialogue, heard, 2, 2 * part), 2, part, part)));
}

// A worker may have taken some of the calls before the switch, so only the two sounds on both sides are
// known.
TEST_P(PlayerBypassInStream, ChangesTheSoundOnceAndAtOnce) {
    const Pcm in = noise(5, 2 * 128 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 64);
    run.player().setBypass(true);
    pushFrames(run, in, 64);
    run.drain();
    const int64_t total = 128 * kStreamFrame;
    EXPECT_EQ(expectContinuous(run), total);
    const Pcm sound = run.sound();
    const Pcm processed = effectAlone(kDialogue, in, 2, total);
    int64_t change = 0;
    while (change < total * 2 &&
           sound[static_cast<std::size_t>(change)] == processed[static_cast<std::size_t>(change)])
        ++change;
    change /= 2;
    EXPECT_LE(change, 64 * kStreamFrame);
    EXPECT_GE(change, 64 * kStreamFrame - 1536 - 6 * 1024)
        << "at most the calls inside and the delay lack their sound";
    EXPECT_TRUE(sameSignal(cut(sound, 2, change + 1, total - change - 1),
                           cut(in, 2, change + 1, total - change - 1)));
}

TEST_P(PlayerBypassInStream, AfterAnOverloadLosesNothing) {
    const Pcm in = noise(5, 2 * 128 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    run.player().setVideoFps(25);
    pushFrames(run, in, 64);
    for (int i = 0; i < 20 && !run.player().isBypassed(); ++i) run.player().filter().checkTimeConsume(1000);
    ASSERT_TRUE(run.player().isBypassed());
    pushFrames(run, in, 64);
    run.drain();
    EXPECT_EQ(expectContinuous(run), 128 * kStreamFrame);
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 64 * kStreamFrame, 64 * kStreamFrame),
                           cut(in, 2, 64 * kStreamFrame, 64 * kStreamFrame)));

    run.player().retryAfterOverload();
    ASSERT_FALSE(run.player().isBypassed());
    run.goTo(0);
    for (int i = 0; i < 4; ++i) run.push(in, {.frames = kStreamFrame}, 128 * kStreamFrame + run.position());
    run.drain();
    EXPECT_EQ(expectContinuous(run), 132 * kStreamFrame);
}

// Surround makes two channels of six. A frame whose samples lie on both sides of the switch comes out in
// parts.
TEST_F(PlayerBypassInStream, CutsAFrameWhereItsChannelsChange) {
    const Pcm in = noise(5, 6 * 100 * kStreamFrame, 6000);
    PlayerRun run({.active = false, .time_base = kSamples}, kSurround);
    pushFrames(run, in, 33, {.format = AV_SAMPLE_FMT_FLTP, .channels = 6});  // 15 calls and 480 frames
    run.player().setBypass(true);
    pushFrames(run, in, 33, {.format = AV_SAMPLE_FMT_FLTP, .channels = 6});
    run.drain();
    EXPECT_EQ(expectContinuous(run), 66 * kStreamFrame);
    constexpr int64_t kChange = 14 * 1024;  // the last call waits for the one behind it
    Pcm stereo;
    Pcm six;
    for (const Played& frame : run.played()) {
        EXPECT_EQ(frame.channels, frame.pts < kChange ? 2 : 6) << frame.pts;
        append(frame.channels == 2 ? stereo : six, frame.samples);
    }
    EXPECT_EQ(run.played().size(), 67U);
    EXPECT_TRUE(sameSignal(stereo, effectAlone(kSurround, in, 6, kChange)));
    EXPECT_TRUE(sameSignal(six, cut(in, 6, kChange, 66 * kStreamFrame - kChange), {.channels = 6}));
}

// Three channels are more than dialogue enhancement takes, so the filter passes them on.
TEST_P(PlayerBypassInStream, IsNotLateForAStreamThatNoEffectTakes) {
    const Pcm in = noise(5, 3 * 50 * kStreamFrame, 6000);
    PlayerRun run({.active = GetParam(), .time_base = kSamples}, kDialogue);
    pushFrames(run, in, 50, {.format = AV_SAMPLE_FMT_S32, .channels = 3, .rate_hz = 32000});
    run.drain();
    EXPECT_EQ(run.played().size(), 50U);
    EXPECT_EQ(run.player().counts().pushed, 24U) << "no silence is pushed to drive out what nobody holds";
    EXPECT_TRUE(sameSignal(run.sound(), cut(in, 3, 0, 50 * kStreamFrame), {.channels = 3}));
}

}  // namespace
}  // namespace test
