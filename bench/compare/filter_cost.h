// Overhead of the filter over its effect: queues, and conversion to 16 bits and back.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Reports the processor time of surround alone and within the filter, for s16 and fltp frames. Throws
 *  std::runtime_error if the filter's 16-bit output differs from the effect's. */
void measureFilter(Report& report, const Effort& effort);

}  // namespace compare
