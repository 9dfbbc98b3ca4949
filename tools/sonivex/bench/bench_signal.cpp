#include "bench_signal.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace sonivex_tool {
namespace {

constexpr double kFullScale = 32768.0;
constexpr double kSyllables_hz = 4.0;
// The long-term spectrum of speech is strongest between these two and falls off on either side (Byrne et al.
// 1994).
constexpr double kLowest_hz = 100.0;
constexpr double kHighest_hz = 500.0;

// Returns the coefficient of the one-pole low-pass  y += coefficient * (x - y).
double onePoleCoefficient(double corner_hz, int rate_hz) {
    return -std::expm1(-2.0 * std::numbers::pi * corner_hz / rate_hz);
}

std::vector<double> speechNoise(unsigned seed, int frames, int rate_hz) {
    // The standard defines the engine's numbers, but not those of a distribution.
    std::mt19937 random(seed);
    const double low_pass = onePoleCoefficient(kHighest_hz, rate_hz);
    const double high_pass = onePoleCoefficient(kLowest_hz, rate_hz);
    double smooth = 0.0;
    double slow = 0.0;
    std::vector<double> samples;
    samples.reserve(static_cast<size_t>(frames));
    for (int frame = 0; frame < frames; ++frame) {
        const double white = static_cast<double>(random()) / 0x1p31 - 1.0;
        smooth += low_pass * (white - smooth);
        slow += high_pass * (smooth - slow);
        samples.push_back(smooth - slow);
    }
    return samples;
}

// Shapes syllables into the noise. `phase` is the place in the syllable, 0 to 1, at which the speaker begins.
void speakSyllables(std::vector<double>& samples, double phase, int rate_hz) {
    for (size_t frame = 0; frame < samples.size(); ++frame) {
        const double syllables = kSyllables_hz * static_cast<double>(frame) / rate_hz + phase;
        samples[frame] *= 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * syllables);
    }
}

double rms(const std::vector<double>& samples) {
    double energy = 0.0;
    for (const double sample : samples) energy += sample * sample;
    return std::sqrt(energy / static_cast<double>(samples.size()));
}

}  // namespace

std::vector<int16_t> makeBabble(int channels, int frames, int rate_hz) {
    std::vector<int16_t> babble(static_cast<size_t>(channels) * static_cast<size_t>(frames));
    for (int channel = 0; channel < channels; ++channel) {
        std::vector<double> samples = speechNoise(static_cast<unsigned>(channel) + 1U, frames, rate_hz);
        speakSyllables(samples, static_cast<double>(channel) / channels, rate_hz);
        const double loudness = rms(samples);
        if (loudness <= 0.0) continue;  // a single frame between syllables
        const double gain = kFullScale * std::pow(10.0, kBabbleLevel_dbfs / 20.0) / loudness;
        for (size_t frame = 0; frame < samples.size(); ++frame) {
            const double sample = std::clamp(gain * samples[frame], -kFullScale, kFullScale - 1.0);
            babble[frame * static_cast<size_t>(channels) + static_cast<size_t>(channel)] =
                static_cast<int16_t>(std::lround(sample));
        }
    }
    return babble;
}

}  // namespace sonivex_tool
