#include "decoded_frames.h"

#include <algorithm>

namespace sonivex_tool {
namespace {

// Frames over which timestamps must agree, and of which a change of the format must last: at least as many,
// and at least this long, but never more than the largest number.
constexpr size_t kFewestFollowing = 4;
constexpr size_t kMostFollowing = 64;
constexpr double kFollowing_s = 0.2;

}  // namespace

void DecodedFrames::push(DecodedFrame frame) {
    frames_.push_back(std::move(frame));
}

bool DecodedFrames::isReady() const {
    if (frames_.empty()) return false;
    const size_t following = frames_.size() - 1;
    if (is_ended_ || following >= kMostFollowing) return true;
    if (following < kFewestFollowing) return false;
    double seconds = 0.0;
    for (size_t i = 1; i < frames_.size(); ++i) {
        const AVFrame& frame = *frames_[i].frame;
        seconds += static_cast<double>(frame.nb_samples) / frame.sample_rate;
    }
    return seconds >= kFollowing_s;
}

bool DecodedFrames::isCredible(const AudioSpec& current) const {
    const AudioSpec spec = specOf(*frames_.front().frame);
    if (spec == current) return true;
    for (size_t i = 1; i < frames_.size() && i < kFewestFollowing; ++i) {
        if (!(specOf(*frames_[i].frame) == spec)) return false;
    }
    // At the end of the file fewer frames are enough, unless something has failed there.
    return frames_.size() >= kFewestFollowing || !isNearError();
}

std::vector<Placement> DecodedFrames::placements() const {
    std::vector<Placement> placements;
    for (const DecodedFrame& decoded : frames_) {
        if (decoded.frame->sample_rate != frames_.front().frame->sample_rate) break;
        placements.push_back({decoded.position, decoded.frame->nb_samples});
    }
    return placements;
}

bool DecodedFrames::isNearError() const {
    return std::any_of(frames_.begin(), frames_.end(),
                       [](const DecodedFrame& decoded) { return decoded.follows_error; });
}

void DecodedFrames::drop() {
    const bool follows_error = frames_.front().follows_error;
    frames_.pop_front();
    if (!frames_.empty() && follows_error) frames_.front().follows_error = true;
}

FramePtr DecodedFrames::pop() {
    FramePtr frame = std::move(frames_.front().frame);
    frames_.pop_front();
    return frame;
}

}  // namespace sonivex_tool
