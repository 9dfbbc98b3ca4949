#pragma once

#include <cstdint>
#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

/** Stereo samples with their positions in the programme, in frames. */
class StereoQueue {
  public:
    /** Creates an empty queue whose first frame will be at `position`. */
    explicit StereoQueue(int64_t position = 0) : begin_(position) {}

    /** Appends frames. @param frame interleaved stereo floats @throw std::bad_alloc */
    void append(const AVFrame& frame);
    /** Drops the frames before `position`. */
    void dropBefore(int64_t position);
    /** Copies `frames` frames from `position` on; silence where the queue has none.
     *  @param samples [frames][2], overwritten */
    void read(int64_t position, float* samples, int frames) const;

    /** Returns the position after the last frame. */
    int64_t end() const { return begin_ + static_cast<int64_t>(samples_.size() / 2); }

  private:
    int64_t begin_;  // position of the first frame
    std::vector<float> samples_;
};

}  // namespace sonivex_tool
