#include "waveform.h"

#include <algorithm>

namespace sonivex_tool {

void WaveformMeter::halve() {
    const std::size_t count = extents_.size() / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const Extent& one = extents_[2 * i];
        const Extent& other = extents_[2 * i + 1];
        extents_[i] = {std::min(one.low, other.low), std::max(one.high, other.high)};
    }
    extents_.resize(count);
    stretch_frames_ *= 2;
    in_last_ = stretch_frames_;
}

void WaveformMeter::add(std::span<const float> samples, int channels) {
    const auto width = static_cast<std::size_t>(channels);
    for (std::size_t first = 0; first + width <= samples.size(); first += width) {
        const auto frame = samples.subspan(first, width);
        const auto [low, high] = std::minmax_element(frame.begin(), frame.end());
        if (extents_.empty() || in_last_ == stretch_frames_) {
            if (extents_.size() == most_stretches_) halve();
            extents_.push_back({*low, *high});
            in_last_ = 1;
            continue;
        }
        Extent& last = extents_.back();
        last = {std::min(last.low, *low), std::max(last.high, *high)};
        ++in_last_;
    }
}

}  // namespace sonivex_tool
