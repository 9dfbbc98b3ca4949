/* Compiled once for every set of vector instructions; the best one of the processor is taken at run time. */
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "lane_transform.cpp"
#include "vector_targets.h"
/* vector_targets.h comes first. */
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "float_rules.h"
#include "lane_transform.h"

HWY_BEFORE_NAMESPACE();
namespace audiofft::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using details::BlockRoots;
using details::TransformTables;

/* A complex number in every lane; D is the tag of the doubles. */
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

/* a * conj b */
template <class D>
HWY_INLINE Complex<D> timesConjugate(Complex<D> a, Complex<D> b) {
    return {hn::Add(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
            hn::Sub(hn::Mul(a.im, b.re), hn::Mul(a.re, b.im))};
}

/* The working memory of a group: [point][re, im][lane]. */
template <class D>
HWY_INLINE Complex<D> load(D d, const double* work, std::size_t point) {
    const std::size_t lanes = hn::Lanes(d);
    return {hn::Load(d, work + 2 * lanes * point), hn::Load(d, work + 2 * lanes * point + lanes)};
}

template <class D>
HWY_INLINE void store(D d, double* work, std::size_t point, Complex<D> value) {
    const std::size_t lanes = hn::Lanes(d);
    hn::Store(value.re, d, work + 2 * lanes * point);
    hn::Store(value.im, d, work + 2 * lanes * point + lanes);
}

template <class D>
HWY_INLINE hn::Vec<D> loadFloats([[maybe_unused]] D d, const float* from) {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), from));
}

template <class D>
HWY_INLINE void storeFloats([[maybe_unused]] D d, hn::Vec<D> value, float* to) {
    const hn::Rebind<float, D> floats;
    hn::StoreU(hn::DemoteTo(floats, value), floats, to);
}

/* Spectra outside, a column of `stride` lanes a bin. */
struct Plane {
    const float* re;
    const float* im;
    std::size_t stride;
};

template <class D>
HWY_INLINE Complex<D> loadBin(D d, const Plane& plane, std::size_t bin) {
    return {loadFloats(d, plane.re + bin * plane.stride), loadFloats(d, plane.im + bin * plane.stride)};
}

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
    /* difference01 + i difference23 and - i, or the other way round */
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

template <bool is_forward, class D>
HWY_INLINE void radix4Pass(D d, const TransformTables& tables, std::size_t distance, double* work) {
    const std::size_t blocks = tables.points() / (4 * distance);
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

/* The passes between the first and what is left for a last one of half the points or of a quarter: returns
 * the distance of the last one. */
template <bool is_forward, class D>
HWY_INLINE std::size_t middlePasses(D d, const TransformTables& tables, double* work) {
    std::size_t distance = 4;
    for (; 4 * distance < tables.points(); distance *= 4) radix4Pass<is_forward>(d, tables, distance, work);
    return distance;
}

template <class D>
HWY_INLINE void radix2Pass(D d, std::size_t points, double* work) {
    for (std::size_t i = 0; i < points / 2; ++i) {
        const Complex<D> a = load(d, work, i);
        const Complex<D> b = load(d, work, i + points / 2);
        store(d, work, i, a + b);
        store(d, work, i + points / 2, a - b);
    }
}

template <class D>
HWY_INLINE Complex<D> pairFactor(D d, const TransformTables& tables, std::size_t k) {
    const details::PairFactor& factor = tables.pairFactors()[k];
    return {hn::Set(d, factor.re), hn::Set(d, factor.im)};
}

/* ---- forward ---- */

/* Blocks of four neighbours in bit-reversed order. The second and the fourth come from the half that is
 * zero. A sum with zero is not left out: it makes -0 to 0. */
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

/* As spectrumOfPairsToReal, rounded to floats on the way out. */
template <class D>
HWY_INLINE void forwardLastStep(D d, const TransformTables& tables, const double* work, std::size_t stride,
                                float* re, float* im) {
    const std::size_t points = tables.points();
    const Complex<D> ends = load(d, work, 0);
    storeFloats(d, hn::Add(ends.re, ends.im), re);
    storeFloats(d, hn::Sub(ends.re, ends.im), im);
    if (points == 1) return;
    const std::size_t middle = points / 2;
    const Complex<D> centre = load(d, work, middle);
    storeFloats(d, centre.re, re + middle * stride);
    storeFloats(d, centre.im, im + middle * stride);
    for (std::size_t k = 1; k < middle; ++k) {
        const Complex<D> low = load(d, work, k);
        const Complex<D> high = load(d, work, points - k);
        const Complex<D> factor = pairFactor(d, tables, k);
        const Complex<D> y = factor * Complex<D>{hn::Sub(low.re, high.re), hn::Add(low.im, high.im)};
        storeFloats(d, hn::Sub(low.re, y.re), re + k * stride);
        storeFloats(d, hn::Sub(low.im, y.im), im + k * stride);
        storeFloats(d, hn::Add(high.re, y.re), re + (points - k) * stride);
        storeFloats(d, hn::Sub(high.im, y.im), im + (points - k) * stride);
    }
}

template <class D>
void forwardGroup(D d, const TransformTables& tables, const float* frames, std::size_t stride, float* re,
                  float* im, double* work) {
    const std::size_t points = tables.points();
    if (points < 4) {
        /* One point, or two of which the second is zero. */
        const hn::Vec<D> zero = hn::Zero(d);
        const Complex<D> first = {loadFloats(d, frames), points == 1 ? zero : loadFloats(d, frames + stride)};
        store(d, work, 0, first);
        store(d, work, points - 1, points == 1 ? first : Complex<D>{zero, zero});
    } else {
        forwardFirstPass(d, tables, frames, stride, work);
    }
    if (points >= 4) {
        const std::size_t distance = middlePasses<true>(d, tables, work);
        if (4 * distance == points) radix4Pass<true>(d, tables, distance, work);
        if (2 * distance == points) radix2Pass(d, points, work);
    } else if (points == 2) {
        radix2Pass(d, points, work);
    }
    forwardLastStep(d, tables, work, stride, re, im);
}

/* ---- inverse ---- */

/* X[k] and X[points - k] to Z, as spectrumOfRealToPairs does. */
template <class D>
HWY_INLINE void toPairs(D d, const TransformTables& tables, std::size_t k, Complex<D>& low,
                        Complex<D>& high) {
    const Complex<D> factor = pairFactor(d, tables, k);
    const Complex<D> y =
        timesConjugate(Complex<D>{hn::Sub(low.re, high.re), hn::Add(low.im, high.im)}, factor);
    low = low - y;
    high = {hn::Add(high.re, y.re), hn::Sub(high.im, y.im)};
}

template <class D>
HWY_INLINE Complex<D> endsToPairs(D d, Complex<D> ends) {
    const hn::Vec<D> half = hn::Set(d, 0.5);
    return {hn::Mul(half, hn::Add(ends.re, ends.im)), hn::Mul(half, hn::Sub(ends.re, ends.im))};
}

/* Bins of one block of the first pass: j and those a quarter, a half and three quarters further, in
 * bit-reversed order. */
template <class D>
HWY_INLINE Quartet<D> loadBins(D d, const Plane& plane, std::size_t j, std::size_t quarter) {
    return {loadBin(d, plane, j), loadBin(d, plane, j + 2 * quarter), loadBin(d, plane, j + quarter),
            loadBin(d, plane, j + 3 * quarter)};
}

template <class D>
HWY_INLINE void inverseFirstBlock(D d, const TransformTables& tables, std::size_t j, const Quartet<D>& v,
                                  double* work) {
    const std::size_t block = tables.blockOrder()[j];
    storeQuartet(d, work, 4 * block, 1,
                 turned<false>(plainButterfly<false>(v), broadcast(d, tables.blockRoots()[block])));
}

/* Bins k and points - k belong to the blocks of j and of quarter - j, so two blocks are done at a time. */
template <class D>
HWY_INLINE void inverseFirstPass(D d, const TransformTables& tables, const Plane& plane, double* work) {
    const std::size_t quarter = tables.points() / 4;
    Quartet<D> v = loadBins(d, plane, 0, quarter);
    v.v0 = endsToPairs(d, v.v0);
    toPairs(d, tables, quarter, v.v2, v.v3);
    storeQuartet(d, work, 0, 1, plainButterfly<false>(v));
    if (quarter == 1) return;

    const std::size_t eighth = quarter / 2;
    v = loadBins(d, plane, eighth, quarter);
    toPairs(d, tables, eighth, v.v0, v.v3);
    toPairs(d, tables, eighth + quarter, v.v2, v.v1);
    inverseFirstBlock(d, tables, eighth, v, work);

    for (std::size_t j = 1; j < eighth; ++j) {
        const std::size_t mirrored = quarter - j;
        v = loadBins(d, plane, j, quarter);
        Quartet<D> u = loadBins(d, plane, mirrored, quarter);
        toPairs(d, tables, j, v.v0, u.v3);
        toPairs(d, tables, j + quarter, v.v2, u.v1);
        toPairs(d, tables, mirrored + quarter, u.v2, v.v1);
        toPairs(d, tables, mirrored, u.v0, v.v3);
        inverseFirstBlock(d, tables, j, v, work);
        inverseFirstBlock(d, tables, mirrored, u, work);
    }
}

/* Scaled and rounded to floats on the way out. */
template <class D>
struct FrameWriter {
    hn::Vec<D> scale;
    float* frames;
    std::size_t stride;

    HWY_INLINE void put(D d, std::size_t point, Complex<D> value) const {
        float* const frame = frames + 2 * point * stride;
        storeFloats(d, hn::Mul(value.re, scale), frame);
        storeFloats(d, hn::Mul(value.im, scale), frame + stride);
    }
};

template <class D>
HWY_INLINE void inverseLastPass(D d, std::size_t points, std::size_t distance, const double* work,
                                const FrameWriter<D>& out) {
    if (distance == points) {
        for (std::size_t i = 0; i < points; ++i) out.put(d, i, load(d, work, i));
    } else if (2 * distance == points) {
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

template <class D>
void inverseGroup(D d, const TransformTables& tables, const Plane& plane, float* frames, double* work) {
    const std::size_t points = tables.points();
    const FrameWriter<D> out = {hn::Set(d, 2.0 / static_cast<double>(tables.samples())), frames,
                                plane.stride};
    if (points < 4) {
        store(d, work, points - 1, loadBin(d, plane, points - 1));
        store(d, work, 0, endsToPairs(d, loadBin(d, plane, 0)));
        inverseLastPass(d, points, std::size_t{1}, work, out);
        return;
    }
    inverseFirstPass(d, tables, plane, work);
    inverseLastPass(d, points, middlePasses<false>(d, tables, work), work, out);
}

/* ---- lanes in groups ---- */

template <std::size_t max_lanes>
void forwardLanes(const TransformTables& tables, const float* frames, std::size_t lanes, float* re, float* im,
                  double* work) {
    const hn::CappedTag<double, max_lanes> d;
    for (std::size_t lane = 0; lane < lanes; lane += hn::Lanes(d)) {
        forwardGroup(d, tables, frames + lane, lanes, re + lane, im + lane, work);
    }
}

template <std::size_t max_lanes>
void inverseLanes(const TransformTables& tables, const float* re, const float* im, std::size_t lanes,
                  float* frames, double* work) {
    const hn::CappedTag<double, max_lanes> d;
    for (std::size_t lane = 0; lane < lanes; lane += hn::Lanes(d)) {
        inverseGroup(d, tables, {re + lane, im + lane, lanes}, frames + lane, work);
    }
}

void forward(const TransformTables& tables, const float* frames, std::size_t lanes, float* re, float* im,
             double* work) {
    if (lanes == 1) return forwardLanes<1>(tables, frames, lanes, re, im, work);
    if (lanes == 2) return forwardLanes<2>(tables, frames, lanes, re, im, work);
    if (lanes == 4) return forwardLanes<4>(tables, frames, lanes, re, im, work);
    forwardLanes<8>(tables, frames, lanes, re, im, work);
}

void inverse(const TransformTables& tables, const float* re, const float* im, std::size_t lanes,
             float* frames, double* work) {
    if (lanes == 1) return inverseLanes<1>(tables, re, im, lanes, frames, work);
    if (lanes == 2) return inverseLanes<2>(tables, re, im, lanes, frames, work);
    if (lanes == 4) return inverseLanes<4>(tables, re, im, lanes, frames, work);
    inverseLanes<8>(tables, re, im, lanes, frames, work);
}

const LaneTransform* transforms() {
    static constexpr LaneTransform kTransforms = {hn::MaxLanes(hn::CappedTag<double, 8>()), forward, inverse};
    return &kTransforms;
}

}  // namespace audiofft::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audiofft {
namespace {
HWY_EXPORT(transforms);
}  // namespace

const LaneTransform& laneTransform() {
    return *HWY_DYNAMIC_DISPATCH(transforms)();
}

}  // namespace audiofft
#endif
