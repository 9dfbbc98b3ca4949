/* Compiled once for every set of vector instructions; the best one of the processor is taken at run time. */
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bank_arithmetic.cpp"
#include "vector_targets.h"
/* vector_targets.h comes first. */
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cstdint>

#include "bank_arithmetic.h"
#include "float_rules.h"

HWY_BEFORE_NAMESPACE();
namespace fftconvolver::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<float, kTileFloats>;
using Vector = hn::Vec<Tag>;
using PairTag = hn::Repartition<std::uint64_t, Tag>;

constexpr std::size_t kLanes = hn::MaxLanes(Tag());
/* Vectors that are worked on together: as many as leave room for everything in 16 registers. */
constexpr std::size_t kVectors = kLanes == kTileFloats ? 1 : 2;
constexpr std::size_t kStep = kVectors * kLanes;
/* Without room for a channel pair in a vector, lanes are moved one by one. */
constexpr bool kHasPairs = kLanes >= 2;

/* Partitions between the one that is worked on and the one that is fetched. */
constexpr std::size_t kPrefetchDistance = 16;

/* A few k of a spectrum. */
struct Numbers {
    Vector re[kVectors];
    Vector im[kVectors];
};

/* A factor of products: re = h.re * re - h.im * cross, im = h.re * cross + h.im * same. For a complex number
 * cross is im and same is re; for the two real ones of bin 0, cross is 0 and same is im. */
struct Factor {
    Vector re[kVectors];
    Vector cross[kVectors];
    Vector same[kVectors];
};

HWY_INLINE Numbers loadTile(const float* tile, std::size_t offset) {
    const Tag d;
    Numbers numbers;
    for (std::size_t v = 0; v < kVectors; ++v) {
        numbers.re[v] = hn::Load(d, tile + offset + v * kLanes);
        numbers.im[v] = hn::Load(d, tile + kTileFloats + offset + v * kLanes);
    }
    return numbers;
}

HWY_INLINE void storeTile(const Numbers& numbers, float* tile, std::size_t offset) {
    const Tag d;
    for (std::size_t v = 0; v < kVectors; ++v) {
        hn::Store(numbers.re[v], d, tile + offset + v * kLanes);
        hn::Store(numbers.im[v], d, tile + kTileFloats + offset + v * kLanes);
    }
}

/* reals: how many numbers of the tile, from its start, are bin 0. */
template <bool has_reals>
HWY_INLINE Factor asFactor(const Numbers& x, std::size_t reals, std::size_t offset) {
    const Tag d;
    Factor factor;
    for (std::size_t v = 0; v < kVectors; ++v) {
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

HWY_INLINE void multiplyAccumulate(Numbers& sum, const Numbers& h, const Factor& x) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        sum.re[v] = hn::Add(sum.re[v], hn::Sub(hn::Mul(h.re[v], x.re[v]), hn::Mul(h.im[v], x.cross[v])));
        sum.im[v] = hn::Add(sum.im[v], hn::Add(hn::Mul(h.re[v], x.cross[v]), hn::Mul(h.im[v], x.same[v])));
    }
}

/* ---- one step of a tile, for a bank with `rows` rows and `blocks` blocks at once ---- */

template <std::size_t rows>
struct Sums {
    Numbers row[rows];
};

template <std::size_t rows>
struct Place {
    const BankMemory& memory;
    std::size_t tile;
    std::size_t offset;  // in the tile

    float* input(std::size_t slot) const {
        return memory.inputs + (tile * (memory.partitions - 1) + slot) * kTileSpectrumFloats;
    }
    const float* response(std::size_t partition) const {
        return memory.responses + (tile * memory.partitions + partition) * rows * kTileSpectrumFloats;
    }
    float* accumulated(std::size_t row) const {
        return memory.accumulated + (tile * rows + row) * kTileSpectrumFloats;
    }
};

/* Partitions i .. i + count - 1 of the response with as many blocks from the ring. */
template <std::size_t rows, bool has_reals>
HWY_INLINE void accumulateRun(const Place<rows>& place, const float* input, std::size_t i, std::size_t count,
                              Sums<rows>& sums) {
    const float* response = place.response(i);
    for (std::size_t n = 0; n < count; ++n) {
        const Factor x =
            asFactor<has_reals>(loadTile(input, place.offset), place.memory.channels, place.offset);
        for (std::size_t row = 0; row < rows; ++row) {
            multiplyAccumulate(sums.row[row], loadTile(response + row * kTileSpectrumFloats, place.offset),
                               x);
        }
        /* The next ones come from the second level cache, in steps too wide for the processor to foresee. */
        for (std::size_t line = 0; line < kTileSpectrumFloats; line += kTileFloats) {
            hwy::Prefetch(input + kPrefetchDistance * kTileSpectrumFloats + line);
        }
        for (std::size_t line = 0; line < rows * kTileSpectrumFloats; line += kTileFloats) {
            hwy::Prefetch(response + kPrefetchDistance * rows * kTileSpectrumFloats + line);
        }
        input += kTileSpectrumFloats;
        response += rows * kTileSpectrumFloats;
    }
}

template <std::size_t rows, bool has_reals>
HWY_INLINE Sums<rows> olderBlocks(const Place<rows>& place, std::size_t newest) {
    Sums<rows> sums;
    for (Numbers& numbers : sums.row) {
        for (std::size_t v = 0; v < kVectors; ++v) {
            numbers.re[v] = hn::Zero(Tag());
            numbers.im[v] = hn::Zero(Tag());
        }
    }
    const std::size_t slots = place.memory.partitions - 1;
    if (slots == 0) return sums;
    accumulateRun<rows, has_reals>(place, place.input(newest), 1, slots - newest, sums);
    accumulateRun<rows, has_reals>(place, place.input(0), 1 + slots - newest, newest, sums);
    return sums;
}

template <std::size_t rows, bool has_reals>
HWY_INLINE void addNewest(const Place<rows>& place, const Numbers& input, Sums<rows>& sums) {
    const Factor x = asFactor<has_reals>(input, place.memory.channels, place.offset);
    for (std::size_t row = 0; row < rows; ++row) {
        multiplyAccumulate(sums.row[row],
                           loadTile(place.response(0) + row * kTileSpectrumFloats, place.offset), x);
    }
}

template <std::size_t rows>
HWY_INLINE Sums<rows> loadAccumulated(const Place<rows>& place) {
    Sums<rows> sums;
    for (std::size_t row = 0; row < rows; ++row) {
        sums.row[row] = loadTile(place.accumulated(row), place.offset);
    }
    return sums;
}

template <std::size_t rows>
HWY_INLINE void storeAccumulated(const Place<rows>& place, const Sums<rows>& sums) {
    for (std::size_t row = 0; row < rows; ++row) {
        storeTile(sums.row[row], place.accumulated(row), place.offset);
    }
}

/* ---- between tiles and lanes ---- */

/* Lane i of every vector side by side, then lane i + 1. */
template <std::size_t count, class D>
HWY_INLINE void storeInterleaved(D d, const hn::Vec<D> (&v)[count], hn::TFromD<D>* to) {
    static_assert(count == 1 || count == 2 || count == 4);
    if constexpr (count == 1) hn::StoreU(v[0], d, to);
    if constexpr (count == 2) hn::StoreInterleaved2(v[0], v[1], d, to);
    if constexpr (count == 4) hn::StoreInterleaved4(v[0], v[1], v[2], v[3], d, to);
}

/* Out of a plane [bin][block][channel], one of real or of imaginary parts. */
template <std::size_t blocks>
HWY_INLINE void loadLanes(const float* plane, std::size_t k, std::size_t channels, Vector (&x)[blocks]) {
    const Tag d;
    if constexpr (blocks == 1) {
        x[0] = hn::LoadU(d, plane + k);
    } else if (channels == 1) {
        hn::LoadInterleaved2(d, plane + 2 * k, x[0], x[1]);
    } else if constexpr (kHasPairs) {
        hn::Vec<PairTag> a;
        hn::Vec<PairTag> b;
        hn::LoadInterleaved2(PairTag(), reinterpret_cast<const std::uint64_t*>(plane + 2 * k), a, b);
        x[0] = hn::BitCast(d, a);
        x[1] = hn::BitCast(d, b);
    } else {
        const float* const bin = plane + 4 * (k / 2) + k % 2;
        x[0] = hn::LoadU(d, bin);
        x[1] = hn::LoadU(d, bin + 2);
    }
}

/* Into a plane [bin][term][block][ear]. */
template <std::size_t rows, std::size_t blocks>
HWY_INLINE void storeLanes(float* plane, std::size_t k, Ears ears, const Vector (&sums)[blocks][rows]) {
    constexpr std::size_t kCount = rows * blocks;
    const Tag d;
    if (ears == Ears::kRows) {
        Vector v[kCount];
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t row = 0; row < rows; ++row) v[block * rows + row] = sums[block][row];
        }
        storeInterleaved<kCount>(d, v, plane + kCount * k);
    } else if constexpr (kHasPairs) {
        const PairTag pairs;
        hn::Vec<PairTag> v[kCount];
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t row = 0; row < rows; ++row) {
                v[row * blocks + block] = hn::BitCast(pairs, sums[block][row]);
            }
        }
        storeInterleaved<kCount>(pairs, v, reinterpret_cast<std::uint64_t*>(plane + kCount * k));
    } else {
        float* const bin = plane + 2 * kCount * (k / 2) + k % 2;
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t row = 0; row < rows; ++row) {
                hn::StoreU(sums[block][row], d, bin + 2 * (row * blocks + block));
            }
        }
    }
}

template <std::size_t blocks>
HWY_INLINE void loadInputs(const LanePlanes& planes, std::size_t k, std::size_t channels,
                           Numbers (&inputs)[blocks]) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        Vector re[blocks];
        Vector im[blocks];
        loadLanes(planes.re, k + v * kLanes, channels, re);
        loadLanes(planes.im, k + v * kLanes, channels, im);
        for (std::size_t block = 0; block < blocks; ++block) {
            inputs[block].re[v] = re[block];
            inputs[block].im[v] = im[block];
        }
    }
}

template <std::size_t rows, std::size_t blocks>
HWY_INLINE void storeOutputs(const LanePlanes& planes, std::size_t k, Ears ears,
                             const Sums<rows> (&sums)[blocks]) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        Vector re[blocks][rows];
        Vector im[blocks][rows];
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t row = 0; row < rows; ++row) {
                re[block][row] = sums[block].row[row].re[v];
                im[block][row] = sums[block].row[row].im[v];
            }
        }
        storeLanes(planes.re, k + v * kLanes, ears, re);
        storeLanes(planes.im, k + v * kLanes, ears, im);
    }
}

/* ---- what a call does with a step of a tile ---- */

struct OneBlock {
    std::size_t newest;
    bool is_new;
    bool is_finished;

    template <std::size_t rows, bool has_reals>
    HWY_INLINE void step(const Place<rows>& place, Ears ears, const LanePlanes& in,
                         const LanePlanes& out) const {
        const std::size_t k = place.tile * kTileFloats + place.offset;
        Numbers inputs[1];
        loadInputs(in, k, place.memory.channels, inputs);
        Sums<rows> sums[1];
        if (is_new) {
            sums[0] = olderBlocks<rows, has_reals>(place, newest);
            storeAccumulated(place, sums[0]);
        } else {
            sums[0] = loadAccumulated(place);
        }
        addNewest<rows, has_reals>(place, inputs[0], sums[0]);
        storeOutputs(out, k, ears, sums);
        const std::size_t slots = place.memory.partitions - 1;
        if (is_finished && slots > 0)
            storeTile(inputs[0], place.input(slotBefore(newest, slots)), place.offset);
    }
};

struct TwoBlocks {
    std::size_t newest;

    template <std::size_t rows, bool has_reals>
    HWY_INLINE void step(const Place<rows>& place, Ears ears, const LanePlanes& in,
                         const LanePlanes& out) const {
        const std::size_t k = place.tile * kTileFloats + place.offset;
        const std::size_t slots = place.memory.partitions - 1;
        Numbers inputs[2];
        loadInputs(in, k, place.memory.channels, inputs);
        Sums<rows> sums[2];
        sums[0] = loadAccumulated(place);
        addNewest<rows, has_reals>(place, inputs[0], sums[0]);
        const std::size_t slot = slots > 0 ? slotBefore(newest, slots) : 0;
        if (slots > 0) storeTile(inputs[0], place.input(slot), place.offset);
        sums[1] = olderBlocks<rows, has_reals>(place, slot);
        storeAccumulated(place, sums[1]);
        addNewest<rows, has_reals>(place, inputs[1], sums[1]);
        storeOutputs(out, k, ears, sums);
    }
};

template <std::size_t rows, bool has_reals, class Call>
HWY_INLINE void forTile(const Call& call, const BankMemory& memory, std::size_t tile, Ears ears,
                        const LanePlanes& in, const LanePlanes& out) {
    for (std::size_t offset = 0; offset < kTileFloats; offset += kStep) {
        call.template step<rows, has_reals>(Place<rows>{memory, tile, offset}, ears, in, out);
    }
}

template <std::size_t rows, class Call>
void forTiles(const Call& call, const BankMemory& memory, Ears ears, const LanePlanes& in,
              const LanePlanes& out) {
    forTile<rows, true>(call, memory, 0, ears, in, out);
    for (std::size_t tile = 1; tile < memory.tiles; ++tile)
        forTile<rows, false>(call, memory, tile, ears, in, out);
}

void oneBlock(const BankMemory& memory, Ears ears, std::size_t newest, bool is_new, bool is_finished,
              const LanePlanes& in, const LanePlanes& out) {
    const OneBlock call = {newest, is_new, is_finished};
    if (memory.rows == 1) return forTiles<1>(call, memory, ears, in, out);
    forTiles<2>(call, memory, ears, in, out);
}

void twoBlocks(const BankMemory& memory, Ears ears, std::size_t newest, const LanePlanes& in,
               const LanePlanes& out) {
    const TwoBlocks call = {newest};
    if (memory.rows == 1) return forTiles<1>(call, memory, ears, in, out);
    forTiles<2>(call, memory, ears, in, out);
}

const BankArithmetic* arithmetic() {
    static constexpr BankArithmetic kArithmetic = {oneBlock, twoBlocks};
    return &kArithmetic;
}

}  // namespace fftconvolver::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fftconvolver {
namespace {
HWY_EXPORT(arithmetic);
}  // namespace

const BankArithmetic& bankArithmetic() {
    return *HWY_DYNAMIC_DISPATCH(arithmetic)();
}

}  // namespace fftconvolver
#endif
