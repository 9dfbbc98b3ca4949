// Interaural delay where hearing follows the waveform itself: below 1.5 kHz.
#pragma once

#include <array>
#include <vector>

#include "constants.h"

namespace sonivex_irgen {

/** Signals or responses of both ears, left and right. */
using EarPair = std::array<std::vector<double>, kEars>;

/** Time in seconds by which the right ear hears speech later than the left one: the place of the largest
 *  cross-correlation of the two responses within +-1 ms, for a sound with the spectrum of speech below
 *  1.5 kHz, on a grid of an eighth of a sample at kRate_hz.
 *  @param responses      at most 4096 samples each
 *  @param rate_hz        sample rate of the responses
 *  @param right_later_s  delay that comes on top of what the responses hold */
double lowFrequencyDelay_s(const EarPair& responses, double rate_hz, double right_later_s);

}  // namespace sonivex_irgen
