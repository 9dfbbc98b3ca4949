#include "fft_roots.h"

#include <bit>
#include <utility>

#include "float_rules.h"
#include "unit_roots.h"

namespace audiofft::details {
namespace {

constexpr double kSquareRootOfHalf = 0.70710678118654752440;

// Returns t(k). The table reaches to an eighth of a turn. The angle of an even k is in the table. The angle
// of an odd k lies beyond it, at 1/8 + a/8 turns, and is the mirror image of 1/8 - a/8. In bit-reversed order
// a and 1 - a lie opposite each other between two powers of two.
sonivex::UnitPoint rootOfBlock(const double* roots, std::size_t k) {
    std::size_t j = k >> 1;
    if ((k & 1) == 0) return {roots[2 * j], roots[2 * j + 1]};
    if (j == 0) return {kSquareRootOfHalf, kSquareRootOfHalf};
    j = 3 * std::bit_floor(j) - 1 - j;
    return {roots[2 * j + 1], roots[2 * j]};
}

// Returns t(k) squared without another rounding: it has the angle of t(k / 2), plus a quarter turn for odd k.
sonivex::UnitPoint squaredRootOfBlock(const double* roots, std::size_t k) {
    const sonivex::UnitPoint root = rootOfBlock(roots, k >> 1);
    return (k & 1) == 0 ? root : sonivex::UnitPoint{-root.sine, root.cosine};
}

void exchange(double* one, double* other) {
    std::swap(one[0], other[0]);
    std::swap(one[1], other[1]);
}

}  // namespace

BlockRoots rootsOfBlock(const double* roots, std::size_t block) {
    const sonivex::UnitPoint t1 = rootOfBlock(roots, block);
    const sonivex::UnitPoint t2 = squaredRootOfBlock(roots, block);
    // The difference is written as a sum, which is the same number: GCC 12 fuses a difference of products
    // beside a sum of products, even if told not to contract.
    const double minus_sine = -t1.sine;
    const sonivex::UnitPoint t3 = {t1.cosine * t2.cosine + minus_sine * t2.sine,
                                   t1.cosine * t2.sine + t1.sine * t2.cosine};
    return {.re = {t1.cosine, t2.cosine, t3.cosine}, .im = {t1.sine, t2.sine, t3.sine}};
}

void reversePointOrder(double* points, std::size_t count, int* offsets) {
    // An index has three parts: left and right with `width` values each, and one digit between them if the
    // number of digits is odd. The reverse of (left, middle, right) is (r(right), middle, r(left)). The loops
    // visit (left, middle, r(right)), whose reverse is (right, middle, r(left)): every pair with right < left
    // is one exchange.
    const int digits = std::countr_zero(count);
    const std::size_t width = std::size_t{1} << (digits / 2);
    const std::size_t middles = std::size_t{1} << (digits % 2);
    const std::size_t stride = width * middles;
    offsets[0] = 0;
    for (std::size_t filled = 1; filled < width; filled *= 2) {
        const auto step = static_cast<int>(width / (2 * filled));
        for (std::size_t i = 0; i < filled; ++i) offsets[filled + i] = offsets[i] + step;
    }
    for (std::size_t middle = 0; middle < middles; ++middle) {
        double* const rows = points + 2 * middle * width;
        for (std::size_t left = 1; left < width; ++left) {
            double* const row_left = rows + 2 * left * stride;
            const std::ptrdiff_t column_left = std::ptrdiff_t{2} * offsets[left];
            for (std::size_t right = 0; right < left; ++right) {
                double* const one = row_left + std::ptrdiff_t{2} * offsets[right];
                double* const other = rows + 2 * right * stride + column_left;
                exchange(one, other);
            }
        }
    }
}

void makeRoots(double* table, int doubles, int* offsets) {
    const sonivex::UnitRoots roots(doubles);
    double* next = table;
    for (int j = 0; j < doubles / 2; ++j) {
        const sonivex::UnitPoint point = roots.at(j);
        *next++ = point.cosine;
        *next++ = point.sine;
    }
    reversePointOrder(table, static_cast<std::size_t>(doubles / 2), offsets);
}

void makeHalfCosines(double* table, int count) {
    const sonivex::UnitRoots roots(count);
    for (int j = 0; j < count; ++j) table[j] = 0.5 * roots.at(j).cosine;
}

}  // namespace audiofft::details
