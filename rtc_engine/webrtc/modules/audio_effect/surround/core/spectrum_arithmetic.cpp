#include "spectrum_arithmetic.h"

#include <cassert>

#include "float_rules.h"

namespace fftconvolver {
namespace {

void multiplyAccumulate(float* __restrict re, float* __restrict im, const float* a_re, const float* a_im,
                        const float* b_re, const float* b_im, std::size_t bins) {
    for (std::size_t i = 0; i < bins; ++i) {
        re[i] += a_re[i] * b_re[i] - a_im[i] * b_im[i];
        im[i] += a_re[i] * b_im[i] + a_im[i] * b_re[i];
    }
}

}  // namespace

void Sum(float* result, const float* a, const float* b, std::size_t len) {
    for (std::size_t i = 0; i < len; ++i) result[i] = a[i] + b[i];
}

void ComplexMultiplyAccumulate(SplitComplex& result, const SplitComplex& a, const SplitComplex& b) {
    assert(a.size() >= result.size() && b.size() >= result.size());
    multiplyAccumulate(result.re(), result.im(), a.re(), a.im(), b.re(), b.im(), result.size());
}

}  // namespace fftconvolver
