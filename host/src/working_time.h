#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "bypass_control.h"
#include "vorlin/filter.h"
#include "vorlin/thread.h"

namespace Vorlin {

/** Tells a filter's load guard how long the filter worked on each frame.
 *
 *  The time between push and pull would not do: it holds the worker's sleeps. For a filter with a worker it
 *  is the growth of the worker's processor time, for one without it is the duration of the `push` that did
 *  the work. Frames that came out together share the time. Nothing is told while the filter is bypassed, nor
 *  before a frame rate is known, since the time allowed for a frame follows from it. */
class WorkingTime {
  public:
    /** @param worker the clock of the filter's worker; null for a filter that has none. Without a clock an
     *  active filter is told nothing. */
    WorkingTime(IAudioFilter& filter, const BypassControl& bypass, bool active,
                std::shared_ptr<const QfThreadClock> worker);

    void setVideoFps(double fps) { mFps = fps; }
    void setSpeed(double speed) { mSpeed = speed; }

    /** No frame is under way: what the worker has used so far belongs to none. */
    void forget();

    /** `frames` frames came out after a `push` that took `push_call` (0 when there was none). */
    void framesCameOut(uint64_t frames, std::chrono::nanoseconds push_call);

  private:
    std::chrono::nanoseconds growthOfWorker();
    bool isWatching() const;
    void tell(uint64_t frames, std::chrono::nanoseconds& work);

    IAudioFilter& mFilter;
    const BypassControl& mBypass;
    const bool mActive;
    const std::shared_ptr<const QfThreadClock> mWorker;
    std::chrono::nanoseconds mWorkerSeen{};  // reading of the clock up to which frames were charged
    std::chrono::nanoseconds mUntold{};      // worker time below a millisecond, kept for the next frame
    double mFps = 0.0;
    double mSpeed = 1.0;
};

}  // namespace Vorlin
