#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "audio_spec.h"

namespace sonivex_tool {

/** Puts the frames that come out of the filter where they belong.
 *
 *  A frame's pts is the number of frames before it on the filter's side. The first `delay_frames` of what
 * comes out are cut away, and so is everything behind the end. A frame that the filter gave up leaves a hole,
 * which is filled with silence, so that everything after it stays in place. */
class Timeline {
  public:
    using Output = std::function<void(FramePtr)>;

    Timeline(int64_t delay_frames, Output output) : delay_frames_(delay_frames), output_(std::move(output)) {}

    /** Before the first frame only. */
    void setDelay(int64_t frames) { delay_frames_ = frames; }

    /** The number of frames that shall leave, once it is known. At most what has been given in less the
     * delay. */
    void setEnd(int64_t frames) { end_ = frames; }

    /** Take the next frame out of the filter, with its pts. */
    void accept(FramePtr frame);

    /** Nothing more comes: fill up to the end, if it is known. */
    void finish();

    /** Frames of silence among those that left, in place of what the filter gave up. */
    int64_t filledFrames() const { return filled_frames_; }

  private:
    static constexpr int64_t kOpenEnd = std::numeric_limits<int64_t>::max();

    void fillUntil(int64_t start);

    int64_t delay_frames_;
    Output output_;
    int64_t end_ = kOpenEnd;
    int64_t position_ = 0;  // frames that left
    int64_t filled_frames_ = 0;
    AudioSpec spec_;  // of the last frame
};

}  // namespace sonivex_tool
