// How a room's answer falls away: its energy against the direct sound's, its reverberation time, how straight
// it is.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** The 2.5 ms of either ear from its onset. */
Ears directSound(const Ears& ears);

/** Everything from 2.5 ms after either ear's onset. */
Ears reverberantSound(const Ears& ears);

/** Direct over reverberant energy of both ears, above 300 Hz. */
double directToReverberant_db(const Ears& ears);

/** The loudest 1 ms that starts 2.5 ms or more after the onset and ends within 15 ms, against the direct
 * energy. Above 300 Hz, of both ears, each from its own onset. */
double strongestReflection_db(const Ears& ears);

/** From Schroeder's backward integral of an octave of both ears' energy: a line fitted from 10 ms after the
 * onset to the closing fade and drawn out to 60 dB. What the fade takes away is added as the rest of an
 * exponential decay, as ISO 3382-1 does for a decay that ends in noise; else short tables would seem to decay
 * faster than they do.
 * @param faded_part of the length, at the end */
double reverberationTime_s(const Ears& ears, double octave_hz, double faded_part);

/** The first sample of the closing fade. */
std::size_t fadeStart(const Signal& ear, double faded_part);

/** Root mean square of the distance of the tail's 5 ms energies from a straight line in dB. */
double tailUnevenness_db(const Ears& ears, double faded_part);

/** The largest step upwards between neighbouring 10 ms energies of the tail; negative if it falls always. */
double tailRise_db(const Ears& ears, double faded_part);

/** Time from the earlier ear's onset at which the tail is taken to begin. */
inline constexpr double kTailFrom_s = 0.020;

/** The first sample of the tail. */
std::size_t tailStart(const Ears& ears);

}  // namespace response_quality
