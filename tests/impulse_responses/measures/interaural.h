// Interaural differences in time and level, the main cues to a sound's direction.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** First sample whose magnitude is at least 10 % of the signal's peak; 0 for silence. */
std::size_t onset(const Signal& signal);

/** Delay of the right ear's onset after the left ear's, to an eighth of a sample; positive if the left ear
 *  leads. */
double interauralDelay_us(const Ears& ears);

/** Interaural delay after Woodworth of a spherical head; positive for an azimuth on the left. */
double woodworthDelay_us(double azimuth_deg, double head_radius_m);

/** Energy of the left ear relative to the right one in an octave. */
double levelDifference_db(const Ears& ears, double centre_hz);

/** Energy of the left ear relative to the right one. */
double levelDifference_db(const Ears& ears);

}  // namespace response_quality
