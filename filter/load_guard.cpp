// Keeps the filter from slowing playback down. Two guards run on the player's thread:
//   frame rate       fps * speed >= 62 is over the limit; each crossing is reported once
//   processing time  budget = 1000 ms / (fps * speed), the time of one video frame
//                    excess = max(0, elapsed - 3/4 * budget)
//                    the mean of the last 10 squared excesses must not exceed (1/8 * budget)^2
// The first guard only reports. The second also sets the filter invalid; the player decides for how long.

#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "SonivexFilter.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int64_t kOverLimit_fps = 62;  // video frames per second at the current speed
constexpr int64_t kMillisecondsPerSecond = 1000;
constexpr std::size_t kIgnoredSamples = 3;  // the first after a reset; a slow start-up is no overload
constexpr std::size_t kWindowSamples = 10;

uint64_t squareSaturating(uint64_t value) {
    const double square = std::pow(static_cast<double>(value), 2.0);
    constexpr double kTwoTo64 = 18446744073709551616.0;
    return square >= kTwoTo64 ? std::numeric_limits<uint64_t>::max() : static_cast<uint64_t>(square);
}

}  // namespace

void sonivexFilter::setInvalid(bool invalid) {
    if (mInvalid.load() == invalid) return;
    __log_print(LOG_INFO, kFilterName, "filter set invalid %d\n", invalid);
    mInvalid.exchange(invalid);
}

bool sonivexFilter::isOverFps() {
    const int64_t rate_fps = int64_t{mSpeed} * mFps;
    const bool is_over = rate_fps >= kOverLimit_fps;
    if (!mInvalid.load() && mEventCallback) {
        if (!mOverFps && is_over) {
            notify(mOverFpsEvent);
        } else if (mOverFps && !is_over) {
            notify(mRecoveryEvent);
        }
    }
    return is_over;
}

void sonivexFilter::checkTimeConsume(uint64_t elapsed) {
    const int64_t rate_fps = int64_t{mSpeed} * mFps;
    if (rate_fps <= 0) return;
    const auto budget_ms = static_cast<uint64_t>(kMillisecondsPerSecond / rate_fps);
    if (mInvalid.load()) return;

    const uint64_t threshold_ms = budget_ms * 3 / 4;
    const uint64_t cost = elapsed <= threshold_ms ? 0 : squareSaturating(elapsed - threshold_ms);
    if (!takeCost(cost)) return;

    const uint64_t mean = mCostSum / mCostWindow.size();
    const uint64_t tolerated_ms = budget_ms / 8;
    const double limit = std::pow(static_cast<double>(tolerated_ms), 2.0);
    if (static_cast<double>(mean) > limit) {
        setInvalid(true);
        notify(mOverloadEvent);
        mCostSum = 0;
        mCostWindow.clear();
    }
}

// @return false if there is no memory for the cost.
bool sonivexFilter::takeCost(uint64_t cost) {
    if (isReadyToThrow()) {
        try {
            const bool is_ignored = mCostWindow.size() < kIgnoredSamples;
            mCostWindow.push_back(is_ignored ? 0 : cost);
            if (mCostWindow.size() > kWindowSamples) {
                mCostSum -= mCostWindow.front();
                mCostWindow.pop_front();
            }
            mCostSum += mCostWindow.back();
            return true;
        } catch (const std::bad_alloc&) {  // is reported below
        }
    }
    __log_print(LOG_WARNING, kFilterName, "sonivex: no memory for the load guard");
    return false;
}

void sonivexFilter::notify(const std::string& event) {
    // The event goes out even if there is no memory for this. Few callbacks ask for memory when they are
    // copied, and the player must hear of an overload.
    (void)isReadyToThrow();
    EventCallback callback;
    try {
        callback = mEventCallback;  // a copy, because the callback may install another one
    } catch (const std::bad_alloc&) {
        __log_print(LOG_ERROR, kFilterName, "sonivex: no memory for the event %s", event.c_str());
        return;
    }
    callback(0, event);
}

}  // namespace Vorlin
