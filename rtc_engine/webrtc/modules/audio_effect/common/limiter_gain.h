// Computes one step of the peak limiter's gain (see peak_limiter.h):
//
//   smoothed = smoothed * 0.8999 + target * 0.0999
//   gain     = min(smoothed, gain * 0.9999 + 0.0001)
//   y        = gain * x;  if |y| > threshold: gain = threshold / |x|, y = gain * x
//
// The functions are inline, because the scalar loops and the remainder loops of the vector kernel share them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "bit_cast.h"
#include "float_rules.h"

namespace sonivex {

/** 0.8999, 0.0999, 0.9999 and 0.0001 rounded to float. Their exact values determine the output bits. */
inline constexpr float kSmoothingKeep = bit_cast<float>(std::uint32_t{0x3F665FD9});
inline constexpr float kSmoothingStep = bit_cast<float>(std::uint32_t{0x3DCC985F});
inline constexpr float kReleaseKeep = bit_cast<float>(std::uint32_t{0x3F7FF972});
inline constexpr float kReleaseStep = bit_cast<float>(std::uint32_t{0x38D1B717});

/** Compares the bits of two floats: +0 and -0 differ, and a NaN equals itself.
 *  [any, concurrent] real-time safe */
inline bool isSameFloat(float a, float b) {
    return bit_cast<std::uint32_t>(a) == bit_cast<std::uint32_t>(b);
}

/** @return the smoothed gain one sample later.
 *  [any, concurrent] real-time safe */
inline float smoothTarget(float smoothed_gain, float target) {
    return smoothed_gain * kSmoothingKeep + target * kSmoothingStep;
}

/** @return the gain one sample later: released by one step, but not above the smoothed gain.
 *  [any, concurrent] real-time safe */
inline float releaseGain(float gain, float smoothed_gain) {
    return std::min(smoothed_gain, gain * kReleaseKeep + kReleaseStep);
}

/** Applies the gain to one sample.
 *  @param gain lowered if the sample would exceed the threshold.
 *  @return the limited sample.
 *  [any, concurrent] real-time safe */
inline float applyGain(float& gain, float sample, float threshold) {
    float limited = gain * sample;
    if (std::fabs(limited) > threshold) {
        gain = threshold / std::fabs(sample);
        limited = gain * sample;
    }
    return limited;
}

}  // namespace sonivex
