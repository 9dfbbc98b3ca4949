/* Between signed 16-bit PCM and floats with full scale 1. Both ends are exact, so the two halves of the range
 * have factors of their own:
 *
 *   -32768 .. -1  <->  s / 32768          0 .. 32767  <->  s / 32767
 *
 * Real-time safe. */
#pragma once

#include <cstdint>

namespace sonivex {

/** out[i] = in[i] / 32768 or / 32767, each correctly rounded. */
void int16ToUnitScale(const std::int16_t* in, int count, float* out);

/** out[i] = in[i] * 32768 or * 32767: units of int16 as the limiters take them, neither cut nor rounded. */
void unitScaleToInt16Units(const float* in, int count, float* out);

/** Clip to -1..1, in place, and convert; fractions are cut off toward zero. NaN stays and gives 0. */
void clipToInt16(float* samples, int count, std::int16_t* out);

}  // namespace sonivex
