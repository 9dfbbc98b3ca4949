// Compares surround with other convolution engines.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Checks each engine's output for every layout and type, then reports processor times and ratios. Throws
 *  std::runtime_error if the library's output is wrong. */
void compareSurround(Report& report, const Effort& effort);

}  // namespace compare
