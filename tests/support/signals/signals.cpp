#include "support/signals/signals.h"

#include <algorithm>

namespace test {

std::uint64_t Random::bits() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31);
}

int Random::between(int low, int high) {
    const auto range = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
    return static_cast<int>(low + static_cast<std::int64_t>(bits() % range));
}

Pcm noise(std::uint64_t seed, int samples, int amplitude) {
    Random random(seed);
    Pcm pcm(static_cast<std::size_t>(samples));
    for (auto& sample : pcm) sample = static_cast<std::int16_t>(random.between(-amplitude - 1, amplitude));
    return pcm;
}

std::vector<float> noiseFloats(std::uint64_t seed, std::size_t samples, float amplitude) {
    std::vector<float> numbers;
    for (const std::int16_t sample : noise(seed, static_cast<int>(samples), 32767)) {
        numbers.push_back(amplitude * (static_cast<float>(sample) / 32768.0F));
    }
    return numbers;
}

Pcm sweep(int frames, int channels, int amplitude) {
    constexpr std::int64_t kTurn = std::int64_t{1} << 32;
    constexpr std::int64_t kFirstStep = kTurn / 2000;
    constexpr std::int64_t kLastStep = kTurn / 4;
    Pcm pcm;
    pcm.reserve(static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels));
    std::int64_t phase = 0;
    for (int frame = 0; frame < frames; ++frame) {
        for (int channel = 0; channel < channels; ++channel) {
            const std::int64_t turned = (phase + channel * kTurn / channels) % kTurn;
            const std::int64_t up = turned < kTurn / 2 ? turned : kTurn - turned;  // 0..kTurn/2
            const std::int64_t value = (up - kTurn / 4) * amplitude / (kTurn / 4);
            pcm.push_back(static_cast<std::int16_t>(value));
        }
        phase = (phase + kFirstStep + (kLastStep - kFirstStep) * frame / frames) % kTurn;
    }
    return pcm;
}

Pcm square(int samples, int half_period, int amplitude) {
    Pcm pcm(static_cast<std::size_t>(samples));
    for (int i = 0; i < samples; ++i) {
        const bool is_high = (i / half_period) % 2 == 0;
        pcm[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(is_high ? amplitude : -amplitude - 1);
    }
    return pcm;
}

Pcm bursts(std::uint64_t seed, int samples) {
    Random random(seed);
    Pcm pcm;
    while (pcm.size() < static_cast<std::size_t>(samples)) {
        const int length = random.between(1, 3000);
        constexpr int kLevels[] = {0, 30, 900, 4000, 12000, 32767};
        const int level = kLevels[random.between(0, 5)];
        const Pcm stretch = noise(random.bits(), length, level);
        pcm.insert(pcm.end(), stretch.begin(), stretch.end());
    }
    pcm.resize(static_cast<std::size_t>(samples));
    return pcm;
}

Pcm scaled(const Pcm& samples, int numerator, int denominator) {
    Pcm pcm(samples.size());
    std::transform(samples.begin(), samples.end(), pcm.begin(), [=](std::int16_t sample) {
        const std::int64_t value = std::int64_t{sample} * numerator / denominator;
        return static_cast<std::int16_t>(std::clamp<std::int64_t>(value, -32768, 32767));
    });
    return pcm;
}

void append(Pcm& all, const Pcm& part) {
    all.insert(all.end(), part.begin(), part.end());
}

Pcm interleaved(const std::vector<Pcm>& channels) {
    std::size_t frames = 0;
    for (const Pcm& channel : channels) frames = std::max(frames, channel.size());
    Pcm pcm;
    pcm.reserve(frames * channels.size());
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (const Pcm& channel : channels) pcm.push_back(channel[frame % channel.size()]);
    }
    return pcm;
}

Pcm widened(const Pcm& mono) {
    return interleaved({mono, mono});
}

}  // namespace test
