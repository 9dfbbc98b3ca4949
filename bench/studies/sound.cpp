#include "sound.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

#include "effect_runs.h"

namespace study {
namespace {

constexpr double kFullScale = 32768.0;

}  // namespace

double level_dbfs(const Channels& sound) {
    double energy = 0.0;
    double samples = 0.0;
    for (const Sound& channel : sound) {
        for (const double sample : channel) energy += sample * sample;
        samples += static_cast<double>(channel.size());
    }
    return 10.0 * std::log10(energy / samples);
}

std::vector<double> windowLevels_dbfs(const Sound& sound, std::size_t window_frames) {
    std::vector<double> levels;
    for (std::size_t from = 0; from + window_frames <= sound.size(); from += window_frames) {
        const auto first = sound.begin() + static_cast<std::ptrdiff_t>(from);
        levels.push_back(level_dbfs({Sound(first, first + static_cast<std::ptrdiff_t>(window_frames))}));
    }
    return levels;
}

double peak_dbfs(const Channels& sound) {
    double peak = 0.0;
    for (const Sound& channel : sound) {
        for (const double sample : channel) peak = std::max(peak, std::abs(sample));
    }
    return 20.0 * std::log10(peak);
}

Channels scaled(Channels sound, double gain_db) {
    const double gain = std::pow(10.0, gain_db / 20.0);
    for (Sound& channel : sound) {
        for (double& sample : channel) sample *= gain;
    }
    return sound;
}

Channels atLevel(Channels sound, double level_db) {
    const double before_db = level_dbfs(sound);
    if (!std::isfinite(before_db)) throw std::invalid_argument("cannot bring silence to a level");
    return scaled(std::move(sound), level_db - before_db);
}

Sound lowPassed(Sound sound, double corner_hz) {
    const double coefficient = -std::expm1(-2.0 * std::numbers::pi * corner_hz / kRate_hz);
    double level = 0.0;
    for (double& sample : sound) sample = level += coefficient * (sample - level);
    return sound;
}

Sound highPassed(Sound sound, double corner_hz) {
    const Sound low = lowPassed(sound, corner_hz);
    for (std::size_t n = 0; n < sound.size(); ++n) sound[n] -= low[n];
    return sound;
}

Channels sum(const std::vector<Channels>& sounds) {
    std::size_t frames = 0;
    for (const Channels& sound : sounds) frames = std::max(frames, sound.front().size());
    Channels all(sounds.front().size(), Sound(frames));
    for (const Channels& sound : sounds) {
        for (std::size_t c = 0; c < all.size(); ++c) {
            for (std::size_t n = 0; n < sound[c].size(); ++n) all[c][n] += sound[c][n];
        }
    }
    return all;
}

Channels panned(const Sound& mono, double place) {
    Channels both{mono, mono};
    for (double& sample : both[0]) sample *= std::cos(place * std::numbers::pi / 2.0);
    for (double& sample : both[1]) sample *= std::sin(place * std::numbers::pi / 2.0);
    return both;
}

Channels inMono(const Channels& sound) {
    Sound mean(sound.front().size());
    for (const Sound& channel : sound) {
        for (std::size_t n = 0; n < mean.size(); ++n)
            mean[n] += channel[n] / static_cast<double>(sound.size());
    }
    return Channels(sound.size(), mean);
}

test::Pcm toPcm(const Channels& sound) {
    test::Pcm pcm;
    for (std::size_t n = 0; n < sound.front().size(); ++n) {
        for (const Sound& channel : sound) {
            const double sample =
                std::clamp(std::round(channel[n] * kFullScale), -kFullScale, kFullScale - 1.0);
            pcm.push_back(static_cast<std::int16_t>(sample));
        }
    }
    return pcm;
}

Sound channelOf(const test::Pcm& pcm, std::size_t channels, std::size_t channel) {
    Sound sound;
    for (std::size_t i = channel; i < pcm.size(); i += channels) sound.push_back(pcm[i] / kFullScale);
    return sound;
}

}  // namespace study
