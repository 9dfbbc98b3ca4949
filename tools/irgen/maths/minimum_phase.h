// Minimum-phase response: the impulse response with a given magnitude and the least delay. The method folds
// the real cepstrum (Oppenheim & Schafer).
#pragma once

#include <cstddef>
#include <vector>

namespace sonivex_irgen {

/** Designs a minimum-phase response.
 *  @param magnitude_db levels at the bins 0 to size/2 of a power-of-two transform of `size` points
 *  @param taps         samples to keep, at most size; the second half of them fades out along half a cosine
 *  @return `taps` samples, the first at time 0 */
std::vector<double> minimumPhaseResponse(const std::vector<double>& magnitude_db, std::size_t taps);

}  // namespace sonivex_irgen
