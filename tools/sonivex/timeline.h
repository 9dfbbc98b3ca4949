#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "audio_spec.h"

namespace sonivex_tool {

/** Puts the frames that come out of the filter where they belong.
 *
 *  A frame's pts is the number of frames before it on the filter's side. The first `delayFrames` of what
 * comes out are cut away, and so is everything behind the end. A frame that the filter gave up leaves a hole,
 * which is filled with silence, so that everything after it stays in place. */
class Timeline {
  public:
    using Output = std::function<void(FramePtr)>;

    Timeline(int64_t delayFrames, Output output) : mDelayFrames(delayFrames), mOutput(std::move(output)) {}

    /** Before the first frame only. */
    void setDelay(int64_t frames) { mDelayFrames = frames; }

    /** The number of frames that shall leave, once it is known. At most what has been given in less the
     * delay. */
    void setEnd(int64_t frames) { mEnd = frames; }

    /** Take the next frame out of the filter, with its pts. */
    void accept(FramePtr frame);

    /** Nothing more comes: fill up to the end, if it is known. */
    void finish();

    /** Frames of silence among those that left, in place of what the filter gave up. */
    int64_t filledFrames() const { return mFilledFrames; }

  private:
    static constexpr int64_t kOpenEnd = std::numeric_limits<int64_t>::max();

    void fillUntil(int64_t start);

    int64_t mDelayFrames;
    Output mOutput;
    int64_t mEnd = kOpenEnd;
    int64_t mPosition = 0;  ///< frames that left
    int64_t mFilledFrames = 0;
    AudioSpec mSpec;  ///< of the last frame
};

}  // namespace sonivex_tool
