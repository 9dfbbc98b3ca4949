// Vectors of a tile: complex numbers, their products, and moves between tiles and the lanes of the
// transforms. bank_arithmetic.cpp includes this file once for every vector instruction set.
//
// All functions: [any, concurrent] real-time safe.

// The toggle lets the next instruction set include the file again.
#if defined(SONIVEX_TILE_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SONIVEX_TILE_VECTORS_INL_H
#undef SONIVEX_TILE_VECTORS_INL_H
#else
#define SONIVEX_TILE_VECTORS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "bank_arithmetic.h"
#include "float_rules.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/** The floats of one vector, at most a tile of them. */
using Tag = hn::CappedTag<float, kTileFloats>;
using Vector = hn::Vec<Tag>;
using PairTag = hn::Repartition<std::uint64_t, Tag>;

/** Floats of a vector. */
constexpr std::size_t kLanes = hn::MaxLanes(Tag());
/** Vectors of a place, the run of k in a tile that the kernel works on at once: as many as leave room for one
 *  block's sums in 16 registers. */
constexpr std::size_t kVectors = kLanes == kTileFloats ? 1 : 2;
/** Indices k of a place. */
constexpr std::size_t kPlaceFloats = kVectors * kLanes;
/** True if a vector has room for a channel pair. If not, lanes move one by one. */
constexpr bool kHasPairs = kLanes >= 2;

/** Numbers of a spectrum at consecutive k. */
template <std::size_t vectors>
struct Numbers {
    Vector re[vectors];
    Vector im[vectors];
};
using PlaceNumbers = Numbers<kVectors>;

/** The input as a factor of products with a response h:
 *
 *    re = h.re * re - h.im * cross,   im = h.re * cross + h.im * same
 *
 *  For a complex number, cross is im and same is re. For the two real numbers of bin 0, cross is 0 and same
 *  is im. */
template <std::size_t vectors>
struct Factor {
    Vector re[vectors];
    Vector cross[vectors];
    Vector same[vectors];
};

/** Zeros in all lanes. */
template <std::size_t vectors>
HWY_INLINE Numbers<vectors> zeros() {
    Numbers<vectors> numbers;
    for (std::size_t v = 0; v < vectors; ++v) numbers.re[v] = numbers.im[v] = hn::Zero(Tag());
    return numbers;
}

/** Loads the numbers at `offset` of a tile [re, im][16]. */
template <std::size_t vectors>
HWY_INLINE Numbers<vectors> loadTile(const float* tile, std::size_t offset) {
    Numbers<vectors> numbers;
    for (std::size_t v = 0; v < vectors; ++v) {
        numbers.re[v] = hn::Load(Tag(), tile + offset + v * kLanes);
        numbers.im[v] = hn::Load(Tag(), tile + kTileFloats + offset + v * kLanes);
    }
    return numbers;
}

/** Stores a place at `offset` of a tile [re, im][16]. */
HWY_INLINE void storeTile(const PlaceNumbers& numbers, float* tile, std::size_t offset) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        hn::Store(numbers.re[v], Tag(), tile + offset + v * kLanes);
        hn::Store(numbers.im[v], Tag(), tile + kTileFloats + offset + v * kLanes);
    }
}

/** Loads a vector that repeats every number of an array for two neighbouring k, from k = `offset` on. */
HWY_INLINE Vector loadTwice(const float* numbers, std::size_t offset) {
    if constexpr (!kHasPairs) return hn::Set(Tag(), numbers[offset / 2]);
    const PairTag pairs;
    const auto* const bits = reinterpret_cast<const std::uint32_t*>(numbers + offset / 2);
    const auto low = hn::PromoteTo(pairs, hn::LoadU(hn::Rebind<std::uint32_t, PairTag>(), bits));
    return hn::BitCast(Tag(), hn::Or(low, hn::ShiftLeft<32>(low)));
}

/** Makes a factor of an input.
 *  @param reals count of numbers at the start of the tile that belong to bin 0. */
template <bool has_reals, std::size_t vectors>
HWY_INLINE Factor<vectors> asFactor(const Numbers<vectors>& x, std::size_t reals, std::size_t offset) {
    const Tag d;
    Factor<vectors> factor;
    for (std::size_t v = 0; v < vectors; ++v) {
        factor.re[v] = x.re[v];
        factor.cross[v] = x.im[v];
        factor.same[v] = x.re[v];
        if constexpr (has_reals) {
            const auto place = hn::Iota(d, static_cast<float>(offset + v * kLanes));
            const auto is_real = hn::Lt(place, hn::Set(d, static_cast<float>(reals)));
            factor.cross[v] = hn::IfThenZeroElse(is_real, x.im[v]);
            factor.same[v] = hn::IfThenElse(is_real, x.im[v], x.re[v]);
        }
    }
    return factor;
}

/** sum += h * x, complex, with every product and every sum rounded on its own. */
template <std::size_t vectors>
HWY_INLINE void multiplyAccumulate(Numbers<vectors>& sum, const Numbers<vectors>& h,
                                   const Factor<vectors>& x) {
    for (std::size_t v = 0; v < vectors; ++v) {
        sum.re[v] = hn::Add(sum.re[v], hn::Sub(hn::Mul(h.re[v], x.re[v]), hn::Mul(h.im[v], x.cross[v])));
        sum.im[v] = hn::Add(sum.im[v], hn::Add(hn::Mul(h.re[v], x.cross[v]), hn::Mul(h.im[v], x.same[v])));
    }
}

// ---- between tiles and lanes ----

/** Stores lane i of every vector side by side, then lane i + 1. */
template <std::size_t count, class D>
HWY_INLINE void storeInterleaved(D d, const hn::Vec<D> (&v)[count], hn::TFromD<D>* to) {
    static_assert(count == 1 || count == 2 || count == 4);
    if constexpr (count == 1) hn::StoreU(v[0], d, to);
    if constexpr (count == 2) hn::StoreInterleaved2(v[0], v[1], d, to);
    if constexpr (count == 4) hn::StoreInterleaved4(v[0], v[1], v[2], v[3], d, to);
}

/** Undoes storeInterleaved. */
template <std::size_t count, class D>
HWY_INLINE void loadInterleaved(D d, const hn::TFromD<D>* from, hn::Vec<D> (&v)[count]) {
    static_assert(count == 1 || count == 2 || count == 4);
    if constexpr (count == 1) v[0] = hn::LoadU(d, from);
    if constexpr (count == 2) hn::LoadInterleaved2(d, from, v[0], v[1]);
    if constexpr (count == 4) hn::LoadInterleaved4(d, from, v[0], v[1], v[2], v[3]);
}

/** Loads the snapshots' numbers at k from a plane [bin][snapshot][channel] of real or imaginary parts. */
template <std::size_t snapshots>
HWY_INLINE void loadLanes(const float* plane, std::size_t k, std::size_t channels, Vector (&x)[snapshots]) {
    const Tag d;
    if (channels == 1) {
        loadInterleaved<snapshots>(d, plane + snapshots * k, x);
    } else if constexpr (kHasPairs) {
        hn::Vec<PairTag> pairs[snapshots];
        loadInterleaved<snapshots>(PairTag(), reinterpret_cast<const std::uint64_t*>(plane + snapshots * k),
                                   pairs);
        for (std::size_t i = 0; i < snapshots; ++i) x[i] = hn::BitCast(d, pairs[i]);
    } else {
        const float* const bin = plane + 2 * snapshots * (k / 2) + k % 2;
        for (std::size_t i = 0; i < snapshots; ++i) x[i] = hn::LoadU(d, bin + 2 * i);
    }
}

/** Stores the snapshots' sums at k in a plane [bin][term][snapshot][ear] of real or imaginary parts. */
template <std::size_t rows, std::size_t snapshots>
HWY_INLINE void storeLanes(float* plane, std::size_t k, Ears ears, const Vector (&sums)[snapshots][rows]) {
    constexpr std::size_t kCount = rows * snapshots;
    const Tag d;
    if (ears != Ears::kChannels) {
        Vector v[kCount];
        for (std::size_t i = 0; i < snapshots; ++i) {
            for (std::size_t row = 0; row < rows; ++row) v[i * rows + row] = sums[i][row];
        }
        storeInterleaved<kCount>(d, v, plane + kCount * k);
    } else if constexpr (kHasPairs) {
        const PairTag pairs;
        hn::Vec<PairTag> v[kCount];
        for (std::size_t i = 0; i < snapshots; ++i) {
            for (std::size_t row = 0; row < rows; ++row) {
                v[row * snapshots + i] = hn::BitCast(pairs, sums[i][row]);
            }
        }
        storeInterleaved<kCount>(pairs, v, reinterpret_cast<std::uint64_t*>(plane + kCount * k));
    } else {
        float* const bin = plane + 2 * kCount * (k / 2) + k % 2;
        for (std::size_t i = 0; i < snapshots; ++i) {
            for (std::size_t row = 0; row < rows; ++row) {
                hn::StoreU(sums[i][row], d, bin + 2 * (row * snapshots + i));
            }
        }
    }
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
