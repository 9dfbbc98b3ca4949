#include "framing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "float_rules.h"

namespace sonivex {
namespace {

constexpr float kOverlapDivisor = 1.5F;

}  // namespace

void makeSineWindow(int points, float* window) {
    for (int i = 0; i < points - 1; ++i) {
        window[i] = static_cast<float>(std::sin(std::numbers::pi * i / (points - 1)));
    }
    window[points - 1] = 0.0F;  // the sine of pi as it is rounded is 1.2e-16
}

void splitStereo(const float* in, int frames, float* left, float* right) {
    for (std::ptrdiff_t i = 0; i < frames; ++i) {
        left[i] = in[2 * i];
        right[i] = in[2 * i + 1];
    }
}

void appendHop(const float* samples, int hop, float* buffer, int points) {
    std::copy(buffer + hop, buffer + points, buffer);
    std::copy_n(samples, hop, buffer + points - hop);
}

void appendSilence(int hop, float* buffer, int points) {
    std::copy(buffer + hop, buffer + points, buffer);
    std::fill_n(buffer + points - hop, hop, 0.0F);
}

void applyWindow(const float* in, const float* window, int points, float* out) {
    for (int i = 0; i < points; ++i) out[i] = in[i] * window[i];
}

void overlapAdd(const float* frame, const float* window, int points, float* out) {
    for (int i = 0; i < points; ++i) out[i] += frame[i] * window[i];
}

void emitStereo(const float* left, const float* right, int frames, float* out) {
    for (std::ptrdiff_t i = 0; i < frames; ++i) {
        out[2 * i] = left[i] / kOverlapDivisor;
        out[2 * i + 1] = right[i] / kOverlapDivisor;
    }
}

}  // namespace sonivex
