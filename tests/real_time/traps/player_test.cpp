// The framework's way of a frame: Player::push makes only the calls on its lists (kept_lists.h).
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

extern "C" {
#include <libavutil/dict.h>
}

#include "real_time/traps/kept_calls.h"
#include "real_time/traps/kept_lists.h"
#include "real_time/traps/real_time_section.h"
#include "support/frames/audio_frames.h"
#include "vorlin/player.h"

namespace {

using test::kEachPush;
using test::KeptCalls;
using test::kFirstPush;
using test::kWatch;
using test::RealTimeSection;
using Vorlin::Player;

// A player and its frames, all made in advance.
class PlayedStream {
  public:
    static constexpr std::size_t kFrames = 24;

    explicit PlayedStream(const Vorlin::PlayerConfig& config)
        : player_(
              Player::create(nullptr, config, [this](auto frame) { out_[came_out_++] = std::move(frame); })) {
        EXPECT_TRUE(player_->setOptions(R"({"enable_surround": true})"));
        player_->setVideoFps(25);
        int length = 100;
        for (auto& frame : in_) {
            const test::FrameSpec spec{.format = AV_SAMPLE_FMT_FLTP, .channels = 6, .frames = length};
            auto made = test::makeFrame(spec, test::noiseSource(1));
            av_dict_set(&static_cast<AVFrame*>(*made)->metadata, "mark", "of the frame", 0);
            frame = std::move(made);
            length += 101;  // so that the waiting line of samples grows
        }
    }

    Player& player() { return *player_; }

    // Pushes the frames before `end` that have not been pushed yet.
    void push(std::size_t end) {
        for (; next_ < end; ++next_) player_->push(std::move(in_[next_]));
    }

    // Ends the stream without its tail. Returns how many frames came out.
    std::size_t finish() {
        EXPECT_EQ(player_->drain(), 0);
        return came_out_;
    }

  private:
    std::array<std::unique_ptr<Vorlin::IQFFrame>, kFrames> in_;
    std::array<std::unique_ptr<Vorlin::IQFFrame>, kFrames + 1> out_;
    std::size_t came_out_ = 0;
    std::size_t next_ = 0;
    std::unique_ptr<Player> player_;
};

// Plays a stream whose frames from the first one on, or from a later one on, are pushed in a section.
std::size_t play(bool has_worker, std::size_t first = 8) {
    PlayedStream stream({.active = has_worker, .delivers_tail = false});
    stream.push(first);
    {
        const RealTimeSection section;
        stream.push(PlayedStream::kFrames);
    }
    return stream.finish();
}

std::size_t playInsidePush() {
    return play(false);
}

std::size_t playWithWorker() {
    return play(true);
}

std::size_t playFromTheStart() {
    return play(true, 0);
}

TEST(PlayerTraps, APushMakesOnlyTheCallsOnTheListAndThoseOfTheFilter) {
    KeptCalls kept(kEachPush);
    kept.add(test::kEachFrame);
    EXPECT_EQ(playInsidePush(), PlayedStream::kFrames);
}

TEST(PlayerTraps, APushToAFilterWithAWorkerAlsoWatchesIt) {
    KeptCalls kept(kEachPush);
    kept.add(kWatch);
    EXPECT_EQ(playWithWorker(), PlayedStream::kFrames);
    kept.add(kFirstPush);
    EXPECT_EQ(playFromTheStart(), PlayedStream::kFrames);
}

TEST(PlayerTraps, EachOfTheseCallsIsTrapped) {
    test::expectEachIsTrapped(playWithWorker, kEachPush, kWatch);
    test::expectEachIsTrapped(playWithWorker, kWatch, kEachPush);
    test::expectEachIsTrapped(playFromTheStart, kFirstPush, test::joined(kEachPush, kWatch));
}

TEST(PlayerTraps, AskingThePlayerMakesNoCall) {
    PlayedStream stream({.active = true});
    stream.push(12);
    bool is_bypassed = true;
    std::uint64_t pushed = 0;
    const void* filter = nullptr;
    {
        const RealTimeSection section;
        is_bypassed = stream.player().isBypassed();
        pushed = stream.player().counts().pushed;
        filter = &stream.player().filter();
    }
    EXPECT_FALSE(is_bypassed);
    EXPECT_GT(pushed, 0U);
    EXPECT_NE(filter, nullptr);
    stream.finish();
}

}  // namespace
