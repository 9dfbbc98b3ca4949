// Element by element arithmetic of the scalar convolvers (fftconvolver.h), on floats: part of the definition
// of right, which the shipped products (convolution/) are held to. Every result is rounded after every
// operation and nothing is fused, so a vector variant that does the same gives the same bits. Real-time safe.
#pragma once

#include <cstddef>

#include "buffer.h"

namespace fftconvolver {

/** result[i] = a[i] + b[i]. `result` may be `a` or `b`. */
void Sum(float* result, const float* a, const float* b, std::size_t len);

/** result[i] += a[i] * b[i], complex:
 *    re += a.re * b.re - a.im * b.im,  im += a.re * b.im + a.im * b.re
 *  a and b hold at least as many bins as `result`, and `result` is neither of them. */
void ComplexMultiplyAccumulate(SplitComplex& result, const SplitComplex& a, const SplitComplex& b);

}  // namespace fftconvolver
