// The functions that an audio worklet calls. A module has one rack; another input needs another instance of
// the module.
//
//   sonivex_web_open(channels, sample_rate_hz)     0, or a SonivexStatus
//   sonivex_web_reset()                            forgets the sound so far
//   sonivex_web_choose(effect, type, mode, limiter)
//   sonivex_web_most_frames()                      the length of a plane
//   sonivex_web_input(channel), sonivex_web_output(channel)   where the planes are, in the module's memory
//   sonivex_web_render(frames)                     reads and writes the planes
//   sonivex_web_take_peak(plane)                   the largest magnitude since the last call
//   sonivex_web_latency_frames()                   how late the output is
//   sonivex_web_is_changing()                      1 while a change is under way, else 0
//
// A plane is a channel of the input, 0 to 7, or of the output, 8 and 9.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "rack.h"

#define SONIVEX_WEB_FUNCTION(name) extern "C" __attribute__((export_name(#name), used))

namespace {

using sonivex_web::kMost_frames;
using sonivex_web::kMostChannels;
using sonivex_web::kOutputChannels;
using sonivex_web::Rack;

constexpr std::size_t kPlanes = kMostChannels + kOutputChannels;

struct Module {
    std::unique_ptr<Rack> rack;
    std::array<std::array<float, kMost_frames>, kPlanes> samples{};
    std::array<float, kPlanes> peaks{};

    float* plane(std::size_t index) { return samples[index].data(); }
};

Module& module() {
    static Module instance;
    return instance;
}

void notePeak(std::size_t plane, int frames) {
    float peak = module().peaks[plane];
    const float* const samples = module().plane(plane);
    for (int i = 0; i < frames; ++i) peak = std::max(peak, std::abs(samples[i]));
    module().peaks[plane] = peak;
}

}  // namespace

SONIVEX_WEB_FUNCTION(sonivex_web_open) int sonivex_web_open(int channels, int sample_rate_hz) {
    int status = SONIVEX_OK;
    module().rack.reset();
    module().rack = Rack::make(channels, sample_rate_hz, status);
    return status;
}

SONIVEX_WEB_FUNCTION(sonivex_web_reset) void sonivex_web_reset() {
    if (module().rack != nullptr) module().rack->reset();
    module().peaks = {};
}

SONIVEX_WEB_FUNCTION(sonivex_web_choose)
void sonivex_web_choose(int effect, int type, int mode, int limiter) {
    if (module().rack != nullptr) module().rack->choose({effect, type, mode, limiter});
}

SONIVEX_WEB_FUNCTION(sonivex_web_most_frames) int sonivex_web_most_frames() {
    return kMost_frames;
}

SONIVEX_WEB_FUNCTION(sonivex_web_input) float* sonivex_web_input(unsigned channel) {
    return channel < kMostChannels ? module().plane(channel) : nullptr;
}

SONIVEX_WEB_FUNCTION(sonivex_web_output) float* sonivex_web_output(unsigned channel) {
    return channel < kOutputChannels ? module().plane(kMostChannels + channel) : nullptr;
}

SONIVEX_WEB_FUNCTION(sonivex_web_render) void sonivex_web_render(int frames) {
    Module& m = module();
    if (m.rack == nullptr || frames < 1 || frames > kMost_frames) return;
    std::array<float*, kMostChannels> in{};
    for (std::size_t i = 0; i < kMostChannels; ++i) in[i] = m.plane(i);
    const std::array<float*, kOutputChannels> out = {m.plane(kMostChannels), m.plane(kMostChannels + 1)};
    m.rack->render(in.data(), out.data(), frames);
    for (std::size_t i = 0; i < static_cast<std::size_t>(m.rack->channels()); ++i) notePeak(i, frames);
    for (std::size_t i = kMostChannels; i < kPlanes; ++i) notePeak(i, frames);
}

SONIVEX_WEB_FUNCTION(sonivex_web_take_peak) float sonivex_web_take_peak(unsigned plane) {
    if (plane >= kPlanes) return 0.0F;
    const float peak = module().peaks[plane];
    module().peaks[plane] = 0.0F;
    return peak;
}

SONIVEX_WEB_FUNCTION(sonivex_web_latency_frames) int sonivex_web_latency_frames() {
    return module().rack == nullptr ? 0 : module().rack->latency_frames();
}

SONIVEX_WEB_FUNCTION(sonivex_web_is_changing) int sonivex_web_is_changing() {
    return module().rack != nullptr && module().rack->isChanging() ? 1 : 0;
}
