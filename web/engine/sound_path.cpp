#include "sound_path.h"

#include <utility>

namespace sonivex_web {
namespace {

// Without an engine, the delay line folds.
bool folds(int channels, const Engine& engine) {
    return engine != nullptr && sonivex_input_channels(engine.get()) != channels;
}

}  // namespace

SoundPath::SoundPath(int channels, Engine engine, int latency_frames)
    : latency_frames_(latency_frames),
      engine_(std::move(engine)),
      folds_(folds(channels, engine_)),
      fold_({nullptr, 0, channels, kOutputChannels}, 0),
      delay_({nullptr, 0, engine_ == nullptr ? channels : kOutputChannels, kOutputChannels},
             latency_frames - sonivex_stream_latency_frames(engine_.get())) {}

void SoundPath::reset() {
    sonivex_reset(engine_.get());
    delay_.reset();
}

void SoundPath::render(ConstPlanes in, Planes out, int frames) {
    if (engine_ == nullptr) {
        delay_.render(in, out, frames);
        return;
    }
    const StereoPlanes folded = {folded_[0].data(), folded_[1].data()};
    const StereoPlanes early = {early_[0].data(), early_[1].data()};
    if (folds_) fold_.render(in, folded.data(), frames);
    sonivex_stream_float(engine_.get(), folds_ ? folded.data() : in, early.data(), frames);
    delay_.render(early.data(), out, frames);
}

int SoundPath::memory_frames() const {
    return latency_frames_ + sonivex_tail_frames(engine_.get());
}

}  // namespace sonivex_web
