/* Constants of the real transform of one length: roots of unity, half cosines and the order of the points.
 * The formulas they belong to are in fft_passes.h. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft_passes.h"

namespace audiofft::details {

/** e^(i pi/4 * j / (doubles / 2)) as (cos, sin) pairs in bit-reversed order.
 *  @param table   [doubles], overwritten.
 *  @param doubles a power of two, at least 2.
 *  @param offsets work area of sqrt(doubles / 2) ints, overwritten. */
void makeRoots(double* table, int doubles, int* offsets);

/** cos(pi/2 * j / count) / 2 for j = 0 .. count - 1; count is a power of two. */
void makeHalfCosines(double* table, int count);

struct PairFactor {
    double re;
    double im;
};

/** What the passes of a transform look up, ready to be used. Only read after construction. */
class TransformTables {
  public:
    /** @param samples length of the real signal, a power of two and at least 2.
     *  Throws std::bad_alloc when memory runs out. */
    explicit TransformTables(std::size_t samples);

    std::size_t samples() const { return 2 * points_; }
    /** Points of the complex transform. */
    std::size_t points() const { return points_; }
    /** Of the blocks of the first pass, [points / 4]; later passes have fewer and use the first ones. */
    const BlockRoots* blockRoots() const { return block_roots_.data(); }
    /** Factor of the difference between bins k and points - k, for k = 1 .. points / 2 - 1 (entry 0 is not
     *  used): 1/2 - sin/2 + i cos/2 of 2 pi k / samples. None for fewer than four points. */
    const PairFactor* pairFactors() const { return pair_factors_.data(); }
    /** Which point a block of the first pass starts with: [points / 4], its own inverse. */
    const std::uint32_t* blockOrder() const { return block_order_.data(); }

  private:
    std::size_t points_;
    std::vector<BlockRoots> block_roots_;
    std::vector<PairFactor> pair_factors_;
    std::vector<std::uint32_t> block_order_;
};

}  // namespace audiofft::details
