// Peak limiter for one sequence of floats in int16 units: the law that the output limiter and the mixer's
// limiters share. Each keeps a record of its own; the kernel works on references to its fields.
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
// The smoothing factors sum to 0.9998 and not to 1: an idle limiter settles at a gain of 0.998. With the
// level of the whole call a loud sample anywhere in it engages the limiter from the call's first sample,
// without latency.
#pragma once

#include <bit>
#include <cstdint>

namespace sonivex {

inline constexpr int kLimiterDelayEntries = 256;
inline constexpr int kLimiterTreeEntries = 512;

// 0.99 of full scale.
inline constexpr double kCeilingInt16Units = 32440.32;
inline constexpr float kCeiling = std::bit_cast<float>(std::uint32_t{0x46FD70A4});
static_assert(kCeiling == static_cast<float>(kCeilingInt16Units));

/** The fields of a limiter's record, under the kernel's names. */
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

/** Unity gains, a window of 64, not limiting; clears what a window of 64 uses of delay and tree. Leaves
 *  threshold and detection as they are. */
void resetPeakLimiter(const PeakLimiterFields& fields);

/** Limit `count` samples; needs a reset record.
 *  @param out may be `in`.
 *  @return whether a level was above the threshold; false, with nothing done, when count is below 1.
 *  Real-time safe. A NaN passes through as NaN and does not disturb the samples after it. */
bool limitPeaks(const PeakLimiterFields& fields, const float* in, int count, float* out);

}  // namespace sonivex
