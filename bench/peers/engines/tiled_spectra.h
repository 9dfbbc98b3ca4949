// Sums of spectral products for the float engine; see float_engine.h.
//
// A tile holds 16 neighbouring bins, real parts then imaginary parts. Tiles of the lowest bins come first:
//
//   X  [tile][channel][slot]             slot: a ring of blocks, stored twice to keep each history contiguous
//   H  [tile][channel][partition][ear]
//   Y  [tile][ear]
#pragma once

#include <cstddef>

namespace compare {

inline constexpr std::size_t kTileBins = 16;

struct alignas(64) Tile {
    float re[kTileBins];
    float im[kTileBins];
};

/** Computes Y = sum over channels and partitions of X * H for all tiles.
 *  @param newest slot of the newest block; partition p multiplies slot newest + p */
void sumOfProducts(const Tile* x, const Tile* h, std::size_t tiles, std::size_t channels,
                   std::size_t partitions, std::size_t newest, Tile* y);

}  // namespace compare
