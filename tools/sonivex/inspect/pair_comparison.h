#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "frame_stream.h"

namespace sonivex_tool {

/** One side of a comparison. */
struct ComparedSide {
    std::function<FrameStream()> open;  // opens the stream at its beginning, at each call
    int64_t frames = 0;
    std::optional<int64_t> first_audible_frame;  // missing if no frame is audible
};

/** The difference of the output from the input. */
struct PairDifference {
    std::optional<int64_t> delay_frames;  // lag of the output; missing if there is no clear match
    std::optional<double> gain_db;        // missing if a side is silent or not finite
};

/** Compares two recordings of one sample rate.
 *
 *  The delay is searched within half a second either way, in the ten seconds after the input begins to sound
 *  (above 200 kHz: in 2^21 frames less half a second). The search goes channel by channel, or through the
 *  sums of the channels if the channel counts differ. The gain is that of all channels together over the
 *  whole common length, with the delay removed.
 *  @throw Failure of the streams, std::bad_alloc */
PairDifference comparePair(const ComparedSide& input, const ComparedSide& output);

}  // namespace sonivex_tool
