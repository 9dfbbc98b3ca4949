// The parts that the forward and the inverse transform in lanes share: complex numbers in lanes, working
// memory, and the passes of radix 4. Included once for every set of vector instructions, see
// lane_transform.cpp.
//
// A vector holds the lanes of one point, or, where they would leave half of it empty, of two neighbours: a
// pair of points. Passes whose butterflies have neighbours in the same block take both alike, so only the
// first and the last step differ.
//
//   working memory   [point][re, im][lane]    or    [pair][re, im][point of the pair][lane]

// Included again for the next set.
#if defined(SONIVEX_LANE_BUTTERFLIES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SONIVEX_LANE_BUTTERFLIES_INL_H
#undef SONIVEX_LANE_BUTTERFLIES_INL_H
#else
#define SONIVEX_LANE_BUTTERFLIES_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <type_traits>

#include "float_rules.h"
#include "transform_tables.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A complex number in every lane; D is the tag of the doubles.
template <class D>
struct Complex {
    hn::Vec<D> re;
    hn::Vec<D> im;
};

template <class D>
HWY_INLINE Complex<D> operator+(Complex<D> a, Complex<D> b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}

template <class D>
HWY_INLINE Complex<D> operator-(Complex<D> a, Complex<D> b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}

template <class D>
HWY_INLINE Complex<D> operator*(Complex<D> a, Complex<D> b) {
    return {hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Add(hn::Mul(a.re, b.im), hn::Mul(a.im, b.re))};
}

// a * conj b
template <class D>
HWY_INLINE Complex<D> timesConjugate(Complex<D> a, Complex<D> b) {
    return {hn::Add(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Sub(hn::Mul(a.im, b.re), hn::Mul(a.re, b.im))};
}

// ---- working memory ----

// A vector of it: a point or a pair of points.
template <class D>
HWY_INLINE Complex<D> load(D d, const double* work, std::size_t vector) {
    const std::size_t lanes = hn::Lanes(d);
    return {hn::Load(d, work + 2 * lanes * vector), hn::Load(d, work + 2 * lanes * vector + lanes)};
}

template <class D>
HWY_INLINE void store(D d, double* work, std::size_t vector, Complex<D> value) {
    const std::size_t lanes = hn::Lanes(d);
    hn::Store(value.re, d, work + 2 * lanes * vector);
    hn::Store(value.im, d, work + 2 * lanes * vector + lanes);
}

// The tag of one point's lanes.
template <std::size_t points_of_vector, class D>
using PointTag = std::conditional_t<points_of_vector == 1, D, hn::Half<D>>;

template <std::size_t points_of_vector, class D>
HWY_INLINE Complex<D> loadPoint(D d, const double* work, std::size_t point) {
    const std::size_t lanes = hn::Lanes(d);
    const double* const vector = work + 2 * lanes * points_of_vector * (point / points_of_vector);
    const double* const re = vector + lanes * (point % points_of_vector);
    return {hn::Load(d, re), hn::Load(d, re + lanes * points_of_vector)};
}

template <std::size_t points_of_vector, class D>
HWY_INLINE void storePoint(D d, double* work, std::size_t point, Complex<D> value) {
    const std::size_t lanes = hn::Lanes(d);
    double* const vector = work + 2 * lanes * points_of_vector * (point / points_of_vector);
    double* const re = vector + lanes * (point % points_of_vector);
    hn::Store(value.re, d, re);
    hn::Store(value.im, d, re + lanes * points_of_vector);
}

// ---- floats outside ----

template <class D>
HWY_INLINE hn::Vec<D> loadFloats([[maybe_unused]] D d, const float* from) {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), from));
}

template <class D>
HWY_INLINE void storeFloats([[maybe_unused]] D d, hn::Vec<D> value, float* to) {
    const hn::Rebind<float, D> floats;
    hn::StoreU(hn::DemoteTo(floats, value), floats, to);
}

// ---- pairs; a set without vectors has none, and never comes to the code that asks for them ----

#if HWY_TARGET != HWY_SCALAR
// The first halves of two vectors side by side, and the second halves.
template <class D>
HWY_INLINE hn::Vec<D> firstHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    return hn::ConcatLowerLower(d, b, a);
}

template <class D>
HWY_INLINE hn::Vec<D> secondHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    return hn::ConcatUpperUpper(d, b, a);
}

// The points of a pair the other way round.
template <class D>
HWY_INLINE Complex<D> swapped(D d, Complex<D> pair) {
    return {hn::ConcatLowerUpper(d, pair.re, pair.re), hn::ConcatLowerUpper(d, pair.im, pair.im)};
}

// The first point of one pair and the second of another.
template <class D>
HWY_INLINE Complex<D> firstAndSecond(D d, Complex<D> first, Complex<D> second) {
    return {hn::ConcatUpperLower(d, second.re, first.re), hn::ConcatUpperLower(d, second.im, first.im)};
}

template <class D>
HWY_INLINE hn::Vec<D> pairOf(D d, double first, double second) {
    const hn::Half<D> half;
    return hn::Combine(d, hn::Set(half, second), hn::Set(half, first));
}

// The frames of two points.
template <class D>
HWY_INLINE hn::Vec<D> loadPairOfFrames(D d, const float* a, const float* b) {
    const hn::Half<D> half;
    return hn::Combine(d, loadFloats(half, b), loadFloats(half, a));
}
#endif

// ---- butterflies ----

template <class D>
struct Quartet {
    Complex<D> v0;
    Complex<D> v1;
    Complex<D> v2;
    Complex<D> v3;
};

template <bool is_forward, class D>
HWY_INLINE Quartet<D> plainButterfly(const Quartet<D>& v) {
    const Complex<D> sum01 = v.v0 + v.v1;
    const Complex<D> difference01 = v.v0 - v.v1;
    const Complex<D> sum23 = v.v2 + v.v3;
    const Complex<D> difference23 = v.v2 - v.v3;
    // difference01 + i difference23 and - i, or the other way round
    const Complex<D> up = {hn::Sub(difference01.re, difference23.im),
                           hn::Add(difference01.im, difference23.re)};
    const Complex<D> down = {hn::Add(difference01.re, difference23.im),
                             hn::Sub(difference01.im, difference23.re)};
    return {sum01 + sum23, is_forward ? up : down, sum01 - sum23, is_forward ? down : up};
}

template <class D>
struct Roots {
    Complex<D> t1;
    Complex<D> t2;
    Complex<D> t3;
};

template <class D>
HWY_INLINE Roots<D> broadcast(D d, const BlockRoots& roots) {
    return {{hn::Set(d, roots.re[0]), hn::Set(d, roots.im[0])},
            {hn::Set(d, roots.re[1]), hn::Set(d, roots.im[1])},
            {hn::Set(d, roots.re[2]), hn::Set(d, roots.im[2])}};
}

// For pairs whose points are of two blocks.
template <class D>
HWY_INLINE Roots<D> pairOfRoots(D d, const BlockRoots& a, const BlockRoots& b) {
    return {{pairOf(d, a.re[0], b.re[0]), pairOf(d, a.im[0], b.im[0])},
            {pairOf(d, a.re[1], b.re[1]), pairOf(d, a.im[1], b.im[1])},
            {pairOf(d, a.re[2], b.re[2]), pairOf(d, a.im[2], b.im[2])}};
}

template <bool is_forward, class D>
HWY_INLINE Quartet<D> turned(const Quartet<D>& x, const Roots<D>& t) {
    if constexpr (is_forward) return {x.v0, x.v1 * t.t1, x.v2 * t.t2, x.v3 * t.t3};
    return {x.v0, timesConjugate(x.v1, t.t1), timesConjugate(x.v2, t.t2), timesConjugate(x.v3, t.t3)};
}

template <class D>
HWY_INLINE Quartet<D> loadQuartet(D d, const double* work, std::size_t first, std::size_t distance) {
    return {load(d, work, first), load(d, work, first + distance), load(d, work, first + 2 * distance),
            load(d, work, first + 3 * distance)};
}

template <class D>
HWY_INLINE void storeQuartet(D d, double* work, std::size_t first, std::size_t distance,
                             const Quartet<D>& x) {
    store(d, work, first, x.v0);
    store(d, work, first + distance, x.v1);
    store(d, work, first + 2 * distance, x.v2);
    store(d, work, first + 3 * distance, x.v3);
}

// A block of the first pass: four neighbours.
template <std::size_t points_of_vector, class D>
HWY_INLINE void storeBlock(D d, double* work, std::size_t block, const Quartet<D>& x) {
    storePoint<points_of_vector>(d, work, 4 * block, x.v0);
    storePoint<points_of_vector>(d, work, 4 * block + 1, x.v1);
    storePoint<points_of_vector>(d, work, 4 * block + 2, x.v2);
    storePoint<points_of_vector>(d, work, 4 * block + 3, x.v3);
}

// Two blocks, of which the vectors hold the points as pairs.
template <class D>
HWY_INLINE void storePairOfBlocks(D d, double* work, std::size_t block_a, std::size_t block_b,
                                  const Quartet<D>& x) {
    const auto firsts = [&](const Complex<D>& a, const Complex<D>& b) {
        return Complex<D>{firstHalves(d, a.re, b.re), firstHalves(d, a.im, b.im)};
    };
    const auto seconds = [&](const Complex<D>& a, const Complex<D>& b) {
        return Complex<D>{secondHalves(d, a.re, b.re), secondHalves(d, a.im, b.im)};
    };
    store(d, work, 2 * block_a, firsts(x.v0, x.v1));
    store(d, work, 2 * block_a + 1, firsts(x.v2, x.v3));
    store(d, work, 2 * block_b, seconds(x.v0, x.v1));
    store(d, work, 2 * block_b + 1, seconds(x.v2, x.v3));
}

// Legs lie `distance` vectors apart.
template <bool is_forward, class D>
HWY_INLINE void radix4Pass(D d, const TransformTables& tables, std::size_t blocks, std::size_t distance,
                           double* work) {
    for (std::size_t i = 0; i < distance; ++i) {
        storeQuartet(d, work, i, distance, plainButterfly<is_forward>(loadQuartet(d, work, i, distance)));
    }
    for (std::size_t block = 1; block < blocks; ++block) {
        const Roots<D> roots = broadcast(d, tables.blockRoots()[block]);
        const std::size_t first = 4 * distance * block;
        for (std::size_t i = first; i < first + distance; ++i) {
            storeQuartet(
                d, work, i, distance,
                turned<is_forward>(plainButterfly<is_forward>(loadQuartet(d, work, i, distance)), roots));
        }
    }
}

// The passes between the first and what is left for a last one of half the points or of a quarter: returns
// the distance of the last one, in points.
template <bool is_forward, std::size_t points_of_vector, class D>
HWY_INLINE std::size_t middlePasses(D d, const TransformTables& tables, double* work) {
    std::size_t distance = 4;
    for (; 4 * distance < tables.points(); distance *= 4) {
        radix4Pass<is_forward>(d, tables, tables.points() / (4 * distance), distance / points_of_vector,
                               work);
    }
    return distance;
}

// ---- the step between the spectrum of pairs of samples and that of the signal, see fft_passes.h ----

template <class D>
HWY_INLINE Complex<D> pairFactor(D d, const TransformTables& tables, std::size_t k) {
    const PairFactor& factor = tables.pairFactors()[k];
    return {hn::Set(d, factor.re), hn::Set(d, factor.im)};
}

// For a pair of bins.
template <class D>
HWY_INLINE Complex<D> pairFactors(D d, const TransformTables& tables, std::size_t k, std::size_t l) {
    const PairFactor& a = tables.pairFactors()[k];
    const PairFactor& b = tables.pairFactors()[l];
    return {pairOf(d, a.re, b.re), pairOf(d, a.im, b.im)};
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
