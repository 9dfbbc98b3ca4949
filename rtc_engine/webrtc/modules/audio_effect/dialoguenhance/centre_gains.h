// Computes the gain of every bin: near floor where a channel is mostly side, near floor + presence * scale
// where it is mostly centre. With D = left - right and eps = 2^-23, for each channel X:
//
//   share = |X|^2 / (|D|^2 + |X|^2 + eps)
//   X     = (share * presence * scale + floor) * X
#pragma once

#include <cfloat>

#include "bin.h"
#include "float_rules.h"

namespace sonivex {

/** Linear gains: the gain of a bin is share * presence * scale + floor. */
struct GainRange {
    float floor;
    float scale;
};

/** @param side_power |D|^2.
 *  @return the part of a channel that is not side, 0..1.
 *  [any, concurrent] real-time safe */
inline float centreShare(Bin x, float side_power) {
    const float own_power = power(x);
    return own_power / (side_power + own_power + FLT_EPSILON);
}

/** Applies the gains to one channel's spectrum in place.
 *  @param shares   [bins] centreShare of the channel. Must not overlap `spectrum`.
 *  @param presence 0..1.
 *  @param spectrum [bins]
 *  [any, concurrent] real-time safe */
void applyCentreGains(const float* shares, int bins, float presence, GainRange range, Bin* spectrum);

}  // namespace sonivex
