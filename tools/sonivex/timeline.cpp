#include "timeline.h"

#include <libavutil/samplefmt.h>

#include <algorithm>

namespace sonivex_tool {
namespace {

constexpr int64_t kLongestFill = 8192;  // frames in one piece of silence

}  // namespace

void Timeline::fillUntil(int64_t start) {
    const int64_t end = std::min(start, mEnd);
    while (mPosition < end) {
        const int frames = static_cast<int>(std::min(end - mPosition, kLongestFill));
        FramePtr silence = makeFrame(mSpec, frames);
        av_samples_set_silence(silence->extended_data, 0, frames, mSpec.channels(), mSpec.format);
        mPosition += frames;
        mFilledFrames += frames;
        mOutput(std::move(silence));
    }
}

void Timeline::accept(FramePtr frame) {
    mSpec = specOf(*frame);
    const int64_t start = frame->pts - mDelayFrames;
    fillUntil(start);
    const int64_t skip = std::max<int64_t>(mPosition - start, 0);
    const int64_t keep = std::min(frame->nb_samples - skip, mEnd - mPosition);
    if (keep <= 0) return;
    trimFrame(*frame, static_cast<int>(skip), static_cast<int>(keep));
    mPosition += keep;
    mOutput(std::move(frame));
}

void Timeline::finish() {
    if (mEnd != kOpenEnd && mSpec.rateHz > 0) fillUntil(mEnd);
}

}  // namespace sonivex_tool
