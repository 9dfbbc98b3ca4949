// The gain of every bin: floor where a channel is mostly side, floor + presence * scale where it is mostly
// centre. With D = left - right and eps = 2^-23, of each channel X:
//
//   share = |X|^2 / (|D|^2 + |X|^2 + eps)
//   X     = (share * presence * scale + floor) * X
//
// Real-time safe.
#pragma once

#include <cfloat>

#include "bin.h"
#include "float_rules.h"

namespace sonivex {

struct GainRange {
    float floor;
    float scale;
};

/** 0..1: how much of a channel is not side. @param side_power |D|^2. */
inline float centreShare(Bin x, float side_power) {
    const float own_power = power(x);
    return own_power / (side_power + own_power + FLT_EPSILON);
}

/** The gains on one channel's spectrum, in place. Arrays must not overlap. */
void applyCentreGains(const float* shares, int bins, float presence, GainRange range, Bin* spectrum);

}  // namespace sonivex
