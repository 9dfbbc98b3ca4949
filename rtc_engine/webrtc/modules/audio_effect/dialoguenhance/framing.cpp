#define HWY_TARGET_INCLUDE "framing.cpp"
#include "compile_for_each_target.h"

#include <cstddef>

#include "float_rules.h"
#include "framing.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr float kOverlapDivisor = 1.5F;

void splitStereo(const float* in, int frames, float* left, float* right) {
    const hn::ScalableTag<float> d;
    const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(d));
    std::ptrdiff_t i = 0;
    for (; i + lanes <= frames; i += lanes) {
        hn::Vec<decltype(d)> l;
        hn::Vec<decltype(d)> r;
        hn::LoadInterleaved2(d, in + 2 * i, l, r);
        hn::StoreU(l, d, left + i);
        hn::StoreU(r, d, right + i);
    }
    for (; i < frames; ++i) {
        left[i] = in[2 * i];
        right[i] = in[2 * i + 1];
    }
}

void applyWindow(const float* in, const float* window, int count, float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(hn::Mul(hn::LoadU(d, in + i), hn::LoadU(d, window + i)), d, out + i);
    }
    for (; i < count; ++i) out[i] = in[i] * window[i];
}

void startOverlap(const float* frame, const float* window, int count, float* sum) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto product = hn::Mul(hn::LoadU(d, frame + i), hn::LoadU(d, window + i));
        hn::StoreU(hn::Add(hn::Zero(d), product), d, sum + i);
    }
    for (; i < count; ++i) sum[i] = 0.0F + frame[i] * window[i];
}

void overlapAdd(const float* frame, const float* window, int count, float* sum) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto product = hn::Mul(hn::LoadU(d, frame + i), hn::LoadU(d, window + i));
        hn::StoreU(hn::Add(hn::LoadU(d, sum + i), product), d, sum + i);
    }
    for (; i < count; ++i) sum[i] += frame[i] * window[i];
}

void emitStereo(const float* left, const float* right, int frames, float* out) {
    const hn::ScalableTag<float> d;
    const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(d));
    const auto divisor = hn::Set(d, kOverlapDivisor);
    std::ptrdiff_t i = 0;
    for (; i + lanes <= frames; i += lanes) {
        hn::StoreInterleaved2(hn::Div(hn::LoadU(d, left + i), divisor),
                              hn::Div(hn::LoadU(d, right + i), divisor), d, out + 2 * i);
    }
    for (; i < frames; ++i) {
        out[2 * i] = left[i] / kOverlapDivisor;
        out[2 * i + 1] = right[i] / kOverlapDivisor;
    }
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <cmath>
#include <numbers>

namespace sonivex {

HWY_EXPORT(applyWindow);
HWY_EXPORT(emitStereo);
HWY_EXPORT(overlapAdd);
HWY_EXPORT(splitStereo);
HWY_EXPORT(startOverlap);

void makeSineWindow(int points, float* window) {
    for (int i = 0; i < points - 1; ++i) {
        window[i] = static_cast<float>(std::sin(std::numbers::pi * i / (points - 1)));
    }
    window[points - 1] = 0.0F;  // the sine of the rounded pi is 1.2e-16
}

void splitStereo(const float* in, int frames, float* left, float* right) {
    HWY_DYNAMIC_DISPATCH(splitStereo)(in, frames, left, right);
}

void applyWindow(const float* in, const float* window, int count, float* out) {
    HWY_DYNAMIC_DISPATCH(applyWindow)(in, window, count, out);
}

void startOverlap(const float* frame, const float* window, int count, float* sum) {
    HWY_DYNAMIC_DISPATCH(startOverlap)(frame, window, count, sum);
}

void overlapAdd(const float* frame, const float* window, int count, float* sum) {
    HWY_DYNAMIC_DISPATCH(overlapAdd)(frame, window, count, sum);
}

void emitStereo(const float* left, const float* right, int frames, float* out) {
    HWY_DYNAMIC_DISPATCH(emitStereo)(left, right, frames, out);
}

}  // namespace sonivex
#endif
