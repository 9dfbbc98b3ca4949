// Frames of several snapshots side by side, as the transforms take them (lane_transform.h).
//
//   out  [frame][lane][channel]      frame 0 .. block_frames - 1; zeros behind what a lane has
//
// Real-time safe.
#pragma once

#include <array>
#include <cstddef>

#include "steps.h"

namespace sonivex {

/** The frames of one lane. */
struct LaneSource {
    const float* first;  // [filled][channels]
    std::size_t filled;  // frames, at most block_frames
};

using LaneSources = std::array<LaneSource, kMostSnapshots>;

/** @param lanes    how many there are: 1, 2 or 4.
 *  @param channels 1 or 2.
 *  @param out      [block_frames][lanes][channels], overwritten up to the next multiple of 16 frames, and
 * apart from the sources. */
void layLanes(const LaneSources& sources, std::size_t lanes, std::size_t channels, std::size_t block_frames,
              float* out);

}  // namespace sonivex
