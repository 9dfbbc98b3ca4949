// Test signals as signed 16-bit PCM, made in integer arithmetic: every machine and C library gives the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

using Pcm = std::vector<std::int16_t>;

/** Random numbers, the same everywhere (SplitMix64). */
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t bits();
    /** Even over low..high, both included. */
    int between(int low, int high);

  private:
    std::uint64_t state_;
};

/** White noise, even over -amplitude-1..amplitude. */
Pcm noise(std::uint64_t seed, int samples, int amplitude);

/** Triangle wave whose period falls from 2000 frames to 4; every channel starts elsewhere in it. */
Pcm sweep(int frames, int channels, int amplitude);

/** +amplitude and -amplitude-1, changing every half_period samples. */
Pcm square(int samples, int half_period, int amplitude);

/** Quiet and loud stretches of noise with gaps of silence between them: what makes limiters engage and
 * release. */
Pcm bursts(std::uint64_t seed, int samples);

/** samples * numerator / denominator, truncated and saturated. */
Pcm scaled(const Pcm& samples, int numerator, int denominator);

/** White noise, even over -1..1. */
std::vector<float> noiseFloats(std::uint64_t seed, std::size_t samples);

void append(Pcm& all, const Pcm& part);

/** One channel each, interleaved; shorter ones start again from their beginning. */
Pcm interleaved(const std::vector<Pcm>& channels);

}  // namespace test
