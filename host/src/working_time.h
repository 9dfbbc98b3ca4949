#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "bypass_control.h"
#include "vorlin/filter.h"
#include "vorlin/thread.h"

namespace Vorlin {

/** Reports to a filter's load guard how long the filter worked on each frame.
 *
 *    active filter     work = growth of the worker's processor time
 *    inactive filter   work = duration of the `push` that did the work
 *    each frame        work / number of frames that came out together
 *
 *  The time between push and pull would be wrong, because it includes the worker's sleep. Nothing is reported
 *  while the filter is bypassed or no frame rate is known, because the time allowed for a frame follows from
 *  the rate.
 *
 *  Only the player's thread uses this class. */
class WorkingTime {
  public:
    /** @param filter, bypass must outlive this object.
     *  @param active true if the filter has a worker.
     *  @param worker the clock of the worker; null if there is none. Nothing is reported to an active filter
     *  without a clock. */
    WorkingTime(IAudioFilter& filter, const BypassControl& bypass, bool active,
                std::shared_ptr<const qfThreadClock> worker);

    /** Sets the video's frame rate, in frames per second. */
    void setVideoFps(double fps) { mFps = fps; }
    /** Sets the playback speed; 1.0 = normal. */
    void setSpeed(double speed) { mSpeed = speed; }

    /** Ignores the processor time that the worker has used so far, because no frame is inside the filter. */
    void forget();

    /** Reports the work on `frames` frames, which came out after a `push` that took `push_call` (0 for no
     *  push). */
    void framesCameOut(uint64_t frames, std::chrono::nanoseconds push_call);

  private:
    std::chrono::nanoseconds growthOfWorker();
    bool isWatching() const;
    void tell(uint64_t frames, std::chrono::nanoseconds& work);

    IAudioFilter& mFilter;
    const BypassControl& mBypass;
    const bool mActive;
    const std::shared_ptr<const qfThreadClock> mWorker;
    std::chrono::nanoseconds mWorkerSeen{};  // clock reading up to which the work is accounted for
    std::chrono::nanoseconds mUnreported{};  // time below a millisecond, kept for the next frame
    double mFps = 0.0;
    double mSpeed = 1.0;
};

}  // namespace Vorlin
