#include "centre_presence.h"

#include <algorithm>

namespace sonivex {
namespace {

constexpr double kPresenceKeep = 0.9;
constexpr double kPresenceStep = 0.1;

}  // namespace

float nextPresence(float presence, Fluxes fluxes, float voice_level) {
    const float share = fluxes.centre / (fluxes.centre + fluxes.side + FLT_EPSILON);
    const float p = std::clamp((share - 0.5F) * voice_level, 0.0F, 1.0F);
    return static_cast<float>(presence * kPresenceKeep + p * kPresenceStep);
}

}  // namespace sonivex
