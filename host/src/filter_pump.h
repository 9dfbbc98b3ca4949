#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "bypass_control.h"
#include "vorlin/filter.h"
#include "vorlin/player.h"
#include "working_time.h"

namespace Vorlin {

/** Moves frames through a filter: answers kTryAgain by pulling, hands frames that are ready to the output,
 *  and waits for fences. Only the player's thread uses this class. */
class FilterPump {
  public:
    /** @param filter, bypass, working_time must outlive this object.
     *  @param active      true if the filter has a worker; an inactive one works inside `push`.
     *  @param stall_limit longest wait for a filter that moves no frame.
     *  @param output      receives every frame that comes out, in order, except fences. */
    FilterPump(IAudioFilter& filter, bool active, const BypassControl& bypass, WorkingTime& working_time,
               std::chrono::milliseconds stall_limit, Player::Output output);

    /** Pushes until the filter takes the frame.
     *  @return kSuccess, AVERROR(ETIMEDOUT), or the filter's own error. */
    int push(std::unique_ptr<IQFFrame>& frame);

    /** Pushes a fence of the format of `stream` and waits until it comes out.
     *  @return as `push`, or AVERROR(ENOMEM). */
    int passFence(const IQFFrame::audioInfo& stream);

    // The counts are right even after the output has thrown. Fences do not count.

    /** @return how many frames the filter took so far. */
    uint64_t taken() const { return mTaken; }
    /** @return how many of them it took while it was bypassed. */
    uint64_t takenBypassed() const { return mTakenBypassed; }
    /** @return how many frames went to the output so far. */
    uint64_t handedOver() const { return mHandedOver; }

  private:
    struct Attempt {
        int result;
        bool has_moved_a_frame;
    };

    Attempt tryPush(std::unique_ptr<IQFFrame>& frame);
    bool pullReady(std::chrono::nanoseconds push_call);
    bool runOnce(std::unique_ptr<IQFFrame>& nudge, const IQFFrame::audioInfo& stream);

    IAudioFilter& mFilter;
    const bool mActive;
    const BypassControl& mBypass;
    WorkingTime& mWorkingTime;
    const std::chrono::milliseconds mStallLimit;
    const Player::Output mOutput;
    uint64_t mTaken = 0;
    uint64_t mTakenBypassed = 0;
    uint64_t mHandedOver = 0;
    uint64_t mNewestFence = 0;     // number of the last fence pushed
    uint64_t mNewestFenceOut = 0;  // number of the last fence that came out
};

}  // namespace Vorlin
