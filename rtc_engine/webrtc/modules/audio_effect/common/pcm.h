// Between signed 16-bit PCM and floats on the same scale (full scale 32768, no scaling in between).
//
// Real-time safe, and with vectors: fastest where floats begin on a cache line. A count below 1 is an empty
// block.
#pragma once

#include <cstddef>
#include <cstdint>

#include "float_rules.h"

namespace sonivex {

/** No vector that begins on a multiple of it reaches into a second cache line. */
inline constexpr std::size_t kCacheLineBytes = 64;

/** Truncate toward zero and saturate to -32768..32767. NaN gives 0: a cast of it would be undefined. */
inline std::int16_t truncateToInt16(float sample) {
    const float number = sample == sample ? sample : 0.0F;
    const float above_floor = number > -32768.0F ? number : -32768.0F;
    const float in_range = above_floor < 32767.0F ? above_floor : 32767.0F;
    return static_cast<std::int16_t>(static_cast<std::int32_t>(in_range));
}

/** out[i] = in[i], exactly. */
void int16ToFloat(const std::int16_t* in, int count, float* out);

/** sum[i] += in[i] * factor, rounded after each of the two. */
void addScaledInt16(const std::int16_t* in, float factor, int count, float* sum);

/** out[i] = truncateToInt16(in[i]). */
void floatToInt16(const float* in, int count, std::int16_t* out);

/** Largest |in[i]|, 0 for an empty block. -32768 counts as 32768, so the result needs more than 16 bits. */
int largestMagnitude(const std::int16_t* in, int count);

/** Largest |in[i]|, 0 for an empty block; NaN is passed over. */
float largestMagnitude(const float* in, int count);

}  // namespace sonivex
