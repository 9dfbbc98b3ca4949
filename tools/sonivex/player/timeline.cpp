#include "timeline.h"

#include <libavutil/samplefmt.h>

#include <algorithm>

namespace sonivex_tool {
namespace {

constexpr int64_t kLongestFill = 8192;  // frames in one piece of silence; bounds its memory

}  // namespace

void Timeline::fillUntil(int64_t start) {
    const int64_t end = std::min(start, end_);
    while (position_ < end) {
        const int frames = static_cast<int>(std::min(end - position_, kLongestFill));
        FramePtr silence = makeFrame(spec_, frames);
        av_samples_set_silence(silence->extended_data, 0, frames, spec_.channels(), spec_.format);
        position_ += frames;
        filled_frames_ += frames;
        output_(std::move(silence));
    }
}

void Timeline::accept(FramePtr frame) {
    spec_ = specOf(*frame);
    const int64_t start = frame->pts - delay_frames_;
    fillUntil(start);
    const int64_t skip = std::max<int64_t>(position_ - start, 0);
    const int64_t keep = std::min(frame->nb_samples - skip, end_ - position_);
    if (keep <= 0) return;
    trimFrame(*frame, static_cast<int>(skip), static_cast<int>(keep));
    position_ += keep;
    output_(std::move(frame));
}

void Timeline::restart() {
    end_ = kOpenEnd;
    position_ = 0;
}

void Timeline::finish() {
    if (end_ != kOpenEnd && spec_.rate_hz > 0) fillUntil(end_);
}

}  // namespace sonivex_tool
