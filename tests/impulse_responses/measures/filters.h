// Filters of the measures: Butterworth bands, and the K curve of ITU-R BS.1770. The curve is derived from its
// analogue corner frequencies, so it works at any sample rate.
#pragma once

#include "spectrum.h"

namespace response_quality {

/** Fourth-order Butterworth high-pass: 24 dB/octave below the corner. */
Signal butterworthHighPass(const Signal& signal, double corner_hz, double rate_hz);

/** Octave band around a centre frequency, with a fourth-order Butterworth filter at each edge. */
Signal octaveBand(const Signal& signal, double centre_hz, double rate_hz);

/** K curve of ITU-R BS.1770 as a factor of power. */
double kCurve(double frequency_hz, double rate_hz);

}  // namespace response_quality
