#include "spectrum_arithmetic.h"

#include <cassert>

#include "float_rules.h"

namespace fftconvolver {

void Sum(float* result, const float* a, const float* b, std::size_t len) {
    for (std::size_t i = 0; i < len; ++i) result[i] = a[i] + b[i];
}

void ComplexMultiplyAccumulate(SplitComplex& result, const SplitComplex& a, const SplitComplex& b) {
    assert(a.size() >= result.size() && b.size() >= result.size());
    float* __restrict const re = result.re();
    float* __restrict const im = result.im();
    for (std::size_t i = 0; i < result.size(); ++i) {
        re[i] += a.re()[i] * b.re()[i] - a.im()[i] * b.im()[i];
        im[i] += a.re()[i] * b.im()[i] + a.im()[i] * b.re()[i];
    }
}

}  // namespace fftconvolver
