#include "filter_pump.h"

#include <algorithm>
#include <utility>

#include "fence_frame.h"
#include "vorlin/results.h"

extern "C" {
#include <libavutil/error.h>
}

namespace Vorlin {

namespace {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr int64_t kPoll_ms = 1;

// Measures for how long no frame has moved.
class StallWatch {
  public:
    explicit StallWatch(std::chrono::milliseconds limit) : mLimit(limit) {}

    void restart() { mSince = steady_clock::now(); }
    bool isOver() const { return steady_clock::now() - mSince >= mLimit; }

  private:
    std::chrono::milliseconds mLimit;
    steady_clock::time_point mSince = steady_clock::now();
};

}  // namespace

FilterPump::FilterPump(IAudioFilter& filter, bool active, const BypassControl& bypass,
                       WorkingTime& working_time, std::chrono::milliseconds stall_limit,
                       Player::Output output)
    : mFilter(filter),
      mActive(active),
      mBypass(bypass),
      mWorkingTime(working_time),
      mStallLimit(stall_limit),
      mOutput(std::move(output)) {}

int FilterPump::push(std::unique_ptr<IQFFrame>& frame) {
    StallWatch stall(mStallLimit);
    for (;;) {
        const Attempt attempt = tryPush(frame);
        if (attempt.result != kTryAgain) return attempt.result;
        if (attempt.has_moved_a_frame) {
            stall.restart();
        } else if (stall.isOver()) {
            return AVERROR(ETIMEDOUT);
        } else {
            qf_msleep(kPoll_ms);
        }
    }
}

int FilterPump::passFence(const IQFFrame::audioInfo& stream) {
    const uint64_t number = ++mNewestFence;
    std::unique_ptr<IQFFrame> fence = FenceFrame::make(stream, number);
    if (!fence) return AVERROR(ENOMEM);
    if (const int result = push(fence); result < 0) return result;

    StallWatch stall(mStallLimit);
    std::unique_ptr<IQFFrame> nudge;
    while (mNewestFenceOut < number) {
        if (mActive ? pullReady({}) : runOnce(nudge, stream)) {
            stall.restart();
        } else if (stall.isOver()) {
            return AVERROR(ETIMEDOUT);
        } else {
            qf_msleep(kPoll_ms);
        }
    }
    return 0;
}

// An inactive filter works only inside `push`, and stops early when it gives a frame up, so the fence may
// still be waiting inside. Only another push, taken or not, makes the filter work again. This function
// therefore pushes one more fence with the same number: when it comes out, the first one has come out too.
bool FilterPump::runOnce(std::unique_ptr<IQFFrame>& nudge, const IQFFrame::audioInfo& stream) {
    if (!nudge) nudge = FenceFrame::make(stream, mNewestFence);
    return nudge && tryPush(nudge).has_moved_a_frame;
}

FilterPump::Attempt FilterPump::tryPush(std::unique_ptr<IQFFrame>& frame) {
    constexpr uint64_t kDoNotWait_ms = 0;
    const bool is_fence = dynamic_cast<const FenceFrame*>(frame.get()) != nullptr;
    const bool is_bypassed = mBypass.isBypassed();
    const auto begin = steady_clock::now();
    const int result = mFilter.push(frame, kDoNotWait_ms);
    const nanoseconds push_call = steady_clock::now() - begin;
    if (result == kSuccess && !is_fence) {
        ++mTaken;
        if (is_bypassed) ++mTakenBypassed;
    }
    return {result, pullReady(push_call)};
}

// @return whether any frame or fence came out.
bool FilterPump::pullReady(nanoseconds push_call) {
    constexpr uint64_t kDoNotWait_ms = 0;
    uint64_t frames = 0;
    uint64_t fences = 0;
    std::unique_ptr<IQFFrame> frame;
    while (mFilter.pull(frame, kDoNotWait_ms) == kSuccess) {
        if (const auto* fence = dynamic_cast<const FenceFrame*>(frame.get())) {
            mNewestFenceOut = std::max(mNewestFenceOut, fence->number());
            frame.reset();
            ++fences;
        } else {
            ++frames;
            ++mHandedOver;
            mOutput(std::move(frame));
        }
    }
    mWorkingTime.framesCameOut(frames, push_call);
    return frames + fences > 0;
}

}  // namespace Vorlin
