// The peak limiter's gain while its smoothed target stands still: most of the time.
//
//   gain[i] = min(smoothed, gain[i-1] * 0.9999 + 0.0001)
//   y[i]    = gain[i] * in[i];  if |y| > threshold: gain = threshold / |in|, y = gain * in
//
// Each gain needs the one before, but rounded to float it either stays where it is or rises by the same step
// many times in a row. So a whole vector of gains is guessed as a ramp, every one of them is computed from
// the guess before it, and what comes out as guessed is right, to the bit: the first guess is known.
#pragma once

namespace sonivex {

/** Limit `count` samples.
 *  @param gain          of the sample before.
 *  @param smoothed_gain what the smoothing gives for every one of these samples.
 *  @param threshold     of the samples' magnitudes.
 *  @param level         at least the largest magnitude among them.
 *  @param out           may be `in`, or must not overlap it.
 *  @return the last sample's gain.
 *  Real-time safe. A NaN passes through and leaves the gain as it is. */
float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, float level, const float* in,
                            int count, float* out);

}  // namespace sonivex
