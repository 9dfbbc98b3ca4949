// Constants of the lane transform (lane_transform.h) for one length, in the order in which it reads them.
//
// Use: const TransformTables tables(512); one object serves any number of threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonivex {

/** t, t2 and t3 of one block of a pass with e^(+i), see fft_passes.h. The other direction uses their
 *  conjugates. */
struct BlockRoots {
    double re[3];
    double im[3];
};

/** An entry of TransformTables::pairFactors. */
struct PairFactor {
    double re;
    double im;
};

/** Roots, factors and the order of points. The object is read-only after construction and owns its tables,
 *  which are empty for fewer than four points. */
class TransformTables {
  public:
    /** @param samples length of the real signal, a power of two and at least 2.
     *  Throws std::bad_alloc when memory runs out. [any] not real-time safe: allocates */
    explicit TransformTables(std::size_t samples);

    /** Length of the real signal. [any, concurrent] real-time safe */
    std::size_t samples() const { return 2 * points_; }
    /** Points of the complex transform: half the samples. [any, concurrent] real-time safe */
    std::size_t points() const { return points_; }
    /** Roots of the blocks of the first pass, [points / 4]. Later passes have fewer blocks and use the first
     *  entries. [any, concurrent] real-time safe */
    const BlockRoots* blockRoots() const { return block_roots_.data(); }
    /** Factors of the differences between bins k and points - k, for k = 1 .. points / 2 - 1 (entry 0 is
     *  unused): 1/2 - sin/2 + i cos/2 of the angle 2 pi k / samples. [any, concurrent] real-time safe */
    const PairFactor* pairFactors() const { return pair_factors_.data(); }
    /** First point of each block of the first pass: [points / 4], a permutation that is its own inverse.
     *  [any, concurrent] real-time safe */
    const std::uint32_t* blockOrder() const { return block_order_.data(); }

  private:
    std::size_t points_;
    std::vector<BlockRoots> block_roots_;
    std::vector<PairFactor> pair_factors_;
    std::vector<std::uint32_t> block_order_;
};

}  // namespace sonivex
