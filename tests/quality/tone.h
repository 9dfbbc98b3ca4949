// What the responses do to a programme's colour and loudness. A power is on bins 0 to 16384 of 32768 points.
#pragma once

#include "response_sets.h"

namespace response_quality {

/** Mean over the ears of the power that music on both channels of the front pair makes there. The channels of
 * music agree in the bass and differ in the treble; in the two-channel modes each ear hears its own channel
 * only. */
Signal frontPairPower(const ResponseSet& set);

/** |left|^2 + |right|^2 of one loudspeaker alone. */
Signal sourcePower(const Ears& ears);

/** |H|^2 of one response. */
Signal responsePower(const Signal& response);

/** Mean power of a band in dB, every octave counting alike. */
double bandLevel_db(const Signal& power, double rate_hz, double low_hz, double high_hz);

/** Levels of the third octaves with centres from lowest_hz to highest_hz, against the mean of those from 400
 * Hz to 2.5 kHz. */
Signal colour_db(const Signal& power, double lowest_hz, double highest_hz);

/** Root mean square. */
double rms(const Signal& values);

/** Largest magnitude. */
double worst(const Signal& values);

/** 50-80 Hz over 400-2000 Hz. */
double bassLift_db(const Signal& power, double rate_hz);

enum class Programme {
    kPink,   // the same energy in every octave from 20 Hz to 20 kHz
    kMusic,  // less of it above 100 Hz, much less above 4 kHz and below 40 Hz
};

/** How much louder the programme gets, by the K curve of ITU-R BS.1770. */
double loudnessChange_lu(const Signal& power, Programme programme);

}  // namespace response_quality
