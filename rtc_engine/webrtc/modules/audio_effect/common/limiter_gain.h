// One step of the peak limiter's gain (peak_limiter.h):
//
//   smoothed = smoothed * 0.8999 + target * 0.0999
//   gain     = min(smoothed, gain * 0.9999 + 0.0001)
//   y        = gain * x;  if |y| > threshold: gain = threshold / |x|, y = gain * x
//
// Inline, since the scalar loops and the vector kernel's rests share it.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "float_rules.h"

namespace sonivex {

// The factors' exact values are part of the sound: 0.8999, 0.0999, 0.9999 and 0.0001 rounded to float.
inline constexpr float kSmoothingKeep = std::bit_cast<float>(std::uint32_t{0x3F665FD9});
inline constexpr float kSmoothingStep = std::bit_cast<float>(std::uint32_t{0x3DCC985F});
inline constexpr float kReleaseKeep = std::bit_cast<float>(std::uint32_t{0x3F7FF972});
inline constexpr float kReleaseStep = std::bit_cast<float>(std::uint32_t{0x38D1B717});

/** Bit for bit: the two zeros are not the same gain, and a NaN is itself. */
inline bool isSameFloat(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

inline float smoothTarget(float smoothed_gain, float target) {
    return smoothed_gain * kSmoothingKeep + target * kSmoothingStep;
}

inline float releaseGain(float gain, float smoothed_gain) {
    return std::min(smoothed_gain, gain * kReleaseKeep + kReleaseStep);
}

/** @param gain lowered when the sample would pass the threshold. */
inline float applyGain(float& gain, float sample, float threshold) {
    float limited = gain * sample;
    if (std::fabs(limited) > threshold) {
        gain = threshold / std::fabs(sample);
        limited = gain * sample;
    }
    return limited;
}

}  // namespace sonivex
