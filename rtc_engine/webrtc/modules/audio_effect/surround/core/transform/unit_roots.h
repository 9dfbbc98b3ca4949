// Points on the unit circle between 1 and i, correct to the last bit of a double.
//
//   point(k) = cos(k * pi/2 / steps) + i * sin(k * pi/2 / steps)
//
// The powers 1, 2, 4, .. of point(1) come from i by halving the angle:
//
//   cos(x/2) = sqrt((1 + cos x) / 2),   sin(x/2) = sin x / (2 cos(x/2))
//
// point(k) is the product of the powers that the binary digits of k name. Everything is computed in
// double-double. Each of the at most 31 steps adds an error below 2^-101, so a number is known to 2^-96
// before it is rounded to double. It is then correctly rounded, unless it lies that close to the midpoint
// between two doubles. The C library's sine and cosine differ in the last bit between versions and
// processors, which would change the bits of the output.
//
// Use: const UnitRoots roots(512); roots.at(3).cosine.
#pragma once

#include <array>

#include "double_double.h"

namespace sonivex {

/** A point on the unit circle. */
struct UnitPoint {
    double cosine;
    double sine;
};

/** The points at equal angles of a quarter turn. An object holds no memory beyond its members. */
class UnitRoots {
  public:
    /** @param steps count of equal angles in the quarter turn; a power of two.
     *  [any] real-time safe */
    explicit UnitRoots(int steps);

    /** point(k), rounded to double.
     *  @param k 0..steps-1.
     *  [any, concurrent] real-time safe */
    UnitPoint at(int k) const;

  private:
    struct Point {
        DoubleDouble cosine;
        DoubleDouble sine;
    };
    static constexpr int kMaxDigits = 31;

    std::array<Point, kMaxDigits> powers_{};  // of point(1): the powers 1, 2, 4, ..
    int digits_ = 0;                          // binary digits of k
};

}  // namespace sonivex
