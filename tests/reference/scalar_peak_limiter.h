// The peak limiter that peak_limiter.h describes, one sample after the other: what the library's must equal
// to the bit, in its output and in every field of its record.
#pragma once

#include "peak_limiter.h"

namespace model {

/** As sonivex::limitPeaks. */
bool limitPeaks(const sonivex::PeakLimiterFields& fields, const float* in, int count, float* out);

}  // namespace model
