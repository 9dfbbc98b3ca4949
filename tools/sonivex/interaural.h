#pragma once

#include <span>
#include <string>

namespace sonivex_tool {

// Where a sound on headphones seems to come from, by the two differences that hearing goes by:
//
//   time:  the lag of the right ear behind the left at which the two are most alike, within what a head can
// do level: the left ear's energy over the right ear's

/** What the ears have of a sound. */
struct InterauralDifference {
    bool is_silent = true;  // no more than -80 dBFS (rms) at either ear: the rest is 0
    double delay_us = 0.0;  // by which the left ear leads; negative: the right ear
    double level_db = 0.0;  // by which the left ear is louder, at most 100; negative: the right ear
    double likeness = 0.0;  // correlation of the ears at that delay, -1 to 1
};

/** Compare the ears of one sound. The delay is that of the greatest cross-correlation within 1 ms either way,
 *  between the samples by a parabola.
 *  @param left, right as many samples each, full scale is 1. */
InterauralDifference compareEars(std::span<const double> left, std::span<const double> right, int rate_hz);

/** "left", "right", "middle", "unclear" (time and level disagree) or "silent". Differences too small to be
 * heard, under 20 us and 1 dB, count as none. */
std::string heardSide(const InterauralDifference& ears);

}  // namespace sonivex_tool
