/* Compiled once for every set of vector instructions; the best one of the processor is taken at run time. */
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "unit_scale.cpp"
#include "vector_targets.h"
/* vector_targets.h comes first. */
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "float_rules.h"
#include "unit_scale.h"

#ifndef SONIVEX_UNIT_SCALE_ONCE
#define SONIVEX_UNIT_SCALE_ONCE
namespace sonivex {

inline constexpr float kNegativeFullScale = 32768.0F;
inline constexpr float kPositiveFullScale = 32767.0F;

inline float fullScaleOf(float sample) {
    return sample < 0.0F ? kNegativeFullScale : kPositiveFullScale;
}

}  // namespace sonivex
#endif

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class D>
HWY_INLINE hn::Vec<D> fullScales(D d, hn::Vec<D> samples) {
    return hn::IfThenElse(hn::Lt(samples, hn::Zero(d)), hn::Set(d, kNegativeFullScale),
                          hn::Set(d, kPositiveFullScale));
}

/* A division: the product with 1 / 32767 is another float for 768 values. */
void int16ToUnitScale(const std::int16_t* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const hn::Rebind<std::int16_t, decltype(d)> d16;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto samples = hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(d16, in + i)));
        hn::StoreU(hn::Div(samples, fullScales(d, samples)), d, out + i);
    }
    for (; i < count; ++i) {
        const auto sample = static_cast<float>(in[i]);
        out[i] = sample / fullScaleOf(sample);
    }
}

void unitScaleToInt16Units(const float* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto samples = hn::LoadU(d, in + i);
        hn::StoreU(hn::Mul(samples, fullScales(d, samples)), d, out + i);
    }
    for (; i < count; ++i) out[i] = in[i] * fullScaleOf(in[i]);
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {
namespace {

HWY_EXPORT(int16ToUnitScale);
HWY_EXPORT(unitScaleToInt16Units);

}  // namespace

void int16ToUnitScale(const std::int16_t* in, int count, float* out) {
    HWY_DYNAMIC_DISPATCH(int16ToUnitScale)(in, count, out);
}

void unitScaleToInt16Units(const float* in, int count, float* out) {
    HWY_DYNAMIC_DISPATCH(unitScaleToInt16Units)(in, count, out);
}

void clipToInt16(float* samples, int count, std::int16_t* out) {
    for (int i = 0; i < count; ++i) {
        float& sample = samples[i];
        if (sample > 1.0F) {
            sample = 1.0F;
            out[i] = 32767;
        } else if (sample < -1.0F) {
            sample = -1.0F;
            out[i] = -32768;
        } else if (sample < 0.0F) {
            out[i] = static_cast<std::int16_t>(sample * kNegativeFullScale);
        } else if (sample >= 0.0F) {
            out[i] = static_cast<std::int16_t>(sample * kPositiveFullScale);
        } else {  // NaN, of which a cast would be undefined
            out[i] = 0;
        }
    }
}

}  // namespace sonivex
#endif
