#include "rack.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonivex_web {
namespace {

// Long enough to sound smooth, short enough to answer a key at once.
constexpr double kFade_s = 0.04;

// 120 dB above full scale. Sums of such samples stay far within the range of a float.
constexpr float kLargestSample = 1.0e6F;

constexpr int kMegaBass = 13;
constexpr int kRooms = 3;

// The order of the paths.
constexpr std::size_t kOriginal = 0;
constexpr std::size_t kNormalizer = 1;
constexpr std::size_t kFirstSurround = 2;  // [3DSurround, rooms 1, 2, 3 of MegaBass][clipping, limiter]

void clean(float* samples, int frames) {
    std::replace_if(
        samples, samples + frames, [](float sample) { return !(std::abs(sample) <= kLargestSample); }, 0.0F);
}

}  // namespace

Rack::Rack(int channels, int sample_rate_hz)
    : channels_(channels), fade_(static_cast<int>(std::lround(kFade_s * sample_rate_hz))) {}

std::unique_ptr<Rack> Rack::make(int channels, int sample_rate_hz, int& status) {
    std::unique_ptr<Rack> rack(new Rack(channels, sample_rate_hz));
    status = rack->makePaths(sample_rate_hz);
    if (status != SONIVEX_OK) return nullptr;
    rack->reset();
    return rack;
}

// The normalizer is the latest.
int Rack::makePaths(int sample_rate_hz) {
    SonivexEffect* made = nullptr;
    if (const int status = sonivex_create_normalizer(&made, kOutputChannels, sample_rate_hz);
        status != SONIVEX_OK)
        return status;
    Engine normalizer(made);
    const int latency_frames = sonivex_stream_latency_frames(made);
    paths_[kOriginal] = std::make_unique<SoundPath>(channels_, nullptr, latency_frames);
    paths_[kNormalizer] = std::make_unique<SoundPath>(channels_, std::move(normalizer), latency_frames);
    for (std::size_t i = kFirstSurround; i < kPaths; ++i) {
        const int sound = static_cast<int>(i - kFirstSurround);
        const int room = sound / 2;  // 0: 3DSurround
        if (const int status = sonivex_create_surround(
                &made, channels_, sample_rate_hz, room == 0 ? 1 : kMegaBass, std::max(room, 1), sound % 2);
            status != SONIVEX_OK)
            return status;
        paths_[i] = std::make_unique<SoundPath>(channels_, Engine(made), latency_frames);
    }
    return SONIVEX_OK;
}

std::size_t Rack::pathOf(const Choice& choice) {
    if (choice.effect == SONIVEX_NORMALIZER) return kNormalizer;
    if (choice.effect != SONIVEX_SURROUND) return kOriginal;
    const int room = choice.type == kMegaBass ? std::clamp(choice.mode, 1, kRooms) : 0;
    return kFirstSurround + static_cast<std::size_t>(2 * room + (choice.limiter != 0 ? 1 : 0));
}

int Rack::latency_frames() const {
    return paths_[kOriginal]->latency_frames();
}

void Rack::reset() {
    stage_ = Stage::kSteady;
    fade_.stop();
    current_ = wanted_;
    paths_[current_]->reset();
    has_sounded_ = false;
}

void Rack::choose(const Choice& choice) {
    wanted_ = pathOf(choice);
    if (!has_sounded_) reset();
}

void Rack::follow() {
    if (stage_ == Stage::kListening && next_ != wanted_) stage_ = Stage::kSteady;
    if (stage_ != Stage::kSteady || current_ == wanted_) return;
    next_ = wanted_;
    paths_[next_]->reset();
    listening_frames_ = paths_[next_]->memory_frames();
    stage_ = Stage::kListening;
}

void Rack::render(Planes in, Planes out, int frames) {
    for (int channel = 0; channel < channels_; ++channel) clean(in[channel], frames);
    has_sounded_ = true;
    follow();
    paths_[current_]->render(in, out, frames);
    if (stage_ == Stage::kSteady) return;
    const std::array<float*, kOutputChannels> next = {next_samples_[0].data(), next_samples_[1].data()};
    paths_[next_]->render(in, next.data(), frames);
    const int unheard = std::min(frames, listening_frames_);
    listening_frames_ -= unheard;
    if (unheard < frames) fade(out, unheard, frames - unheard);
}

void Rack::fade(Planes out, int first, int frames) {
    if (stage_ == Stage::kListening) {
        stage_ = Stage::kFading;
        fade_.start();
    }
    const std::array<float*, kOutputChannels> from = {out[0] + first, out[1] + first};
    const std::array<float*, kOutputChannels> to = {next_samples_[0].data() + first,
                                                    next_samples_[1].data() + first};
    fade_.mixInto(to.data(), from.data(), kOutputChannels, frames);
    for (std::size_t channel = 0; channel < kOutputChannels; ++channel) {
        std::copy_n(to[channel], frames, from[channel]);
    }
    if (fade_.isRunning()) return;
    current_ = next_;
    stage_ = Stage::kSteady;
}

}  // namespace sonivex_web
