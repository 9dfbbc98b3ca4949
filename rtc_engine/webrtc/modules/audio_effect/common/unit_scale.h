// Between signed 16-bit PCM and floats with full scale 1. Both ends are exact, so the two halves of the range
// have factors of their own:
//
//   -32768 .. -1  <->  s / 32768          0 .. 32767  <->  s / 32767
//
// Real-time safe.
#pragma once

#include <cstdint>

#include "float_rules.h"

namespace sonivex {

inline constexpr float kNegativeFullScale = 32768.0F;
inline constexpr float kPositiveFullScale = 32767.0F;

/** A division: the product with 1 / 32767 is another float for 768 values. */
inline float unitScaleOf(std::int16_t sample) {
    return static_cast<float>(sample) / (sample < 0 ? kNegativeFullScale : kPositiveFullScale);
}

inline float int16UnitsOf(float sample) {
    return sample * (sample < 0.0F ? kNegativeFullScale : kPositiveFullScale);
}

/** out[i] = in[i] / 32768 or / 32767, each correctly rounded. */
void int16ToUnitScale(const std::int16_t* in, int count, float* out);

/** out[i] = in[i] * 32768 or * 32767: units of int16 as the limiters take them, neither cut nor rounded. */
void unitScaleToInt16Units(const float* in, int count, float* out);

/** Clip to -1..1, in place, and convert; fractions are cut off toward zero. NaN stays and gives 0. */
void clipToInt16(float* samples, int count, std::int16_t* out);

}  // namespace sonivex
