#pragma once

#include <cstdint>
#include <optional>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/rational.h>
}

namespace Vorlin {

/** @return the time of the frame that is `frames` later than `pts`, to the nearest tick; AV_NOPTS_VALUE if
 *  `pts` or the time base is unknown. */
int64_t laterBy(int64_t pts, int64_t frames, int rate_hz, AVRational time_base);

/** Knows the time of every frame of a stream from the times that some frames tell.
 *
 *  Times are counted from the last frame whose own time the count could not predict to a tick, so that
 *  neither rounding adds up nor a container's coarse times shake the count. */
class StreamTimes {
  public:
    /** @param time_base of frames that do not tell theirs; {0, 1} if it is unknown. */
    explicit StreamTimes(AVRational time_base) : mDefaultBase(time_base) {}

    /** @return the time base of `frame`; {0, 1} if it is unknown. */
    AVRational baseOf(const AVFrame& frame) const;

    /** @return how many frames of audio are missing before `frame`; negative if it begins before the end of
     *  the one before; 0 if times are unknown. */
    int64_t gapBefore(const AVFrame& frame) const;

    /** Takes the next frame of the stream, and sets its time if it has none and the count knows it. */
    void take(AVFrame& frame);

    /** @return the time of the next frame; AV_NOPTS_VALUE if it is unknown. */
    int64_t next() const;
    /** @return the time of what is `frames` before the next frame; AV_NOPTS_VALUE if it is unknown. */
    int64_t before(int64_t frames) const { return laterBy(next(), -frames, mRateHz, mBase); }
    /** @return the time base of `next`. */
    AVRational base() const { return mBase; }

    /** Forgets all times, as a new stream requires. */
    void forget() { mStart.reset(); }

  private:
    const AVRational mDefaultBase;
    std::optional<int64_t> mStart;  // the time from which frames are counted; empty if unknown
    AVRational mBase{0, 1};
    int mRateHz = 0;
    int64_t mFrames = 0;  // since mStart
};

}  // namespace Vorlin
