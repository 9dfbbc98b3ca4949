// Signals whose figures are known, for the tests of the measures.
#pragma once

#include <cstddef>
#include <cstdint>

#include "response_sets.h"

namespace response_quality {

inline constexpr std::uint64_t kSeed = 7;  // of the noise, for messages

/** White noise. */
Signal noise(std::size_t size, std::uint64_t seed);

/** A unit sample at one place in silence. */
Signal impulse(std::size_t size, std::size_t at);

/** a + factor b, for signals of the same size. */
Signal sum(const Signal& a, const Signal& b, double factor);

/** A sine of whole periods in kOctavePoints samples. */
Signal sine(std::size_t periods);

/** A unit direct sound at sample 40, and from 3 ms after it decaying noise that has 8 dB less energy. */
Ears syntheticRoom(double reverberation_time_s);

}  // namespace response_quality
