// Converts between floats of full scale 1 and int16, so that every int16 makes the way there and back
// unchanged.
#pragma once

#include <cstdint>

namespace sonivex {

/** Rounds sample * 32768 to the nearest integer, half to even, and limits it to -32768..32767. NaN gives 0.
 *  The thread must round to nearest (rounding.h).
 *  [any, concurrent] real-time safe */
inline std::int16_t roundToInt16(float sample) {
    // Adding 1.5 * 2^23 leaves no bits below the integer, so that the addition itself rounds. Every processor
    // does that in vectors, too.
    constexpr float kRoundsToInteger = 12582912.0F;
    const float number = sample == sample ? sample * 32768.0F : 0.0F;
    const float above_floor = number > -32768.0F ? number : -32768.0F;
    const float in_range = above_floor < 32767.0F ? above_floor : 32767.0F;
    return static_cast<std::int16_t>(
        static_cast<std::int32_t>((in_range + kRoundsToInteger) - kRoundsToInteger));
}

/** Returns sample / 32768, exactly.
 *  [any, concurrent] real-time safe */
inline float floatOf(std::int16_t sample) {
    return static_cast<float>(sample) * (1.0F / 32768.0F);
}

}  // namespace sonivex
