// Effect of the responses on a programme's colour and loudness. Every power spectrum has the bins 0 to 16384
// of 32768 points.
#pragma once

#include "response_sets.h"

namespace response_quality {

/** Power at the ears, averaged over both, when the front pair plays music. The channels of music are coherent
 *  in the bass and differ in the treble. In the two-channel modes each ear hears its own channel only. */
Signal frontPairPower(const ResponseSet& set);

/** |left|^2 + |right|^2 of a single loudspeaker. */
Signal sourcePower(const Ears& ears);

/** |H|^2 of one response. */
Signal responsePower(const Signal& response);

/** Mean power of a band in dB, in which every octave has the same weight. */
double bandLevel_db(const Signal& power, double rate_hz, double low_hz, double high_hz);

/** Levels of the third octaves with centres from lowest_hz to highest_hz, relative to their own mean: a mere
 *  gain is no colour. */
Signal colour_db(const Signal& power, double lowest_hz, double highest_hz);

/** Root mean square of some values. */
double rms(const Signal& values);

/** Largest magnitude of some values. */
double worst(const Signal& values);

/** Level of 50-80 Hz relative to 400-2000 Hz. */
double bassLift_db(const Signal& power, double rate_hz);

/** Spectrum of a programme. */
enum class Programme {
    kPink,   // the same energy in every octave from 20 Hz to 20 kHz
    kMusic,  // steeper than pink above 100 Hz, still steeper above 4 kHz; falls below 40 Hz
};

/** Loudness change of the programme, by the K curve of ITU-R BS.1770. */
double loudnessChange_lu(const Signal& power, Programme programme);

}  // namespace response_quality
