// Numbers with twice the precision of a double: the unevaluated sum of two doubles, about 106 bits.
//
//   twoSum(a, b), twoProduct(a, b):  hi + lo = the exact sum or product, hi = that value rounded to double
//
// Tables are computed in this precision and rounded once. The last bit of a sine then does not depend on the
// C library. All operations need numbers far from overflow and underflow.
// Source of the exact operations: Dekker, Numerische Mathematik 18 (1971); Knuth, TAOCP vol. 2.
#pragma once

#include <cmath>

#include "float_rules.h"

namespace sonivex {

/** hi is hi + lo rounded to double; |lo| is at most half a unit in the last place of hi. */
struct DoubleDouble {
    double hi;
    double lo;
};

/** a + b, exactly. [any, concurrent] real-time safe */
inline DoubleDouble twoSum(double a, double b) {
    const double sum = a + b;
    const double b_part = sum - a;
    const double a_part = sum - b_part;
    return {sum, (a - a_part) + (b - b_part)};
}

/** a + b, exactly, for |a| >= |b|. [any, concurrent] real-time safe */
inline DoubleDouble fastTwoSum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

/** Splits `a` into halves of 26 bits, whose products are exact. [any, concurrent] real-time safe */
inline DoubleDouble splitHalves(double a) {
    constexpr double kSplitter = 134217729.0;  // 2^27 + 1
    const double scaled = kSplitter * a;
    const double hi = scaled - (scaled - a);
    return {hi, a - hi};
}

/** a * b, exactly. [any, concurrent] real-time safe */
inline DoubleDouble twoProduct(double a, double b) {
    const double product = a * b;
    const DoubleDouble x = splitHalves(a);
    const DoubleDouble y = splitHalves(b);
    const double error = ((x.hi * y.hi - product) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo;
    return {product, error};
}

// The operations below have relative errors under 2^-102; the error of a sum is relative to its larger
// operand.

/** a + b. [any, concurrent] real-time safe */
inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble high = twoSum(a.hi, b.hi);
    const DoubleDouble low = twoSum(a.lo, b.lo);
    const DoubleDouble sum = fastTwoSum(high.hi, high.lo + low.hi);
    return fastTwoSum(sum.hi, sum.lo + low.lo);
}

/** -a, exactly. [any, concurrent] real-time safe */
inline DoubleDouble operator-(DoubleDouble a) {
    return {-a.hi, -a.lo};
}

/** a - b. [any, concurrent] real-time safe */
inline DoubleDouble operator-(DoubleDouble a, DoubleDouble b) {
    return a + -b;
}

/** a * b. [any, concurrent] real-time safe */
inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble product = twoProduct(a.hi, b.hi);
    return fastTwoSum(product.hi, product.lo + (a.hi * b.lo + a.lo * b.hi));
}

/** a / 2, exactly. [any, concurrent] real-time safe */
inline DoubleDouble half(DoubleDouble a) {
    return {0.5 * a.hi, 0.5 * a.lo};
}

/** a / b, for b not 0. [any, concurrent] real-time safe */
inline DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
    const double first = a.hi / b.hi;
    const DoubleDouble rest = a - b * DoubleDouble{first, 0.0};
    const double second = rest.hi / b.hi;
    const DoubleDouble last = rest - b * DoubleDouble{second, 0.0};
    return fastTwoSum(first, second) + DoubleDouble{last.hi / b.hi, 0.0};
}

/** Square root of a positive number. One Newton step doubles the digits of the double's root.
 *  [any, concurrent] real-time safe */
inline DoubleDouble squareRoot(DoubleDouble a) {
    const double root = std::sqrt(a.hi);
    const DoubleDouble rest = a - twoProduct(root, root);
    return fastTwoSum(root, rest.hi / (2.0 * root));
}

}  // namespace sonivex
