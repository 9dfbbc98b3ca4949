#include "centre_gains.h"

#include <cfloat>

#include "float_rules.h"

namespace sonivex {
namespace {

inline Bin gained(Bin x, float side_power, float presence, GainRange range) {
    const float own_power = power(x);
    const float share = own_power / (side_power + own_power + FLT_EPSILON);
    return (share * presence * range.scale + range.floor) * x;
}

}  // namespace

void applyCentreGains(const Bin* left, const Bin* right, int bins, float presence, GainRange range,
                      Bin* out_left, Bin* out_right) {
    for (int k = 0; k < bins; ++k) {
        const float side_power = power(left[k] - right[k]);
        out_left[k] = gained(left[k], side_power, presence, range);
        out_right[k] = gained(right[k], side_power, presence, range);
    }
}

}  // namespace sonivex
