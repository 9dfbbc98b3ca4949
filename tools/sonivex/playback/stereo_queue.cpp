#include "stereo_queue.h"

#include <algorithm>

namespace sonivex_tool {
namespace {

constexpr int kChannels = 2;

}  // namespace

void StereoQueue::append(const AVFrame& frame) {
    const auto* samples = reinterpret_cast<const float*>(frame.extended_data[0]);
    samples_.insert(samples_.end(), samples, samples + static_cast<ptrdiff_t>(frame.nb_samples) * kChannels);
}

void StereoQueue::dropBefore(int64_t position) {
    const int64_t dropped = std::clamp<int64_t>(position - begin_, 0, end() - begin_);
    samples_.erase(samples_.begin(), samples_.begin() + dropped * kChannels);
    begin_ += dropped;
}

void StereoQueue::read(int64_t position, float* samples, int frames) const {
    std::fill_n(samples, static_cast<ptrdiff_t>(frames) * kChannels, 0.0F);
    const int64_t first = std::max(position, begin_);
    const int64_t last = std::min(position + frames, end());
    if (first >= last) return;
    std::copy(samples_.begin() + (first - begin_) * kChannels, samples_.begin() + (last - begin_) * kChannels,
              samples + (first - position) * kChannels);
}

}  // namespace sonivex_tool
