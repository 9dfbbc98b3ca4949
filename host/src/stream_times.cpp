#include "stream_times.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/mathematics.h>
}

namespace Vorlin {

namespace {

constexpr AVRational kUnknown{0, 1};

bool isKnown(AVRational base) {
    return base.num > 0 && base.den > 0;
}

bool isSame(AVRational a, AVRational b) {
    return a.num == b.num && a.den == b.den;
}

}  // namespace

int64_t laterBy(int64_t pts, int64_t frames, int rate_hz, AVRational time_base) {
    if (pts == AV_NOPTS_VALUE || frames == 0) return pts;
    if (!isKnown(time_base) || rate_hz <= 0) return AV_NOPTS_VALUE;
    return av_sat_add64(pts, av_rescale_q(frames, AVRational{1, rate_hz}, time_base));
}

AVRational StreamTimes::baseOf(const AVFrame& frame) const {
    if (isKnown(frame.time_base)) return frame.time_base;
    return isKnown(mDefaultBase) ? mDefaultBase : kUnknown;
}

int64_t StreamTimes::next() const {
    return mStart ? laterBy(*mStart, mFrames, mRateHz, mBase) : AV_NOPTS_VALUE;
}

int64_t StreamTimes::gapBefore(const AVFrame& frame) const {
    const int64_t expected = next();
    if (expected == AV_NOPTS_VALUE || frame.pts == AV_NOPTS_VALUE || !isSame(baseOf(frame), mBase)) return 0;
    return av_rescale_q(av_sat_sub64(frame.pts, expected), mBase, AVRational{1, mRateHz});
}

void StreamTimes::take(AVFrame& frame) {
    const AVRational base = baseOf(frame);
    const int64_t expected = next();
    if (frame.pts == AV_NOPTS_VALUE) {
        if (expected != AV_NOPTS_VALUE && isKnown(base)) frame.pts = av_rescale_q(expected, mBase, base);
    } else {
        const bool is_predicted = expected != AV_NOPTS_VALUE && isSame(base, mBase) &&
                                  av_sat_sub64(frame.pts, expected) <= 1 &&
                                  av_sat_sub64(frame.pts, expected) >= -1;
        if (!is_predicted) {
            mStart = frame.pts;
            mBase = base;
            mRateHz = frame.sample_rate;
            mFrames = 0;
        }
    }
    mFrames += frame.nb_samples;
}

}  // namespace Vorlin
