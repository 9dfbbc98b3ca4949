#include "unit_roots.h"

#include <bit>
#include <cassert>

namespace sonivex {

UnitRoots::UnitRoots(int steps) : digits_(std::countr_zero(static_cast<unsigned>(steps))) {
    assert(steps > 0 && std::has_single_bit(static_cast<unsigned>(steps)));
    constexpr DoubleDouble kOne = {1.0, 0.0};
    Point point = {.cosine = {0.0, 0.0}, .sine = kOne};
    for (int digit = digits_ - 1; digit >= 0; --digit) {
        const DoubleDouble cosine = squareRoot(half(kOne + point.cosine));
        const DoubleDouble sine = half(point.sine) / cosine;
        point = {.cosine = cosine, .sine = sine};
        powers_[static_cast<std::size_t>(digit)] = point;
    }
}

UnitPoint UnitRoots::at(int k) const {
    assert(k >= 0 && k >> digits_ == 0);
    Point product = {.cosine = {1.0, 0.0}, .sine = {0.0, 0.0}};
    for (int digit = 0; digit < digits_; ++digit) {
        if ((k >> digit & 1) == 0) continue;
        const Point& power = powers_[static_cast<std::size_t>(digit)];
        product = {.cosine = product.cosine * power.cosine - product.sine * power.sine,
                   .sine = product.cosine * power.sine + product.sine * power.cosine};
    }
    return {.cosine = product.cosine.hi, .sine = product.sine.hi};
}

}  // namespace sonivex
