// Constants of the transform in lanes for one length, in the order in which it needs them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonivex {

/** t, t2 and t3 of a block of a pass with e^(+i), see fft_passes.h; the other direction has their conjugates.
 */
struct BlockRoots {
    double re[3];
    double im[3];
};

struct PairFactor {
    double re;
    double im;
};

/** Roots, factors and the order of points, ready to be used. They are only read after construction. */
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

}  // namespace sonivex
