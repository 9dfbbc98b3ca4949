#include "dry_path.h"

#include <algorithm>
#include <numbers>

namespace sonivex_lv2 {
namespace {

constexpr float kMinus3Db_lin = static_cast<float>(1.0 / std::numbers::sqrt2);
constexpr int kCentre = 2;
constexpr int kFirstSurround = 4;  // after L R C LFE; the surround channels alternate between left and right

// Folds 5.1 or 7.1 down to one side of stereo.
void foldDown(ConstPlanes in, int channels_in, int side, float* out, int frames) {
    std::copy_n(in[side], frames, out);
    for (int i = 0; i < frames; ++i) out[i] += in[kCentre][i] * kMinus3Db_lin;
    for (int channel = kFirstSurround + side; channel < channels_in; channel += 2) {
        for (int i = 0; i < frames; ++i) out[i] += in[channel][i] * kMinus3Db_lin;
    }
}

}  // namespace

DryPath::DryPath(const PluginKind& kind, int delay_frames)
    : channels_in_(kind.channels_in),
      channels_out_(kind.channels_out),
      delay_frames_(delay_frames),
      lines_(static_cast<std::size_t>(kind.channels_out) * static_cast<std::size_t>(delay_frames)) {}

void DryPath::reset() {
    std::fill(lines_.begin(), lines_.end(), 0.0F);
    position_ = 0;
}

float* DryPath::lineOf(int channel) {
    return lines_.data() + static_cast<std::size_t>(channel) * static_cast<std::size_t>(delay_frames_);
}

void DryPath::render(ConstPlanes in, Planes out, int frames) {
    int position = position_;
    for (int channel = 0; channel < channels_out_; ++channel) {
        float* const plane = out[channel];
        if (channels_in_ == channels_out_) {
            std::copy_n(in[channel], frames, plane);
        } else {
            foldDown(in, channels_in_, channel, plane, frames);
        }
        float* const line = lineOf(channel);
        position = position_;
        for (int first = 0; delay_frames_ > 0 && first < frames;) {
            const int piece = std::min(frames - first, delay_frames_ - position);
            std::swap_ranges(plane + first, plane + first + piece, line + position);
            first += piece;
            position = (position + piece) % delay_frames_;
        }
    }
    position_ = position;
}

}  // namespace sonivex_lv2
