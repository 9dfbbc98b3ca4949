// Direct-to-reverberant ratios, octave by octave: an ear judges each band by itself.
#pragma once

#include <array>
#include <span>

#include "response_sets.h"

namespace response_quality {

/** Octaves in which the ratio is judged: 500 Hz to 8 kHz. */
inline constexpr std::array kRatioOctaves_hz{500.0, 1000.0, 2000.0, 4000.0, 8000.0};

/** One ratio in dB for each octave of kRatioOctaves_hz. */
using OctaveRatios = std::array<double, kRatioOctaves_hz.size()>;

/** Direct-to-reverberant ratios of one or more responses together.
 *
 *  The direct sound is the first 2.5 ms from each response's onset, and everything after it is reverberant.
 *  The responses are cut there before the octaves are taken, so that no filter smears one part into the
 *  other. */
OctaveRatios directToReverberant_db(std::span<const Signal> responses);

/** Mean of the ratios of two loudspeakers, octave by octave. */
OctaveRatios meanOf(const OctaveRatios& a, const OctaveRatios& b);

/** Mean of the octaves 500 Hz to 4 kHz. */
double meanRatio_db(const OctaveRatios& ratios_db);

/** Lowest ratio of all octaves. */
double lowestRatio_db(const OctaveRatios& ratios_db);

/** Highest less lowest ratio of all octaves. */
double ratioSpread_db(const OctaveRatios& ratios_db);

}  // namespace response_quality
