// Surround's own figures: memory, set-up time, single calls, and the cost of different signals.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Reports the figures. Throws std::runtime_error if an output is wrong. */
void measureSurround(Report& report, const Effort& effort);

}  // namespace compare
