#include "instance.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonivex_lv2 {
namespace {

// Long enough to sound smooth, short enough to answer a key at once.
constexpr double kFade_s = 0.04;

// 120 dB above full scale. Sums of such samples stay far within the range of a float.
constexpr float kLargestSample = 1.0e6F;

int fade_frames(int sample_rate_hz) {
    return static_cast<int>(std::lround(kFade_s * sample_rate_hz));
}

}  // namespace

Instance::Piece::Piece(int channels) : samples_(static_cast<std::size_t>(channels) * kPiece_frames) {
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(channels); ++channel) {
        planes_[channel] = samples_.data() + channel * kPiece_frames;
    }
}

Instance::Instance(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host, Engine engine)
    : kind_(kind),
      engines_(kind, sample_rate_hz, host, std::move(engine), fade_frames(sample_rate_hz)),
      dry_path_(kind, engines_.latency_frames()),
      bypass_fade_(fade_frames(sample_rate_hz)),
      in_(kind.channels_in),
      wet_(kind.channels_out),
      dry_(kind.channels_out) {}

void Instance::activate() {
    engines_.reset();
    dry_path_.reset();
    bypass_fade_.stop();
    has_run_ = false;
}

void Instance::run(std::uint32_t frames) {
    if (ports_.latency != nullptr) *ports_.latency = static_cast<float>(engines_.latency_frames());
    if (frames == 0) return;
    followControls();
    for (std::size_t first = 0; first < frames;) {
        const auto piece = static_cast<int>(std::min<std::size_t>(frames - first, kPiece_frames));
        runPiece(first, piece);
        first += static_cast<std::size_t>(piece);
    }
}

void Instance::followControls() {
    engines_.follow(readSettings(kind_, ports_));
    if (kind_.effect == SONIVEX_DIALOGUE) engines_.setVoiceLevel(readVoiceLevel(ports_));
    const bool wants_bypass = readBypass(ports_);
    if (!has_run_) {
        is_bypassed_ = wants_bypass;
    } else if (wants_bypass != is_bypassed_ && !bypass_fade_.isRunning()) {
        is_bypassed_ = wants_bypass;
        bypass_fade_.start();
    }
    has_run_ = true;
}

// Both paths run all the time, so that either can be heard at once.
void Instance::runPiece(std::size_t first, int frames) {
    readInputs(first, frames);
    engines_.render(in_.planes(), wet_.planes(), frames);
    dry_path_.render(in_.planes(), dry_.planes(), frames);
    const Planes to = is_bypassed_ ? dry_.planes() : wet_.planes();
    const Planes from = is_bypassed_ ? wet_.planes() : dry_.planes();
    bypass_fade_.mixInto(to, from, kind_.channels_out, frames);
    writeOutputs(to, first, frames);
}

// All inputs of a piece are read before any output is written, so that a host may use the same memory for
// both.
void Instance::readInputs(std::size_t first, int frames) {
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(kind_.channels_in); ++channel) {
        float* const plane = in_.planes()[channel];
        if (ports_.in[channel] == nullptr) {
            std::fill_n(plane, frames, 0.0F);
            continue;
        }
        const float* const samples = ports_.in[channel] + first;
        std::transform(samples, samples + frames, plane, [](float sample) {
            return std::abs(sample) <= kLargestSample ? sample : 0.0F;  // false for NaN
        });
    }
}

void Instance::writeOutputs(ConstPlanes planes, std::size_t first, int frames) {
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(kind_.channels_out); ++channel) {
        if (ports_.out[channel] != nullptr) std::copy_n(planes[channel], frames, ports_.out[channel] + first);
    }
}

}  // namespace sonivex_lv2
