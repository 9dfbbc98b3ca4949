// Surround's own figures: memory, set-up, single calls, what the signal changes.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

void measureSurround(Report& report, const Effort& effort);

}  // namespace compare
