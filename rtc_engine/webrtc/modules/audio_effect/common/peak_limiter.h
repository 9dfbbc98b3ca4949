// Peak limiter for one sequence of floats in int16 units. The output limiter and the mixer's limiters share
// this algorithm. Each limiter keeps its own record, and the kernel works on references to the fields of that
// record.
//
//   level[i]    = largest magnitude of the call        (detects_per_sample: |in[i]|)
//   engage      when level > threshold, with an empty window
//   peak[i]     = maximum of the last 64 levels since engaging; release when peak <= threshold
//   target[i]   = threshold / peak while engaged, else the idle gain
//   smoothed[i] = smoothed[i-1] * 0.8999 + target[i] * 0.0999
//   gain[i]     = min(smoothed[i], gain[i-1] * 0.9999 + 0.0001)
//   y[i]        = in[i] * gain[i]                      (detects_per_sample: in[i-63], 63 samples late)
//   if |y| > threshold: gain = threshold / |in|, y = gain * in
//
// The smoothing factors sum to 0.9998, not 1, so an idle limiter settles at a gain of 0.998. With the level
// of the whole call, a loud sample anywhere in the call engages the limiter from the first sample on, without
// latency.
//
// Use: call resetPeakLimiter, set threshold and detects_per_sample, then call limitPeaks for every block.
#pragma once

#include <cstdint>

#include "bit_cast.h"

namespace sonivex {

/** Capacities of a record; the window uses 64 entries of the delay line and 128 of the tree. */
inline constexpr int kLimiterDelayEntries = 256;
inline constexpr int kLimiterTreeEntries = 512;

/** The ceiling: 0.99 of full scale (32768), in int16 units. */
inline constexpr double kCeilingInt16Units = 32440.32;
inline constexpr float kCeiling = bit_cast<float>(std::uint32_t{0x46FD70A4});
static_assert(kCeiling == static_cast<float>(kCeilingInt16Units));

/** References to the fields of a limiter's record, under the kernel's names. */
struct PeakLimiterFields {
    float& idle_gain;
    float& gain;
    float& smoothed_gain;
    float (&delay)[kLimiterDelayEntries];
    float (&maximum_tree)[kLimiterTreeEntries];
    std::int32_t& write_index;
    std::int32_t& is_limiting;
    std::int32_t& tree_depth;
    std::int32_t& tree_leaves;
    std::int32_t& index_mask;
    const float& threshold;
    const std::int32_t& detects_per_sample;
};

/** Resets the record to unity gains, a window of 64 samples and not limiting. Clears the entries of the delay
 *  line and the tree that this window uses. Leaves threshold and detects_per_sample unchanged.
 *  [any] real-time safe */
void resetPeakLimiter(const PeakLimiterFields& fields);

/** Limits `count` samples. The record must have been reset.
 *  @param in  [count] in int16 units.
 *  @param out [count]; may be `in`.
 *  @return true if a level was above the threshold; false, with nothing done, if count is below 1.
 *  A NaN passes through as NaN and does not affect the samples after it.
 *  [any] real-time safe */
bool limitPeaks(const PeakLimiterFields& fields, const float* in, int count, float* out);

}  // namespace sonivex
