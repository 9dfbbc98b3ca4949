#include "centre_presence.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "float_rules.h"

namespace sonivex {
namespace {

constexpr double kPresenceKeep = 0.9;
constexpr double kPresenceStep = 0.1;

/* In double the square of a float is exact and neither overflows nor vanishes, so this needs no scaling and
 * no branch, and vectorises. Its bits are those of the C library's hypotf. */
inline float magnitude(Bin x) {
    const double re = x.re;
    const double im = x.im;
    return static_cast<float>(std::sqrt(re * re + im * im));
}

}  // namespace

void estimateCentre(const Bin* left, const Bin* right, int bins, Bin* centre) {
    for (int k = 0; k < bins; ++k) {
        const Bin sum = left[k] + right[k];
        const Bin difference = left[k] - right[k];
        const float factor = (1.0F - std::sqrt(power(difference) / (power(sum) + FLT_EPSILON))) * 0.5F;
        centre[k] = factor * sum;
    }
}

void magnitudes(const Bin* x, int bins, float* out) {
    for (int k = 0; k < bins; ++k) out[k] = magnitude(x[k]);
}

void sideMagnitudes(const Bin* left, const Bin* right, int bins, float* out) {
    for (int k = 0; k < bins; ++k) out[k] = magnitude(left[k] - right[k]);
}

/* Both in one loop: each sum waits for its last addition, and two wait at the same time. */
Fluxes spectralFluxes(const float* centre, const float* previous_centre, const float* side,
                      const float* previous_side, int bins) {
    Fluxes fluxes = {0.0F, 0.0F};
    for (int k = 0; k < bins; ++k) {
        const float centre_change = centre[k] - previous_centre[k];
        const float side_change = side[k] - previous_side[k];
        fluxes.centre += centre_change * centre_change;
        fluxes.side += side_change * side_change;
    }
    return fluxes;
}

float nextPresence(float presence, Fluxes fluxes, float voice_level) {
    const float share = fluxes.centre / (fluxes.centre + fluxes.side + FLT_EPSILON);
    const float p = std::clamp((share - 0.5F) * voice_level, 0.0F, 1.0F);
    return static_cast<float>(presence * kPresenceKeep + p * kPresenceStep);
}

}  // namespace sonivex
