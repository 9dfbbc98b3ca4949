// Scalar version of the peak limiter described in peak_limiter.h. The library's must equal it to the bit, in
// its output and in every field of its record.
#pragma once

#include "peak_limiter.h"

namespace model {

/** Same contract as sonivex::limitPeaks. */
bool limitPeaks(const sonivex::PeakLimiterFields& fields, const float* in, int count, float* out);

}  // namespace model
