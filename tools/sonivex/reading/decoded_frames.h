#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "audio_spec.h"
#include "timeline_repair.h"

namespace sonivex_tool {

/** A decoded frame that waits for its place in the audio. */
struct DecodedFrame {
    FramePtr frame;
    std::optional<int64_t> position;  // on the container's clock, in samples at the frame's rate
    bool follows_error = false;       // something failed since the frame before it
};

/** Decoded frames that wait until the frames after them are known.
 *
 * Damage can make a decoder return a frame or two of another rate or layout. A change counts only if the
 * following frames keep it. */
class DecodedFrames {
  public:
    /** Appends a frame. */
    void push(DecodedFrame frame);
    /** Declares that no frame follows. */
    void end() { is_ended_ = true; }

    /** Returns true if the first frame can be placed: enough frames follow it, or all that there are. */
    bool isReady() const;
    /** Returns true if there is no frame. */
    bool empty() const { return frames_.empty(); }
    /** The first frame. */
    DecodedFrame& front() { return frames_.front(); }

    /** Returns true if the first frame has the AudioSpec `current`, or begins a change that lasts. */
    bool isCredible(const AudioSpec& current) const;
    /** Returns the placements of the first frame and of those after it that have its rate. */
    std::vector<Placement> placements() const;
    /** Returns true if something failed before the first frame, or between it and those that `placements`
     * returns. */
    bool isNearError() const;

    /** Removes the first frame. An error before it then counts as one before the next frame. */
    void drop();
    /** Removes and returns the first frame. */
    FramePtr pop();

  private:
    std::deque<DecodedFrame> frames_;
    bool is_ended_ = false;
};

}  // namespace sonivex_tool
