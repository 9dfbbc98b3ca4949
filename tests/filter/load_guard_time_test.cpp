// Checks the load guard of the filter inside a player, on a clock that the test moves: each frame takes the
// working time that the test gives it.
#include <gtest/gtest.h>

#include <atomic>

#include "filter/faults/engine_faults.h"
#include "support/clocks/virtual_clock.h"
#include "support/frames/audio_frames.h"
#include "vorlin/player.h"

namespace test {
namespace {

using std::chrono::milliseconds;
using Vorlin::IQFFrame;
using Vorlin::Player;

constexpr int kMostFrames = 40;

// The parameter is true for a filter with a worker.
class GuardedPlayer : public ::testing::TestWithParam<bool> {
  protected:
    GuardedPlayer() {
        resetEngineFaults();
        engineFaults().during_process = [this] { clock_.work(work_.load()); };
        player_ = Player::create(nullptr, {.active = GetParam(), .call_frames = 0, .corrects_times = false},
                                 [this](std::unique_ptr<IQFFrame> frame) { last_ = std::move(frame); });
        EXPECT_TRUE(player_->setOptions(R"({"enable_normalizer": true})"));
    }
    ~GuardedPlayer() override {
        player_.reset();
        resetEngineFaults();
    }

    // Plays one frame whose processing takes `work`. @return true if the effect changed it.
    bool play(milliseconds work) {
        work_ = work;
        auto frame = makeFrame({}, noiseSource(3, 1000));  // quiet, so the normalizer amplifies it
        const auto in = samplesOf(*frame);
        EXPECT_EQ(player_->push(std::move(frame)), 0);
        EXPECT_EQ(player_->drain(), 0);
        return last_ != nullptr && samplesOf(avFrameOf(last_)) != in;
    }
    // Plays frames until the player bypasses the filter. @return how many it played, at most
    // kMostFrames.
    int framesUntilBypass(milliseconds work) {
        int frames = 0;
        while (frames < kMostFrames && !player_->isBypassed()) {
            EXPECT_TRUE(play(work));
            ++frames;
        }
        return frames;
    }

    VirtualClock clock_;
    std::atomic<milliseconds> work_ = milliseconds(0);
    std::unique_ptr<IQFFrame> last_;
    std::unique_ptr<Player> player_;
};

INSTANTIATE_TEST_SUITE_P(Filter, GuardedPlayer, ::testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "Active" : "Inactive"; });

TEST_P(GuardedPlayer, BypassesAFilterThatExceedsItsShareOfTheVideoFrame) {
    player_->setVideoFps(25);  // budget 40 ms, threshold 30 ms, limit 25 ms²
    EXPECT_EQ(framesUntilBypass(milliseconds(36)), 11);
    EXPECT_FALSE(play(milliseconds(36))) << "a bypassed frame stays as it was";
}

TEST_P(GuardedPlayer, KeepsAFilterThatStaysWithinItsShare) {
    player_->setVideoFps(25);
    EXPECT_EQ(framesUntilBypass(milliseconds(35)), kMostFrames);
}

TEST_P(GuardedPlayer, HalvesTheShareAtDoubleSpeed) {
    player_->setVideoFps(24);
    player_->setSpeed(2.0);  // budget 20 ms, threshold 15 ms, limit 4 ms²
    EXPECT_EQ(framesUntilBypass(milliseconds(17)), kMostFrames);
    EXPECT_EQ(framesUntilBypass(milliseconds(18)), 2) << "9 in place of 4 ms², twice, is a mean of 5 ms²";
}

TEST_P(GuardedPlayer, ForgivesSingleSlowFramesOfAFilmsRate) {
    player_->setVideoFps(23.976);  // budget 43 ms, threshold 32 ms, limit 25 ms²
    for (int frame = 0; frame < kMostFrames; ++frame) {
        EXPECT_TRUE(play(frame % 10 == 9 ? milliseconds(32 + 16) : milliseconds(32)));
    }
    EXPECT_FALSE(player_->isBypassed());
    play(milliseconds(32 + 3));
    EXPECT_TRUE(player_->isBypassed()) << "256 and 9 ms² in ten frames";
}

TEST_P(GuardedPlayer, ForgetsWhatWasBeforeASeek) {
    player_->setVideoFps(25);
    for (int frame = 0; frame < 10; ++frame) EXPECT_TRUE(play(milliseconds(36)));
    player_->seek();
    EXPECT_EQ(framesUntilBypass(milliseconds(36)), 11);
}

TEST_P(GuardedPlayer, TriesAgainWhenAsked) {
    player_->setVideoFps(25);
    EXPECT_EQ(framesUntilBypass(milliseconds(100)), 4);
    EXPECT_FALSE(play(milliseconds(0)));
    player_->setVideoFps(20);
    EXPECT_FALSE(play(milliseconds(0))) << "another frame rate does not end an overload";
    player_->retryAfterOverload();
    EXPECT_EQ(framesUntilBypass(milliseconds(100)), 4);
}

}  // namespace
}  // namespace test
