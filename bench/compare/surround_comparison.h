// Surround against others that convolve.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Every layout and type: each engine's output checked, then its processor time and the ratios. */
void compareSurround(Report& report, const Effort& effort);

}  // namespace compare
