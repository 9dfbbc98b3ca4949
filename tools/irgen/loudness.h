// How loud a programme is through a response: pink noise and the K curve of ITU-R BS.1770.
#pragma once

#include <vector>

namespace sonivex_irgen {

/** K weighting of a power at 48 kHz: the curve's |H|^2. */
double kWeighting(double frequency_hz);

/** Mean of a power response, weighted with pink noise from 20 Hz to 20 kHz and the K curve, in dB: 0 for a
 * response that is 1 everywhere.
 *  @param power |H|^2 at the bins 0 to size/2 of a transform at 48 kHz */
double pinkLoudness_db(const std::vector<double>& power);

}  // namespace sonivex_irgen
