// Times of frames: jumps, coarse clocks, missing times and unknown time bases.
#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace test {
namespace {

constexpr int kRate_hz = 48000;
constexpr AVRational kSamples{1, kRate_hz};
constexpr int kFrame = 960;

// Pushes 20 ms frames from the current position on, with the given first time in samples.
void pushFrames(PlayerRun& run, const Pcm& in, int count, int64_t pts) {
    for (int i = 0; i < count; ++i, pts += kFrame) run.push(in, {.frames = kFrame}, pts);
}

TEST(PlayerTimes, KeepTheSoundBeforeAGapBeforeTheGap) {
    for (const bool active : {false, true}) {
        const Pcm in = noise(11, 2 * 40 * kFrame, 6000);
        PlayerRun run({.active = active, .time_base = kSamples}, kDialogue);
        pushFrames(run, in, 20, 0);
        pushFrames(run, in, 1, 100'000);
        ASSERT_GE(run.played().size(), 20U) << "the frames before the gap come out when it is seen";
        pushFrames(run, in, 19, 100'000 + kFrame);
        run.drain();
        ASSERT_EQ(run.played().size(), 40U);
        for (int64_t i = 0; i < 40; ++i) {
            const int64_t expected = i < 20 ? i * kFrame : 100'000 + (i - 20) * kFrame;
            ASSERT_EQ(run.played()[static_cast<std::size_t>(i)].pts, expected);
        }
        // The gap is silence for the effect: 20 frames fill 18.75 calls, and the delay of 1536 fills two
        // more.
        const Pcm before = cut(in, 2, 0, 20 * kFrame);
        Pcm heard = cut(before, 2, 0, 21 * 1024);
        append(heard, cut(in, 2, 20 * kFrame, 20 * kFrame));
        const Pcm sound = effectAlone(kDialogue, heard, 2, 21 * 1024 + 20 * kFrame);
        EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 20 * kFrame), cut(sound, 2, 0, 20 * kFrame)));
        EXPECT_TRUE(
            sameSignal(cut(run.sound(), 2, 20 * kFrame, 20 * kFrame), cut(sound, 2, 21 * 1024, 20 * kFrame)));
    }
}

TEST(PlayerTimes, LeaveTheTailInAGapAsFarAsItGoes) {
    constexpr int kShortGap = 6000;
    const Pcm in = noise(11, 2 * 12 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = kSamples}, kSurround);
    pushFrames(run, in, 10, 0);
    pushFrames(run, in, 2, 10 * kFrame + kShortGap);
    ASSERT_GT(run.played().size(), 10U);
    int64_t next = 0;
    for (const Played& frame : run.played()) {
        EXPECT_EQ(frame.pts, next);
        next += frame.frames;
    }
    EXPECT_EQ(next, 10 * kFrame + kShortGap);
    EXPECT_TRUE(sameSignal(run.sound(),
                           effectAlone(kSurround, cut(in, 2, 0, 10 * kFrame), 2, 10 * kFrame + kShortGap)));
}

TEST(PlayerTimes, MayJumpBack) {
    const Pcm in = noise(11, 2 * 20 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = kSamples}, kSurround);
    pushFrames(run, in, 10, 500'000);
    pushFrames(run, in, 1, 0);
    ASSERT_GE(run.played().size(), 10U) << "the frames before the jump come out when it is seen";
    pushFrames(run, in, 9, kFrame);
    run.drain();
    EXPECT_EQ(run.played()[0].pts, 500'000);
    EXPECT_EQ(run.played()[9].pts, 500'000 + 9 * kFrame);
    EXPECT_EQ(run.played()[10].pts, 0) << "no tail before a jump back";
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 10 * kFrame), effectAlone(kSurround, in, 2, 10 * kFrame)));
}

// Milliseconds are coarser than frames of 2.5 ms and of MP3's 26.12 ms.
TEST(PlayerTimes, OfACoarseClockStayAndTheSoundGoesOn) {
    const Pcm in = noise(11, 2 * 30'000, 6000);
    for (const int frames : {120, 1152}) {
        PlayerRun run({.active = false, .time_base = {1, 1000}}, kDialogue);
        std::vector<int64_t> pts;
        while (run.position() + frames <= 30'000) {
            pts.push_back(run.position() * 1000 / kRate_hz);
            run.push(in, {.frames = frames}, pts.back());
        }
        const int64_t pushed = run.position();
        run.drain();
        ASSERT_EQ(run.played().size(), pts.size());
        for (std::size_t i = 0; i < pts.size(); ++i) EXPECT_EQ(run.played()[i].pts, pts[i]);
        EXPECT_TRUE(sameSignal(run.sound(), effectAlone(kDialogue, cut(in, 2, 0, pushed), 2, pushed)));
    }
}

TEST(PlayerTimes, ThatAreMissingFollowFromTheLastOneWithoutDriftOverAnHour) {
    constexpr int kLong = 8191;
    constexpr int kCdRate_hz = 44'100;
    constexpr int64_t kClock_hz = 90'000;
    constexpr int64_t kFirst = 1234;
    PlayerRun run({.active = false, .call_frames = 8192, .time_base = {1, kClock_hz}}, kNothing);
    const Pcm silence(kLong);
    const FrameSpec spec{.channels = 1, .rate_hz = kCdRate_hz, .frames = kLong};
    constexpr int64_t kFrames = 20'000;  // 62 minutes
    for (int64_t i = 0; i < kFrames; ++i) {
        run.goTo(0);
        run.push(silence, spec, i == 0 ? kFirst : AV_NOPTS_VALUE);
        if (i % 1000 != 999) continue;
        if (i + 1 == kFrames) run.drain();
        for (const Played& frame : run.played()) {
            const int64_t number = (&frame - run.played().data()) + (i / 1000) * 1000 - (i > 999 ? 1 : 0);
            // Rounded to the nearest tick, with integers.
            const int64_t expected =
                kFirst + (number * kLong * kClock_hz * 2 + kCdRate_hz) / (2 * kCdRate_hz);
            ASSERT_EQ(frame.pts, expected) << number;
        }
        run.clear();
    }
}

TEST(PlayerTimes, ThatAreMissingFollowAtTheRateOfTheirOwnStream) {
    constexpr int kCdRate_hz = 44'100;
    constexpr int64_t kUnknown = AV_NOPTS_VALUE;
    const Pcm in = noise(11, 2 * 5 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = {1, 90'000}}, kNothing);
    for (const int64_t pts : {int64_t{0}, kUnknown}) run.push(in, {.frames = 480}, pts);
    for (const int64_t pts : {int64_t{500'000}, kUnknown, kUnknown})
        run.push(in, {.rate_hz = kCdRate_hz, .frames = 441}, pts);
    run.drain();
    std::vector<int64_t> times;
    for (const Played& frame : run.played()) times.push_back(frame.pts);
    EXPECT_EQ(times, (std::vector<int64_t>{0, 900, 500'000, 500'900, 501'800}));
}

TEST(PlayerTimes, OfTheFramesWinOverTheCount) {
    const Pcm in = noise(11, 2 * 4 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = kSamples}, kNormalizer);
    for (const int64_t pts : {int64_t{0}, int64_t{970}, static_cast<int64_t>(AV_NOPTS_VALUE), int64_t{3000}})
        run.push(in, {.frames = kFrame}, pts);
    run.drain();
    ASSERT_EQ(run.played().size(), 4U);
    EXPECT_EQ(run.played()[1].pts, 970);
    EXPECT_EQ(run.played()[2].pts, 970 + kFrame);
    EXPECT_EQ(run.played()[3].pts, 3000);
}

// 1024 frames last 21.33 ms. Milliseconds cut to 42 would put the frame after them at 63.
TEST(PlayerTimes, OfACoarseClockDoNotShakeTheCount) {
    const Pcm in = noise(11, 2 * 4 * 1024, 6000);
    PlayerRun run({.active = false, .time_base = {1, 1000}}, kNormalizer);
    for (const int64_t pts : {int64_t{0}, int64_t{21}, int64_t{42}, static_cast<int64_t>(AV_NOPTS_VALUE)})
        run.push(in, {}, pts);
    run.drain();
    ASSERT_EQ(run.played().size(), 4U);
    EXPECT_EQ(run.played()[2].pts, 42);
    EXPECT_EQ(run.played()[3].pts, 64);
}

TEST(PlayerTimes, OfTheFramesOwnTimeBaseComeBeforeThePlayersSetting) {
    const Pcm in = noise(11, 2 * 2 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = {1, 7}}, kSurround);
    run.push(in, {.frames = kFrame}, 1000, "", {1, 1'000'000});
    run.push(in, {.frames = kFrame}, AV_NOPTS_VALUE, "", {1, 1'000'000});
    run.drain();
    EXPECT_EQ(run.played()[1].pts, 21'000);
    EXPECT_EQ(run.played()[2].pts, 41'000) << "the tail";
    EXPECT_EQ(run.played()[2].duration, 21'333);
    EXPECT_EQ(run.played()[3].pts, 62'333);
}

TEST(PlayerTimes, AreNotInventedWithoutATimeBase) {
    const Pcm in = noise(11, 2 * 3 * kFrame, 6000);
    PlayerRun run({.active = false}, kSurround);
    run.push(in, {.frames = kFrame}, 1000);
    run.push(in, {.frames = kFrame}, AV_NOPTS_VALUE);
    run.push(in, {.frames = kFrame}, 9'000'000);
    run.drain();
    EXPECT_EQ(run.played()[0].pts, 1000);
    EXPECT_EQ(run.played()[1].pts, AV_NOPTS_VALUE);
    EXPECT_EQ(run.played()[2].pts, 9'000'000);
    EXPECT_EQ(run.played()[3].pts, AV_NOPTS_VALUE);
    EXPECT_TRUE(sameSignal(run.sound(), effectAlone(kSurround, in, 2, 3 * kFrame + 13'000)));
}

TEST(PlayerTimes, AtTheEndsOfTheirRangeAreTaken) {
    const Pcm in = noise(11, 2 * 6 * kFrame, 6000);
    PlayerRun run({.active = false, .time_base = {1, 1'000'000}}, kSurround);
    std::vector<int64_t> pts;
    for (const int64_t time :
         {INT64_MAX, INT64_MIN + 1, int64_t{0}, INT64_MAX - 10, int64_t{-5}, INT64_MIN + 1}) {
        pts.push_back(time);
        run.push(in, {.frames = kFrame}, time, "in");
    }
    run.drain();
    std::vector<int64_t> played;
    for (const Played& frame : run.played()) {
        if (frame.mark == "in") played.push_back(frame.pts);
    }
    EXPECT_EQ(played, pts);
}

}  // namespace
}  // namespace test
