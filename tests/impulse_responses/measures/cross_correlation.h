// Cross-correlation of two signals within a range of lags, by way of their spectra.
#pragma once

#include <cstddef>

#include "spectrum.h"

namespace response_quality {

/** Inverse transform of a cross spectrum at small lags.
 *  @param cross  conj(A) B at the bins of spectrumOf() of signals a and b, with any weight. The signals leave
 *                at least `range` of the points free.
 *  @param factor values per sample, a power of two
 *  @param range  largest lag in samples
 *  @return 2 range factor + 1 values, unscaled, for lags of b behind a from -range to range */
Signal correlationOf(const Spectrum& cross, std::size_t factor, std::size_t range);

}  // namespace response_quality
