// Interaural differences in time and level, the main cues to a sound's direction.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "response_sets.h"

namespace response_quality {

/** First sample whose magnitude is at least 10 % of the signal's peak; 0 for silence. */
std::size_t onset(const Signal& signal);

/** Delay of the right ear's onset after the left ear's, to an eighth of a sample; positive if the left ear
 *  leads. */
double interauralDelay_us(const Ears& ears);

/** Interaural delay after Woodworth of a spherical head; positive for an azimuth on the left. */
double woodworthDelay_us(double azimuth_deg, double head_radius_m);

/** Delay of the right ear after the left one below 1.5 kHz, where listeners follow the waveform; positive if
 *  the left ear leads.
 *
 *  It is the place of the largest cross-correlation within 1 ms, read on a grid of an eighth of a sample. The
 *  spectra carry the weight of speech and end at 1.5 kHz. */
double lowFrequencyDelay_us(const Ears& ears, double rate_hz);

/** Energy of the left ear relative to the right one in some octaves, white within each. */
Signal octaveDifferences_db(const Ears& ears, std::span<const double> octaves_hz, double rate_hz);

/** The same in one octave of a response at 48 kHz. */
double levelDifference_db(const Ears& ears, double octave_hz);

/** Octaves in which the level difference of a whole response is judged: 250 Hz to 8 kHz. */
inline constexpr std::array kLevelOctaves_hz{250.0, 500.0, 1000.0, 2000.0, 4000.0, 8000.0};

/** Energy of the left ear relative to the right one, as noise of different spectra shows it. */
struct LevelDifferences {
    std::array<double, kLevelOctaves_hz.size()> octaves_db{};  // white within each octave of kLevelOctaves_hz
    double speech_db = 0.0;                                    // with the spectrum of speech
};

/** All level differences of one loudspeaker, from one transform per ear. */
LevelDifferences levelDifferences(const Ears& ears);

/** Energy of the left ear relative to the right one. */
double levelDifference_db(const Ears& ears);

}  // namespace response_quality
