// Converts between signed 16-bit PCM and floats on the same scale (full scale 32768, no scaling in between).
//
// The functions on arrays use vector instructions and are fastest if the float arrays start on a cache line.
// A count below 1 means an empty block.
#pragma once

#include <cstddef>
#include <cstdint>

#include "float_rules.h"

namespace sonivex {

/** Alignment for arrays of samples: a vector that starts on a multiple of it stays within one cache line. */
inline constexpr std::size_t kCacheLineBytes = 64;

/** Truncates toward zero and saturates to -32768..32767. NaN gives 0, because casting it would be undefined.
 *  [any, concurrent] real-time safe */
inline std::int16_t truncateToInt16(float sample) {
    const float number = sample == sample ? sample : 0.0F;
    const float above_floor = number > -32768.0F ? number : -32768.0F;
    const float in_range = above_floor < 32767.0F ? above_floor : 32767.0F;
    return static_cast<std::int16_t>(static_cast<std::int32_t>(in_range));
}

/** out[i] = in[i], exactly.
 *  [any, concurrent] real-time safe */
void int16ToFloat(const std::int16_t* in, int count, float* out);

/** sum[i] += in[i] * factor; product and sum are each rounded to float.
 *  [any, concurrent] real-time safe */
void addScaledInt16(const std::int16_t* in, float factor, int count, float* sum);

/** out[i] = truncateToInt16(in[i]).
 *  [any, concurrent] real-time safe */
void floatToInt16(const float* in, int count, std::int16_t* out);

/** @return the largest |in[i]|, 0 for an empty block. -32768 counts as 32768, which does not fit an int16.
 *  [any, concurrent] real-time safe */
int largestMagnitude(const std::int16_t* in, int count);

/** @return the largest |in[i]|, 0 for an empty block. NaNs are ignored.
 *  [any, concurrent] real-time safe */
float largestMagnitude(const float* in, int count);

}  // namespace sonivex
