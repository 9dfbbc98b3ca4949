// Lengths of responses and partitions, for all convolvers.
#pragma once

#include <cmath>
#include <cstddef>

namespace fftconvolver {

/** -120 dB: taps below this magnitude at the end of a response are not worth computing. */
inline constexpr float kSilentTap = 1e-6F;

/** Length of a response without the taps below kSilentTap at its end.
 *  @param ir [irLen].
 *  [any, concurrent] real-time safe */
inline std::size_t lengthWithoutSilentEnd(const float* ir, std::size_t irLen) {
    while (irLen > 0 && std::fabs(ir[irLen - 1]) < kSilentTap) --irLen;
    return irLen;
}

/** Smallest power of two that is not below `number`, and at least 1; `number` is at most 2^63.
 *  [any, concurrent] real-time safe */
inline std::size_t powerOfTwoNotBelow(std::size_t number) {
    std::size_t power = 1;
    while (power < number) power *= 2;
    return power;
}

/** Partitions of `block` samples in a response of `taps` samples: taps / block in float, rounded up. Beyond
 *  2^24 taps the count may be one too high or too low. [any, concurrent] real-time safe */
inline std::size_t partitionsOf(std::size_t taps, std::size_t block) {
    return static_cast<std::size_t>(std::ceil(static_cast<float>(taps) / static_cast<float>(block)));
}

}  // namespace fftconvolver
