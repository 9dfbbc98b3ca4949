// The forward transform of one group of lanes, see lane_transform.h. lane_transform.cpp includes this file
// once for every vector instruction set.
//
// All functions: [any, concurrent] real-time safe.

#if defined(SONIVEX_LANE_FORWARD_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SONIVEX_LANE_FORWARD_INL_H
#undef SONIVEX_LANE_FORWARD_INL_H
#else
#define SONIVEX_LANE_FORWARD_INL_H
#endif

#include "lane_butterflies-inl.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

/** Runs the first pass on blocks of four neighbours in bit-reversed order. The second and the fourth point of
 *  a block come from the half that is zero. Sums with zero are not left out: they turn -0 into +0. */
template <class D>
HWY_INLINE void forwardFirstPass(D d, const TransformTables& tables, const float* frames, std::size_t stride,
                                 double* work) {
    const hn::Vec<D> zero = hn::Zero(d);
    const std::size_t blocks = tables.points() / 4;
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::size_t j = tables.blockOrder()[block];
        const float* const first = frames + 2 * j * stride;
        const float* const second = first + 2 * blocks * stride;
        const Quartet<D> v = {{loadFloats(d, first), loadFloats(d, first + stride)},
                              {zero, zero},
                              {loadFloats(d, second), loadFloats(d, second + stride)},
                              {zero, zero}};
        const Quartet<D> x = plainButterfly<true>(v);
        storeQuartet(d, work, 4 * block, 1,
                     block == 0 ? x : turned<true>(x, broadcast(d, tables.blockRoots()[block])));
    }
}

/** Runs the first pass on two blocks at a time. */
template <class D>
HWY_INLINE void forwardFirstPassOfPairs(D d, const TransformTables& tables, const float* frames,
                                        std::size_t stride, double* work) {
    const hn::Vec<D> zero = hn::Zero(d);
    const std::size_t blocks = tables.points() / 4;
    const std::size_t half = 2 * blocks * stride;
    for (std::size_t block = 0; block < blocks; block += 2) {
        const float* const a = frames + 2 * stride * tables.blockOrder()[block];
        const float* const b = frames + 2 * stride * tables.blockOrder()[block + 1];
        const Quartet<D> v = {{loadPairOfFrames(d, a, b), loadPairOfFrames(d, a + stride, b + stride)},
                              {zero, zero},
                              {loadPairOfFrames(d, a + half, b + half),
                               loadPairOfFrames(d, a + half + stride, b + half + stride)},
                              {zero, zero}};
        const Quartet<D> x = plainButterfly<true>(v);
        Quartet<D> y =
            turned<true>(x, pairOfRoots(d, tables.blockRoots()[block], tables.blockRoots()[block + 1]));
        if (block == 0) {  // block 0 is not turned: a product with 1 may change the sign of a zero
            y = {firstAndSecond(d, x.v0, y.v0), firstAndSecond(d, x.v1, y.v1), firstAndSecond(d, x.v2, y.v2),
                 firstAndSecond(d, x.v3, y.v3)};
        }
        storePairOfBlocks(d, work, block, block + 1, y);
    }
}

/** Runs a radix-2 pass on all vectors. */
template <class D>
HWY_INLINE void radix2Pass(D d, std::size_t vectors, double* work) {
    for (std::size_t i = 0; i < vectors / 2; ++i) {
        const Complex<D> a = load(d, work, i);
        const Complex<D> b = load(d, work, i + vectors / 2);
        store(d, work, i, a + b);
        store(d, work, i + vectors / 2, a - b);
    }
}

/** Turns Z[k] and Z[points - k] into X[k] and X[points - k], as spectrumOfPairsToReal does. */
template <class D>
HWY_INLINE void toReal(Complex<D> factor, Complex<D>& low, Complex<D>& high) {
    const Complex<D> y = factor * Complex<D>{hn::Sub(low.re, high.re), hn::Add(low.im, high.im)};
    low = low - y;
    high = {hn::Add(high.re, y.re), hn::Sub(high.im, y.im)};
}

/** Writes a spectrum with `stride` lanes per bin. */
struct SpectrumWriter {
    float* re;
    float* im;
    std::size_t stride;

    /** Stores one bin, or a pair of neighbouring bins, rounded to float. */
    template <class D>
    HWY_INLINE void put(D d, std::size_t bin, Complex<D> value) const {
        storeFloats(d, value.re, re + bin * stride);
        storeFloats(d, value.im, im + bin * stride);
    }
};

/** Turns the spectrum of pairs into that of the signal and writes it, rounded to float. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void forwardLastStep(D d, const TransformTables& tables, const double* work,
                                const SpectrumWriter& out) {
    const PointTag<points_of_vector, D> one;
    const auto point = [&](std::size_t k) { return loadPoint<points_of_vector>(one, work, k); };
    const std::size_t points = tables.points();
    const auto ends = point(0);
    out.put(one, 0, decltype(point(0)){hn::Add(ends.re, ends.im), hn::Sub(ends.re, ends.im)});
    if (points == 1) return;
    const std::size_t middle = points / 2;
    out.put(one, middle, point(middle));
    const std::size_t singles = points_of_vector == 1 ? middle : 2;
    for (std::size_t k = 1; k < singles; ++k) {
        auto low = point(k);
        auto high = point(points - k);
        toReal(pairFactor(one, tables, k), low, high);
        out.put(one, k, low);
        out.put(one, points - k, high);
    }
    if constexpr (points_of_vector == 2) {
        for (std::size_t k = 2; k < middle; k += 2) {
            Complex<D> low = load(d, work, k / 2);
            Complex<D> high =
                firstAndSecond(d, load(d, work, (points - k) / 2), load(d, work, (points - k) / 2 - 1));
            toReal(pairFactors(d, tables, k, k + 1), low, high);
            out.put(d, k, low);
            out.put(d, points - k - 1, swapped(d, high));
        }
    }
}

/** Transforms one group of lanes.
 *  @param lanes lanes of all groups: the stride from one frame or bin to the next. */
template <std::size_t points_of_vector, class D>
void forwardGroup(D d, const TransformTables& tables, const float* frames, std::size_t lanes, float* re,
                  float* im, double* work) {
    const std::size_t points = tables.points();
    if constexpr (points_of_vector == 2) {
        forwardFirstPassOfPairs(d, tables, frames, lanes, work);
    } else if (points < 4) {
        // One point, or two points of which the second is zero.
        const hn::Vec<D> zero = hn::Zero(d);
        const Complex<D> first = {loadFloats(d, frames), points == 1 ? zero : loadFloats(d, frames + lanes)};
        store(d, work, 0, first);
        store(d, work, points - 1, points == 1 ? first : Complex<D>{zero, zero});
    } else {
        forwardFirstPass(d, tables, frames, lanes, work);
    }
    if (points >= 4) {
        const std::size_t distance = middlePasses<true, points_of_vector>(d, tables, work);
        if (4 * distance == points) radix4Pass<true>(d, tables, 1, distance / points_of_vector, work);
        if (2 * distance == points) radix2Pass(d, points / points_of_vector, work);
    } else if (points == 2) {
        radix2Pass(d, points, work);
    }
    forwardLastStep<points_of_vector>(d, tables, work, SpectrumWriter{re, im, lanes});
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
