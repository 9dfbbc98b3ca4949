/* The gain of every bin: floor where a channel is mostly side, floor + presence * scale where it is mostly
 * centre. */
#pragma once

#include "bin.h"

namespace sonivex {

struct GainRange {
    float floor;
    float scale;
};

/** With D = left - right and eps = 2^-23:
 *    out_left[k]  = (|left|^2 / (|D|^2 + |left|^2 + eps) * presence * scale + floor) * left[k]
 *    out_right[k] = the same of the right
 *  Arrays must not overlap. Real-time safe. */
void applyCentreGains(const Bin* left, const Bin* right, int bins, float presence, GainRange range,
                      Bin* out_left, Bin* out_right);

}  // namespace sonivex
