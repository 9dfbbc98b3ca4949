// Late reverberation: decaying noise whose coherence between the ears is that of a diffuse field.
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

/** Decay of a tail. */
struct TailDecay {
    std::array<double, kTailOctaves> reverberation_times_s;
    double mixing_s;  // time after the direct sound from which single reflections cannot be told apart
};

/** Decay of a room, slower in the bass and faster in the treble. The mixing time is sqrt(V in m3) ms
 *  (Polack). */
TailDecay roomDecay(const Room& room);

/** Coherence of a diffuse field between the ears (Lindevald & Benade 1986). */
double earCoherence(double frequency_hz);

/** Late reverberation of `samples` samples for each ear, silent up to kOrigin_samples. It is made from the
 *  two noises that belong to the seed. Its level is that of the noise and is arbitrary. */
EarSignals binauralTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples);

/** Like binauralTail, but for one channel at any sample rate, from the first of the two noises. */
std::vector<double> monoTail(std::uint64_t seed, const TailDecay& decay, std::size_t samples, double rate_hz);

}  // namespace sonivex_irgen
