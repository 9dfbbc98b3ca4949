// Test signals as signed 16-bit PCM. Integer arithmetic makes them identical on every machine and C library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

using Pcm = std::vector<std::int16_t>;

/** Pseudo-random numbers that are the same on every machine (SplitMix64). */
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t bits();
    /** Returns a number uniform over low..high, both included. */
    int between(int low, int high);

  private:
    std::uint64_t state_;
};

/** Makes white noise, uniform over -amplitude-1..amplitude. */
Pcm noise(std::uint64_t seed, int samples, int amplitude);

/** Makes white noise, uniform over -amplitude..amplitude; with amplitude 1 it is noise(seed, samples, 32767)
 *  at full scale 1. */
std::vector<float> noiseFloats(std::uint64_t seed, std::size_t samples, float amplitude = 1.0F);

/** Makes an interleaved triangle sweep whose period falls from 2000 frames to 4. Every channel starts at
 *  another phase. */
Pcm sweep(int frames, int channels, int amplitude);

/** Makes a square wave between +amplitude and -amplitude-1 that changes every half_period samples. */
Pcm square(int samples, int half_period, int amplitude);

/** Makes bursts of quiet and loud noise with silence between them, which make limiters engage and release. */
Pcm bursts(std::uint64_t seed, int samples);

/** Returns samples * numerator / denominator, truncated and saturated. */
Pcm scaled(const Pcm& samples, int numerator, int denominator);

void append(Pcm& all, const Pcm& part);

/** Interleaves mono channels. A channel shorter than the longest repeats from its beginning. */
Pcm interleaved(const std::vector<Pcm>& channels);

/** Copies mono to both channels of stereo. */
Pcm widened(const Pcm& mono);

}  // namespace test
