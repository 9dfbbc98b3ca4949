/* Surround's own figures: memory, set-up, single calls, what the signal and the vector width change. */
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

void measureSurround(Report& report, const Effort& effort);

}  // namespace compare
