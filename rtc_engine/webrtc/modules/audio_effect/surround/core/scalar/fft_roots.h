// The constants of the scalar Fourier transform (audiofft.h), and the order of its points. That transform is
// the reference and does not ship.
//
//   t(k) = e^(i pi/2 * r(k)),  r(k) = k's binary digits mirrored at the point, 0 <= r < 1
//
// The formulas are in fft_passes.h.
#pragma once

#include <cstddef>

namespace audiofft::details {

/** Moves point k to the index whose binary digits are those of k in reverse.
 *  @param points  [count] complex numbers.
 *  @param count   a power of two.
 *  @param offsets work area of sqrt(count) ints, overwritten.
 *  [any, concurrent] real-time safe */
void reversePointOrder(double* points, std::size_t count, int* offsets);

/** Writes e^(i pi/4 * j / (doubles / 2)) as (cos, sin) pairs in bit-reversed order.
 *  @param table   [doubles], overwritten.
 *  @param doubles a power of two, at least 2.
 *  @param offsets work area of sqrt(doubles / 2) ints, overwritten.
 *  [any, concurrent] real-time safe */
void makeRoots(double* table, int doubles, int* offsets);

/** Writes cos(pi/2 * j / count) / 2 for j = 0 .. count - 1; count is a power of two.
 *  [any, concurrent] real-time safe */
void makeHalfCosines(double* table, int count);

/** t, t2 and t3 of one block of a pass with e^(+i). The other direction uses their conjugates. */
struct BlockRoots {
    double re[3];
    double im[3];
};

/** Returns the roots of one block.
 *  @param roots table of makeRoots, at least for j = 0 .. block / 2; not read for blocks 0 and 1.
 *  [any, concurrent] real-time safe */
BlockRoots rootsOfBlock(const double* roots, std::size_t block);

}  // namespace audiofft::details
