// Compares surround at each vector width of the processor with the scalar engine.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Checks that all outputs are equal, then reports processor times and ratios. Throws std::runtime_error if
 *  outputs differ. */
void compareVectorWidths(Report& report, const Effort& effort);

}  // namespace compare
