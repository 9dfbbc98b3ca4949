// The inverse transform of one group of lanes, see lane_transform.h. lane_transform.cpp includes this file
// once for every vector instruction set.
//
// All functions: [any, concurrent] real-time safe.

#if defined(SONIVEX_LANE_INVERSE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SONIVEX_LANE_INVERSE_INL_H
#undef SONIVEX_LANE_INVERSE_INL_H
#else
#define SONIVEX_LANE_INVERSE_INL_H
#endif

#include "lane_butterflies-inl.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

/** Reads a spectrum with `stride` lanes per bin. */
struct SpectrumReader {
    const float* re;
    const float* im;
    std::size_t stride;

    /** Loads bin k, or a pair of neighbouring bins from k on. */
    template <class D>
    HWY_INLINE Complex<D> bin(D d, std::size_t k) const {
        return {loadFloats(d, re + k * stride), loadFloats(d, im + k * stride)};
    }
    /** Loads a block of the first pass: bin k and those a quarter, a half and three quarters further, in
     *  bit-reversed order. */
    template <class D>
    HWY_INLINE Quartet<D> block(D d, std::size_t k, std::size_t quarter) const {
        return {bin(d, k), bin(d, k + 2 * quarter), bin(d, k + quarter), bin(d, k + 3 * quarter)};
    }
};

/** Turns X[k] and X[points - k] into Z[k] and Z[points - k], as spectrumOfRealToPairs does. */
template <class D>
HWY_INLINE void toPairs(Complex<D> factor, Complex<D>& low, Complex<D>& high) {
    const Complex<D> y =
        timesConjugate(Complex<D>{hn::Sub(low.re, high.re), hn::Add(low.im, high.im)}, factor);
    low = low - y;
    high = {hn::Add(high.re, y.re), hn::Sub(high.im, y.im)};
}

/** Turns X[0] and X[points], which share bin 0, into Z[0]. */
template <class D>
HWY_INLINE Complex<D> endsToPairs(D d, Complex<D> ends) {
    const hn::Vec<D> half = hn::Set(d, 0.5);
    return {hn::Mul(half, hn::Add(ends.re, ends.im)), hn::Mul(half, hn::Sub(ends.re, ends.im))};
}

/** Runs the first pass on the block that starts at bin j and stores it. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void inverseFirstBlock(D d, const TransformTables& tables, std::size_t j, const Quartet<D>& v,
                                  double* work) {
    const std::size_t block = tables.blockOrder()[j];
    storeBlock<points_of_vector>(
        d, work, block, turned<false>(plainButterfly<false>(v), broadcast(d, tables.blockRoots()[block])));
}

/** Runs the first pass on the blocks of bins j and quarter - j together, because a bin k of one block needs
 *  bin points - k of the other. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void inverseBlocks(D d, const TransformTables& tables, const SpectrumReader& in, std::size_t j,
                              double* work) {
    const std::size_t quarter = tables.points() / 4;
    const std::size_t mirrored = quarter - j;
    Quartet<D> v = in.block(d, j, quarter);
    Quartet<D> u = in.block(d, mirrored, quarter);
    toPairs(pairFactor(d, tables, j), v.v0, u.v3);
    toPairs(pairFactor(d, tables, j + quarter), v.v2, u.v1);
    toPairs(pairFactor(d, tables, mirrored + quarter), u.v2, v.v1);
    toPairs(pairFactor(d, tables, mirrored), u.v0, v.v3);
    inverseFirstBlock<points_of_vector>(d, tables, j, v, work);
    inverseFirstBlock<points_of_vector>(d, tables, mirrored, u, work);
}

/** Runs the first pass on the blocks of bins j and l, whose points lie in pairs, and stores them. */
template <class D>
HWY_INLINE void inverseFirstPairOfBlocks(D d, const TransformTables& tables, std::size_t j, std::size_t l,
                                         const Quartet<D>& v, double* work) {
    const std::size_t a = tables.blockOrder()[j];
    const std::size_t b = tables.blockOrder()[l];
    const Roots<D> roots = pairOfRoots(d, tables.blockRoots()[a], tables.blockRoots()[b]);
    storePairOfBlocks(d, work, a, b, turned<false>(plainButterfly<false>(v), roots));
}

/** Does the work of inverseBlocks for j and j + 1, as pairs. */
template <class D>
HWY_INLINE void inversePairsOfBlocks(D d, const TransformTables& tables, const SpectrumReader& in,
                                     std::size_t j, double* work) {
    const std::size_t quarter = tables.points() / 4;
    const std::size_t mirrored = quarter - j;
    Quartet<D> v = in.block(d, j, quarter);
    const Quartet<D> backwards = in.block(d, mirrored - 1, quarter);
    Quartet<D> u = {swapped(d, backwards.v0), swapped(d, backwards.v1), swapped(d, backwards.v2),
                    swapped(d, backwards.v3)};
    toPairs(pairFactors(d, tables, j, j + 1), v.v0, u.v3);
    toPairs(pairFactors(d, tables, j + quarter, j + 1 + quarter), v.v2, u.v1);
    toPairs(pairFactors(d, tables, mirrored + quarter, mirrored - 1 + quarter), u.v2, v.v1);
    toPairs(pairFactors(d, tables, mirrored, mirrored - 1), u.v0, v.v3);
    inverseFirstPairOfBlocks(d, tables, j, j + 1, v, work);
    inverseFirstPairOfBlocks(d, tables, mirrored, mirrored - 1, u, work);
}

/** Reads the spectrum, turns it into that of pairs of samples and runs the first pass. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void inverseFirstPass(D d, const TransformTables& tables, const SpectrumReader& in, double* work) {
    const PointTag<points_of_vector, D> one;
    const std::size_t quarter = tables.points() / 4;
    auto v = in.block(one, 0, quarter);
    v.v0 = endsToPairs(one, v.v0);
    toPairs(pairFactor(one, tables, quarter), v.v2, v.v3);
    storeBlock<points_of_vector>(one, work, 0, plainButterfly<false>(v));
    if (quarter == 1) return;

    const std::size_t eighth = quarter / 2;
    v = in.block(one, eighth, quarter);
    toPairs(pairFactor(one, tables, eighth), v.v0, v.v3);
    toPairs(pairFactor(one, tables, eighth + quarter), v.v2, v.v1);
    inverseFirstBlock<points_of_vector>(one, tables, eighth, v, work);

    const std::size_t singles = points_of_vector == 1 ? eighth : 2;
    for (std::size_t j = 1; j < singles; ++j) inverseBlocks<points_of_vector>(one, tables, in, j, work);
    if constexpr (points_of_vector == 2) {
        for (std::size_t j = 2; j < eighth; j += 2) inversePairsOfBlocks(d, tables, in, j, work);
    }
}

/** Scales the points, rounds them to float and writes them as frames with `stride` lanes. */
template <std::size_t points_of_vector, class D>
struct FrameWriter {
    hn::Vec<D> scale;
    float* frames;
    std::size_t stride;

    /** Writes one vector; `vector` is its index in the working memory. */
    HWY_INLINE void put(D d, std::size_t vector, Complex<D> value) const {
        const Complex<D> scaled = {hn::Mul(value.re, scale), hn::Mul(value.im, scale)};
        float* const frame = frames + 2 * points_of_vector * vector * stride;
        if constexpr (points_of_vector == 2) {
            storeFloats(d, firstHalves(d, scaled.re, scaled.im), frame);
            storeFloats(d, secondHalves(d, scaled.re, scaled.im), frame + 2 * stride);
        } else {
            storeFloats(d, scaled.re, frame);
            storeFloats(d, scaled.im, frame + stride);
        }
    }
};

/** Runs the last pass and writes the frames.
 *  @param vectors  vectors of the working memory.
 *  @param distance vectors between the legs of a butterfly; equal to `vectors` if no pass is left. */
template <std::size_t points_of_vector, class D>
HWY_INLINE void inverseLastPass(D d, std::size_t vectors, std::size_t distance, const double* work,
                                const FrameWriter<points_of_vector, D>& out) {
    if (distance == vectors) {
        for (std::size_t i = 0; i < vectors; ++i) out.put(d, i, load(d, work, i));
    } else if (2 * distance == vectors) {
        for (std::size_t i = 0; i < distance; ++i) {
            const Complex<D> a = load(d, work, i);
            const Complex<D> b = load(d, work, i + distance);
            out.put(d, i, a + b);
            out.put(d, i + distance, a - b);
        }
    } else {
        for (std::size_t i = 0; i < distance; ++i) {
            const Quartet<D> x = plainButterfly<false>(loadQuartet(d, work, i, distance));
            out.put(d, i, x.v0);
            out.put(d, i + distance, x.v1);
            out.put(d, i + 2 * distance, x.v2);
            out.put(d, i + 3 * distance, x.v3);
        }
    }
}

/** Transforms one group of lanes back; `frames` has as many lanes as the spectrum. */
template <std::size_t points_of_vector, class D>
void inverseGroup(D d, const TransformTables& tables, const SpectrumReader& in, float* frames, double* work) {
    const std::size_t points = tables.points();
    const FrameWriter<points_of_vector, D> out = {hn::Set(d, 2.0 / static_cast<double>(tables.samples())),
                                                  frames, in.stride};
    if (points < 4) {
        store(d, work, points - 1, in.bin(d, points - 1));
        store(d, work, 0, endsToPairs(d, in.bin(d, 0)));
        inverseLastPass(d, points, std::size_t{1}, work, out);
        return;
    }
    inverseFirstPass<points_of_vector>(d, tables, in, work);
    const std::size_t distance = middlePasses<false, points_of_vector>(d, tables, work);
    inverseLastPass(d, points / points_of_vector, distance / points_of_vector, work, out);
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
