// Measures of a room's decay: its energy relative to the direct sound, its reverberation time, and how
// closely the tail follows an exponential decay.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** First 2.5 ms of a response from its onset. */
Signal directSound(const Signal& response);

/** Direct sound of each ear, from that ear's onset. */
Ears directSound(const Ears& ears);

/** The same, with each ear's direct sound at its place in the response and silence around it. */
Ears directSoundInPlace(const Ears& ears);

/** Everything after a response's direct sound. */
Signal reverberantSound(const Signal& response);

/** Strongest early reflection: the loudest 1 ms that starts 2.5 ms or later after the onset and ends within
 *  15 ms, relative to the energy of the direct sound. It counts both ears above 300 Hz, each from its own
 *  onset. */
double strongestReflection_db(const Ears& ears);

/** Reverberation time of an octave, from Schroeder's backward integral of the energy of both ears.
 *
 *  A line is fitted to the integral in dB from 10 ms after the onset to the closing fade and extrapolated to
 *  60 dB. The energy that the fade removes is added as the rest of an exponential decay, as ISO 3382-1 does
 *  for a decay that ends in noise. Otherwise short tables would seem to decay faster than they do.
 *  @param faded_part fraction of the length that fades out, at the end */
double reverberationTime_s(const Ears& ears, double octave_hz, double faded_part);

/** First sample of the closing fade. */
std::size_t fadeStart(const Signal& ear, double faded_part);

/** Rms deviation of the tail's energies in 5 ms steps from a straight line in dB. */
double tailUnevenness_db(const Ears& ears, double faded_part);

/** Largest rise between neighbouring 10 ms energies of the tail; negative if the tail always falls. */
double tailRise_db(const Ears& ears, double faded_part);

/** Start of the tail after the onset of the earlier ear. */
inline constexpr double kTailFrom_s = 0.020;

/** First sample of the tail. */
std::size_t tailStart(const Ears& ears);

}  // namespace response_quality
