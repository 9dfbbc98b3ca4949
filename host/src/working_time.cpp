#include "working_time.h"

#include <cmath>
#include <utility>

namespace Vorlin {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

WorkingTime::WorkingTime(IAudioFilter& filter, const BypassControl& bypass, bool active,
                         std::shared_ptr<const qfThreadClock> worker)
    : mFilter(filter), mBypass(bypass), mActive(active), mWorker(std::move(worker)) {}

void WorkingTime::forget() {
    growthOfWorker();
}

nanoseconds WorkingTime::growthOfWorker() {
    if (!mWorker) return {};
    const nanoseconds now = mWorker->cpuTime();
    return now - std::exchange(mWorkerSeen, now);
}

bool WorkingTime::isWatching() const {
    // A filter cuts frame rate and speed to whole numbers. The time allowed for a frame is the reciprocal of
    // their product, so the filter must not get a report while the product is 0.
    return !mBypass.isBypassed() && std::trunc(mFps) * std::trunc(mSpeed) > 0.0;
}

void WorkingTime::framesCameOut(uint64_t frames, nanoseconds push_call) {
    if (!mActive) {
        tell(frames, push_call);
    } else if (mWorker && frames > 0) {
        mUnreported += growthOfWorker();
        if (isWatching()) {
            tell(frames, mUnreported);
        } else {
            mUnreported = {};
        }
    }
}

// Reports `work` in equal shares of whole milliseconds and takes these from `work`. Less than a millisecond
// remains per frame.
void WorkingTime::tell(uint64_t frames, nanoseconds& work) {
    for (uint64_t left = frames; left > 0 && isWatching(); --left) {
        const auto share = std::chrono::duration_cast<milliseconds>(work / static_cast<int64_t>(left));
        work -= share;
        mFilter.checkTimeConsume(static_cast<uint64_t>(share.count()));
    }
}

}  // namespace Vorlin
