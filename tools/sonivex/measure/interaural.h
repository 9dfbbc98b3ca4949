#pragma once

#include <span>
#include <string>

namespace sonivex_tool {

// Estimates from which side a sound on headphones is heard, by the two cues that hearing uses:
//
//   time:   the lag n that maximises  sum over i of left[i] * right[i + n],
//           within the longest lag that a head can cause
//   level:  the left ear's energy over the right ear's

/** The differences between the ears in one sound. */
struct InterauralDifference {
    bool is_silent = true;  // neither ear exceeds -80 dBFS (RMS); all other members are 0 then
    double delay_us = 0.0;  // lead of the left ear; negative: the right ear leads
    double level_db = 0.0;  // left ear over right ear, -100 to 100; negative: the right ear is louder
    double likeness = 0.0;  // correlation of the ears at that delay, -1 to 1
};

/** Compares the ears in one sound. The delay is the lag of the greatest cross-correlation within 1 ms either
 *  way, interpolated between samples by a parabola.
 *  @param left, right the same number of samples each; full scale is 1 */
InterauralDifference compareEars(std::span<const double> left, std::span<const double> right, int rate_hz);

/** Returns the side on which the sound is heard: "left", "right", "middle", "unclear" (time and level
 *  disagree) or "silent". Inaudible differences, under 20 us and under 1 dB, count as none. */
std::string heardSide(const InterauralDifference& ears);

}  // namespace sonivex_tool
