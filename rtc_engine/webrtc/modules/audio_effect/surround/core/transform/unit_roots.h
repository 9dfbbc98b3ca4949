// Points of the unit circle between 1 and i, correct to the last bit of a double.
//
//   point(k) = cos(k * pi/2 / steps) + i * sin(k * pi/2 / steps)
//
// The powers 1, 2, 4, .. come from i by halving the angle,
//
//   cos(x/2) = sqrt((1 + cos x) / 2),   sin(x/2) = sin x / (2 cos(x/2)),
//
// and point(k) is the product of the powers that k's binary digits name, all in double-double. Each of the at
// most 31 steps adds an error below 2^-101, so a number is known to 2^-96 before it is rounded to double: it
// is the correctly rounded one unless it lies that close to the middle between two doubles. The C library's
// sine and cosine differ in the last bit between versions and processors and would change the sound's bits.
//
// Use: const UnitRoots roots(512); roots.at(3).cosine. Needs no memory but its own.
#pragma once

#include <array>

#include "double_double.h"

namespace sonivex {

struct UnitPoint {
    double cosine;
    double sine;
};

class UnitRoots {
  public:
    /** @param steps into how many equal angles the quarter turn is cut; a power of two. */
    explicit UnitRoots(int steps);

    /** @param k 0..steps-1. */
    UnitPoint at(int k) const;

  private:
    struct Point {
        DoubleDouble cosine;
        DoubleDouble sine;
    };
    static constexpr int kMaxDigits = 31;

    std::array<Point, kMaxDigits> powers_{};  // of the first point: 1, 2, 4, ..
    int digits_ = 0;
};

}  // namespace sonivex
