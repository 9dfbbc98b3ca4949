#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "frame_stream.h"

namespace sonivex_tool {

/** One side of a comparison. */
struct ComparedSide {
    std::function<FrameStream()> open;  // from the beginning, each time
    int64_t frames = 0;
    std::optional<int64_t> first_audible_frame;
};

/** How the second side differs from the first. */
struct PairDifference {
    std::optional<int64_t> delay_frames;  // by which it is late; missing when there is no clear match
    std::optional<double> gain_db;        // missing when a side is silent or not finite
};

/** Compare two recordings of one rate.
 *
 *  The delay is looked for within half a second either way, in the ten seconds after the input begins to
 *  sound (above 200 kHz in 2^21 frames less half a second): channel by channel, or in the sums of the
 * channels when their numbers differ. The gain is that of all channels together over the whole length, the
 * delay taken away.
 *  @throw Failure of the streams, std::bad_alloc */
PairDifference comparePair(const ComparedSide& input, const ComparedSide& output);

}  // namespace sonivex_tool
