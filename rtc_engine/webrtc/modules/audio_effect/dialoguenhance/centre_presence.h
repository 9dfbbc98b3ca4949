/* How much of what changes in a stereo signal lies in its centre.
 *
 *   S = L + R, D = L - R                            per bin
 *   centre   = (1 - sqrt(|D|^2 / (|S|^2 + eps))) / 2 * S
 *   flux(X)  = sum over the bins, in order, of (|X| - |X of the frame before|)^2
 *   p        = (flux(centre) / (flux(centre) + flux(D) + eps) - 0.5) * voice_level, held to 0..1
 *   presence = 0.9 * presence + 0.1 * p
 *
 * All in float, but for the magnitudes' insides and the smoothing. eps is 2^-23. Real-time safe. Arrays must
 * not overlap. */
#pragma once

#include "bin.h"

namespace sonivex {

/** The centre of every bin. The factor is not held at 0: where the channels oppose each other it is negative.
 */
void estimateCentre(const Bin* left, const Bin* right, int bins, Bin* centre);

/** out[k] = |x[k]|, the very number that hypotf gives. */
void magnitudes(const Bin* x, int bins, float* out);

/** out[k] = |left[k] - right[k]|, likewise. */
void sideMagnitudes(const Bin* left, const Bin* right, int bins, float* out);

struct Fluxes {
    float centre;
    float side;
};

/** Both fluxes from the magnitudes of this frame and of the one before. */
Fluxes spectralFluxes(const float* centre, const float* previous_centre, const float* side,
                      const float* previous_side, int bins);

/** The next presence, 0..1, from the one before; voice_level must be finite. */
float nextPresence(float presence, Fluxes fluxes, float voice_level);

}  // namespace sonivex
