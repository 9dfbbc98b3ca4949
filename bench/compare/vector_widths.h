// Surround held to each width of vectors that the processor has, against the scalar way.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

void compareVectorWidths(Report& report, const Effort& effort);

}  // namespace compare
