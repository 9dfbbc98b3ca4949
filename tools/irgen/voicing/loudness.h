// Loudness of a programme heard through a response: pink noise and the K curve of ITU-R BS.1770.
#pragma once

#include <vector>

namespace sonivex_irgen {

/** K curve of ITU-R BS.1770 at 48 kHz as a factor of power, |H|^2. */
double kWeighting(double frequency_hz);

/** Loudness in dB of pink noise from 20 Hz to 20 kHz through a response, by the K curve; 0 dB for a response
 *  of 1 at all frequencies.
 *  @param power |H|^2 at the bins 0 to size/2 of a transform at 48 kHz */
double pinkLoudness_db(const std::vector<double>& power);

}  // namespace sonivex_irgen
