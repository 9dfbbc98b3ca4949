// How much of what changes in a stereo signal lies in its centre.
//
//   S = L + R, D = L - R                            per bin
//   centre   = (1 - sqrt(|D|^2 / (|S|^2 + eps))) / 2 * S
//   flux(X)  = sum over the bins, in order, of (|X| - |X of the frame before|)^2
//   p        = (flux(centre) / (flux(centre) + flux(D) + eps) - 0.5) * voice_level, held to 0..1
//   presence = 0.9 * presence + 0.1 * p
//
// All in float, but for the magnitudes' insides and the smoothing. eps is 2^-23. These are the laws for one
// bin and for one frame; bin_analysis.h takes them through a spectrum. Real-time safe.
#pragma once

#include <cfloat>
#include <cmath>

#include "bin.h"
#include "float_rules.h"

namespace sonivex {

/** The factor is not held at 0: where the channels oppose each other it is negative. */
inline Bin centreOf(Bin left, Bin right) {
    const Bin sum = left + right;
    const Bin difference = left - right;
    const float factor = (1.0F - std::sqrt(power(difference) / (power(sum) + FLT_EPSILON))) * 0.5F;
    return factor * sum;
}

/** |x|, the very number that hypotf gives. In double the square of a float is exact and neither overflows nor
 *  vanishes, so this needs no scaling and no branch. */
inline float magnitudeOf(Bin x) {
    const double re = x.re;
    const double im = x.im;
    return static_cast<float>(std::sqrt(re * re + im * im));
}

struct Fluxes {
    float centre;
    float side;
};

/** The next presence, 0..1, from the one before; voice_level must be finite. */
float nextPresence(float presence, Fluxes fluxes, float voice_level);

}  // namespace sonivex
