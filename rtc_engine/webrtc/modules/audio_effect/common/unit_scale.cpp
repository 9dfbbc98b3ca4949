#define HWY_TARGET_INCLUDE "unit_scale.cpp"
#include "compile_for_each_target.h"

#include "unit_scale.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Selects for each lane the full scale of its half of the range.
template <class D>
HWY_INLINE hn::Vec<D> fullScale(D d, hn::Vec<D> sample) {
    return hn::IfThenElse(hn::Lt(sample, hn::Zero(d)), hn::Set(d, kNegativeFullScale),
                          hn::Set(d, kPositiveFullScale));
}

void int16ToUnitScale(const std::int16_t* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const hn::Rebind<std::int16_t, decltype(d)> d16;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sample = hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(d16, in + i)));
        hn::StoreU(hn::Div(sample, fullScale(d, sample)), d, out + i);
    }
    for (; i < count; ++i) out[i] = unitScaleOf(in[i]);
}

void unitScaleToInt16Units(const float* in, int count, float* out) {
    const hn::ScalableTag<float> d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sample = hn::LoadU(d, in + i);
        hn::StoreU(hn::Mul(sample, fullScale(d, sample)), d, out + i);
    }
    for (; i < count; ++i) out[i] = int16UnitsOf(in[i]);
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {

HWY_EXPORT(int16ToUnitScale);
HWY_EXPORT(unitScaleToInt16Units);

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
        } else {  // NaN: casting it would be undefined
            out[i] = 0;
        }
    }
}

}  // namespace sonivex
#endif
