#include "unit_scale.h"

#include "float_rules.h"

namespace sonivex {
namespace {

constexpr float kNegativeFullScale = 32768.0F;
constexpr float kPositiveFullScale = 32767.0F;

}  // namespace

void int16ToUnitScale(const std::int16_t* in, int count, float* out) {
    /* A division: the product with 1 / 32767 is another float for 768 values. */
    for (int i = 0; i < count; ++i) {
        const float full_scale = in[i] < 0 ? kNegativeFullScale : kPositiveFullScale;
        out[i] = static_cast<float>(in[i]) / full_scale;
    }
}

void unitScaleToInt16Units(const float* in, int count, float* out) {
    for (int i = 0; i < count; ++i) {
        const float full_scale = in[i] < 0.0F ? kNegativeFullScale : kPositiveFullScale;
        out[i] = in[i] * full_scale;
    }
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
