// The filters that the measures are defined with: Butterworth bands, and the loudness curve of ITU-R BS.1770
// from its analogue corner frequencies, so that it serves any sampling rate.
#pragma once

#include "spectrum.h"

namespace response_quality {

/** Fourth order: 24 dB/octave below the corner. */
Signal butterworthHighPass(const Signal& signal, double corner_hz, double rate_hz);

/** An octave around the centre, fourth order at either edge. */
Signal octaveBand(const Signal& signal, double centre_hz, double rate_hz);

/** The K curve as a factor of power. */
double kCurve(double frequency_hz, double rate_hz);

}  // namespace response_quality
