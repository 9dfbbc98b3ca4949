// Calls that the filter gives up, filters that do not tell how late they are, and filters that stand still.
#include <climits>
#include <deque>

#include "host/streams/player_run.h"
#include "support/signals/signal_matchers.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/results.h"

extern "C" {
#include <libavutil/error.h>
}

namespace test {
namespace {

using Vorlin::IQFFrame;

constexpr int kFrame = 300;

/** Tells a CallFilter what to do; the test sets it. */
struct Plan {
    int gives_up = -1;  // number of the call
    bool is_stuck = false;
    bool passes_on = false;    // calls come out untouched
    std::vector<int> lengths;  // of the calls that it took, except the player's own
    std::vector<int64_t> times;
};

/** Inverts the samples of every call, in new buffers. It does not know how late it is. */
class CallFilter final : public Vorlin::IAudioFilter, public Vorlin::filterPrototype {
  public:
    explicit CallFilter(Plan& plan) : plan_(plan) { addPrototype(this); }
    CallFilter(const IQFFrame::audioInfo& info, Plan& plan) : IAudioFilter(info, info, false), plan_(plan) {}

    bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
    bool init(uint64_t) override { return true; }
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t) override {
        if (plan_.is_stuck) return Vorlin::kTryAgain;
        const AVFrame* in = avFrameOf(frame);
        if (in->ch_layout.nb_channels != 3) {
            plan_.lengths.push_back(in->nb_samples);
            plan_.times.push_back(in->pts);
            if (static_cast<int>(plan_.lengths.size()) - 1 == plan_.gives_up) {
                frame.reset();
                return 0;
            }
            if (!plan_.passes_on) invert(frame);
        }
        out_.push_back(std::move(frame));
        return 0;
    }
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t) override {
        if (out_.empty()) return Vorlin::kTryAgain;
        frame = std::move(out_.front());
        out_.pop_front();
        return 0;
    }
    void flush() override { out_.clear(); }
    std::string getName() override { return "CallFilter"; }
    bool is_supported(const std::string& name, int, int, int) override { return name == "calls"; }
    IAudioFilter* clone(IQFFrame::audioInfo info, IQFFrame::audioInfo, bool) override {
        return new CallFilter(info, plan_);
    }
    void setInvalid(bool) override {}
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {}

  private:
    static void invert(const std::unique_ptr<IQFFrame>& frame) {
        AVFrame* samples = avFrameOf(frame);
        ASSERT_EQ(av_frame_make_writable(samples), 0);
        auto* values = reinterpret_cast<int16_t*>(samples->extended_data[0]);
        for (int i = 0; i < samples->nb_samples * samples->ch_layout.nb_channels; ++i)
            values[i] = static_cast<int16_t>(-values[i]);
    }

    Plan& plan_;
    std::deque<std::unique_ptr<IQFFrame>> out_;
};

class PlayerCalls : public testing::Test {
  protected:
    static Vorlin::PlayerConfig config() {
        return {.filter_name = "calls",
                .active = false,
                .stall_limit = std::chrono::milliseconds(50),
                .time_base = {1, 48000}};
    }
    Plan plan_;
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

}  // namespace
}  // namespace test
