// Facts about the tables that their readers rely on.
#pragma once

#include <vector>

#include "finish.h"
#include "tables.h"

namespace sonivex_irgen {

/** Throws UnmetTableFact, with the table and the reason, unless all of this holds:
 *  - every set has its tables in order, checked by number, first and last name, and length;
 *  - every set has its largest magnitude;
 *  - every source is on its side, that of the ear with the larger peak, or in the centre, where the larger
 *    peak is less than 1.3 times the other;
 *  - the ears are equal in the centre of the modes;
 *  - no other two tables are alike. */
void checkTableFacts(const std::vector<TableSet>& sets);

}  // namespace sonivex_irgen
