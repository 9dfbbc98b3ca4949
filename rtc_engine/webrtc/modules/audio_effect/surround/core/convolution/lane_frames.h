// Interleaves the frames of several snapshots into lanes, as the transforms read them (lane_transform.h).
//
//   out  [frame][lane][channel]      frame 0 .. block_frames - 1; zeros after the last frame of a lane
#pragma once

#include <array>
#include <cstddef>

#include "steps.h"

namespace sonivex {

/** The frames of one lane; the caller owns them. */
struct LaneSource {
    const float* first;  // [filled][channels]
    std::size_t filled;  // frames, at most block_frames
};

/** The sources of all lanes. */
using LaneSources = std::array<LaneSource, kMaxSnapshots>;

/** Interleaves the lanes and fills the rest of each with zeros.
 *  @param lanes    count of lanes: 1, 2 or 4.
 *  @param channels 1 or 2.
 *  @param out      [block_frames][lanes][channels], overwritten up to the next multiple of 16 frames. It must
 *                  not overlap the sources.
 *  [any] real-time safe */
void layLanes(const LaneSources& sources, std::size_t lanes, std::size_t channels, std::size_t block_frames,
              float* out);

}  // namespace sonivex
