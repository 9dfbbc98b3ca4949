// Calls that the filter gives up, filters that do not tell how late they are, and filters that stand still.
#include <climits>

#include "host/streams/call_filter.h"
#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"

extern "C" {
#include <libavutil/error.h>
}

namespace test {
namespace {

using Vorlin::IQFFrame;

constexpr int kFrame = 300;

class PlayerCalls : public testing::Test {
  protected:
    static Vorlin::PlayerConfig config() {
        return {.filter_name = "calls",
                .active = false,
                .stall_limit = std::chrono::milliseconds(50),
                .time_base = {1, 48000}};
    }
    CallPlan plan_;
    CallFilter prototype_{plan_};
    const Pcm in_ = noise(9, 2 * 30 * kFrame, 6000);
    const Pcm inverted_ = scaled(in_, -1, 1);
};

TEST_F(PlayerCalls, HaveTheLengthAndTheTimeOfTheSetting) {
    PlayerRun run(config(), "{}");
    for (int i = 0; i < 30; ++i) run.push(in_, {.frames = kFrame}, 700 + run.position());
    run.drain();
    EXPECT_EQ(plan_.lengths, (std::vector{1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024, 808}));
    for (std::size_t i = 0; i < plan_.times.size(); ++i)
        EXPECT_EQ(plan_.times[i], 700 + static_cast<int>(i) * 1024);
    EXPECT_TRUE(sameSignal(run.sound(), inverted_));
}

TEST_F(PlayerCalls, MustNotBeLongerThanTheEffectsQueues) {
    for (const int frames : {-1, 8193, INT_MAX}) {
        Vorlin::PlayerConfig wrong = config();
        wrong.call_frames = frames;
        EXPECT_EQ(Vorlin::Player::create(nullptr, wrong, [](std::unique_ptr<IQFFrame>) {}), nullptr)
            << frames;
    }
}

TEST_F(PlayerCalls, ThatAreGivenUpBeforeASeekCostNothingAfterIt) {
    plan_.gives_up = 2;
    PlayerRun run(config(), "{}");
    for (int i = 0; i < 11; ++i) run.push(in_, {.frames = kFrame}, run.position());  // three calls
    ASSERT_EQ(plan_.lengths.size(), 3U);
    run.player().seek();
    run.clear();
    plan_.passes_on = true;
    run.goTo(0);
    for (int i = 0; i < 30; ++i) run.push(in_, {.frames = kFrame}, run.position());
    run.drain();
    EXPECT_EQ(run.played().size(), 30U);
    EXPECT_TRUE(sameSignal(run.sound(), in_));
}

// The first call ends within the fourth frame. A longer frame would not fit the memory of that one.
TEST_F(PlayerCalls, ThatEndWithinAFrameLeaveNothingOfItAfterASeek) {
    constexpr int kLong = 4000;
    PlayerRun run(config(), "{}");
    for (int i = 0; i < 4; ++i) run.push(in_, {.frames = kFrame}, run.position());
    ASSERT_EQ(plan_.lengths.size(), 1U);
    run.player().seek();
    run.clear();
    run.goTo(0);
    for (int i = 0; i < 2; ++i) run.push(in_, {.frames = kLong}, run.position());
    run.drain();
    ASSERT_EQ(run.played().size(), 2U);
    for (const Played& frame : run.played()) EXPECT_TRUE(frame.is_described);
    EXPECT_TRUE(sameSignal(run.sound(), cut(inverted_, 2, 0, 2 * kLong)));
}

TEST_F(PlayerCalls, ThatAreGivenUpLeaveTheirFramesOut) {
    plan_.gives_up = 2;  // frames 2048 to 3071
    PlayerRun run(config(), "{}");
    for (int i = 0; i < 30; ++i) run.push(in_, {.frames = kFrame}, run.position(), std::to_string(i));
    run.drain();
    EXPECT_EQ(run.player().counts().dropped, 1U);
    ASSERT_EQ(run.played().size(), 27U) << "three frames are missing";
    const Played& before = run.played()[6];
    EXPECT_EQ(before.pts, 1800);
    EXPECT_EQ(before.frames, 248);
    EXPECT_EQ(before.duration, 248);
    EXPECT_EQ(before.mark, "6");
    const Played& after = run.played()[7];
    EXPECT_EQ(after.pts, 3072);
    EXPECT_EQ(after.frames, 228);
    EXPECT_EQ(after.mark, "10");
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 2048), cut(inverted_, 2, 0, 2048)));
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 2048, 9000 - 3072), cut(inverted_, 2, 3072, 9000 - 3072)));
}

TEST_F(PlayerCalls, ThatAreGivenUpAtTheEndLeaveNothingBehind) {
    plan_.gives_up = 8;
    PlayerRun run(config(), "{}");
    for (int i = 0; i < 30; ++i) run.push(in_, {.frames = kFrame}, run.position());
    run.drain();
    EXPECT_TRUE(sameSignal(run.sound(), cut(inverted_, 2, 0, 8 * 1024)));
    run.clear();
    run.goTo(0);
    run.push(in_, {.frames = kFrame}, 9000);
    run.drain();
    EXPECT_TRUE(sameSignal(run.sound(), cut(inverted_, 2, 0, kFrame)));
}

TEST_F(PlayerCalls, TimeOutInAFilterThatStandsStill) {
    PlayerRun run(config(), "{}");
    plan_.is_stuck = true;
    EXPECT_EQ(run.player().push(makeFrame({.frames = 2048}, noiseSource(1))), AVERROR(ETIMEDOUT));
    EXPECT_EQ(run.player().drain(), AVERROR(ETIMEDOUT));
    plan_.is_stuck = false;
    run.player().seek();
    run.push(in_, {.frames = kFrame}, 0);
    run.drain();
    EXPECT_TRUE(sameSignal(run.sound(), cut(inverted_, 2, 0, kFrame)));
}

// A frame that does not hold what its description says goes to the filter as it is, behind all others.
TEST_F(PlayerCalls, AreNotMadeOfFramesThatLieAboutThemselves) {
    PlayerRun run(config(), "{}");
    run.push(in_, {.frames = kFrame}, 0);
    auto frame = makeFrame({.frames = 100}, noiseSource(1));
    const IQFFrame* object = frame.get();
    static_cast<AVFrame*>(*frame)->nb_samples = 99;  // the description still says 100
    EXPECT_EQ(run.player().push(std::move(frame)), 0);
    run.push(in_, {.frames = kFrame}, kFrame);
    run.drain();
    EXPECT_EQ(plan_.lengths, (std::vector{kFrame, 99, kFrame}));
    ASSERT_EQ(run.played().size(), 3U);
    EXPECT_EQ(run.played()[1].object, object);
}

// A frame that is no call may still be inside the filter.
TEST_F(PlayerCalls, ComeOutBeforeAFrameWithoutSamplesThatBeginsTheStream) {
    PlayerRun run(config(), "{}");
    auto liar = makeFrame({.frames = 100}, noiseSource(1));
    static_cast<AVFrame*>(*liar)->nb_samples = 99;  // the description still says 100
    auto empty = makeFrame({.frames = 1}, noiseSource(1));
    static_cast<AVFrame*>(*empty)->nb_samples = 0;
    empty->getInfo().nb_samples = 0;
    const IQFFrame* const objects[] = {liar.get(), empty.get()};
    plan_.pulls_to_refuse = 1;
    EXPECT_EQ(run.player().push(std::move(liar)), 0);
    ASSERT_TRUE(run.played().empty()) << "the filter gave the frame back at once";
    EXPECT_EQ(run.player().push(std::move(empty)), 0);
    ASSERT_EQ(run.played().size(), 2U);
    for (const std::size_t i : {0U, 1U}) EXPECT_EQ(run.played()[i].object, objects[i]);
}

}  // namespace
}  // namespace test
