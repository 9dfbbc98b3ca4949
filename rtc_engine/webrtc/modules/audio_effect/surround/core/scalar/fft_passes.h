// The arithmetic of the scalar Fourier transform (audiofft.h), in place on doubles, without state or memory
// of its own. The transform that ships (transform/lane_transform.h) matches it bit for bit.
//
//   Z[k] = sum z[j] e^(+2 pi i jk / N),  N points, a power of two, complex numbers as (re, im) pairs
//
// Evaluating a polynomial at all N-th roots of unity means taking remainders: a polynomial modulo z^4M - t^4
// has four remainders, modulo z^M - t, z^M + t, z^M - it and z^M + it. A tree of such steps, from z^N - 1
// down, ends with the values in bit-reversed order, and the t of a step is the same for a whole block. The
// transform is symmetric, so the tree also works backwards. The points come first, in bit-reversed order. The
// steps with M = 1, 4, 16, .. and the transposed butterfly follow. The values come out in natural order:
//
//   reversePointOrder; radix4Pass with distances 1, 4, .., N/4 (N a power of four)
//                      radix4Pass with distances 1, 4, .., N/8, then radix2LastPass (twice a power of four)
//
//   block k of a pass, from its four quarters v0..v3:       t = t(k) = e^(i pi/2 * r(k)),
//     x0 =    v0 + v1 +  (v2 + v3)                          r(k) = k's binary digits mirrored at the point,
//     x1 = t  (v0 - v1 + i(v2 - v3))                               0 <= r < 1
//     x2 = t2 (v0 + v1 -  (v2 + v3))
//     x3 = t3 (v0 - v1 - i(v2 - v3))
//
// The scalar loops here define the bits: every complex product is
//
//   re = a.re*b.re - a.im*b.im,   im = a.re*b.im + a.im*b.re
//
// and nothing is fused. The difference is written as a sum with one factor negated, which is the same number:
// where a difference of products stands beside a sum of products, GCC 12 fuses them whatever it is told. A
// vector variant does the same for each element.
#pragma once

#include <cstddef>

namespace audiofft::details {

/** The sign of i in the formulas above. */
enum class Turn { kForward, kBackward };

/** Runs one radix-4 pass over blocks of 4 * distance points, in place.
 *  @param points   [count] complex numbers; count is a power of two and a multiple of 4 * distance.
 *  @param distance points between the legs of a butterfly.
 *  @param roots    e^(i pi/4 * r(j)) as (cos, sin) for j = 0 .. count / (8 * distance) - 1, in either
 *                  direction; not read if the pass has at most two blocks.
 *  [any, concurrent] real-time safe */
void radix4Pass(double* points, std::size_t count, std::size_t distance, const double* roots, Turn turn);

/** Runs the last pass if count is not a power of four: sums and differences of the two halves, in place.
 *  @param points [count] complex numbers.
 *  [any, concurrent] real-time safe */
void radix2LastPass(double* points, std::size_t count);

// A real signal x of n samples is transformed as the n/2 complex numbers x[2j] + i x[2j+1], with spectrum Z.
// The spectrum of x itself, X[k] = sum x[j] e^(+2 pi i jk / n), follows for k and m = n/2 - k together:
//
//   y = (1/2 - sin/2 + i cos/2) (Z[k] - conj Z[m]),  angle 2 pi k / n
//   X[k] = Z[k] - y,  X[m] = Z[m] + conj y
//
// X[0] and X[n/2] are real and share the first pair. The way back is the same with -i.
//
//   half_cosines  cos(j * 2 pi / n) / 2 for j = 0 .. n/4 - 1; read from the other end, they are the sines.

/** Turns Z into X, in place on n doubles, n >= 4. [any, concurrent] real-time safe */
void spectrumOfPairsToReal(double* spectrum, std::size_t n, const double* half_cosines);

/** Turns X into Z: undoes spectrumOfPairsToReal. [any, concurrent] real-time safe */
void spectrumOfRealToPairs(double* spectrum, std::size_t n, const double* half_cosines);

}  // namespace audiofft::details
