#include "stream_check.h"

#include <algorithm>

#include "support/guarded_samples.h"
#include "support/promise.h"

namespace fuzz {
namespace {

constexpr int kRing_samples = 81919;
constexpr std::int16_t kMark = 0x5A5A;
constexpr int kCeiling = 32440;  // 0.99 of full scale

std::size_t sizeOf(int width, std::int64_t frames) {
    return static_cast<std::size_t>(width * frames);
}

}  // namespace

void StreamCheck::call(std::span<const std::int16_t> in) {
    const int frames = static_cast<int>(in.size()) / effect_.width_in;
    GuardedSamples<std::int16_t> out(sizeOf(effect_.width_out, frames), kMark);
    const int result = effect_.process(effect_.handle, in.data(), out.data(), frames);
    require(result == effect_.width_out * frames, "a call returns its samples");
    out.requireWholeGuards();
    if (effect_.is_limited) {
        require(std::all_of(out.samples().begin(), out.samples().end(),
                            [](int sample) { return sample >= -kCeiling && sample <= kCeiling; }),
                "no sample is above the limiter's ceiling");
    }

    if (!takeWithoutLoss(frames)) return;
    renderReference(in);
    if (ready_frames_ >= frames) {
        ready_frames_ -= frames;
        requireReferenceOutput(out.samples());
    } else {
        require(
            std::all_of(out.samples().begin(), out.samples().end(), [](int sample) { return sample == 0; }),
            "a call that cannot be served is silent");
    }
}

// Follows the queues of the effect. Returns false from the first loss on, because the rings drop single
// samples.
bool StreamCheck::takeWithoutLoss(int frames) {
    queued_frames_ += frames;
    if (queued_frames_ * effect_.width_in > kRing_samples) has_lost_ = true;
    ready_frames_ += queued_frames_ / effect_.block_frames * effect_.block_frames;
    queued_frames_ %= effect_.block_frames;
    if (ready_frames_ * effect_.width_out > kRing_samples) has_lost_ = true;
    return !has_lost_;
}

void StreamCheck::renderReference(std::span<const std::int16_t> in) {
    waiting_.insert(waiting_.end(), in.begin(), in.end());
    const std::size_t block_samples = sizeOf(effect_.width_in, effect_.block_frames);
    std::size_t taken = 0;
    while (waiting_.size() - taken >= block_samples) {
        const std::size_t first = expected_.size();
        expected_.resize(first + sizeOf(effect_.width_out, effect_.block_frames));
        reference_.process(reference_.handle, waiting_.data() + taken, expected_.data() + first,
                           effect_.block_frames);
        taken += block_samples;
    }
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(taken));
}

void StreamCheck::requireReferenceOutput(std::span<const std::int16_t> out) {
    require(expected_.size() - compared_ >= out.size(),
            "the reference has rendered what the effect puts out");
    const auto first = expected_.begin() + static_cast<std::ptrdiff_t>(compared_);
    require(std::equal(out.begin(), out.end(), first),
            "the output does not depend on the lengths of the calls");
    compared_ += out.size();
}

}  // namespace fuzz
