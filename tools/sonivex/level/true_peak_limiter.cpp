#include "true_peak_limiter.h"

namespace sonivex_tool {
namespace {

constexpr int kOversampling = 4;
// Rejection of 120 dB: what the limiter's gain does is far above it.
constexpr int kPrecisionBits = 20;

AudioSpec oversampled(AudioSpec spec) {
    spec.rate_hz *= kOversampling;
    return spec;
}

}  // namespace

TruePeakLimiter::TruePeakLimiter(const AudioSpec& spec)
    : up_(oversampled(spec), {.precision_bits = kPrecisionBits}),
      limiter_(oversampled(spec)),
      down_(spec, {.precision_bits = kPrecisionBits}) {}

std::vector<FramePtr> TruePeakLimiter::lowered(std::vector<FramePtr> upper) {
    std::vector<FramePtr> lower;
    for (FramePtr& frame : upper) {
        if (FramePtr down = down_.convert(std::move(frame))) lower.push_back(std::move(down));
    }
    return lower;
}

std::vector<FramePtr> TruePeakLimiter::limit(FramePtr frame) {
    frame = up_.convert(std::move(frame));
    if (frame == nullptr) return {};
    return lowered(limiter_.push(std::move(frame)));
}

std::vector<FramePtr> TruePeakLimiter::finish() {
    std::vector<FramePtr> lower;
    if (FramePtr rest = up_.flush()) lower = lowered(limiter_.push(std::move(rest)));
    for (FramePtr& frame : lowered(limiter_.finish())) lower.push_back(std::move(frame));
    if (FramePtr rest = down_.flush()) lower.push_back(std::move(rest));
    return lower;
}

}  // namespace sonivex_tool
