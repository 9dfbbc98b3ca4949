// What the filter adds to the effect in it: queues, conversion to 16 bit and back.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

void measureFilter(Report& report, const Effort& effort);

}  // namespace compare
