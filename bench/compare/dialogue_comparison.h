// Compares dialogue enhancement with the four transforms that each of its hops needs.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Reports processor time per hop. Adds only a note if the library has no dialogue enhancement. */
void compareDialogue(Report& report, const Effort& effort);

}  // namespace compare
