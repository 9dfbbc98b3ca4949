#include "engine_slot.h"

#include <algorithm>
#include <utility>

namespace sonivex_lv2 {

EngineSlot::EngineSlot(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host, Engine first,
                       int fade_frames)
    : maker_(kind, sample_rate_hz, host),
      fade_(fade_frames),
      current_(std::move(first)),
      channels_out_(static_cast<std::size_t>(kind.channels_out)),
      next_samples_(channels_out_ * kPiece_frames) {
    for (std::size_t channel = 0; channel < channels_out_; ++channel) {
        next_planes_[channel] = next_samples_.data() + channel * kPiece_frames;
    }
}

void EngineSlot::reset() {
    if (next_ != nullptr) complete();
    old_.reset();
    sonivex_reset(current_.get());
    has_sounded_ = false;
}

void EngineSlot::follow(const Settings& wanted) {
    if (refused_ != wanted) refused_.reset();
    maker_.retire(old_);
    dropNextUnless(wanted);
    takeMade(wanted);
    // An engine that still waits for its release would be in the way of another.
    const bool may_ask = stage_ == Stage::kSteady && old_ == nullptr && !maker_.isBusy();
    if (may_ask && wanted != current_settings_ && refused_ != wanted && maker_.ask(wanted)) {
        takeMade(wanted);
    }
}

void EngineSlot::dropNextUnless(const Settings& wanted) {
    if (stage_ != Stage::kListening || next_settings_ == wanted || old_ != nullptr) return;
    old_ = std::move(next_);
    stage_ = Stage::kSteady;
    maker_.retire(old_);
}

void EngineSlot::takeMade(const Settings& wanted) {
    if (!maker_.isReady() || old_ != nullptr) return;
    next_settings_ = maker_.asked();
    Engine made = maker_.take();
    if (made == nullptr) {
        refused_ = next_settings_;
    } else if (next_settings_ != wanted) {
        old_ = std::move(made);
        maker_.retire(old_);
    } else {
        begin(std::move(made));
    }
}

void EngineSlot::begin(Engine engine) {
    next_ = std::move(engine);
    if (has_sounded_) {
        stage_ = Stage::kListening;
        listening_frames_ = sonivex_stream_latency_frames(next_.get()) + sonivex_tail_frames(next_.get());
    } else {
        complete();
    }
}

void EngineSlot::complete() {
    old_ = std::exchange(current_, std::move(next_));
    current_settings_ = next_settings_;
    stage_ = Stage::kSteady;
    fade_.stop();
}

void EngineSlot::setVoiceLevel(double level) {
    sonivex_set_voice_level(current_.get(), level);
}

void EngineSlot::render(ConstPlanes in, Planes out, int frames) {
    has_sounded_ = true;
    sonivex_stream_float(current_.get(), in, out, frames);
    if (stage_ == Stage::kSteady) return;
    sonivex_stream_float(next_.get(), in, next_planes_.data(), frames);
    const int unheard = std::min(frames, listening_frames_);
    listening_frames_ -= unheard;
    if (unheard < frames) fade(out, unheard, frames - unheard);
}

void EngineSlot::fade(Planes out, int first, int frames) {
    if (stage_ == Stage::kListening) {
        stage_ = Stage::kFading;
        fade_.start();
    }
    std::array<float*, kMostChannels> from{};
    std::array<float*, kMostChannels> to{};
    for (std::size_t channel = 0; channel < channels_out_; ++channel) {
        from[channel] = out[channel] + first;
        to[channel] = next_planes_[channel] + first;
    }
    fade_.mixInto(to.data(), from.data(), static_cast<int>(channels_out_), frames);
    for (std::size_t channel = 0; channel < channels_out_; ++channel) {
        std::copy_n(to[channel], frames, from[channel]);
    }
    if (!fade_.isRunning()) complete();
}

}  // namespace sonivex_lv2
