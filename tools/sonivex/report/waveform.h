#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace sonivex_tool {

/** The lowest and the highest sample of a stretch. */
struct Extent {
    float low = 0.0F;
    float high = 0.0F;
};

/** Keeps the extents of a sound in stretches of equal length. The memory that it takes does not grow with the
 *  sound: when there are too many stretches, each two become one. */
class WaveformMeter {
  public:
    /** @param most_stretches an even number; at least half of it are kept of a long sound */
    explicit WaveformMeter(std::size_t most_stretches) : most_stretches_(most_stretches) {}

    /** Takes samples. @param samples [frames][channels] */
    void add(std::span<const float> samples, int channels);
    /** Returns the extents over all channels. The last stretch may be shorter. */
    const std::vector<Extent>& extents() const { return extents_; }
    /** Returns the length of a stretch in frames. */
    int64_t stretch_frames() const { return stretch_frames_; }

  private:
    void halve();

    std::size_t most_stretches_;
    int64_t stretch_frames_ = 1;
    int64_t in_last_ = 1;  // frames in the last stretch
    std::vector<Extent> extents_;
};

}  // namespace sonivex_tool
