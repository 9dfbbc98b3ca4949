// Dialogue enhancement against the four transforms that each of its hops has to do.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Nothing to report when the library has no dialogue enhancement. */
void compareDialogue(Report& report, const Effort& effort);

}  // namespace compare
