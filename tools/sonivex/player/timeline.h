#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "audio_spec.h"

namespace sonivex_tool {

/** Aligns the frames that come out of the filter with the input.
 *
 *  A frame's pts is its position on the filter's side, in frames (samples per channel). The timeline removes
 *  the first `delay_frames` and everything after the end. It fills the gap of a dropped frame with silence,
 *  so that everything after the gap stays in place. */
class Timeline {
  public:
    /** Receives the aligned frames in order, and owns them. */
    using Output = std::function<void(FramePtr)>;

    /** @param delay_frames frames to remove at the start */
    Timeline(int64_t delay_frames, Output output) : delay_frames_(delay_frames), output_(std::move(output)) {}

    /** Sets the frames to remove at the start. Call it before the first frame. */
    void setDelay(int64_t frames) { delay_frames_ = frames; }

    /** Begins anew, with the first frame after a flush: positions count from 0 again, and the end is open. */
    void restart();

    /** Sets the total frames to output; at most the input length minus the delay. */
    void setEnd(int64_t frames) { end_ = frames; }

    /** Takes the next frame out of the filter, with its pts set.
     *  @throw std::bad_alloc, and whatever the output throws */
    void accept(FramePtr frame);

    /** Ends the stream: fills up to the end with silence if the end is known and any frame was accepted. */
    void finish();

    /** Returns how many output frames are silence inserted for dropped frames. */
    int64_t filledFrames() const { return filled_frames_; }

  private:
    static constexpr int64_t kOpenEnd = std::numeric_limits<int64_t>::max();

    void fillUntil(int64_t start);

    int64_t delay_frames_;
    Output output_;
    int64_t end_ = kOpenEnd;
    int64_t position_ = 0;  // frames handed to the output
    int64_t filled_frames_ = 0;
    AudioSpec spec_;  // of the last frame
};

}  // namespace sonivex_tool
