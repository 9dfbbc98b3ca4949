// Similarity of the two ears, or of two responses. Differences between the ears make a room sound around the
// head instead of inside it.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** Coherence of a diffuse sound field between the ears of a head (Lindevald & Benade 1986). */
double diffuseCoherence(double frequency_hz);

/** Rms deviation of the tail's interaural coherence from that of a diffuse field, over half octaves from
 *  250 Hz to 8 kHz.
 *
 *  The tail is taken from 20 ms to the end. Its decay is compensated first, so that all of it counts.
 *  Otherwise only its loud beginning would count, and even a perfectly diffuse tail would show 0.2 by chance.
 *  The closing fade, which is equal in both ears, stays in for the same reason. */
double coherenceError(const Ears& ears, double reverberation_time_s);

/** Early interaural correlation (IACC_E3 of ISO 3382-1): mean of the octaves 500 Hz to 2 kHz.
 *
 *  In each octave it is the largest magnitude of the normalised cross-correlation of the ears within 1 ms.
 *  The first 80 ms count, from the earlier ear's onset. They are cut out first, then the octaves are cut from
 *  their spectrum. */
double earlyCorrelation(const Ears& ears);

/** Correlation coefficient of two signals between two frequencies, at zero lag. */
double correlation(const Signal& a, const Signal& b, double low_hz, double high_hz);

/** Correlation coefficient of two signals over all frequencies, at zero lag. */
double correlation(const Signal& a, const Signal& b);

/** Copy of an ear's signal that is silent before sample `start`. */
Signal tailOf(const Signal& ear, std::size_t start);

}  // namespace response_quality
