// Options that change in mid-stream, where the frames so far do not fill a call of the filter.
#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"

namespace test {
namespace {

constexpr AVRational kSamples{1, 48000};
constexpr int kLast_frames = 1000;
constexpr int64_t kChange = 20 * 512 + kLast_frames;  // ten calls of 1024 frames and a part of one
constexpr int64_t kTotal = kChange + 24 + 1024;

class PlayerOptions : public testing::TestWithParam<bool> {
  public:
    // Plays a stream and changes the options before the frame at kChange.
    static Pcm play(const Pcm& in, const char* before, const char* after) {
        PlayerRun run({.active = GetParam(), .delivers_tail = false, .time_base = kSamples}, before);
        for (int i = 0; i < 20; ++i) run.push(in, {.frames = 512}, run.position());
        run.push(in, {.frames = kLast_frames}, run.position());
        EXPECT_TRUE(run.player().setOptions(after));
        for (const int frames : {24, 1024}) run.push(in, {.frames = frames}, run.position());
        run.drain();
        EXPECT_EQ(run.played().size(), 23U);
        int64_t next = 0;
        for (const Played& frame : run.played()) {
            EXPECT_EQ(frame.pts, next);
            next += frame.frames;
        }
        EXPECT_EQ(next, kTotal);
        return run.sound();
    }
};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerOptions, testing::Bool(),
                         [](const auto& of) { return of.param ? "Active" : "Inactive"; });

// The normalizer has finished 512 frames of the last 1000 and holds the beginning of a block.
TEST_P(PlayerOptions, CountFromTheNextFrameOnWhenTheEffectEnds) {
    const Pcm in = noise(5, 2 * kTotal, 1638);
    const Pcm sound = play(in, kNormalizer, kNothing);
    constexpr int64_t kFinished = kChange / 512 * 512;
    EXPECT_TRUE(sameSignal(cut(sound, 2, 0, kFinished), effectAlone(kNormalizer, in, 2, kFinished)));
    EXPECT_TRUE(
        sameSignal(cut(sound, 2, kFinished, kTotal - kFinished), cut(in, 2, kFinished, kTotal - kFinished)));
}

TEST_P(PlayerOptions, CountFromTheNextFrameOnWhenAnEffectBegins) {
    const Pcm in = noise(5, 2 * kTotal, 1638);
    const Pcm sound = play(in, kNothing, kNormalizer);
    constexpr int64_t kRest = kTotal - kChange;
    EXPECT_TRUE(sameSignal(cut(sound, 2, 0, kChange), cut(in, 2, 0, kChange)));
    EXPECT_TRUE(sameSignal(cut(sound, 2, kChange, kRest),
                           effectAlone(kNormalizer, cut(in, 2, kChange, kRest), 2, kRest)));
}

TEST_P(PlayerOptions, LeaveNoHoleInTheSoundOfAnEffectThatGoesOn) {
    const Pcm in = noise(5, 2 * kTotal, 6000);
    for (const char* effect : {kSurround, kDialogue, kNormalizer})
        EXPECT_TRUE(sameSignal(play(in, effect, effect), effectAlone(effect, in, 2, kTotal))) << effect;
}

// Such a player hands on every answer of the effect, so a shorter call would put silence into the sound.
TEST_P(PlayerOptions, LeaveNoHoleInTheSoundOfAPlayerThatCorrectsNoTimes) {
    constexpr int64_t kCalls = 12 * 1024;
    const Pcm in = noise(5, 2 * kCalls, 1638);
    PlayerRun run({.active = GetParam(), .corrects_times = false, .time_base = kSamples}, kNormalizer);
    for (int i = 0; i < 12; ++i) {
        run.push(in, {.frames = 1000}, run.position());
        EXPECT_TRUE(run.player().setOptions(kNormalizer));
    }
    run.push(in, {.frames = kCalls - 12 * 1000}, run.position());
    run.drain();
    EXPECT_TRUE(sameSignal(run.sound(), effectAlone(kNormalizer, in, 2, kCalls)));
}

}  // namespace
}  // namespace test
