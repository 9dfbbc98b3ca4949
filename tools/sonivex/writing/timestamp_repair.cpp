#include "timestamp_repair.h"

#include <algorithm>

#include "av_objects.h"

namespace sonivex_tool {
namespace {

// Far beyond any real time, in any time base, and far from the limits of the arithmetic.
constexpr int64_t kLargestTime = INT64_MAX / 8;

bool isKnown(int64_t time) {
    return time != AV_NOPTS_VALUE;
}

int64_t cleaned(int64_t time) {
    return time > kLargestTime || time < -kLargestTime ? AV_NOPTS_VALUE : time;
}

}  // namespace

PacketTimes TimestampRepair::repair(PacketTimes times) {
    PacketTimes original = times;
    times.pts = cleaned(times.pts);
    times.dts = cleaned(times.dts);
    if (times.duration < 0 || times.duration > kLargestTime) times.duration = 0;
    const int64_t expected = last_dts_ ? *last_dts_ + std::max<int64_t>(last_duration_, 1) : 0;
    if (!isKnown(times.dts)) {
        if (!isKnown(times.pts)) {
            times.dts = expected;
        } else {
            const int64_t ahead = last_dts_ ? expected : times.pts - reorder_delay_ * times.duration;
            times.dts = reorder_delay_ > 0 ? std::min(ahead, times.pts) : times.pts;
            original.dts = times.dts;
        }
    }
    if (!isKnown(times.pts)) times.pts = times.dts;
    if (times.dts > times.pts) {
        // One of the two is wrong. The one nearer to the expected time is kept.
        const int64_t middle =
            std::max(std::min(times.pts, times.dts), std::min(std::max(times.pts, times.dts), expected));
        times.pts = middle;
        times.dts = middle;
    }
    if (last_dts_) {
        const int64_t earliest = *last_dts_ + (is_strict_ ? 1 : 0);
        times.dts = std::max(times.dts, earliest);
        times.pts = std::max(times.pts, times.dts);
    }
    last_dts_ = times.dts;
    last_duration_ = times.duration;
    if (times != original) ++repaired_;
    return times;
}

}  // namespace sonivex_tool
