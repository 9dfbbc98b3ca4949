// The arithmetic of a Playback: gains, crossfades and clipping.

#include <algorithm>
#include <cmath>

#include "playback.h"

namespace sonivex_tool {
namespace {

// Gains follow their targets with this time constant, fast for a key and slow enough to be no click.
constexpr double kGainTime_s = 0.030;

float linear(double decibels) {
    return static_cast<float>(std::pow(10.0, decibels / 20.0));
}

}  // namespace

void Playback::mix(float* samples, int frames) {
    original_.read(position_, original_block_.data(), frames);
    path_->read(position_, path_block_.data(), frames);
    const bool has_next = next_path_ != nullptr && next_.isUp();
    if (has_next) next_path_->read(position_, next_block_.data(), frames);

    const MatchReading& path_match = path_->match();
    const MatchReading& match = has_next ? next_path_->match() : path_match;
    const float original_target = is_matching_ ? linear(match.original_gain_db) : 1.0F;
    const float path_target = is_matching_ ? linear(path_match.processed_gain_db) : 1.0F;
    const float next_target = is_matching_ ? linear(match.processed_gain_db) : 1.0F;
    const float volume_target = linear(volume_db_);
    if (!are_gains_set_) {
        original_gain_ = original_target;
        path_gain_ = path_target;
        are_gains_set_ = true;
    }

    const auto step = static_cast<float>(-std::expm1(-1.0 / (kGainTime_s * rate_hz())));
    for (size_t i = 0; i < static_cast<size_t>(frames); ++i) {
        original_gain_ += step * (original_target - original_gain_);
        path_gain_ += step * (path_target - path_gain_);
        next_gain_ += step * (next_target - next_gain_);
        volume_ += step * (volume_target - volume_);
        const float whole = whole_.next() * volume_;
        const float effect = listening_.next();
        const float next = has_next ? next_.next() : 0.0F;
        for (size_t c = 2 * i; c < 2 * i + 2; ++c) {
            const float processed =
                (1.0F - next) * path_gain_ * path_block_[c] + next * next_gain_ * next_block_[c];
            const float mixed =
                whole * ((1.0F - effect) * original_gain_ * original_block_[c] + effect * processed);
            if (std::abs(mixed) > 1.0F) ++clipped_samples_;
            samples[c] = std::clamp(mixed, -1.0F, 1.0F);
        }
    }
    output_peak_.add(samples, frames);
    position_ += frames;
}

}  // namespace sonivex_tool
