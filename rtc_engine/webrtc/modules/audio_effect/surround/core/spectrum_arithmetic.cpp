/* Compiled once for every set of vector instructions; the best one of the processor is taken at run time. */
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "spectrum_arithmetic.cpp"
#include "vector_targets.h"
/* vector_targets.h comes first. */
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "float_rules.h"
#include "spectrum_arithmetic.h"

HWY_BEFORE_NAMESPACE();
namespace fftconvolver::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void sum(float* result, const float* a, const float* b, std::size_t len) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= len; i += lanes) {
        hn::StoreU(hn::Add(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, result + i);
    }
    for (; i < len; ++i) result[i] = a[i] + b[i];
}

}  // namespace fftconvolver::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <cassert>

namespace fftconvolver {
namespace {

HWY_EXPORT(sum);

void multiplyAccumulate(float* __restrict re, float* __restrict im, const float* a_re, const float* a_im,
                        const float* b_re, const float* b_im, std::size_t bins) {
    for (std::size_t i = 0; i < bins; ++i) {
        re[i] += a_re[i] * b_re[i] - a_im[i] * b_im[i];
        im[i] += a_re[i] * b_im[i] + a_im[i] * b_re[i];
    }
}

}  // namespace

void Sum(float* result, const float* a, const float* b, std::size_t len) {
    HWY_DYNAMIC_DISPATCH(sum)(result, a, b, len);
}

void ComplexMultiplyAccumulate(SplitComplex& result, const SplitComplex& a, const SplitComplex& b) {
    assert(a.size() >= result.size() && b.size() >= result.size());
    multiplyAccumulate(result.re(), result.im(), a.re(), a.im(), b.re(), b.im(), result.size());
}

}  // namespace fftconvolver
#endif
