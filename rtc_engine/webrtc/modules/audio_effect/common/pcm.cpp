#include "pcm.h"

#include <algorithm>
#include <cmath>

namespace sonivex {

void int16ToFloat(const std::int16_t* in, int count, float* out) {
    for (int i = 0; i < count; ++i) out[i] = static_cast<float>(in[i]);
}

void floatToInt16(const float* in, int count, std::int16_t* out) {
    for (int i = 0; i < count; ++i) out[i] = truncateToInt16(in[i]);
}

int largestMagnitude(const std::int16_t* in, int count) {
    int largest = 0;
    for (int i = 0; i < count; ++i) {
        const int sample = in[i];
        largest = std::max(largest, sample < 0 ? -sample : sample);
    }
    return largest;
}

float largestMagnitude(const float* in, int count) {
    float largest = 0.0F;
    for (int i = 0; i < count; ++i) {
        const float magnitude = std::fabs(in[i]);
        largest = magnitude > largest ? magnitude : largest;
    }
    return largest;
}

}  // namespace sonivex
