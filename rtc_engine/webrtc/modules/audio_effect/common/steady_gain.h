// Applies the peak limiter's gain while the smoothed gain is constant, which is most of the time.
//
//   gain[i] = min(smoothed, gain[i-1] * 0.9999 + 0.0001)
//   y[i]    = gain[i] * in[i];  if |y| > threshold: gain = threshold / |in|, y = gain * in
//
// Each gain depends on the previous one. Rounded to float, however, the gain either stays constant or rises
// by the same step many times in a row. The kernel therefore guesses a whole vector of gains as a ramp and
// computes each gain from the guess before it. The first guess is known to be right, so every gain up to the
// first wrong guess is right to the bit.
#pragma once

namespace sonivex {

/** Limits `count` samples.
 *  @param gain          gain of the sample before the first one.
 *  @param smoothed_gain smoothed gain, the same for all of these samples.
 *  @param threshold     ceiling of the output's magnitude, in the units of `in`.
 *  @param level         at least the largest magnitude in `in`.
 *  @param in            [count]
 *  @param out           [count]; may be `in`, but must not overlap it otherwise.
 *  @return the gain of the last sample.
 *  A NaN passes through and does not affect the gain.
 *  [any, concurrent] real-time safe */
float limitWithSteadyTarget(float gain, float smoothed_gain, float threshold, float level, const float* in,
                            int count, float* out);

}  // namespace sonivex
