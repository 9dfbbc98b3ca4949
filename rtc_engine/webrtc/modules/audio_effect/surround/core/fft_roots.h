// The constants of the scalar Fourier transform (audiofft.h), which is the definition of right and does not
// ship, and the order of its points.
//
//   t(k) = e^(i pi/2 * r(k)),  r(k) = k's binary digits mirrored at the point, 0 <= r < 1
//
// The formulas are in fft_passes.h.
#pragma once

#include <cstddef>

namespace audiofft::details {

/** Put point k at the place of its index with the binary digits in reverse.
 *  @param points  [count] complex numbers.
 *  @param count   a power of two.
 *  @param offsets work area of sqrt(count) ints, overwritten. */
void reversePointOrder(double* points, std::size_t count, int* offsets);

/** e^(i pi/4 * j / (doubles / 2)) as (cos, sin) pairs in bit-reversed order.
 *  @param table   [doubles], overwritten.
 *  @param doubles a power of two, at least 2.
 *  @param offsets work area of sqrt(doubles / 2) ints, overwritten. */
void makeRoots(double* table, int doubles, int* offsets);

/** cos(pi/2 * j / count) / 2 for j = 0 .. count - 1; count is a power of two. */
void makeHalfCosines(double* table, int count);

/** t, t2 and t3 of a block of a pass with e^(+i); the other direction has their conjugates. */
struct BlockRoots {
    double re[3];
    double im[3];
};

/** @param roots of makeRoots, for j = 0 .. block / 2; not read for blocks 0 and 1. */
BlockRoots rootsOfBlock(const double* roots, std::size_t block);

}  // namespace audiofft::details
