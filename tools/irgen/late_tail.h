// Late reverberation: decaying noise whose ears agree as they do in a diffuse field.
//
//   left, right = sqrt((1+g)/2) x +- sqrt((1-g)/2) y      x, y noise, g the coherence at each frequency
//   each octave times min(t / mixing time, 1) * exp(-6.9078 t / RT)
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "head_model.h"
#include "room.h"

namespace sonivex_irgen {

inline constexpr std::size_t kTailOctaves = 8;  // 125 Hz to 16 kHz

/** How a tail dies away. */
struct TailDecay {
    std::array<double, kTailOctaves> reverberation_times_s;
    double mixing_s;  // from here on the reflections can no longer be told apart
};

/** The decay of a room: slower in the bass, faster in the treble; mixing time sqrt(V in m3) ms (Polack). */
TailDecay roomDecay(const Room& room);

/** Coherence of a diffuse field at the two ears (Lindevald & Benade 1986). */
double earCoherence(double frequency_hz);

/** `samples` samples for each ear, silent before kOrigin_samples; noise of the seeds 2 seed + 1 and 2 seed
 * + 2. The level is that of the noise and means nothing. */
EarSignals binauralTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples);

/** The same without a second ear: noise of the seed 2 seed + 1 at another rate. */
std::vector<double> monoTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples, double rate_hz);

}  // namespace sonivex_irgen
