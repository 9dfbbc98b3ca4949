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

SoundFeed::SoundFeed(int capacity_frames) : ring_(static_cast<size_t>(capacity_frames)) {}

int SoundFeed::write(const float* samples, int frames) {
    const int count = std::min(frames, static_cast<int>(ring_.write_available()));
    // Counted first, so that a card cannot have taken more than was written.
    written_frames_ += static_cast<uint64_t>(count);
    for (int i = 0; i < count; ++i) {
        const float* frame = samples + static_cast<ptrdiff_t>(i) * kPlayedChannels;
        ring_.push(Frame{frame[0], frame[1]});
    }
    return count;
}

int SoundFeed::waitingFrames() const {
    uint64_t taken_frames = 0;
    uint64_t written_frames = 0;
    do {
        taken_frames = taken_frames_;
        written_frames = written_frames_;
    } while (taken_frames != taken_frames_);
    return static_cast<int>(written_frames - taken_frames);
}

void SoundFeed::take(uint64_t ticket, float* samples, int frames) {
    // A card that was given up does not even try to come in, which would keep out its successor.
    if (ticket == ticket_ && !is_taking_.exchange(true)) {
        const bool is_valid = ticket == ticket_;  // still, now that no other card can come in
        if (is_valid) takeFromRing(samples, frames);
        is_taking_ = false;
        if (is_valid) return;
    }
    std::fill_n(samples, static_cast<ptrdiff_t>(frames) * kPlayedChannels, 0.0F);
}

void SoundFeed::takeFromRing(float* samples, int frames) {
    asked_frames_.fetch_add(static_cast<uint64_t>(frames), std::memory_order_relaxed);
    uint64_t taken_frames = 0;
    for (int i = 0; i < frames; ++i) {
        Frame frame{};
        float gain = 1.0F;
        if (ring_.pop(frame)) {
            ++taken_frames;
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
    taken_frames_ += taken_frames;
}

}  // namespace sonivex_tool
