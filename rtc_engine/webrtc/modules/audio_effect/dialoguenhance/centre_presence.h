// Measures how much of the change in a stereo signal lies in its centre.
//
//   S = L + R, D = L - R                            per bin
//   centre   = (1 - sqrt(|D|^2 / (|S|^2 + eps))) / 2 * S
//   flux(X)  = sum over the bins, in order, of (|X| - |X of the previous frame|)^2
//   p        = (flux(centre) / (flux(centre) + flux(D) + eps) - 0.5) * voice_level, clamped to 0..1
//   presence = 0.9 * presence + 0.1 * p
//
// All arithmetic is in float, except inside the magnitudes and in the smoothing, where it is in double. eps
// is 2^-23. The functions here handle one bin or one frame; bin_analysis.h applies them to whole spectra.
#pragma once

#include <cfloat>
#include <cmath>

#include "bin.h"
#include "float_rules.h"

namespace sonivex {

/** @return the centre of one bin. Its factor is not clamped at 0: it is negative where the channels oppose
 *  each other.
 *  [any, concurrent] real-time safe */
inline Bin centreOf(Bin left, Bin right) {
    const Bin sum = left + right;
    const Bin difference = left - right;
    const float factor = (1.0F - std::sqrt(power(difference) / (power(sum) + FLT_EPSILON))) * 0.5F;
    return factor * sum;
}

/** @return |x|, bit for bit as hypotf gives it. In double, the square of a float is exact and neither
 *  overflows nor underflows, so the function needs no scaling and no branch.
 *  [any, concurrent] real-time safe */
inline float magnitudeOf(Bin x) {
    const double re = x.re;
    const double im = x.im;
    return static_cast<float>(std::sqrt(re * re + im * im));
}

/** Sums over the bins of the squared change of magnitude since the previous frame. */
struct Fluxes {
    float centre;
    float side;
};

/** @param presence    of the previous frame, 0..1.
 *  @param voice_level sensitivity; must be finite.
 *  @return the presence of this frame, 0..1.
 *  [any, concurrent] real-time safe */
float nextPresence(float presence, Fluxes fluxes, float voice_level);

}  // namespace sonivex
