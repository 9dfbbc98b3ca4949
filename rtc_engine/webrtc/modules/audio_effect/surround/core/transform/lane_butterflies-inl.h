// The common parts of the forward and the inverse lane transform: complex numbers in lanes, working memory
// and the radix-4 passes. lane_transform.cpp includes this file once for every vector instruction set.
//
// A vector holds the lanes of one point. Where these would leave half of the vector empty, it holds the lanes
// of two neighbouring points, a pair. A pass whose butterflies have neighbours in the same block treats
// single points and pairs alike, so only the first and the last step differ.
//
//   working memory   [point][re, im][lane]    or    [pair][re, im][point of the pair][lane]
//
// All functions: [any, concurrent] real-time safe.

// The toggle lets the next instruction set include the file again.
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

/** A complex number in every lane; D is the tag of the doubles. */
template <class D>
struct Complex {
    hn::Vec<D> re;
    hn::Vec<D> im;
};

/** a + b */
template <class D>
HWY_INLINE Complex<D> operator+(Complex<D> a, Complex<D> b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}

/** a - b */
template <class D>
HWY_INLINE Complex<D> operator-(Complex<D> a, Complex<D> b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}

/** a * b, with every product and every sum rounded on its own. */
template <class D>
HWY_INLINE Complex<D> operator*(Complex<D> a, Complex<D> b) {
    return {hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Add(hn::Mul(a.re, b.im), hn::Mul(a.im, b.re))};
}

/** a * conj b */
template <class D>
HWY_INLINE Complex<D> timesConjugate(Complex<D> a, Complex<D> b) {
    return {hn::Add(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Sub(hn::Mul(a.im, b.re), hn::Mul(a.re, b.im))};
}

// ---- working memory ----

/** Loads one vector of the working memory: a point or a pair of points. */
template <class D>
HWY_INLINE Complex<D> load(D d, const double* work, std::size_t vector) {
    const std::size_t lanes = hn::Lanes(d);
    return {hn::Load(d, work + 2 * lanes * vector), hn::Load(d, work + 2 * lanes * vector + lanes)};
}

/** Stores one vector: a point or a pair of points. */
template <class D>
HWY_INLINE void store(D d, double* work, std::size_t vector, Complex<D> value) {
    const std::size_t lanes = hn::Lanes(d);
    hn::Store(value.re, d, work + 2 * lanes * vector);
    hn::Store(value.im, d, work + 2 * lanes * vector + lanes);
}

/** The tag of one point's lanes. */
template <std::size_t points_of_vector, class D>
using PointTag = std::conditional_t<points_of_vector == 1, D, hn::Half<D>>;

/** Loads one point, which may be half of a pair. */
template <std::size_t points_of_vector, class D>
HWY_INLINE Complex<D> loadPoint(D d, const double* work, std::size_t point) {
    const std::size_t lanes = hn::Lanes(d);
    const double* const vector = work + 2 * lanes * points_of_vector * (point / points_of_vector);
    const double* const re = vector + lanes * (point % points_of_vector);
    return {hn::Load(d, re), hn::Load(d, re + lanes * points_of_vector)};
}

/** Stores one point, which may be half of a pair. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void storePoint(D d, double* work, std::size_t point, Complex<D> value) {
    const std::size_t lanes = hn::Lanes(d);
    double* const vector = work + 2 * lanes * points_of_vector * (point / points_of_vector);
    double* const re = vector + lanes * (point % points_of_vector);
    hn::Store(value.re, d, re);
    hn::Store(value.im, d, re + lanes * points_of_vector);
}

// ---- floats outside the working memory ----

/** Loads floats and converts them to double. */
template <class D>
HWY_INLINE hn::Vec<D> loadFloats([[maybe_unused]] D d, const float* from) {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), from));
}

/** Rounds doubles to float and stores them. */
template <class D>
HWY_INLINE void storeFloats([[maybe_unused]] D d, hn::Vec<D> value, float* to) {
    const hn::Rebind<float, D> floats;
    hn::StoreU(hn::DemoteTo(floats, value), floats, to);
}

// ---- pairs; the scalar target has none and never reaches the code that uses them ----

#if HWY_TARGET != HWY_SCALAR
/** The first halves of two vectors side by side. */
template <class D>
HWY_INLINE hn::Vec<D> firstHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    return hn::ConcatLowerLower(d, b, a);
}

/** The second halves of two vectors side by side. */
template <class D>
HWY_INLINE hn::Vec<D> secondHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    return hn::ConcatUpperUpper(d, b, a);
}

/** Swaps the points of a pair. */
template <class D>
HWY_INLINE Complex<D> swapped(D d, Complex<D> pair) {
    return {hn::ConcatLowerUpper(d, pair.re, pair.re), hn::ConcatLowerUpper(d, pair.im, pair.im)};
}

/** Joins the first point of one pair and the second point of another. */
template <class D>
HWY_INLINE Complex<D> firstAndSecond(D d, Complex<D> first, Complex<D> second) {
    return {hn::ConcatUpperLower(d, second.re, first.re), hn::ConcatUpperLower(d, second.im, first.im)};
}

/** Repeats one number in all lanes of the first point and another in all lanes of the second point. */
template <class D>
HWY_INLINE hn::Vec<D> pairOf(D d, double first, double second) {
    const hn::Half<D> half;
    return hn::Combine(d, hn::Set(half, second), hn::Set(half, first));
}

/** Loads the frames at `a` for the first point and those at `b` for the second point. */
template <class D>
HWY_INLINE hn::Vec<D> loadPairOfFrames(D d, const float* a, const float* b) {
    const hn::Half<D> half;
    return hn::Combine(d, loadFloats(half, b), loadFloats(half, a));
}
#endif

// ---- butterflies ----

/** The four legs of a butterfly. */
template <class D>
struct Quartet {
    Complex<D> v0;
    Complex<D> v1;
    Complex<D> v2;
    Complex<D> v3;
};

/** A radix-4 butterfly without roots, as used by block 0 of every pass. */
template <bool is_forward, class D>
HWY_INLINE Quartet<D> plainButterfly(const Quartet<D>& v) {
    const Complex<D> sum01 = v.v0 + v.v1;
    const Complex<D> difference01 = v.v0 - v.v1;
    const Complex<D> sum23 = v.v2 + v.v3;
    const Complex<D> difference23 = v.v2 - v.v3;
    // up = difference01 + i difference23, down = difference01 - i difference23
    const Complex<D> up = {hn::Sub(difference01.re, difference23.im),
                           hn::Add(difference01.im, difference23.re)};
    const Complex<D> down = {hn::Add(difference01.re, difference23.im),
                             hn::Sub(difference01.im, difference23.re)};
    return {sum01 + sum23, is_forward ? up : down, sum01 - sum23, is_forward ? down : up};
}

/** The roots of one block, or of the two blocks of a pair's points. */
template <class D>
struct Roots {
    Complex<D> t1;
    Complex<D> t2;
    Complex<D> t3;
};

/** Repeats the roots of one block in all lanes. */
template <class D>
HWY_INLINE Roots<D> broadcast(D d, const BlockRoots& roots) {
    return {{hn::Set(d, roots.re[0]), hn::Set(d, roots.im[0])},
            {hn::Set(d, roots.re[1]), hn::Set(d, roots.im[1])},
            {hn::Set(d, roots.re[2]), hn::Set(d, roots.im[2])}};
}

/** Roots for pairs whose points belong to two blocks. */
template <class D>
HWY_INLINE Roots<D> pairOfRoots(D d, const BlockRoots& a, const BlockRoots& b) {
    return {{pairOf(d, a.re[0], b.re[0]), pairOf(d, a.im[0], b.im[0])},
            {pairOf(d, a.re[1], b.re[1]), pairOf(d, a.im[1], b.im[1])},
            {pairOf(d, a.re[2], b.re[2]), pairOf(d, a.im[2], b.im[2])}};
}

/** Multiplies the legs by the roots, or by their conjugates on the way back. */
template <bool is_forward, class D>
HWY_INLINE Quartet<D> turned(const Quartet<D>& x, const Roots<D>& t) {
    if constexpr (is_forward) return {x.v0, x.v1 * t.t1, x.v2 * t.t2, x.v3 * t.t3};
    return {x.v0, timesConjugate(x.v1, t.t1), timesConjugate(x.v2, t.t2), timesConjugate(x.v3, t.t3)};
}

/** Loads four vectors that lie `distance` vectors apart. */
template <class D>
HWY_INLINE Quartet<D> loadQuartet(D d, const double* work, std::size_t first, std::size_t distance) {
    return {load(d, work, first), load(d, work, first + distance), load(d, work, first + 2 * distance),
            load(d, work, first + 3 * distance)};
}

/** Stores four vectors `distance` vectors apart. */
template <class D>
HWY_INLINE void storeQuartet(D d, double* work, std::size_t first, std::size_t distance,
                             const Quartet<D>& x) {
    store(d, work, first, x.v0);
    store(d, work, first + distance, x.v1);
    store(d, work, first + 2 * distance, x.v2);
    store(d, work, first + 3 * distance, x.v3);
}

/** Stores a block of the first pass: four neighbouring points. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void storeBlock(D d, double* work, std::size_t block, const Quartet<D>& x) {
    storePoint<points_of_vector>(d, work, 4 * block, x.v0);
    storePoint<points_of_vector>(d, work, 4 * block + 1, x.v1);
    storePoint<points_of_vector>(d, work, 4 * block + 2, x.v2);
    storePoint<points_of_vector>(d, work, 4 * block + 3, x.v3);
}

/** Stores two blocks of the first pass. Each pair of `x` holds a point of `block_a` and one of `block_b`. */
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

/** Runs one radix-4 pass. The legs of a butterfly lie `distance` vectors apart. */
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

/** Runs the passes between the first and the last.
 *  @return distance of the last pass in points: a quarter of all points (radix 4) or half of them (radix 2).
 *          For four points it is 4, and no pass is left. */
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

/** The factor of bin k in all lanes. */
template <class D>
HWY_INLINE Complex<D> pairFactor(D d, const TransformTables& tables, std::size_t k) {
    const PairFactor& factor = tables.pairFactors()[k];
    return {hn::Set(d, factor.re), hn::Set(d, factor.im)};
}

/** The factors of bins k and l, for a pair of bins. */
template <class D>
HWY_INLINE Complex<D> pairFactors(D d, const TransformTables& tables, std::size_t k, std::size_t l) {
    const PairFactor& a = tables.pairFactors()[k];
    const PairFactor& b = tables.pairFactors()[l];
    return {pairOf(d, a.re, b.re), pairOf(d, a.im, b.im)};
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
