#include "sound_feed.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sonivex_tool {
namespace {

// Returns a raised cosine that falls from 1 to 0 while `left` falls from `whole` to 0.
float raisedCosine(int left, int whole) {
    const double phase = static_cast<double>(left) / whole;
    return static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * phase));
}

}  // namespace

SoundFeed::SoundFeed(int capacity_frames)
    : capacity_frames_(static_cast<size_t>(capacity_frames)), ring_(capacity_frames_) {}

int SoundFeed::write(const float* samples, int frames) {
    int written = 0;
    for (; written < frames; ++written) {
        const float* frame = samples + static_cast<ptrdiff_t>(written) * kPlayedChannels;
        if (!ring_.push(Frame{frame[0], frame[1]})) break;
    }
    return written;
}

int SoundFeed::waitingFrames() const {
    return static_cast<int>(capacity_frames_ - ring_.write_available());
}

void SoundFeed::take(uint64_t ticket, float* samples, int frames) {
    if (ticket != ticket_.load(std::memory_order_acquire)) {
        std::fill_n(samples, static_cast<ptrdiff_t>(frames) * kPlayedChannels, 0.0F);
        return;
    }
    asked_frames_.fetch_add(static_cast<uint64_t>(frames), std::memory_order_relaxed);
    for (int i = 0; i < frames; ++i) {
        Frame frame{};
        float gain = 1.0F;
        if (ring_.pop(frame)) {
            if (is_dry_) {
                is_dry_ = false;
                fade_in_frames_ = kGapFade_frames;
            }
            last_ = frame;
            if (fade_in_frames_ > 0)
                gain = raisedCosine(kGapFade_frames - fade_in_frames_--, kGapFade_frames);
        } else {
            if (!is_dry_) {
                is_dry_ = true;
                fade_out_frames_ = kGapFade_frames;
                if (!is_finished_.load(std::memory_order_acquire))
                    gaps_.fetch_add(1, std::memory_order_relaxed);
            }
            frame = last_;
            gain = fade_out_frames_ > 0 ? raisedCosine(--fade_out_frames_, kGapFade_frames) : 0.0F;
        }
        for (size_t c = 0; c < frame.size(); ++c) {
            samples[static_cast<size_t>(i) * kPlayedChannels + c] = gain * frame[c];
        }
    }
}

}  // namespace sonivex_tool
