#include "peak_hold.h"

#include <algorithm>
#include <cmath>

namespace sonivex_tool {

void PeakHold::add(const float* samples, int frames) {
    for (int i = 0; i < frames; ++i) {
        peaks_[part_] = std::max({peaks_[part_], std::abs(samples[0]), std::abs(samples[1])});
        samples += 2;
        if (++frames_in_part_ < part_frames_) continue;
        frames_in_part_ = 0;
        part_ = (part_ + 1) % peaks_.size();
        peaks_[part_] = 0.0F;
    }
}

std::optional<double> PeakHold::peak_dbfs() const {
    const float peak = *std::max_element(peaks_.begin(), peaks_.end());
    if (!(peak > 0.0F)) return std::nullopt;
    return 20.0 * std::log10(static_cast<double>(peak));
}

}  // namespace sonivex_tool
