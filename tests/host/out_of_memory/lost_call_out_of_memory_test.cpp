// Makes every request for memory fail while a player joins the frames around a call that the filter gives
// up. Some of them come out in pieces, with a copy of the frame's side data. No sound may get lost without a
// report.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "failing_calls/sweep.h"
#include "host/streams/call_filter.h"
#include "support/frames/audio_frames.h"
#include "vorlin/player.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

namespace test {
namespace {

using Vorlin::IQFFrame;
using Frames = std::vector<std::vector<int16_t>>;

constexpr int kFrame = 300;
constexpr int kFrames = 9;
constexpr int kLostCall = 1;  // it begins and ends within a frame

class LostCallOutOfMemory : public testing::Test {
  protected:
    LostCallOutOfMemory() {
        av_log_set_level(AV_LOG_QUIET);
        plan_.passes_on = true;
    }

    // @return what comes out of a player; nothing if a call reported a lack of memory.
    Frames play(FailingMemory& memory) {
        std::vector<std::unique_ptr<IQFFrame>> out;
        out.reserve(100);
        plan_.lengths.clear();
        plan_.times.clear();
        plan_.gives_up = kLostCall;
        const auto player = Vorlin::Player::create(
            nullptr, {.filter_name = "calls", .active = false, .time_base = {1, 48000}},
            [&out](std::unique_ptr<IQFFrame> frame) { out.push_back(std::move(frame)); });
        std::vector<int> results;
        for (int number = 0; number < kFrames; ++number) {
            auto frame = makeFrame({.frames = kFrame}, noiseSource(static_cast<uint32_t>(number) + 1, 3000));
            AVFrame* samples = *frame;
            samples->pts = static_cast<int64_t>(number) * kFrame;
            EXPECT_NE(av_frame_new_side_data(samples, AV_FRAME_DATA_REPLAYGAIN, 4), nullptr);
            results.push_back(memory.during([&] { return player->push(std::move(frame)); }));
        }
        results.push_back(memory.during([&] { return player->drain(); }));

        bool is_reported = false;
        for (const int result : results) {
            if (result == 0) continue;
            EXPECT_EQ(result, AVERROR(ENOMEM));
            EXPECT_TRUE(memory.hasFailed());
            is_reported = true;
        }
        if (is_reported) return {};
        Frames sound;
        for (const auto& frame : out) sound.push_back(samplesOf(avFrameOf(frame)));
        return sound;
    }

    CallPlan plan_;
    CallFilter prototype_{plan_};
};

TEST_F(LostCallOutOfMemory, IsReportedOrCostsNothing) {
    Frames unharmed;
    int reported = 0;
    const Sweep sweep = failEveryRequest(1, [&](FailingMemory& memory) {
        const Frames sound = play(memory);
        if (unharmed.empty()) unharmed = sound;
        if (sound.empty()) {
            ++reported;
        } else {
            EXPECT_EQ(sound, unharmed) << "sound got lost without a report";
        }
    });
    EXPECT_GT(reported, sweep.runs / 2);
    EXPECT_EQ(unharmed.size(), kFrames - 2U) << "two whole frames are in the call that is given up";
}

}  // namespace
}  // namespace test
