// Lengths of responses and blocks, for all convolvers.
#pragma once

#include <cmath>
#include <cstddef>

namespace fftconvolver {

// -120 dB: what a response's end has to reach to be worth its computation.
inline constexpr float kSilentTap = 1e-6F;

/** Length without the silent taps at the end. */
inline std::size_t lengthWithoutSilentEnd(const float* ir, std::size_t irLen) {
    while (irLen > 0 && std::fabs(ir[irLen - 1]) < kSilentTap) --irLen;
    return irLen;
}

/** Smallest power of two that is not below `number`, and at least 1; `number` is at most 2^63. */
inline std::size_t powerOfTwoNotBelow(std::size_t number) {
    std::size_t power = 1;
    while (power < number) power *= 2;
    return power;
}

/** Partitions of `block` samples that a response of `taps` samples takes: taps / block, rounded up, in float.
 * Beyond 2^24 taps that may be one too many or too few. */
inline std::size_t partitionsOf(std::size_t taps, std::size_t block) {
    return static_cast<std::size_t>(std::ceil(static_cast<float>(taps) / static_cast<float>(block)));
}

}  // namespace fftconvolver
