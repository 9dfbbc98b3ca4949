// What tells the ears where a sound comes from: when and how loud it arrives at either of them.
#pragma once

#include <cstddef>

#include "response_sets.h"

namespace response_quality {

/** First sample whose magnitude is 10 % of the signal's peak; 0 for silence. */
std::size_t onset(const Signal& signal);

/** Right ear's onset behind the left ear's, on eight points a sample. Positive: the left ear leads. */
double interauralDelay_us(const Ears& ears);

/** Delay of a sphere of this radius for a source at this azimuth, after Woodworth. Positive: left. */
double woodworthDelay_us(double azimuth_deg, double head_radius_m);

/** How much more energy the left ear has in an octave. */
double levelDifference_db(const Ears& ears, double centre_hz);

/** How much more energy the left ear has in all. */
double levelDifference_db(const Ears& ears);

}  // namespace response_quality
