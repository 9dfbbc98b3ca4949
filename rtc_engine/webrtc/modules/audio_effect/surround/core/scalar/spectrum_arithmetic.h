// Element-wise arithmetic of the scalar convolvers (fftconvolver.h), on floats: part of the scalar reference,
// which the shipped kernels (convolution/) match bit for bit. Every result is rounded after every operation
// and nothing is fused, so a vector variant that does the same gives the same bits.
#pragma once

#include <cstddef>

#include "buffer.h"

namespace fftconvolver {

/** result[i] = a[i] + b[i] for [len] floats. `result` may be `a` or `b`. [any, concurrent] real-time safe */
void Sum(float* result, const float* a, const float* b, std::size_t len);

/** result[i] += a[i] * b[i], complex:
 *    re += a.re * b.re - a.im * b.im,  im += a.re * b.im + a.im * b.re
 *  `a` and `b` hold at least as many bins as `result`, and `result` is neither of them.
 *  [any, concurrent] real-time safe */
void ComplexMultiplyAccumulate(SplitComplex& result, const SplitComplex& a, const SplitComplex& b);

}  // namespace fftconvolver
