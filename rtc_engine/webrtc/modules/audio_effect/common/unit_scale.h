// Converts between signed 16-bit PCM and floats with full scale 1. Both ends of the range map exactly to -1
// and 1, so each half of the range has its own factor:
//
//   -32768 .. -1  <->  s / 32768          0 .. 32767  <->  s / 32767
#pragma once

#include <cstdint>

#include "float_rules.h"

namespace sonivex {

inline constexpr float kNegativeFullScale = 32768.0F;
inline constexpr float kPositiveFullScale = 32767.0F;

/** Converts one sample to full scale 1. It divides, because multiplying by 1 / 32767 gives another float for
 *  768 values.
 *  [any, concurrent] real-time safe */
inline float unitScaleOf(std::int16_t sample) {
    return static_cast<float>(sample) / (sample < 0 ? kNegativeFullScale : kPositiveFullScale);
}

/** Converts one sample from full scale 1 to int16 units.
 *  [any, concurrent] real-time safe */
inline float int16UnitsOf(float sample) {
    return sample * (sample < 0.0F ? kNegativeFullScale : kPositiveFullScale);
}

/** out[i] = in[i] / 32768 or in[i] / 32767, each correctly rounded.
 *  [any, concurrent] real-time safe */
void int16ToUnitScale(const std::int16_t* in, int count, float* out);

/** out[i] = in[i] * 32768 or in[i] * 32767, neither clipped nor rounded to integers.
 *  [any, concurrent] real-time safe */
void unitScaleToInt16Units(const float* in, int count, float* out);

/** Clips `samples` to -1..1 in place and converts them to `out`, truncating toward zero. A NaN stays in
 *  `samples` and gives 0 in `out`.
 *  [any, concurrent] real-time safe */
void clipToInt16(float* samples, int count, std::int16_t* out);

}  // namespace sonivex
