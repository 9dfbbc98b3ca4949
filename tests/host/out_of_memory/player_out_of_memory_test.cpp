// Makes every request for memory fail that a player with the real filter makes, from its creation to its end.
// One call reports it, nothing leaks, and after a seek the player sounds as if nothing had happened.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "failing_calls/sweep.h"
#include "frame_checks.h"
#include "support/frames/audio_frames.h"
#include "vorlin/player.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace test {
namespace {

using Vorlin::IQFFrame;
using Vorlin::Player;
using Vorlin::PlayerConfig;

struct Stream {
    const char* name;
    const char* options;
    FrameSpec spec;
    PlayerConfig config{.active = false, .time_base = {1, 48000}};
};

const Stream kStreams[] = {
    {"Normalizer", R"({"enable_normalizer": true})", {.format = AV_SAMPLE_FMT_FLTP, .frames = 700}},
    {"Dialogue", R"({"enable_dialoguenhance": true})", {.frames = 1500}},
    {"SurroundInShortFrames", R"({"enable_surround": true})", {.frames = 300}},
    {"SurroundUncorrected",
     R"({"enable_surround": true})",
     {.channels = 6, .frames = 480},
     {.active = false, .call_frames = 0, .corrects_times = false}},
    {"NormalizerOnItsOwnThread",
     R"({"enable_normalizer": true})",
     {.frames = 700},
     {.active = true, .time_base = {1, 48000}}},
};

// Numbers whose text is too long for a string without memory of its own.
constexpr double kFilm_fps = 24000.0 / 1001.0;
constexpr double kFast = 4.000000000000001;

/** Plays a stream through a player, with failing memory and without. */
class Playing {
  public:
    Playing(const Stream& stream, FailingMemory& memory) : stream_(stream), memory_(memory) {
        out_.reserve(1000);
        player_ = memory.during([&] { return make(); });
        if (player_ != nullptr) return;
        EXPECT_TRUE(memory.hasFailed());
        player_ = make();
    }

    void play() {
        const bool is_set = memory_.during([&] { return player_->setOptions(options_); });
        if (!is_set) {
            EXPECT_TRUE(memory_.hasFailed());
            EXPECT_TRUE(player_->setOptions(options_));
        }
        memory_.during([&] { player_->setVideoFps(kFilm_fps); });
        pushFrames(5);
        memory_.during([&] {
            player_->setSpeed(kFast);  // 92 frames a second: the filter announces that this is too fast
        });
        EXPECT_TRUE(player_->isBypassed() || memory_.hasFailed());
        pushFrames(2);
        if (memory_.which() == FailingMemory::Which::kOne) {
            EXPECT_TRUE(player_->isBypassed()) << "a push repeats what failed";
        }
        memory_.during([&] { player_->setSpeed(1.0); });
        EXPECT_FALSE(player_->isBypassed());
        memory_.during([&] { player_->setOptions(options_); });
        pushFrames(2);
        check(memory_.during([&] { return player_->drain(); }));
        memory_.during([&] { player_->seek(); });
        pushFrames(2);
    }

    std::vector<std::vector<int16_t>> playOn() {
        player_->setSpeed(1.0);
        EXPECT_TRUE(player_->setOptions(options_));
        player_->seek();
        out_.clear();
        const Vorlin::PlayerCounts before = player_->counts();
        for (int64_t number = 0; number < 5; ++number) EXPECT_EQ(player_->push(frameOf(number)), 0);
        EXPECT_EQ(player_->drain(), 0);
        expectCountsGoOn(before);
        std::vector<std::vector<int16_t>> sound;
        for (const auto& frame : out_) sound.push_back(samplesOf(avFrameOf(frame)));
        return sound;
    }

    // Asks for memory until a request fails. A worker decides how many frames wait at a time, so with one the
    // queues' requests differ by a few from run to run.
    void askUntilOneFails() {
        constexpr int kMostDifference = 20;
        memory_.during([&] {
            for (int i = 0; i < kMostDifference && !memory_.hasFailed(); ++i) {
                void* volatile block = std::malloc(1);
                std::free(block);
            }
        });
    }

    void end() {
        memory_.during([&] {
            out_.clear();
            player_.reset();
        });
    }

  private:
    std::unique_ptr<Player> make() {
        return Player::create(nullptr, stream_.config,
                              [this](std::unique_ptr<IQFFrame> frame) { out_.push_back(std::move(frame)); });
    }

    std::unique_ptr<IQFFrame> frameOf(int64_t number) const {
        auto frame = makeFrame(stream_.spec, noiseSource(static_cast<uint32_t>(number) + 1, 3000));
        static_cast<AVFrame*>(*frame)->pts = number * stream_.spec.frames;
        return frame;
    }

    void pushFrames(int count) {
        for (int i = 0; i < count; ++i) {
            auto frame = frameOf(next_++);
            check(memory_.during([&] { return player_->push(std::move(frame)); }));
        }
        for (const auto& frame : out_) {
            EXPECT_TRUE(Vorlin::frameMatchesDescription(frame->getInfo(), avFrameOf(frame)));
        }
    }

    // Expects that the counts kept every call before the stream that has just been drained, and that this
    // stream lost none.
    void expectCountsGoOn(const Vorlin::PlayerCounts& before) const {
        const Vorlin::PlayerCounts& now = player_->counts();
        EXPECT_EQ(before.pushed, before.pulled + before.dropped + before.discarded);
        EXPECT_LE(before.pulled, before.pushed);
        EXPECT_LE(before.dropped, before.pushed);
        EXPECT_LE(before.discarded, before.pushed);
        EXPECT_GT(now.pushed, before.pushed);
        EXPECT_EQ(now.pushed - before.pushed, now.pulled - before.pulled);
        EXPECT_EQ(now.dropped, before.dropped);
        EXPECT_EQ(now.discarded, before.discarded);
    }

    void check(int result) {
        if (result == 0) return;
        if (memory_.which() == FailingMemory::Which::kOne) {
            EXPECT_EQ(++failed_calls_, 1) << "one request fails, but more than one call";
        }
        EXPECT_EQ(result, AVERROR(ENOMEM));
        EXPECT_TRUE(memory_.hasFailed());
    }

    const Stream& stream_;
    FailingMemory& memory_;
    const std::string options_ = stream_.options;
    std::vector<std::unique_ptr<IQFFrame>> out_;
    std::unique_ptr<Player> player_;
    int64_t next_ = 0;
    int failed_calls_ = 0;
};

class PlayerOutOfMemory : public testing::TestWithParam<Stream> {
  protected:
    PlayerOutOfMemory() { av_log_set_level(AV_LOG_QUIET); }
};

INSTANTIATE_TEST_SUITE_P(Streams, PlayerOutOfMemory, testing::ValuesIn(kStreams),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(PlayerOutOfMemory, ReportsItAndPlaysOnAfterASeek) {
    constexpr int kStride = 37;
    std::vector<std::vector<int16_t>> unharmed;
    int runs = 0;
    failEveryRequest(sweepStride(kStride), [&](FailingMemory& memory) {
        const bool shall_fail = ++runs > 2;
        Playing playing(GetParam(), memory);
        playing.play();
        const auto sound = playing.playOn();
        if (unharmed.empty()) unharmed = sound;
        EXPECT_EQ(sound, unharmed);
        playing.end();
        if (shall_fail && GetParam().config.active) playing.askUntilOneFails();
    });
}

}  // namespace
}  // namespace test
