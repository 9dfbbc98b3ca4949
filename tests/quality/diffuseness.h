// How alike two ears, or two responses, are: what makes a room heard around the head and not inside it.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** Coherence of an isotropic sound field at the ears of a head (Lindevald & Benade 1986). */
double diffuseCoherence(double frequency_hz);

/** Root mean square, over half octaves from 250 Hz to 8 kHz, of the distance between the ears' coherence from
 * 20 ms to the closing fade and that of a diffuse field. The decay is taken out first, so that the whole tail
 * counts: of a decaying tail so little would count that even a perfectly diffuse one would show 0.2 by
 * chance. */
double coherenceError(const Ears& ears, double reverberation_time_s, double faded_part);

/** Correlation coefficient of two signals between two frequencies, without delay. */
double correlation(const Signal& a, const Signal& b, double low_hz, double high_hz);

/** Correlation coefficient of the whole signals, without delay. */
double correlation(const Signal& a, const Signal& b);

/** An ear's signal with silence before the tail. */
Signal tailOf(const Signal& ear, std::size_t start);

}  // namespace response_quality
