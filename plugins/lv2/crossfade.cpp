#include "crossfade.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sonivex_lv2 {

Crossfade::Crossfade(int length_frames)
    : weights_(static_cast<std::size_t>(length_frames)), position_(weights_.size()) {
    for (std::size_t i = 0; i < weights_.size(); ++i) {
        const double phase =
            std::numbers::pi * (static_cast<double>(i) + 0.5) / static_cast<double>(length_frames);
        weights_[i] = static_cast<float>(0.5 - 0.5 * std::cos(phase));
    }
}

void Crossfade::mixInto(Planes to, ConstPlanes from, int channels, int frames) {
    const std::size_t mixed = std::min(weights_.size() - position_, static_cast<std::size_t>(frames));
    const float* const weight = weights_.data() + position_;
    for (int channel = 0; channel < channels; ++channel) {
        for (std::size_t i = 0; i < mixed; ++i) {
            to[channel][i] = from[channel][i] + (to[channel][i] - from[channel][i]) * weight[i];
        }
    }
    position_ += mixed;
}

}  // namespace sonivex_lv2
